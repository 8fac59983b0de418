// The host's field-definition table: which values of a contact it knows, under which names it shows them, and
// in which order.
//
// The module places each value of a phone's contact in the row whose column 4 holds the value's field code.
// Rows are in the order in which people look for them; the JSON output keeps that order.
#pragma once

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "content/host_fields.h"
#include "host/driver/driver.h"

namespace ovno2::host {

// How many values of a phone a row may hold. Where the phone has more values than the table has places, the
// module puts them all into one row.
enum class Holds {
    one,      // a ";" belongs to the value
    several,  // separated by ";"
};

struct FieldRow {
    Long code;              // HostField
    std::string_view key;   // name in JSON
    const char16_t* label;  // heading of a table
    Holds holds = Holds::several;
    const char* lost = nullptr;  // what the record does not say of such a value, for people; null = nothing
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

// False for a value without a separator in it or a blank at its ends; said quickly.
inline bool mayHoldSeveral(const FieldRow& row, TextView value) {
    return value.empty() || value.front() == u' ' || value.back() == u' ' || row.code == HostField::other ||
           std::memchr(value.data(), ';', value.size() * sizeof(char16_t));
}

// Calls `visit(part)` for each of the single values that a row collects, without empty ones and blanks around
// them; with views into `value`. The module joins with a bare ";", so that one beside a blank or a line break
// belongs to the text; of categories every ";" separates.
template <class Visit>
void forEachPart(const FieldRow& row, TextView value, Visit visit) {
    if (row.holds == Holds::one) {
        visit(value);
        return;
    }
    if (!mayHoldSeveral(row, value)) {
        visit(value);
        return;
    }
    const TextView separator = row.code == HostField::other ? TextView(u"\\n") : TextView(u";");
    const auto isBlank = [&](std::size_t place) {
        return place < value.size() && value[place] <= u' ' && row.code != HostField::categories;
    };
    for (std::size_t start = 0, from = 0; start <= value.size();) {
        const std::size_t end = std::min(value.find(separator, from), value.size());
        from = end + separator.size();
        if (end < value.size() && (isBlank(end - 1) || isBlank(from))) continue;
        TextView part = value.substr(start, end - start);
        part.remove_prefix(std::min(part.find_first_not_of(u' '), part.size()));
        part.remove_suffix(part.size() - (part.find_last_not_of(u' ') + 1));
        if (!part.empty()) visit(part);
        start = from;
    }
}

}  // namespace ovno2::host
