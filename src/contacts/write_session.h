// The contacts write session: it begins with the first contact written or deleted, gathers changes in one
// operation of the library's, and ends with a commit or without one.
//
// State on the thread: the operation (on the contacts connection, which takes it along when it closes) and
// the session's identifiers. A failed commit leaves the session open until the connection is closed. Nothing
// here throws.
#pragma once

#include "base/host_array.h"

namespace ovno2::Contacts {

bool isWriting();

// Begins a session for the phone of that model: 0; -1 library not started, -2 no such phone, -3 not
// connected, -4 no operation, -5 identifiers not listed, the last two after a second try. `serial` becomes
// the phone's serial number.
Long ContactsInitWriteSession(const Text& model, Text& serial);

// Ends the session. With `writeit` everything written and deleted is committed, and for each contact that is
// new `tempids` gets the temporary id and `uids` the UID; without, or where nothing is new, both keep their
// elements. The library's status of the last step taken, 0 when all went well.
Long ContactsEndWriteSession(TextArray& tempids, TextArray& uids, bool writeit);

// Position, ";" and UID of every contact the phone listed when the session began; no elements without one.
void GetAllUids(TextArray& uids);

// Deletes the contact with that UID when the session is committed: the library's status; -1 when the phone
// has no such contact; what `ContactsInitWriteSession` gives when no session can begin.
Long DeleteContact(const Text& model, Text& serial, const Text& uid);

}  // namespace ovno2::Contacts
