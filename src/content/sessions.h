// The content-access library session, and the connection to the phone's contacts.
//
// One connection per content kind is kept open for the phone it was opened for; the calendar and message
// connections follow the pattern of the contacts one. A check that found the connection open is trusted for a
// second. Read and write operations start with `PIMApiInit` and close what they opened; `CleanUp` closes the
// rest. The state stands in content/state.h. Results are library statuses (0 = success) unless said
// otherwise; nothing here throws.
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

// Opens the contacts connection to the phone with that serial number unless it is open; -1 when it cannot be
// called.
Long CheckContactsConnection(const Text& serial);
// Closes the contacts connection and the contacts write session on it; 0 when nothing was open.
Long CloseContactsConnection();

// The id of the phone's contacts folder, 0 when its record could not be read, -1 when the connection could
// not be opened. An empty `serial` becomes the one of the phone of that model.
Long GetContactsFolder(const Text& model, Text& serial);

// Reads the time zone's standing and daylight bias from the registry.
void refreshTimeBiases();

void forgetDateRecordSize();

}  // namespace ovno2::Content
