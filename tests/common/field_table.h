// A host's field-definition table.
#pragma once

#include <vector>

#include "base/host_array.h"
#include "base/values.h"

namespace ovno2 {

// One row for each code, in column 4; the other columns are the host's own.
inline TextTable tableOf(const std::vector<Long>& codes, Long firstColumn = 0) {
    constexpr Long columns = 6;
    std::vector<Text> cells;
    for (const Long code : codes)
        for (Long column = firstColumn; column < firstColumn + columns; ++column)
            cells.push_back(column == 4 ? decimalText(code) : u"label");
    return TextTable(cells, codes.size(), columns, firstColumn);
}

}  // namespace ovno2
