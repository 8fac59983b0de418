// The host's field-definition table: which values of a contact it knows, under which names it shows them, and
// in which order.
//
// The module places each value of a phone's contact in the row whose column 4 holds the value's field code.
// Rows are in the order in which people look for them; the JSON output keeps that order.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>

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
    std::string_view key;   // name in JSON
    const char16_t* label;  // heading of a table
};

std::span<const FieldRow> fieldRows();

// The row of a code that the table holds.
std::size_t rowOf(Long code);

// The table in the form the module reads: a heading, then one row a field, with the label in column 0 and the
// code in column 4. The heading keeps row 0 free: the module takes a value that was placed there for one that
// found no row.
TextTable fieldDefinitions();

// Goes through the values of one contact, one a field of `fieldRows`, as the module hands them over: one a
// row of its table, separated by tabs. Calls `visit(row, value)` for each that is not empty, in the rows'
// order, with views into `fieldValues`; values beyond the table are left out.
template <class Visit>
void forEachValue(TextView fieldValues, Visit visit) {
    const std::size_t count = fieldRows().size();
    const char16_t* const end = fieldValues.data() + fieldValues.size();
    // What stands before the first tab belongs to the heading.
    const char16_t* separator = std::find(fieldValues.data(), end, u'\t');
    for (std::size_t row = 0; row < count && separator != end; ++row) {
        const char16_t* const start = separator + 1;
        separator = start;
        while (separator != end && *separator != u'\t')
            ++separator;
        if (separator != start) visit(row, TextView(start, separator));
    }
}

// The value itself: the module writes a tab inside a value as the characters "\" and "t". In a path these are
// what they seem.
Text decodedValue(TextView value);

// The single values that a "categories" or "other" value collects, without empty ones and blanks around them;
// views into `value`.
std::vector<TextView> splitCollected(Long code, TextView value);

}  // namespace ovno2::host
