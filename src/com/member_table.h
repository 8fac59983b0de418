// The members of _covNo2 for late binding, as the module's own type library describes them.
//
// Read once for the process; keeps no COM object.
#pragma once

#include <vector>

#include "base/types.h"
#include "com/interface.h"

namespace ovno2::com {

enum class ParameterKind : std::uint8_t { number, boolean, text, object, numbers, texts, record, records };

struct Parameter {
    Text name;
    ParameterKind kind = ParameterKind::number;
    bool byReference = false;
    bool optional = false;
    Long defaultNumber = 0;  // for numbers and booleans
    Text defaultText;
};

struct Member {
    Text name;
    DISPID id = 0;
    WORD invokeKind = 0;        // DISPATCH_METHOD or DISPATCH_PROPERTYPUT
    std::size_t slot = 0;       // counted from the first slot of IUnknown
    VARTYPE result = VT_EMPTY;  // what the last parameter gives back; VT_EMPTY = nothing
    std::vector<Parameter> parameters;
};

class MemberTable {
  public:
    // Null when there is no such member; names are compared without regard to case.
    const Member* find(TextView name) const;
    const Member* find(DISPID id) const;

  private:
    friend const MemberTable& memberTable();
    MemberTable();
    std::vector<Member> members_;
};

// Throws std::bad_alloc, and RuntimeFailure when the type library cannot be read; then the next call tries
// again.
const MemberTable& memberTable();

}  // namespace ovno2::com
