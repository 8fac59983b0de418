// Writing the calendar happens in a session: it begins with the first entry written or deleted, collects
// changes in one operation of the library's, and ends with a commit or without one.
//
// State on the thread: the operation (on the calendar connection, which takes it along when it closes) and
// the session's identifiers, those of every entry of the phone. Nothing here throws.
#pragma once

#include "base/host_array.h"

namespace ovno2::Calendar {

// Begins a session unless one has begun: 0; -1 library not started, -2 no such phone, -3 not connected,
// twice, -4 no operation, -5 entries not listed, after a second try.
Long beginWriting(const Text& model, const Text& phoneId);

// Ends the session; the connection closes. With `writeit` everything written and deleted is committed, and
// `tempids` and `uids` get the temporary id and the UID of each entry that is new, and one element more, "0"
// and an empty text. The library's status of the commit; 0 without one.
Long CalendarEndWriteSession(TextArray& tempids, TextArray& uids, bool writeit);

// Deletes the entry with that UID, or that number of fewer than 8 digits, when the session is committed: the
// library's status, 0 also when there is no such entry; what `beginWriting` gives when no session can begin.
Long DeleteCalItem(const Text& model, const Text& phoneId, const Text& Id);

}  // namespace ovno2::Calendar
