// The host's field codes: what the number in column 4 of its field-definition table stands for.
//
// The one list of them: the module places values by these, the host names its rows by them, and
// docs/contacts.md says what they hold.
#pragma once

#include "base/types.h"

namespace ovno2::HostField {

inline constexpr Long none = 0;

inline constexpr Long firstName = 1;
inline constexpr Long lastName = 2;
inline constexpr Long formalName = 3;
inline constexpr Long nickname = 4;
inline constexpr Long title = 5;
inline constexpr Long company = 16;
inline constexpr Long jobTitle = 19;
inline constexpr Long birthday = 17;    // text in the user's short-date form
inline constexpr Long categories = 18;  // values separated by ";"
inline constexpr Long note = 15;
inline constexpr Long note2 = 67;
inline constexpr Long picture = 80;  // path of a file

inline constexpr Long phone = 20;
inline constexpr Long phone2 = 30;
inline constexpr Long homePhone = 21;
inline constexpr Long homePhone2 = 22;
inline constexpr Long mobile = 23;
inline constexpr Long mobile2 = 35;
inline constexpr Long workPhone = 24;
inline constexpr Long workPhone2 = 25;
inline constexpr Long fax = 28;
inline constexpr Long fax2 = 29;
inline constexpr Long pager = 27;
inline constexpr Long email = 50;
inline constexpr Long email2 = 51;
inline constexpr Long web = 60;
inline constexpr Long web2 = 61;

inline constexpr Long street = 45;
inline constexpr Long postcode = 46;
inline constexpr Long town = 47;
inline constexpr Long state = 49;
inline constexpr Long country = 48;
inline constexpr Long homeStreet = 9;
inline constexpr Long homePostcode = 10;
inline constexpr Long homeTown = 11;
inline constexpr Long homeState = 44;
inline constexpr Long homeCountry = 43;
inline constexpr Long workStreet = 6;
inline constexpr Long workPostcode = 7;
inline constexpr Long workTown = 8;
inline constexpr Long workState = 13;
inline constexpr Long workCountry = 12;

inline constexpr Long other = 70;  // values of fields without a row, separated by the characters "\" and "n"
inline constexpr Long location = 79;  // no row: the contact's place on the phone

}  // namespace ovno2::HostField
