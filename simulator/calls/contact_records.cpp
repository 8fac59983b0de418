#include "simulator/calls/contact_records.h"

#include <algorithm>
#include <cstring>

namespace ovno2::simulator {
namespace {

using library::ContactRecord;
using library::DateRecord;
using library::ItemPair;
using library::PictureRecord;

constexpr std::size_t smallestAddressWords = 8;  // size and seven texts

std::size_t addressWords(const Contact::AddressWords& texts) {
    return std::max(texts.size() + 1, smallestAddressWords);
}

std::size_t dateBytes(const RecordSizes& sizes) {
    return (std::max<std::size_t>(sizes.date, sizeof(DateRecord)) + 3) / 4 * 4;
}

const std::string& pictureBytes(const Phone& phone, const Contact::Picture& picture, std::string& buffer) {
    if (picture.file.empty()) return picture.bytes;
    buffer = std::string_view(readWhole(phone.image / picture.file));
    return buffer;
}

// Places the records and texts of one contact in its block: data items, then dates, pictures and addresses,
// then all texts in one piece, then the picture bytes.
class ItemWriter {
  public:
    ItemWriter(World& forWorld, const Phone& ofPhone, const RecordSizes& itsSizes, const Contact& theContact)
        : world(forWorld), contact(theContact), sizes(itsSizes) {
        std::size_t at = contact.fields.size() * sizes.dataItem;
        datesAt = at;
        at += contact.dates.size() * dateBytes(sizes);
        picturesAt = at;
        at += contact.pictures.size() * sizeof(PictureRecord);
        addressesAt = at;
        for (const auto& address : contact.addresses)
            at += addressWords(address) * sizeof(Word);
        textsAt = at;
        at += contact.texts.size() * sizeof(char16_t);
        bytesAt = at;
        pictures.resize(contact.pictures.size());
        for (std::size_t i = 0; i < contact.pictures.size(); ++i) {
            std::string buffer;
            pictures[i] = pictureBytes(ofPhone, contact.pictures[i], buffer);
            at += pictures[i].size();
        }
        block = takeMemory(world, at, BlockKind::item);
    }

    void write(ContactRecord& record) {
        if (datesAt != textsAt) writeParts();
        std::memcpy(block + textsAt, contact.texts.data(), contact.texts.size() * sizeof(char16_t));
        if (sizes.dataItem == sizeof(library::DataItemRecord)) {
            writeItems<true>();
        } else {
            writeItems<false>();
        }
        ItemPair* const pairs[pairCount] = {&record.a, &record.b, &record.c, &record.d};
        char* first = block;
        for (std::size_t i = 0; i < pairCount; ++i) {
            const Word count = contact.fieldCounts[i];
            *pairs[i] = {count, count == 0 ? 0 : addressOf(first)};
            first += count * sizes.dataItem;
        }
    }

  private:
    Address textAddress(Contact::TextPlace place) const {
        return place == Contact::none ? 0 : addressOf(block + textsAt + place * sizeof(char16_t));
    }

    // Data items with their size in front, or without.
    template <bool sized>
    void writeItems() const {
        char* item = block;
        for (const Contact::Field& field : contact.fields) {
            const bool isText = field.kind == Contact::Kind::text;  // as nearly all are
            const Word value = isText ? textAddress(field.value) : valueOf(field);
            const Word words[5] = {sizeof words, field.reserved, field.group, field.id, value};
            constexpr std::size_t bytes = sized ? sizeof words : sizeof words - sizeof(Word);
            std::memcpy(item, words + (sized ? 0 : 1), bytes);
            item += bytes;
        }
    }

    Word valueOf(const Contact::Field& field) const {
        switch (field.kind) {
            case Contact::Kind::text:
                return textAddress(field.value);
            case Contact::Kind::number:
                return field.value;
            case Contact::Kind::date:
                return addressOf(block + datesAt + field.value * dateBytes(sizes));
            case Contact::Kind::picture:
                return addressOf(block + picturesAt + field.value * sizeof(PictureRecord));
            case Contact::Kind::address:
                return addressOf(block + addressPlace(field.value));
        }
        return 0;
    }

    std::size_t addressPlace(std::size_t index) const {
        std::size_t at = addressesAt;
        for (std::size_t i = 0; i < index; ++i)
            at += addressWords(contact.addresses[i]) * sizeof(Word);
        return at;
    }

    void writeParts() const {
        std::memset(block + datesAt, 0, textsAt - datesAt);
        for (std::size_t i = 0; i < contact.dates.size(); ++i) {
            DateRecord date = contact.dates[i].record;
            date.size = sizes.date;
            std::memcpy(block + datesAt + i * dateBytes(sizes), &date, sizeof date);
        }
        std::size_t picturePlace = bytesAt;
        for (std::size_t i = 0; i < contact.pictures.size(); ++i) {
            const std::string& bytes = pictures[i];
            const PictureRecord picture{sizeof picture, textAddress(contact.pictures[i].format),
                                        static_cast<Word>(bytes.size()),
                                        bytes.empty() ? 0 : addressOf(block + picturePlace)};
            std::memcpy(block + picturesAt + i * sizeof picture, &picture, sizeof picture);
            std::memcpy(block + picturePlace, bytes.data(), bytes.size());
            picturePlace += bytes.size();
        }
        std::size_t at = addressesAt;
        for (const Contact::AddressWords& texts : contact.addresses) {
            const auto size = static_cast<Word>(addressWords(texts) * sizeof(Word));
            std::memcpy(block + at, &size, sizeof size);
            for (std::size_t i = 0; i < texts.size(); ++i) {
                const Address text = textAddress(texts[i]);
                std::memcpy(block + at + (i + 1) * sizeof(Word), &text, sizeof text);
            }
            at += size;
        }
    }

    World& world;
    const Contact& contact;
    const RecordSizes& sizes;
    char* block = nullptr;
    std::size_t datesAt = 0, picturesAt = 0, addressesAt = 0, textsAt = 0, bytesAt = 0;
    std::vector<std::string> pictures;
};

class ContactForm : public ItemForm {
  public:
    std::string_view name() const override { return "contact"; }
    std::size_t bytes(const RecordSizes&) const override { return sizeof(ContactRecord); }

    void build(World& world, const Phone& phone, const RecordSizes& sizes, const ContentItem& item,
               void* record) const override {
        const auto& contact = static_cast<const Contact&>(item);
        ContactRecord built{};
        built.size = sizeof built;
        if (!contact.fields.empty()) ItemWriter(world, phone, sizes, contact).write(built);
        std::memcpy(record, &built, sizeof built);
    }

    std::shared_ptr<ContentItem> read(World& world, const Phone& phone, const void* record,
                                      const ContentItem* previous) const override {
        ContactRecord written{};
        std::memcpy(&written, record, sizeof written);
        return contactFromItem(world, phone, written, static_cast<const Contact*>(previous));
    }

    RecordParts parts(const void* record, const RecordSizes& sizes) const override {
        ContactRecord contact{};
        std::memcpy(&contact, record, sizeof contact);
        RecordParts parts;
        std::size_t number = 0;
        for (const ItemPair& pair : {contact.a, contact.b, contact.c, contact.d})
            parts.add({"item", number++, pair.items, pair.count, sizes.dataItem, /*endsInAddress=*/true});
        return parts;
    }
};

const ContactForm theContactForm;

}  // namespace

const ItemForm& contactForm = theContactForm;

}  // namespace ovno2::simulator
