// A row of the calendar grid as the module takes it: a table of field codes, and the texts of the columns.
#pragma once

#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

// Row c, column 1 holds the field of grid column c + 1.
inline TextTable fieldTable(const std::vector<CalendarCell>& cells) {
    std::vector<Text> codes;
    codes.reserve(cells.size());
    for (const CalendarCell& cell : cells)
        codes.push_back(decimalText(static_cast<Long>(cell.field)));
    const std::size_t count = codes.size();
    return TextTable(std::move(codes), count, /*columns=*/1, /*firstColumn=*/1);
}

inline Text cellText(const std::vector<CalendarCell>& cells, Long column) {
    const auto place = static_cast<std::size_t>(column) - 1;
    return place < cells.size() ? cells[place].text : Text();
}

}  // namespace ovno2::host
