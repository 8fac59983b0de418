#include "host/contacts/field_table.h"

#include <algorithm>

#include "host/output/text.h"

namespace ovno2::host {

namespace {

constexpr FieldRow rows[] = {
    {code::firstName, "firstName", u"First name"},
    {code::lastName, "lastName", u"Last name"},
    {23, "mobile", u"Mobile"},
    {20, "phone", u"Phone"},
    {21, "homePhone", u"Home phone"},
    {24, "workPhone", u"Work phone"},
    {50, "email", u"E-mail"},
    {code::company, "company", u"Company"},
    {17, "birthday", u"Birthday"},
    {code::categories, "categories", u"Categories"},
    {code::formalName, "formalName", u"Formal name"},
    {code::nickname, "nickname", u"Nickname"},
    {5, "title", u"Title"},
    {19, "jobTitle", u"Job title"},
    {35, "mobile2", u"Mobile 2"},
    {30, "phone2", u"Phone 2"},
    {22, "homePhone2", u"Home phone 2"},
    {25, "workPhone2", u"Work phone 2"},
    {28, "fax", u"Fax"},
    {29, "fax2", u"Fax 2"},
    {27, "pager", u"Pager"},
    {51, "email2", u"E-mail 2"},
    {60, "web", u"Web"},
    {61, "web2", u"Web 2"},
    {6, "homeStreet", u"Home street"},
    {7, "homePostcode", u"Home postcode"},
    {8, "homeTown", u"Home town"},
    {13, "homeState", u"Home state"},
    {12, "homeCountry", u"Home country"},
    {9, "workStreet", u"Work street"},
    {10, "workPostcode", u"Work postcode"},
    {11, "workTown", u"Work town"},
    {44, "workState", u"Work state"},
    {43, "workCountry", u"Work country"},
    {45, "street", u"Street"},
    {46, "postcode", u"Postcode"},
    {47, "town", u"Town"},
    {49, "state", u"State"},
    {48, "country", u"Country"},
    {15, "note", u"Note"},
    {67, "note2", u"Note 2"},
    {code::other, "other", u"Other"},
    {code::picture, "picture", u"Picture"},
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

std::vector<TextView> splitCollected(Long code, TextView value) {
    const TextView separator = code == code::other ? TextView(u"\\n") : TextView(u";");
    std::vector<TextView> parts;
    for (std::size_t start = 0; start <= value.size();) {
        const std::size_t end = std::min(value.find(separator, start), value.size());
        TextView part = value.substr(start, end - start);
        part.remove_prefix(std::min(part.find_first_not_of(u' '), part.size()));
        part.remove_suffix(part.size() - (part.find_last_not_of(u' ') + 1));
        if (!part.empty()) parts.push_back(part);
        start = end + separator.size();
    }
    return parts;
}

}  // namespace ovno2::host
