// Connection media: which of them the connectivity library has switched on, and switching them.
//
// State on the thread: the media handle last opened. It keeps its value after it was closed; while it is kept
// the media API counts as started, and `MediaApiTerminate` forgets it. `GetConnections`, `Connect` and the
// Bluetooth routines call in here.
#pragma once

#include "base/types.h"

namespace ovno2::MediaControl {

inline constexpr Long libraryNotFound = -9;

Long MediaApiInit();       // 0 started, -9 library file not found, else the library's status
Long MediaApiTerminate();  // the library's status

// The active media as a bit set in the library's numbering; 0 when media cannot be listed, -9 library file
// not found, -1 media API not started.
Long MediaGetConnections();

// Switches one or two media (`tMedia` values, -1 = none) on, or off with `disconnect`. 0 also when nothing
// matched, -9 library file not found, -1 media API not started.
Long MediaConnect(Long medium, Long secondMedium, bool disconnect);

}  // namespace ovno2::MediaControl
