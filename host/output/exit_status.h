// How the host's programs end.
#pragma once

namespace ovno2::host {

inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrongUsage = 2;

}  // namespace ovno2::host
