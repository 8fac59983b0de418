#include "calendar/grid_row.h"

#include <algorithm>

#include "core/attempt.h"

namespace ovno2::Calendar {

namespace {

constexpr Long codeColumn = 1;

bool isField(Long code) {
    using namespace field;
    static constexpr Long codes[] = {type, description, start,    end,     status,   due,
                                     rule, alarm,       location, summary, priority, calendar};
    return std::ranges::find(codes, code) != std::end(codes);
}

// A cell's value as the host sees it.
struct AsText {
    Text operator()(std::monostate) const { return {}; }
    Text operator()(Long number) const { return decimalText(number); }
    Text operator()(double number) const { return decimalText(number); }
    Text operator()(bool value) const { return value ? u"True" : u"False"; }
    Text operator()(const Text& text) const { return text; }
    Text operator()(const platform::ObjectPointer&) const { throw RuntimeFailure(typeMismatch); }
};

// Runs a step whose failure costs one column, unless memory is short: then the row would lose what it has.
template <class Step>
bool tryColumn(Step&& step) {
    const FailureNumber failed = attempt(step);
    if (failed == outOfMemory) throw RuntimeFailure(outOfMemory);
    return failed == noFailure;
}

}  // namespace

GridRow::GridRow(const platform::ObjectPointer& grid, Long row, const TextTable& fields) {
    for (std::size_t c = 0; c < fields.rows(); ++c) {
        Cell cell{};
        const bool read = tryColumn([&] {
            cell.code = numericLong(fields.at(c, codeColumn));
            if (!isField(cell.code)) return;
            if (!grid) throw RuntimeFailure(objectNotSet);
            const platform::Variant place[] = {row, static_cast<Long>(c) + 1};
            cell.text = std::visit(AsText(), grid->get(u"textmatrix", place));
        });
        if (!read || !isField(cell.code)) continue;
        if (startText_.empty() && (cell.code == field::start || cell.code == field::due))
            startText_ = cell.text;
        cells_.push_back(std::move(cell));
    }
}

const Text* GridRow::cell(Long code) const {
    const auto found = std::ranges::find(cells_, code, &Cell::code);
    return found == cells_.end() ? nullptr : &found->text;
}

}  // namespace ovno2::Calendar
