#include "host/contacts/field_table.h"

#include <algorithm>

#include "host/output/text.h"

namespace ovno2::host {

namespace {

constexpr const char* kinds = "whether for home, work or in general is not told";
constexpr const char* preference = "which number the phone prefers is not told";
constexpr const char* addressParts = "a post box and additions to the address are not handed over";
constexpr const char* field = "which fields of the phone they come from is not told";

constexpr FieldRow rows[] = {
    {HostField::firstName, "firstName", u"First name", Holds::one},
    {HostField::lastName, "lastName", u"Last name", Holds::one},
    {HostField::mobile, "mobile", u"Mobile", Holds::several, kinds},
    {HostField::phone, "phone", u"Phone", Holds::several, preference},
    {HostField::homePhone, "homePhone", u"Home phone"},
    {HostField::workPhone, "workPhone", u"Work phone"},
    {HostField::email, "email", u"E-mail", Holds::several, kinds},
    {HostField::company, "company", u"Company"},
    {HostField::birthday, "birthday", u"Birthday"},
    {HostField::categories, "categories", u"Categories"},
    {HostField::formalName, "formalName", u"Formal name", Holds::one},
    {HostField::nickname, "nickname", u"Nickname", Holds::one},
    {HostField::title, "title", u"Title", Holds::one},
    {HostField::jobTitle, "jobTitle", u"Job title"},
    {HostField::mobile2, "mobile2", u"Mobile 2", Holds::several, kinds},
    {HostField::phone2, "phone2", u"Phone 2", Holds::several, preference},
    {HostField::homePhone2, "homePhone2", u"Home phone 2"},
    {HostField::workPhone2, "workPhone2", u"Work phone 2"},
    {HostField::fax, "fax", u"Fax", Holds::several, kinds},
    {HostField::fax2, "fax2", u"Fax 2"},
    {HostField::pager, "pager", u"Pager"},
    {HostField::email2, "email2", u"E-mail 2", Holds::several, kinds},
    {HostField::web, "web", u"Web", Holds::several, kinds},
    {HostField::web2, "web2", u"Web 2", Holds::several, kinds},
    {HostField::homeStreet, "homeStreet", u"Home street", Holds::several, addressParts},
    {HostField::homePostcode, "homePostcode", u"Home postcode", Holds::several, addressParts},
    {HostField::homeTown, "homeTown", u"Home town", Holds::several, addressParts},
    {HostField::homeState, "homeState", u"Home state", Holds::several, addressParts},
    {HostField::homeCountry, "homeCountry", u"Home country", Holds::several, addressParts},
    {HostField::workStreet, "workStreet", u"Work street", Holds::several, addressParts},
    {HostField::workPostcode, "workPostcode", u"Work postcode", Holds::several, addressParts},
    {HostField::workTown, "workTown", u"Work town", Holds::several, addressParts},
    {HostField::workState, "workState", u"Work state", Holds::several, addressParts},
    {HostField::workCountry, "workCountry", u"Work country", Holds::several, addressParts},
    {HostField::street, "street", u"Street", Holds::several, addressParts},
    {HostField::postcode, "postcode", u"Postcode", Holds::several, addressParts},
    {HostField::town, "town", u"Town", Holds::several, addressParts},
    {HostField::state, "state", u"State", Holds::several, addressParts},
    {HostField::country, "country", u"Country", Holds::several, addressParts},
    {HostField::note, "note", u"Note", Holds::one},
    {HostField::note2, "note2", u"Note 2"},
    {HostField::other, "other", u"Other", Holds::several, field},
    {HostField::picture, "picture", u"Picture"},
};

constexpr Long codeColumn = 4;

}  // namespace

std::span<const FieldRow> fieldRows() {
    return rows;
}

std::size_t rowOf(Long code) {
    return static_cast<std::size_t>(std::find_if(std::begin(rows), std::end(rows),
                                                 [code](const FieldRow& row) { return row.code == code; }) -
                                    std::begin(rows));
}

TextTable fieldDefinitions() {
    constexpr std::size_t columns = codeColumn + 1;
    std::vector<Text> cells;
    cells.reserve((std::size(rows) + 1) * columns);
    const auto addRow = [&](const char16_t* label, Text code) {
        cells.emplace_back(label);
        cells.resize(cells.size() + columns - 2);
        cells.push_back(std::move(code));
    };
    addRow(u"Field", u"Code");
    for (const FieldRow& row : rows)
        addRow(row.label, decimalText(row.code));
    return TextTable(std::move(cells), std::size(rows) + 1, columns);
}

Text decodedValue(TextView value) {
    return replaceAll(value, u"\\t", u"\t");
}

}  // namespace ovno2::host
