// Time zones: the one that a registry file states, and the system's own.
#pragma once

#include <optional>

#include "platform/locale.h"
#include "platform/portable/registry_file.h"

namespace ovno2::platform::portable {

inline constexpr TextView timeZoneKey =
    u"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation";

// The zone below that key; nothing when it has no bias.
std::optional<TimeZoneInformation> timeZoneIn(const RegistryFile& file);
// Minutes to add to local time for UTC, as the file says they are in force now.
std::optional<Long> activeBiasIn(const RegistryFile& file);

// The system's zone with the rule of this year: of a zone that changes its offset twice in it, the two days.
// Other zones have no rule.
TimeZoneInformation systemTimeZone();
Long systemActiveBias();

// A transition as the registry stores it, 16 bytes: year, month, occurrence, hour, minute, second,
// millisecond and weekday as 16-bit words. Reading also takes the order of `SystemTime`, which is known by
// its zero where the occurrence would stand (a Sunday). Other sizes give an empty rule.
SystemTime transitionFromBytes(const std::string& bytes);
std::string bytesOfTransition(const SystemTime& rule);

}  // namespace ovno2::platform::portable
