// The host's field-definition table: which values of a contact it knows, under which names it shows them, and
// in which order.
//
// The module places each value of a phone's contact in the row whose column 4 holds the value's field code.
// Rows are in the order in which people look for them; the JSON output keeps that order.
#pragma once

#include <span>

#include "host/driver/driver.h"

namespace ovno2::host {

namespace code {
inline constexpr Long firstName = 1;
inline constexpr Long lastName = 2;
inline constexpr Long formalName = 3;
inline constexpr Long nickname = 4;
inline constexpr Long company = 16;
inline constexpr Long categories = 18;  // values separated by ";"
inline constexpr Long other = 70;  // values of fields without a row, separated by the characters "\" and "n"
inline constexpr Long picture = 80;  // path of a file
}  // namespace code

struct FieldRow {
    Long code;
    const char* key;        // name in JSON
    const char16_t* label;  // heading of a table
};

std::span<const FieldRow> fieldRows();

// The row of a code that the table holds.
std::size_t rowOf(Long code);

// The table in the form the module reads: a heading, then one row a field, with the label in column 0 and the
// code in column 4. The heading keeps row 0 free: the module takes a value that was placed there for one that
// found no row.
TextTable fieldDefinitions();

// The values of one contact, one a field of `fieldRows`, as the module hands them over: one a row of its
// table, separated by tabs. Missing values at the end are empty. The views are into `fieldValues`.
std::vector<TextView> splitValues(TextView fieldValues);

// The value itself: the module writes a tab inside a value as the characters "\" and "t"; only in a path
// these are what they seem.
Text decodedValue(Long code, TextView value);

// The single values that a "categories" or "other" value collects, without empty ones.
std::vector<Text> splitCollected(Long code, TextView value);

}  // namespace ovno2::host
