// A caller's item record back into a contact.
#include <algorithm>

#include "simulator/base/text.h"
#include "simulator/calls/item_records.h"
#include "simulator/calls/memory_calls.h"
#include "simulator/images/date_text.h"

namespace ovno2::simulator {
namespace {

using library::ContactRecord;
using library::ItemPair;
using library::PictureRecord;

constexpr std::size_t longestText = 65536;  // UTF-16 units
constexpr std::size_t largestPicture = 16 << 20;
constexpr std::size_t mostAddressWords = 16;
constexpr Word addressIdsFromVersion = 30;  // of device management

class ItemReader {
  public:
    ItemReader(World& forWorld, const Phone& ofPhone, const Contact* before)
        : world(forWorld), itemBytes(world.sizesOf(ofPhone).dataItem), previous(before) {}

    std::shared_ptr<Contact> read(const ContactRecord& record) {
        contact = std::make_shared<Contact>();
        const ItemPair pairs[pairCount] = {record.a, record.b, record.c, record.d};
        for (std::uint8_t pair = 0; pair < pairCount; ++pair) {
            if (pairs[pair].count > mostItemsPerPair)
                fail("more items than a pair can hold", pairs[pair].count);
            for (Word i = 0; i < pairs[pair].count; ++i) {
                readItem(static_cast<Address>(pairs[pair].items + i * itemBytes), pair);
            }
        }
        contact->arrange(fields);
        return contact;
    }

  private:
    [[noreturn]] void fail(const char* what, Address address) {
        throw Refused{misused(world, "CAWriteItem", what, atAddress<void>(address))};
    }

    // Copies a record that the caller's item points to, which must not have been given back.
    void take(Address from, std::size_t bytes, void* to) {
        const LowMemory::Block block = world.memory.find(atAddress<void>(from));
        const auto parts = block ? world.releasedParts.find(block.start) : world.releasedParts.end();
        const bool released =
            parts != world.releasedParts.end() &&
            std::find(parts->second.begin(), parts->second.end(), from) != parts->second.end();
        if (released || !copyFrom(world, from, bytes, to)) fail("an address that cannot be read", from);
    }

    Contact::TextPlace readText(Address from) {
        if (from == 0) return Contact::none;
        std::u16string text;
        char16_t unit = 0;
        for (take(from, sizeof unit, &unit); unit != 0; take(from, sizeof unit, &unit)) {
            text += unit;
            from += sizeof unit;
            if (text.size() == longestText) fail("a text without an end", from);
        }
        return contact->addText(text);
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
        Word words[5];
        take(from, itemBytes, words);
        const bool sized = itemBytes == sizeof(library::DataItemRecord);
        if (sized && words[0] != itemBytes) throw Refused{status::wrongRecordSize};
        const Word* const word = sized ? words + 1 : words;
        if (word[2] > 0xFFFF) throw Refused{status::invalidParameter};
        Contact::Field field;
        field.reserved = word[0];
        field.group = word[1];
        field.id = static_cast<std::uint16_t>(word[2]);
        field.pair = pair;
        field.kind = kindOf(field.id);
        readValue(field, word[3]);
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
                contact->dates.push_back(readDate(value));
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

    Contact::Date readDate(Address from) {
        Contact::Date date{};
        take(from, sizeof date.record, &date.record);
        if (!isDate(date.record)) throw Refused{status::invalidParameter};
        return date;
    }

    Contact::Picture readPicture(Address from) {
        PictureRecord record{};
        take(from, sizeof record, &record);
        if (record.size != sizeof record) throw Refused{status::wrongRecordSize};
        if (record.byteCount > largestPicture) throw Refused{status::invalidParameter};
        Contact::Picture picture;
        picture.format = readText(record.format);
        picture.bytes.resize(record.byteCount);
        if (record.byteCount != 0) take(record.bytes, record.byteCount, picture.bytes.data());
        return picture;
    }

    Contact::AddressWords readAddress(Address from) {
        Word size = 0;
        take(from, sizeof size, &size);
        const std::size_t words = size / sizeof(Word);
        if (words < 2 || words > mostAddressWords) throw Refused{status::wrongRecordSize};
        Contact::AddressWords texts;
        for (std::size_t i = 1; i < words; ++i) {
            Address text = 0;
            take(static_cast<Address>(from + i * sizeof text), sizeof text, &text);
            texts.push_back(readText(text));
        }
        while (texts.size() > 1 && texts.back() == Contact::none)
            texts.pop_back();
        return texts;
    }

    World& world;
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
