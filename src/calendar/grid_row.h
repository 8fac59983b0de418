// One row of the host's grid: cells by their field codes.
//
// The grid is a late-bound object whose property "textmatrix"(row, column) gives a cell's text. Column c + 1
// shows the field whose code stands in row c, column 1 of the host's field table.
#pragma once

#include <optional>
#include <vector>

#include "base/host_array.h"
#include "platform/automation.h"

namespace ovno2::Calendar {

namespace field {
inline constexpr Long type = 1;
inline constexpr Long description = 3;  // of a birthday: the birth year
inline constexpr Long start = 4;
inline constexpr Long end = 5;
inline constexpr Long status = 6;
inline constexpr Long due = 7;
inline constexpr Long rule = 8;
inline constexpr Long alarm = 9;
inline constexpr Long location = 11;
inline constexpr Long summary = 12;
inline constexpr Long priority = 13;
inline constexpr Long calendar = 15;
}  // namespace field

class GridRow {
  public:
    // Reads the cells of the fields above. One that cannot be read counts as a column that is not there.
    // Throws RuntimeFailure 7 only.
    GridRow(const platform::ObjectPointer& grid, Long row, const TextTable& fields);

    // The first cell of a field; none when the grid has no such column.
    const Text* cell(Long code) const;
    // The first start or due date that is not empty.
    const Text& startText() const { return startText_; }

  private:
    struct Cell {
        Long code;
        Text text;
    };
    std::vector<Cell> cells_;
    Text startText_;
};

}  // namespace ovno2::Calendar
