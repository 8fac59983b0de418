// The module's entries in the registry: class, program name, type libraries, interface.
//
// They stand for the whole machine where that is allowed, else for the user. Removing takes away exactly what
// this file has registered: another copy's registration, and what others have put beside the entries, stays.
#pragma once

#include "com/interface.h"

namespace ovno2::com {

// All of the entries or, after a failure, none; S_OK or SELFREG_E_CLASS.
HRESULT registerModule() noexcept;
HRESULT registerModuleForUser() noexcept;
// Also S_OK when there is nothing to remove.
HRESULT unregisterModule() noexcept;

}  // namespace ovno2::com
