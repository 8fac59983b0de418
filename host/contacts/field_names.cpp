#include "host/contacts/field_names.h"

#include <map>

#include "host/contacts/field_table.h"
#include "host/phones/phone_choice.h"

namespace ovno2::host {

namespace {

// What address books call fields that have another name here; as `plain` writes it.
constexpr struct {
    std::string_view name;
    Long code;
} otherNames[] = {
    {"givenname", HostField::firstName},
    {"familyname", HostField::lastName},
    {"surname", HostField::lastName},
    {"name", HostField::formalName},
    {"mobilephone", HostField::mobile},
    {"mobilenumber", HostField::mobile},
    {"cellphone", HostField::mobile},
    {"cell", HostField::mobile},
    {"businessphone", HostField::workPhone},
    {"mail", HostField::email},
    {"emailaddress", HostField::email},
    {"website", HostField::web},
    {"webpage", HostField::web},
    {"url", HostField::web},
    {"organization", HostField::company},
    {"organisation", HostField::company},
    {"role", HostField::jobTitle},
    {"notes", HostField::note},
    {"birthdate", HostField::birthday},
    {"group", HostField::categories},
    {"groups", HostField::categories},
    {"category", HostField::categories},
    {"homecity", HostField::homeTown},
    {"workcity", HostField::workTown},
    {"city", HostField::town},
    {"zip", HostField::postcode},
};

// Letters and digits, small.
std::string plain(std::string_view name) {
    std::string text;
    for (const char one : toUtf8(lowerCase(fromUtf8(name))))
        if (static_cast<unsigned char>(one) >= 0x80 || (one >= 'a' && one <= 'z') ||
            (one >= '0' && one <= '9'))
            text += one;
    return text;
}

}  // namespace

std::optional<std::size_t> rowNamed(std::string_view name) {
    static const std::map<std::string, std::size_t> rows = [] {
        std::map<std::string, std::size_t> known;
        for (std::size_t i = 0; i < fieldRows().size(); ++i) {
            known.emplace(plain(fieldRows()[i].key), i);
            known.emplace(plain(toUtf8(fieldRows()[i].label)), i);
        }
        for (const auto& [other, code] : otherNames)
            known.emplace(other, rowOf(code));
        return known;
    }();
    const auto row = rows.find(plain(name));
    return row == rows.end() ? std::nullopt : std::optional(row->second);
}

std::vector<Text> fieldNamesNear(std::string_view name, std::size_t count) {
    std::vector<Text> keys;
    for (const FieldRow& row : fieldRows())
        keys.push_back(fromUtf8(row.key));
    return nearestNames(fromUtf8(name), keys, count);
}

std::string listOfFields(std::size_t width, std::size_t indent) {
    std::string text;
    std::size_t line = width;
    for (const FieldRow& row : fieldRows()) {
        if (row.code == HostField::other) continue;
        if (line + row.key.size() + 1 > width) {
            text += (text.empty() ? "" : "\n") + std::string(indent, ' ');
            line = indent;
        } else {
            text += ' ';
        }
        text += row.key;
        line += row.key.size() + 1;
    }
    return text;
}

}  // namespace ovno2::host
