// The device-management session: opened on demand by the device list and the Bluetooth routines, closed by
// `CleanUp` and the public `DMApiTerminate_`. Also the one-time repair of a library that Windows no longer
// knows.
//
// State on the thread: the session's handle, whether the library had to be started the old way, and whether
// the repair has been tried.
#pragma once

#include "base/failure.h"
#include "library/library.h"
#include "platform/thread_state.h"

namespace ovno2 {

namespace Session {

// What opening came to. `failure` is the run-time failure that ended the start of the library (53 = library
// file not found), 0 when its calls could be made; it stands here because a log line in between reports the
// pending one away.
struct OpenResult {
    Long result = -1;  // 0 open, -1 the library could not be started, -2 started but no session
    FailureNumber failure = noFailure;
};

OpenResult DMApiInit();
Long DMApiTerminate();  // always 0
bool isOpen();
library::Handle handle();  // 0 = closed

// Starts one of the library's services (DMAPI, MCAPI or CAAPI). When the library file is missing, the library
// is registered anew and asked once more.
library::Answer startService(
    const library::Function<library::Status(library::Word, library::Word)>& initialize,
    library::Word version);

// Re-registers the library through the host's helper program: at most once per thread, and once per user.
void NokReg();

}  // namespace Session

}  // namespace ovno2
