#include "content/progress.h"

#include <limits>

#include "core/attempt.h"
#include "core/current_platform.h"

namespace ovno2::Content {

namespace {

using platform::Variant;

Variant wholeSum(std::int64_t value, Long by) {
    const std::int64_t sum = value + by;
    if (sum > std::numeric_limits<Long>::max()) throw RuntimeFailure(overflowFailure);
    return static_cast<Long>(sum);
}

// The sum as the run-time adds a number to a value of any type.
struct Sum {
    Long by;
    Variant operator()(std::monostate) const { return by; }
    Variant operator()(Long value) const { return wholeSum(value, by); }
    Variant operator()(double value) const { return value + by; }
    Variant operator()(bool value) const { return wholeSum(value ? -1 : 0, by); }
    Variant operator()(const Text& value) const { return numericValue(value) + by; }
    Variant operator()(const platform::ObjectPointer&) const { throw RuntimeFailure(typeMismatch); }
};

}  // namespace

void Progress::advance(Long by) const {
    if (!control_) {
        raisePending(objectNotSet);  // a host without a control has one of these per contact
        return;
    }
    attempt([&] { control_->put(u"value", std::visit(Sum{by}, control_->get(u"value"))); });
}

}  // namespace ovno2::Content
