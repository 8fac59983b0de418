// A host's calendar grid as a late-bound object.
//
// Hosts written in C++ hand it to WriteCalendarItem, which reads its property "textmatrix"(row, column).
#pragma once

#include <functional>

#include "base/failure.h"
#include "base/values.h"
#include "platform/automation.h"

namespace ovno2 {

class GridObject : public platform::AutomationObject {
  public:
    using CellText = std::function<Text(Long row, Long column)>;
    // `cell` gives a cell's text; what it throws becomes the failure of the step.
    explicit GridObject(CellText cell) : cell_(std::move(cell)) {}

    platform::Variant get(TextView property, std::span<const platform::Variant> arguments) override {
        if (!equalsIgnoringCase(property, u"textmatrix")) throw RuntimeFailure(memberNotSupported);
        if (arguments.size() != 2) throw RuntimeFailure(invalidProcedureCall);
        const Long* const row = std::get_if<Long>(&arguments[0]);
        const Long* const column = std::get_if<Long>(&arguments[1]);
        if (!row || !column) throw RuntimeFailure(typeMismatch);
        return cell_(*row, *column);
    }
    void put(TextView, const platform::Variant&, std::span<const platform::Variant>) override {
        throw RuntimeFailure(memberNotSupported);
    }
    platform::Variant call(TextView, std::span<const platform::Variant>) override {
        throw RuntimeFailure(memberNotSupported);
    }

  private:
    CellText cell_;
};

}  // namespace ovno2
