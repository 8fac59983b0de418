#include "simulator/calls/item_records.h"

#include <algorithm>

#include "simulator/calls/record_builder.h"

namespace ovno2::simulator {
namespace {

using library::ContactRecord;
using library::DateRecord;
using library::ItemPair;
using library::PictureRecord;

constexpr std::size_t smallestAddressWords = 8;  // size and seven texts
constexpr std::size_t mostUidBytes = 2048;

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
    ItemWriter(World& forWorld, const Phone& ofPhone, const Contact& theContact)
        : world(forWorld), contact(theContact), sizes(world.sizesOf(ofPhone)) {
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
    const RecordSizes sizes;
    char* block = nullptr;
    std::size_t datesAt = 0, picturesAt = 0, addressesAt = 0, textsAt = 0, bytesAt = 0;
    std::vector<std::string> pictures;
};

// Records that the plan wants wild. Afterwards some address must still lead to the block, or nobody could
// free it.
void pokeItem(World& world, const Phone& phone, const Contact& contact, ContactRecord& record) {
    const LowMemory::Block block = itemBlock(world, record);
    const std::size_t itemBytes = world.sizesOf(phone).dataItem;
    const std::size_t itemWords = itemBytes / sizeof(Word);
    const ContactRecord whole = record;
    const ItemPair pairs[pairCount] = {whole.a, whole.b, whole.c, whole.d};
    for (const Poke* const poke : world.plan.pokesOf("CAReadItem", &contact.uid)) {
        if (poke->record == "contact") world.plan.apply(*poke, &record, sizeof record / sizeof(Word));
        const ItemPair& pair = pairs[poke->pair.value_or(0)];
        if (poke->index >= pair.count) continue;
        char* const item = atAddress<char>(pair.items) + poke->index * itemBytes;
        if (poke->record == "item") world.plan.apply(*poke, item, itemWords);
        if (poke->record == "value") {
            Address value = 0;
            std::memcpy(&value, item + itemBytes - sizeof value, sizeof value);
            const LowMemory::Block inside = world.memory.find(atAddress<void>(value));
            if (inside.start != block.start) continue;
            const std::size_t room =
                inside.bytes - static_cast<std::size_t>(atAddress<char>(value) - inside.start);
            world.plan.apply(*poke, atAddress<void>(value), room / sizeof(Word));
        }
    }
    if (block && itemBlock(world, record).start != block.start) world.memory.release(block.start);
}

}  // namespace

void buildItem(World& world, const Phone& phone, const Contact& contact, ContactRecord& record) {
    record = {};
    record.size = sizeof record;
    if (!contact.fields.empty()) ItemWriter(world, phone, contact).write(record);
    if (world.plan.poking()) pokeItem(world, phone, contact, record);
}

LowMemory::Block itemBlock(const World& world, const ContactRecord& record) {
    for (const Address items : {record.a.items, record.b.items, record.c.items, record.d.items}) {
        const LowMemory::Block block = world.memory.find(atAddress<void>(items));
        if (block && block.kind == BlockKind::item) return block;
    }
    return {};
}

bool copyFrom(const World& world, Address from, std::size_t bytes, void* to) {
    const auto* const source = atAddress<const char>(from);
    const LowMemory::Block block = world.memory.find(source);
    const bool inside = block && source + bytes <= block.start + block.bytes;
    if (!inside && (block || !system::readable(source, bytes))) return false;
    std::memcpy(to, source, bytes);
    return true;
}

std::string uidOf(World& world, const library::ItemIdRecord* id) {
    requireGiven(id);
    if (id->size != sizeof *id) throw Refused{status::wrongRecordSize};
    if (id->uidLength > mostUidBytes) throw Refused{status::invalidParameter};
    std::string uid(id->uidLength, '\0');
    if (!uid.empty() && !copyFrom(world, id->uid, uid.size(), uid.data())) {
        throw Refused{status::invalidParameter};
    }
    return uid;
}

}  // namespace ovno2::simulator
