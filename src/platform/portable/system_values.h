// Registry values of locale and time zone that the system answers where the machine's .reg file has none.
//
// The registry asks here behind its own file, on machines that answer from the system (the native one;
// machines of tests only when they say so). Nothing here is ever written to the file.
#pragma once

#include <optional>

#include "platform/registry.h"

namespace ovno2::platform::portable {

// `key` is the full path, such as "HKEY_CURRENT_USER\Control Panel\International"; case does not matter.
bool systemHasRegistryKey(TextView key);
std::optional<RegistryValue> systemRegistryValue(TextView key, TextView name);

}  // namespace ovno2::platform::portable
