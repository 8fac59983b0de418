// The library's own start, and what the module recorded of it.
//
// State on the thread: how often the library was started and not yet stopped, and the content-access version
// as the module's initialisation recorded it.
#pragma once

#include "library/library.h"

namespace ovno2::library {

// Starts the library under `version` in the module's name; a start that succeeds is counted.
Answer start(Word version);
Long startCount() noexcept;
// Stops the library as often as it was started.
void undoStarts() noexcept;

// The content-access library's version that was recorded last; 0 while none was. The device-management and
// media sessions choose the version that they ask for by it.
Long recordedContentVersion() noexcept;
void recordContentVersion(Long version);

}  // namespace ovno2::library
