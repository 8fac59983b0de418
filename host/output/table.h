// A table of texts in aligned columns, for people.
//
// Columns are as wide as their widest cell. For a terminal the table is made to fit: wide columns are cut,
// and columns that find no room are left out, from the right. Contents are cleaned (see display_width.h) when
// they are added.
#pragma once

#include <string>
#include <vector>

#include "host/output/text.h"

namespace ovno2::host {

class Table {
  public:
    explicit Table(std::vector<Text> headings);

    // One cell a column; what is missing is blank.
    void addRow(std::vector<Text> cells);

    // The table as UTF-8, a heading line first, one line a row. `width` is the number of cells of a terminal
    // line, 0 = no limit. `leftOut`, when given, gets the number of columns that found no room.
    std::string render(std::size_t width, std::size_t* leftOut = nullptr) const;

  private:
    std::size_t typicalWidth(std::size_t column) const;
    std::vector<std::size_t> columnWidths(std::size_t width) const;

    std::vector<Text> headings_;
    std::vector<std::vector<Text>> rows_;
    std::vector<std::size_t> natural_;  // width of each column's widest cell
};

}  // namespace ovno2::host
