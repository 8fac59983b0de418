// A host's progress control as a late-bound object.
//
// Hosts written in C++ hand it to the read operations; those read its property "value", add a step and put
// the sum back.
#pragma once

#include <functional>

#include "base/failure.h"
#include "base/values.h"
#include "platform/automation.h"

namespace ovno2 {

class ProgressObject : public platform::AutomationObject {
  public:
    // `advanced` hears each new value; what it throws becomes the failure of the step.
    explicit ProgressObject(std::function<void(Long)> advanced) : advanced_(std::move(advanced)) {}

    Long value() const { return value_; }

    platform::Variant get(TextView property, std::span<const platform::Variant>) override {
        requireValue(property);
        return value_;
    }
    void put(TextView property, const platform::Variant& value, std::span<const platform::Variant>) override {
        requireValue(property);
        if (const Long* const number = std::get_if<Long>(&value))
            value_ = *number;
        else if (const double* const fraction = std::get_if<double>(&value))
            value_ = roundHalfToEven(*fraction);
        else
            throw RuntimeFailure(typeMismatch);
        if (advanced_) advanced_(value_);
    }
    platform::Variant call(TextView, std::span<const platform::Variant>) override {
        throw RuntimeFailure(memberNotSupported);
    }

  private:
    static void requireValue(TextView property) {
        if (!equalsIgnoringCase(property, u"value")) throw RuntimeFailure(memberNotSupported);
    }

    std::function<void(Long)> advanced_;
    Long value_ = 0;
};

}  // namespace ovno2
