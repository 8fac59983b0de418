// The type libraries that this module carries as resources.
#pragma once

#include "base/types.h"
#include "com/interface.h"
#include "platform/win32/com_pointer.h"

namespace ovno2::com {

using platform::win32::ComPointer;

// Their resource numbers; a path ending in "\\number" names one of them.
inline constexpr int ownLibrary = 1;     // ovNo2
inline constexpr int recordLibrary = 2;  // ovCommon

Text typeLibraryPath(int resource);

// The type with this identifier; null when it cannot be had.
ComPointer<ITypeInfo> typeInformation(int resource, const GUID& type) noexcept;

}  // namespace ovno2::com
