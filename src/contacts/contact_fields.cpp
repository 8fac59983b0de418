#include "contacts/contact_fields.h"

#include <algorithm>

#include "contacts/contact_picture.h"
#include "content/host_fields.h"
#include "content/item_dates.h"
#include "content/state.h"
#include "core/settings.h"
#include "dates/date_text.h"
#include "devices/devices.h"
#include "library/library_memory.h"
#include "library/library_texts.h"

namespace ovno2::Contacts {

using namespace std::string_view_literals;  // names of routines whose length is known beforehand

namespace {

using library::Word;

constexpr Long codeColumn = 4;

// Phone field ids whose value is not a text.
constexpr Word noteId = 7;
constexpr Word birthdayId = 9;
constexpr Word pictureId = 10;
constexpr Word numberId = 516;
constexpr Word firstUnknownId = 521;

constexpr Long firstS60Platform = eNokiaPhoneS60;

bool isShortAddressId(Word id) {
    return id >= 65 && id <= 67;
}
bool isLongAddressId(Word id) {
    return id >= 256 && id <= 258;
}

// Puts the item's value into the empty `value` as text; address records and unknown ids have none.
void readValue(const AdrItem& record, const Content::DataItem& item, const Text& pictureFolder,
               const Text& uid, Text& value) {
    const Word id = item.FieldId;
    if (id == birthdayId) {
        const DateValue date = Content::GetDateFromPointer(item.Value);
        if (date != dateZero) value = shortDateText(date);
    } else if (id == pictureId) {
        value = savePicture(item.Value, record, pictureFolder, uid);
    } else if (id == numberId) {
        value = decimalText(static_cast<Long>(item.Value));
    } else if (!isLongAddressId(id) && id < firstUnknownId) {
        if (isShortAddressId(id) && Content::deviceManagementVersion() < Content::firstVersionWithLongIds)
            return;
        readPhoneText(item.Value, value);
        if (id == noteId && value.ends_with(u';')) value.pop_back();
    }
}

struct FieldCodes {
    Long code;
    Long code2;
};

// Host codes of the words 2 to 6 of an address record.
constexpr std::size_t lastAddressWord = 6;
constexpr FieldCodes generalAddress[] = {{HostField::street, HostField::workStreet},
                                         {HostField::postcode, HostField::workPostcode},
                                         {HostField::town, HostField::workTown},
                                         {HostField::state, HostField::workState},
                                         {HostField::country, HostField::workCountry}};
constexpr FieldCodes homeAddress[] = {{HostField::homeStreet, HostField::none},
                                      {HostField::homePostcode, HostField::none},
                                      {HostField::homeTown, HostField::none},
                                      {HostField::homeState, HostField::none},
                                      {HostField::homeCountry, HostField::none}};
constexpr FieldCodes workAddress[] = {{HostField::workStreet, HostField::none},
                                      {HostField::workPostcode, HostField::none},
                                      {HostField::workTown, HostField::none},
                                      {HostField::workState, HostField::none},
                                      {HostField::workCountry, HostField::none}};
// The street of a general address on platforms that do not keep the kinds apart, unless the host does.
constexpr FieldCodes undividedStreet = {HostField::workStreet, HostField::homeStreet};

const FieldCodes* addressCodes(Word id) {
    switch (id) {
        case 256:
        case 65:
            return generalAddress;
        case 258:
        case 67:
            return workAddress;
        default:
            return homeAddress;
    }
}

FieldCodes codesOfAddressWord(Word id, std::size_t word, const FieldDefinitions& table) {
    const FieldCodes* codes = addressCodes(id);
    if (codes == generalAddress && word == firstAddressWord) {
        const Long platform = Devices::platformType();
        const bool undivided = platform >= eNokiaPhoneType && platform < firstS60Platform;
        if (undivided && !(table.has(HostField::workTown) && table.has(HostField::homeTown)))
            return undividedStreet;
    }
    return codes[word - firstAddressWord];
}

void saveAddress(ContactValues& values, const Content::DataItem& item, const FieldDefinitions& table,
                 Text& text) {
    const std::vector<Word> record = copyAddressWords(item.Value, lastAddressWord + 1);
    for (std::size_t k = firstAddressWord; k < record.size(); ++k) {
        if (record[k] == 0) continue;
        attempt([&] {
            readAddressPart(record[k], text);
            const FieldCodes codes = codesOfAddressWord(item.FieldId, k, table);
            SetField(values.values(), table, codes.code, codes.code2, text);
        });
    }
}

void saveUncoded(ContactValues& values, const Content::DataItem& item, const FieldDefinitions& table,
                 Text& value) {
    if (isShortAddressId(item.FieldId) || isLongAddressId(item.FieldId)) {
        if (item.Value != 0) saveAddress(values, item, table, value);
    } else if (settings().getAllFields != 0) {
        SetField(values.values(), table, HostField::other, HostField::none, value);
    }
}

void saveCoded(ContactValues& values, const FieldDefinitions& table, FieldCodes codes, bool nameFallback,
               Text& value) {
    if (SetField(values.values(), table, codes.code, codes.code2, value) != 0) return;
    if (nameFallback && codes.code == HostField::lastName) {
        SetField(values.values(), table, HostField::formalName, HostField::lastName, value);
    } else if (codes.code == HostField::formalName) {
        Text bracketed = u"[" + value + u"]";
        SetField(values.values(), table, HostField::lastName, codes.code2, bracketed);
    } else if (settings().getAllFields != 0) {
        SetField(values.values(), table, HostField::other, HostField::none, value);
    }
}

// A value is one entry between tabs and has no blanks around it.
void makeEntry(Text& value) {
    if (contains(value, u'\t')) value = replaceAll(value, u"\t", u"\\t");
    if (value.starts_with(u' ') || value.ends_with(u' ')) value = trimBlanks(value);
}

// The row is filled and every value is to be kept.
void addToRow(Text& row, Long code, const Text& value) {
    if (row.empty()) {
        row = value;
        return;
    }
    if (code == HostField::other) {
        row.append(u"\\n");
    } else {
        const bool repeatsFormattedName =
            code == HostField::lastName && row.front() == u'[' && TextView(row).substr(1).starts_with(value);
        if (repeatsFormattedName) return;
        row.push_back(u';');
    }
    row.append(value);
}

}  // namespace

void readPhoneText(Address pointer, Text& text) {
    library::GetStringFromPointer(pointer, text);
    if (contains(text, u'=')) text = replaceAll(text, u"=40"sv, u"@"sv);
}

std::vector<Word> copyAddressWords(Address address, std::size_t most) {
    Word size = 0;  // bytes
    library::copyRecord(address, size);
    return library::copyBlock<Word>(address, std::min(size / sizeof(Word), most));
}

void readAddressPart(Address pointer, Text& text) {
    readPhoneText(pointer, text);
    if (text.ends_with(u'\r')) text.pop_back();
}

FieldDefinitions::FieldDefinitions(const TextTable& table) : codes_(table.rows(), 0) {
    firstRows_.fill(-1);
    if (table.firstColumn() > codeColumn || table.lastColumn() < codeColumn) return;
    for (std::size_t row = codes_.size(); row-- > 0;) {
        const Long code = numericLong(table.at(row, codeColumn));
        codes_[row] = code;
        if (code >= 0 && code < indexedCodes)
            firstRows_[static_cast<std::size_t>(code)] = static_cast<Long>(row);
    }
}

Long FieldDefinitions::firstRow(Long code) const {
    if (code >= 0 && code < indexedCodes) return firstRows_[static_cast<std::size_t>(code)];
    const auto found = std::find(codes_.begin(), codes_.end(), code);
    return found == codes_.end() ? -1 : static_cast<Long>(found - codes_.begin());
}

void ContactValues::beginItem() {
    if (started_ && values_.size() >= 2) return;
    for (Text& value : values_)
        value.clear();
    started_ = true;
}

Text ContactValues::joined() const {
    return started_ ? join(values_, u'\t') : Text();
}

Long SetField(std::vector<Text>& values, const FieldDefinitions& table, Long code, Long code2, Text& value) {
    const RoutineLog log(u"SetField"sv);
    Long result = 0;
    bool matched = false;
    const bool keepsAll = settings().getAllFields != 0;
    for (;;) {
        const Long row = table.firstRow(code);
        if (row < 0) {
            if (matched || code2 <= 0) return result;
            code = std::exchange(code2, HostField::none);
            continue;
        }
        matched = true;
        result = row;
        makeEntry(value);
        Text& target = values.at(static_cast<std::size_t>(row));
        if (code == HostField::categories) {
            if (!target.empty()) target.push_back(u';');
            target.append(value);
            return result;
        }
        if (!target.empty() && code > HostField::formalName && code != HostField::other) {
            if (code2 > 0) {
                code = std::exchange(code2, HostField::none);
                continue;
            }
            if (!keepsAll) return result;
        }
        if (keepsAll) {
            addToRow(target, code, value);
        } else {
            target = value;
        }
        return result;
    }
}

void SaveContactInfo(AdrItem& record, ContactValues& values, const Content::DataItem& item,
                     const FieldDefinitions& table, bool nameFallback, const Text& pictureFolder,
                     const Text& uid) {
    const RoutineLog log(u"SaveContactInfo"sv);
    Text& value = values.itemValue();
    value.clear();
    if (attempt([&] { readValue(record, item, pictureFolder, uid, value); }) != noFailure) value.clear();
    values.beginItem();
    const Content::FieldTables& fields = Content::state().Fields;
    const FieldCodes codes = {fields.code(item.FieldId), fields.alternativeCode(item.FieldId)};
    attempt([&] {
        if (codes.code == HostField::none) {
            saveUncoded(values, item, table, value);
        } else if (codes.code == HostField::location) {
            record.Location = value + u" (SB)";
        } else {
            saveCoded(values, table, codes, nameFallback, value);
        }
    });
}

void cleanUpName(ContactValues& values, const FieldDefinitions& table) {
    const Long lastRow = table.firstRow(HostField::lastName);
    if (!values.hasValues() || lastRow < 0) return;
    Text& last = values.values()[static_cast<std::size_t>(lastRow)];
    if (last.size() < 2 || last.front() != u'[' || last.back() != u']') return;
    const Long firstRow = table.firstRow(HostField::firstName);
    const TextView inner = TextView(last).substr(1, last.size() - 2);
    if (firstRow >= 0 && inner == values.values()[static_cast<std::size_t>(firstRow)]) {
        last.clear();
    } else {
        last = Text(inner);
    }
}

}  // namespace ovno2::Contacts
