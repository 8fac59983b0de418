// What the reader and the writer of address cards agree on beside the standards.
#pragma once

#include <string_view>

#include "host/contacts/contact_draft.h"
#include "host/contacts/field_table.h"

namespace ovno2::host {

// A parameter that names the row of a value which its property alone would bring to another row.
inline constexpr std::string_view rowParameter = "X-OVPHONE-ROW";
// "CRLF" where the lines of a value end in CR LF, as some phones have it; without it they end in LF.
inline constexpr std::string_view breakParameter = "X-OVPHONE-BREAK";
// Rows without a property of their own, and birthdays that are no single date.
inline constexpr std::string_view otherProperty = "X-OVPHONE-OTHER";
inline constexpr std::string_view birthdayProperty = "X-OVPHONE-BIRTHDAY";

// A property that comes several times: the first value goes to one row, all further ones to another.
struct CardKind {
    std::string_view property;
    std::string_view type;       // of a number or an address; empty = none
    std::string_view usualType;  // written where no type says more; not in 4.0
    Long first;
    Long second;  // HostField::none = there is one row
};

inline constexpr CardKind cardKinds[] = {
    {"TEL", "CELL", "", HostField::mobile, HostField::mobile2},
    {"TEL", "", "VOICE", HostField::phone, HostField::phone2},
    {"TEL", "HOME", "", HostField::homePhone, HostField::homePhone2},
    {"TEL", "WORK", "", HostField::workPhone, HostField::workPhone2},
    {"TEL", "FAX", "", HostField::fax, HostField::fax2},
    {"TEL", "PAGER", "", HostField::pager, HostField::none},
    {"EMAIL", "", "INTERNET", HostField::email, HostField::email2},
    {"URL", "", "", HostField::web, HostField::web2},
    {"TITLE", "", "", HostField::jobTitle, HostField::none},
    {"NOTE", "", "", HostField::note, HostField::note2},
};

// The rows of an address in the order in which a card has its parts, which begin with the post box and what
// is added to the street.
constexpr std::size_t addressParts = 5;
constexpr std::size_t firstAddressPart = 2;
struct AddressKind {
    std::string_view type;
    Long rows[addressParts];  // street, town, state, postcode, country
};

inline constexpr AddressKind addressKinds[] = {
    {"", {HostField::street, HostField::town, HostField::state, HostField::postcode, HostField::country}},
    {"HOME",
     {HostField::homeStreet, HostField::homeTown, HostField::homeState, HostField::homePostcode,
      HostField::homeCountry}},
    {"WORK",
     {HostField::workStreet, HostField::workTown, HostField::workState, HostField::workPostcode,
      HostField::workCountry}},
};

// The single value of a row, or the first of several; empty = none.
TextView firstValue(const ContactDraft& contact, Long code);

// What a card calls a contact without a formal name: first and last name, else the first line of anything
// that it has.
Text cardName(const ContactDraft& contact);

// Whether a card's formatted name tells more than the contact's other values do.
bool saysMoreThanName(TextView formattedName, const ContactDraft& contact);

// True for an ISO 8601 date of the calendar, such as "1975-04-12".
bool isIsoDate(TextView text);

}  // namespace ovno2::host
