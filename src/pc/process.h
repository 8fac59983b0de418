// The process list, and whether a program is running.
//
// The list of the last enumeration stays on the thread (process_state.h); it is rebuilt when it is empty or
// when the caller asks. The runtime discovery and the shell routines call it. Nothing here throws.
#pragma once

#include <vector>

#include "base/types.h"

namespace ovno2::Process {

struct Record {
    Text path;          // full path of the executable, empty when the process could not be opened
    Text name;          // the part behind the last "\", or the path when the list has full names
    Long id = 0;        // 0 = an unused record
    Long unused = 0;    // no caller reads it
    Long handle = 0;    // under which the process was opened while the list was built; no longer valid
    Long threadId = 0;  // one record of a snapshot list carries a thread of its process
};

// Rebuilds `list`: one record a process in the platform's order, unused records behind them. Takes the
// process-status method on the NT family and the snapshot method otherwise or when asked; `fullNames` puts
// the path into the name. False when the processes could not be listed; the records read until then remain.
bool GetProcList(std::vector<Record>& list, bool snapshot, bool fullNames);

// The first record whose executable name equals `name` (in lower case) or, with an `id` other than 0, whose
// process id is `id`. A record with id 0 means that there is none.
Record CheckIfRunning(TextView name, Long id, bool refresh);

}  // namespace ovno2::Process
