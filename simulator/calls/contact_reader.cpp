// A caller's item record back into a contact.
#include "simulator/calls/caller_memory.h"
#include "simulator/calls/contact_records.h"

namespace ovno2::simulator {
namespace {

using library::ContactRecord;
using library::ItemPair;
using library::PictureRecord;

constexpr std::size_t largestPicture = 16 << 20;
constexpr std::size_t mostAddressWords = 16;
constexpr Word addressIdsFromVersion = 30;  // of device management

class ItemReader {
  public:
    ItemReader(World& forWorld, const Phone& ofPhone, const Contact* before)
        : world(forWorld), memory(forWorld), itemBytes(world.sizesOf(ofPhone).dataItem), previous(before) {}

    std::shared_ptr<Contact> read(const ContactRecord& record) {
        contact = std::make_shared<Contact>();
        const ItemPair pairs[pairCount] = {record.a, record.b, record.c, record.d};
        for (std::uint8_t pair = 0; pair < pairCount; ++pair) {
            if (pairs[pair].count > mostItemsPerPair)
                memory.fail("more items than a pair can hold", pairs[pair].count);
            for (Word i = 0; i < pairs[pair].count; ++i) {
                readItem(static_cast<Address>(pairs[pair].items + i * itemBytes), pair);
            }
        }
        contact->arrange(fields);
        return contact;
    }

  private:
    Contact::TextPlace readText(Address from) {
        const std::optional<std::u16string> text = memory.readText(from);
        return text ? contact->addText(*text) : Contact::none;
    }

    Contact::Kind kindOf(Word id) const {
        if (id == 9) return Contact::Kind::date;
        if (id == 10) return Contact::Kind::picture;
        if (id == 516) return Contact::Kind::number;
        if (id >= 256 && id <= 258) return Contact::Kind::address;
        if (id >= 65 && id <= 67 && world.versions().deviceManagement < addressIdsFromVersion) {
            return Contact::Kind::address;
        }
        if (previous != nullptr) {
            for (const Contact::Field& field : previous->fields) {
                if (field.id == id) return field.kind;
            }
        }
        return Contact::Kind::text;
    }

    void readItem(Address from, std::uint8_t pair) {
        const CallerMemory::Words words = memory.readDataItem(from, itemBytes);
        Contact::Field field;
        field.reserved = words.reserved;
        field.group = words.group;
        field.id = static_cast<std::uint16_t>(words.fieldId);
        field.pair = pair;
        field.kind = kindOf(field.id);
        readValue(field, words.value);
        fields.push_back(field);
    }

    void readValue(Contact::Field& field, Word value) {
        if (value == 0 && field.kind != Contact::Kind::number) field.kind = Contact::Kind::text;
        switch (field.kind) {
            case Contact::Kind::text:
                field.value = readText(value);
                break;
            case Contact::Kind::number:
                field.value = value;
                break;
            case Contact::Kind::date:
                field.value = static_cast<Word>(contact->dates.size());
                contact->dates.push_back({memory.readDate(value)});
                break;
            case Contact::Kind::picture:
                field.value = static_cast<Word>(contact->pictures.size());
                contact->pictures.push_back(readPicture(value));
                break;
            case Contact::Kind::address:
                field.value = static_cast<Word>(contact->addresses.size());
                contact->addresses.push_back(readAddress(value));
                break;
        }
    }

    Contact::Picture readPicture(Address from) {
        PictureRecord record{};
        memory.take(from, sizeof record, &record);
        if (record.size != sizeof record) throw Refused{status::wrongRecordSize};
        if (record.byteCount > largestPicture) throw Refused{status::invalidParameter};
        Contact::Picture picture;
        picture.format = readText(record.format);
        picture.bytes.resize(record.byteCount);
        if (record.byteCount != 0) memory.take(record.bytes, record.byteCount, picture.bytes.data());
        return picture;
    }

    Contact::AddressWords readAddress(Address from) {
        Word size = 0;
        memory.take(from, sizeof size, &size);
        const std::size_t words = size / sizeof(Word);
        if (words < 2 || words > mostAddressWords) throw Refused{status::wrongRecordSize};
        Contact::AddressWords texts;
        for (std::size_t i = 1; i < words; ++i) {
            Address text = 0;
            memory.take(static_cast<Address>(from + i * sizeof text), sizeof text, &text);
            texts.push_back(readText(text));
        }
        while (texts.size() > 1 && texts.back() == Contact::none)
            texts.pop_back();
        return texts;
    }

    World& world;
    const CallerMemory memory;
    const std::size_t itemBytes;
    const Contact* const previous;
    std::shared_ptr<Contact> contact;
    std::vector<Contact::Field> fields;
};

}  // namespace

std::shared_ptr<Contact> contactFromItem(World& world, const Phone& phone, const ContactRecord& record,
                                         const Contact* previous) {
    return ItemReader(world, phone, previous).read(record);
}

}  // namespace ovno2::simulator
