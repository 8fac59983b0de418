// The content-access library session.
//
// Read and write operations start with `PIMApiInit`, open the connection of their area (connection.h) and
// close what they opened; `CleanUp` closes the rest. The state stands in content/state.h. Results are library
// statuses (0 = success) unless said otherwise; nothing here throws.
#pragma once

#include "base/types.h"

namespace ovno2::Content {

// Starts the library session afresh. Negative when the library cannot be started, -1 when it cannot even be
// called.
Long PIMApiInit();
// Ends the library session. Both forget which phone was identified last.
Long PIMApiTerminate();

// The content-access library's version, asked once per thread without a session; 0 while it cannot tell.
Single GetApiVersion();

// Reads the time zone's standing and daylight bias from the registry.
void refreshTimeBiases();

void forgetDateRecordSize();

}  // namespace ovno2::Content
