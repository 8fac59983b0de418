// IDispatch for script hosts.
//
// Arguments may be named, left out where they are optional, and come by value, by reference or behind a
// by-reference VARIANT. Arrays of texts and of numbers may also be arrays of VARIANT or a script's own array
// objects; what the member made of them goes back in the same form (com/script_arrays.h). Standard dispatch
// errors tell of wrong counts, names and types; then the member has not been called.
#pragma once

#include "com/interface.h"

namespace ovno2::com {

// As IDispatch::GetIDsOfNames: the member's id, then the positions of its parameters.
HRESULT idsOfNames(LPOLESTR* names, UINT count, DISPID* ids) noexcept;

// As IDispatch::Invoke on `object`.
HRESULT invokeLateBound(_covNo2& object, DISPID member, LCID locale, WORD kind, DISPPARAMS* parameters,
                        VARIANT* result, UINT* wrongArgument) noexcept;

}  // namespace ovno2::com
