// Late-bound objects: those the module creates by name, and those the host hands in.
#pragma once

#include <memory>
#include <span>
#include <variant>
#include <vector>

#include "base/failure.h"
#include "base/types.h"

namespace ovno2::platform {

class AutomationObject;
using ObjectPointer = std::shared_ptr<AutomationObject>;
// What crosses a late-bound call; monostate is "empty", a null ObjectPointer is "nothing".
using Variant = std::variant<std::monostate, Long, double, bool, Text, ObjectPointer>;

// Members throw RuntimeFailure: 438 unknown member, 13 a value of the wrong type, 91 no object, or the
// object's own failure number.
class AutomationObject {
  public:
    virtual ~AutomationObject() = default;
    virtual Variant get(TextView property, std::span<const Variant> arguments = {}) = 0;
    virtual void put(TextView property, const Variant& value, std::span<const Variant> arguments = {}) = 0;
    virtual Variant call(TextView method, std::span<const Variant> arguments = {}) = 0;
    // The elements of a collection, in its order.
    virtual std::vector<Variant> elements() { throw RuntimeFailure(memberNotSupported); }
};

class Automation {
  public:
    virtual ~Automation() = default;
    virtual ObjectPointer create(TextView name) = 0;  // null when no such object can be created
};

}  // namespace ovno2::platform
