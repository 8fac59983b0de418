#include "host/output/table.h"

#include <algorithm>
#include <numeric>

#include "host/output/display_width.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

constexpr std::size_t gap = 2;            // blanks between columns
constexpr std::size_t widestCut = 28;     // a column is not cut below this ...
constexpr std::size_t narrowestLast = 8;  // ... but the last one that is shown, down to this

}  // namespace

Table::Table(std::vector<Text> headings) : headings_(std::move(headings)) {
    natural_.reserve(headings_.size());
    for (const Text& heading : headings_)
        natural_.push_back(displayWidth(heading));
}

void Table::addRow(std::vector<Text> cells) {
    cells.resize(headings_.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
        cells[i] = singleLine(cells[i]);
        natural_[i] = std::max(natural_[i], displayWidth(cells[i]));
    }
    rows_.push_back(std::move(cells));
}

// The width that holds nearly all cells of a column, so that a few long ones do not push other columns out.
std::size_t Table::typicalWidth(std::size_t column) const {
    std::vector<std::size_t> widths;
    for (const std::vector<Text>& row : rows_)
        if (!row[column].empty()) widths.push_back(displayWidth(row[column]));
    const std::size_t heading = displayWidth(headings_[column]);
    if (widths.empty()) return heading;
    const auto nearlyAll = widths.begin() + static_cast<std::ptrdiff_t>(((widths.size() - 1) * 19 + 19) / 20);
    std::nth_element(widths.begin(), nearlyAll, widths.end());
    return std::max(heading, *nearlyAll);
}

// The widths of the columns that are shown.
std::vector<std::size_t> Table::columnWidths(std::size_t width) const {
    const std::size_t gaps = natural_.empty() ? 0 : gap * (natural_.size() - 1);
    if (width == 0 || std::accumulate(natural_.begin(), natural_.end(), gaps) <= width) return natural_;
    std::vector<std::size_t> widths;
    std::size_t used = 0;
    for (std::size_t column = 0; column < natural_.size(); ++column) {
        const std::size_t start = used + (widths.empty() ? 0 : gap);
        const std::size_t wanted = std::min(typicalWidth(column), widestCut);
        if (start + std::min(wanted, narrowestLast) > width && !widths.empty()) break;
        widths.push_back(std::min(wanted, width - std::min(start, width)));
        used = start + widths.back();
        if (widths.back() < wanted) break;
    }
    return widths;
}

std::string Table::render(std::size_t width, std::size_t* leftOut) const {
    const std::vector<std::size_t> widths = columnWidths(width);
    if (leftOut) *leftOut = headings_.size() - widths.size();
    Text lines;
    const auto addLine = [&](const std::vector<Text>& cells) {
        std::size_t blanks = 0;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (!cells[i].empty()) {
                const Text cell = cutToWidth(cells[i], widths[i]);
                lines.append(blanks, u' ');
                lines += cell;
                blanks = widths[i] - displayWidth(cell);
            } else {
                blanks += widths[i];
            }
            blanks += gap;
        }
        lines += u'\n';
    };
    addLine(headings_);
    for (const std::vector<Text>& row : rows_)
        addLine(row);
    return toUtf8(lines);
}

}  // namespace ovno2::host
