// The device-management session: opened on demand by the device list and the Bluetooth routines, closed by
// `CleanUp` and the public `DMApiTerminate_`. Also the one-time repair of a library that Windows no longer
// knows.
//
// State on the thread: the session's handle, whether the library had to be started the old way, whether the
// repair has been tried; and `CurrentPhone`, the phone last identified, which the content areas share.
#pragma once

#include "base/failure.h"
#include "library/library_records.h"
#include "platform/thread_state.h"

namespace ovno2 {

// The phone last identified. `serial` is the phone that the content folder caches were last filled for,
// written by those caches; `model` is the model text that the serial look-up last matched.
struct CurrentPhone {
    Text serial;
    Text model;
    void clear() {
        serial.clear();
        model.clear();
    }
};

CurrentPhone& currentPhone();

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

// Re-registers the library through the host's helper program: at most once per thread, and once per user.
void NokReg();

}  // namespace Session

}  // namespace ovno2
