#include "contacts/contact_editor.h"

#include <algorithm>

#include "contacts/reverse_fields.h"
#include "content/host_fields.h"
#include "content/item_dates.h"
#include "content/state.h"
#include "library/library_texts.h"
#include "pc/files.h"

namespace ovno2::Contacts {

namespace {

using Content::DataItem;
using library::PictureRecord;
using library::Word;

constexpr Word formattedNameId = 1;
constexpr Word firstNameId = 2;
constexpr Word lastNameId = 4;
constexpr Word titleId = 5;
constexpr Word companyId = 7;
constexpr Word birthdayId = 9;
constexpr Word pictureId = 10;
constexpr Word generalAddressId = 256;
constexpr Word workAddressId = 258;
constexpr Word mailId = 259;
constexpr Word pageId = 272;
constexpr Word categoryId = 520;

constexpr std::size_t addressWords = 8;  // the size and seven texts

constexpr Long firstVersionWithoutPadding = 36;

bool isAddressId(Word id) {
    return id >= generalAddressId && id <= workAddressId;
}
bool isKindOfMail(Word id) {
    return id == 260 || id == 261;
}
bool isKindOfPage(Word id) {
    return id == 273 || id == 274;
}

// Which part of an address a host field code is, from 0; -1 for none.
int partOfAddress(Long code) {
    using namespace HostField;
    constexpr Long codes[][3] = {{workStreet, homeStreet, street},
                                 {workPostcode, homePostcode, postcode},
                                 {workTown, homeTown, town},
                                 {workState, homeState, state},
                                 {workCountry, homeCountry, country}};
    for (int part = 0; part < 5; ++part)
        if (std::ranges::find(codes[part], code) != std::end(codes[part])) return part;
    return -1;
}

// The text of an item as the host has been told it.
Text textOf(const DataItem& item) {
    Text text;
    readPhoneText(item.Value, text);
    if (item.FieldId == companyId && text.ends_with(u';')) text.pop_back();
    return text;
}

bool sameText(const Text& a, const Text& b) {
    return trimBlanks(a) == trimBlanks(b);
}

std::array<Word, addressWords> addressRecordAt(Address address) {
    std::array<Word, addressWords> record{};
    if (library::isAddress(address))
        std::ranges::copy(copyAddressWords(address, addressWords), record.begin());
    return record;
}

void giveAddressBack(Address address) {
    std::array<Word, addressWords> record{};
    attempt([&] { record = addressRecordAt(address); });
    for (std::size_t word = 1; word < addressWords; ++word)
        Content::giveTextBack(record[word]);
    Content::giveBlockBack(address);
}

void givePictureBack(Address address) {
    PictureRecord record{};
    attempt([&] { library::copyRecord(address, record); });
    Content::giveTextBack(record.format);
    Content::giveBlockBack(record.bytes);
    Content::giveBlockBack(address);
}

}  // namespace

void ContactEditor::takeExisting(const library::ContactRecord& record) {
    constexpr Word countMask = 0xFF;
    const library::ItemPair pairs[groupCount] = {record.a, record.b, record.c, record.d};
    for (std::size_t i = 0; i < groupCount; ++i) {
        const Word count = pairs[i].count & countMask;
        Content::CopyToDataStruct(groups_[i], pairs[i].items, static_cast<Long>(count));
        // Written without them, the contact would lose them.
        if (groups_[i].size() != count) throw RuntimeFailure(outOfMemory);
    }
    std::erase_if(groups_[0], [](const DataItem& item) {
        if (item.FieldId == formattedNameId) {
            DebugWrite(u"!r1");
            Content::giveTextBack(item.Value);
        } else if (item.FieldId == birthdayId) {
            DebugWrite(u"!r2");
            Content::giveBlockBack(item.Value);
        } else {
            return false;
        }
        return true;
    });
    for (std::size_t i = 0; i < groupCount; ++i)
        existing_[i] = groups_[i].size();
}

Text ContactEditor::name() const {
    Text name;
    for (const DataItem& item : groups_[0]) {
        if (item.FieldId == firstNameId) name.insert(0, textOf(item).append(u" "));
        if (item.FieldId == lastNameId) name.append(u" ").append(textOf(item));
        name = replaceAll(name, u"  ", u" ");
    }
    return trimBlanks(name);
}

void ContactEditor::place(const Text& values, const FieldDefinitions& table, bool namesOnly) {
    DebugLine(u"elems:", values);
    const std::vector<Text> entries = split(values, u'\t');
    for (std::size_t row = 0; row < table.rows(); ++row) {
        const Long code = table.code(row);
        Word id = reverseFields().idOf(code);
        if (id == 0) continue;
        if (merging_.addresses && isAddressId(id)) id = generalAddressId;
        Text value = row < entries.size() ? entries[row] : Text();
        if (code != HostField::picture) value = replaceAll(value, u"\\t", u"\t");
        if (namesOnly && code != HostField::firstName && code != HostField::lastName) value.clear();
        const auto one = [&](Text text) {
            if (text.size() > 1) text = trimBlanks(text);  // a single blank stays
            DebugLine(u"> ", decimal{static_cast<Long>(row)}, u":", decimal{code}, text);
            const int part = isAddressId(id) ? partOfAddress(code) : -1;
            if (part >= 0)
                collect(id, static_cast<std::size_t>(part), text);
            else
                placeValue(id, code, std::move(text));
        };
        if (id == categoryId)
            for (Text& piece : split(value, u';'))
                one(std::move(piece));
        else
            one(std::move(value));
    }
    for (const auto& [id, addresses] : addresses_)
        for (const AddressTexts& address : addresses)
            placeAddress(id, address);
}

void ContactEditor::placeValue(Word id, Long code, Text value) {
    const auto group = static_cast<std::size_t>(Content::state().Fields.group(id));
    if (group == 0) return;
    DebugWrite(u"!0");
    if (id == birthdayId) return placeDate(group, value);
    if (id == pictureId) return placePicture(group, value);
    if (id == lastNameId) std::ranges::replace(value, u';', u',');
    placeText(id, code, group, value);
}

Word ContactEditor::pairedId(Word id) const {
    return merging_.addresses && isAddressId(id) ? generalAddressId : id;
}

// The phone's item that goes with the next row of an id; none when there is none left.
std::optional<std::size_t> ContactEditor::nextExisting(Word id, std::size_t group) const {
    const auto known = counted_.find(id);
    std::size_t before = known == counted_.end() ? 0 : known->second;
    const std::vector<DataItem>& items = groups_[group - 1];
    for (std::size_t i = 0; i < existing_[group - 1]; ++i)
        if (pairedId(items[i].FieldId) == id && before-- == 0) return i;
    return std::nullopt;
}

DataItem& ContactEditor::pairWith(Word id, std::size_t group, std::size_t place) {
    ++counted_[id];
    paired_.insert({group, place});
    return groups_[group - 1][place];
}

// Whether the phone has the value under another id: of a special kind as one of the general kind, or in an
// item that no row goes with and that is read into the row of this code. Where a phone has three mobile
// numbers and the host two rows, the one that has no row would be lost otherwise.
bool ContactEditor::standsElsewhere(Word id, Long code, std::size_t group, const Text& value) {
    Word general = 0;
    if (isKindOfMail(id)) general = mailId;
    if (merging_.pages && isKindOfPage(id)) general = pageId;
    const Content::FieldTables& fields = Content::state().Fields;
    std::vector<DataItem>& items = groups_[group - 1];
    for (std::size_t i = 0; i < existing_[group - 1]; ++i) {
        const Word itemId = items[i].FieldId;
        const bool isGeneral = general != 0 && itemId == general;
        const bool isOfCode = fields.code(itemId) == code || fields.alternativeCode(itemId) == code;
        const bool mayStand = isGeneral || (itemId != id && isOfCode && !paired_.contains({group, i}));
        if (!mayStand || !sameText(textOf(items[i]), value)) continue;
        paired_.insert({group, i});
        return true;
    }
    return false;
}

void ContactEditor::placeText(Word id, Long code, std::size_t group, const Text& value) {
    const std::optional<std::size_t> place = nextExisting(id, group);
    if (place && sameText(textOf(groups_[group - 1][*place]), value)) {
        DebugWrite(u"!7");
        pairWith(id, group, *place);
        return;
    }
    if (!value.empty() && standsElsewhere(id, code, group, value)) return;
    if (place) {
        const Address text = pieces_.text(encoded(id, group, value));
        Content::giveTextBack(std::exchange(pairWith(id, group, *place).Value, text));
    } else if (!value.empty()) {
        DebugWrite(u"!8");
        add(id, group, pieces_.text(encoded(id, group, value)));
    }
}

void ContactEditor::placeDate(std::size_t group, const Text& value) {
    if (value.empty()) return;
    DebugWrite(u"!9");
    library::DateRecord date{};
    Content::GetDateStruct(value, date, /*toUtc=*/false, /*mode=*/0);
    if (date.month == 0) {
        if (pendingFailure().number == outOfMemory) throw RuntimeFailure(outOfMemory);
        DebugLine(u"!9 ", value);  // no date
        return;
    }
    add(birthdayId, group, pieces_.record(date));
}

void ContactEditor::placePicture(std::size_t group, const Text& path) {
    constexpr const char16_t* format = u"JPEG";
    const std::optional<std::size_t> place = nextExisting(pictureId, group);
    DataItem* const item = place ? &pairWith(pictureId, group, *place) : nullptr;
    PictureRecord old{};
    if (item) {
        attempt([&] { library::copyRecord(item->Value, old); });
        DebugLine(u"Pic: ", library::GetStringFromPointer(old.format));
    }
    if (path.empty()) {
        if (!item) return;
        givePictureBack(item->Value);
        item->Value = 0;  // what has no value is not written
        return;
    }
    DebugWrite(u"!10");
    Files::FileBytes content;
    if (!Files::GetFileBytes(path, content) || content.size == 0) {
        DebugLine(u"!10 ", path);
        return;
    }
    if (item) {
        std::vector<std::uint8_t> bytes;
        attempt([&] { library::copyBlock(old.bytes, old.byteCount, bytes); });
        if (std::ranges::equal(bytes, content.all())) return;
    }
    const PictureRecord picture{.size = sizeof picture,
                                .format = pieces_.text(format),
                                .byteCount = static_cast<Word>(content.size),
                                .bytes = pieces_.block(content.all())};
    const Address record = pieces_.record(picture);
    if (item)
        givePictureBack(std::exchange(item->Value, record));
    else
        add(pictureId, group, record);
}

// The n-th value for a part belongs to the n-th address of the id.
void ContactEditor::collect(Word id, std::size_t part, const Text& value) {
    auto known = std::ranges::find_if(addresses_, [&](const auto& one) { return one.first == id; });
    if (known == addresses_.end()) known = addresses_.insert(known, {id, {}});
    std::vector<AddressTexts>& addresses = known->second;
    auto free = std::ranges::find_if(addresses, [&](const AddressTexts& one) { return !one[part]; });
    if (free == addresses.end()) free = addresses.insert(addresses.end(), AddressTexts());
    (*free)[part] = value;
}

// A second general address is read into the rows of the work address.
bool ContactEditor::standsAsGeneral(std::size_t group, const AddressTexts& address) {
    bool isFirst = true;
    for (std::size_t i = 0; i < existing_[group - 1]; ++i) {
        const DataItem& item = groups_[group - 1][i];
        if (item.FieldId != generalAddressId || std::exchange(isFirst, false)) continue;
        std::array<Word, addressWords> record{};
        if (attempt([&] { record = addressRecordAt(item.Value); }) == outOfMemory)
            throw RuntimeFailure(outOfMemory);
        bool same = !paired_.contains({group, i});
        for (std::size_t part = 0; part < addressParts; ++part) {
            Text there;
            readAddressPart(record[firstAddressWord + part], there);
            same = same && (!address[part] || sameText(*address[part], there));
        }
        if (!same) continue;
        paired_.insert({group, i});
        return true;
    }
    return false;
}

void ContactEditor::placeAddress(Word id, const AddressTexts& address) {
    const auto group = static_cast<std::size_t>(Content::state().Fields.group(id));
    if (group == 0) return;
    const std::optional<std::size_t> place = nextExisting(id, group);
    if (!place && id == workAddressId && standsAsGeneral(group, address)) return;
    DataItem* const item = place ? &pairWith(id, group, *place) : nullptr;
    std::array<Word, addressWords> old{};
    if (item && attempt([&] { old = addressRecordAt(item->Value); }) == outOfMemory)
        throw RuntimeFailure(outOfMemory);
    if (item && old[0] != addressWords * sizeof(Word)) DebugWrite(u"!!! Size 1");
    std::array<Text, addressParts> texts;
    bool changed = false, empty = true;
    for (std::size_t part = 0; part < addressParts; ++part) {
        Text before;
        readAddressPart(old[firstAddressWord + part], before);
        texts[part] = address[part].value_or(before);
        if (!sameText(texts[part], before)) changed = true;
        if (!texts[part].empty()) empty = false;
    }
    if (!changed || (!item && empty)) return;
    std::array<Word, addressWords> record{addressWords * sizeof(Word)};
    for (std::size_t part = 0; part < addressParts; ++part)
        if (!texts[part].empty()) record[firstAddressWord + part] = pieces_.text(texts[part]);
    const Address made = pieces_.record(record);
    if (item)
        giveAddressBack(std::exchange(item->Value, made));
    else
        add(id, group, made);
}

void ContactEditor::add(Word id, std::size_t group, Word value) {
    DataItem item;
    item.Size = sizeof(library::DataItemRecord);
    item.Group = static_cast<Long>(group);
    item.FieldId = id;
    item.Value = value;
    groups_[group - 1].push_back(item);
}

// Older libraries cut texts of some lengths unless blanks follow.
Text ContactEditor::encoded(Word id, std::size_t group, const Text& value) const {
    Text text = replaceAll(value, u"\u00A4", u" ");
    if (version_ >= firstVersionWithoutPadding) return text;
    constexpr std::size_t cutLengths[] = {4, 12, 14, 15, 16, 19};
    const std::size_t length = text.size();
    bool padded = false;
    switch (group) {
        case 1:
            padded = (id == lastNameId && length > 20) || id == firstNameId || id == titleId ||
                     (id == companyId && length > 10);
            break;
        case 3:
            padded = id != mailId && !isKindOfMail(id) &&
                     std::ranges::find(cutLengths, length) != std::end(cutLengths);
            break;
        case 4:
            padded = true;
            break;
        default:
            break;
    }
    return padded ? text + u"  " : text;
}

std::array<std::vector<DataItem>, ContactEditor::groupCount> ContactEditor::merged() const {
    std::array<std::vector<DataItem>, groupCount> groups = groups_;
    std::erase_if(groups[0],
                  [](const DataItem& item) { return item.FieldId == pictureId && item.Value == 0; });
    for (DataItem& item : groups[2]) {
        item.FieldId = pairedId(item.FieldId);
        if (merging_.mails && isKindOfMail(item.FieldId)) item.FieldId = mailId;
        if (merging_.pages && isKindOfPage(item.FieldId)) item.FieldId = pageId;
    }
    return groups;
}

}  // namespace ovno2::Contacts
