// Writing and deleting messages and notes in a session: it begins with the first item written or deleted,
// gathers changes in one operation of the library's, and ends with a commit or without one.
//
// State on the thread: the session (on the connection, which takes it along when it closes) and its items
// (data_state.h). An item crosses the boundary as one text `Msg` of fields divided by tabs:
//   0  kind: low four bits 1 or 2 = message, 4 = note; other kinds are never written
//   1  delete of a note: its UID
//   3  message: target folder id; empty or 0 = the outbox
//   5  UID of an existing item, or its temporary id; gets the temporary id of a new one
//   6  message: recipients, divided by "," or ";"
//   7  text
// Fields that are missing count as empty. Nothing here throws.
#pragma once

#include "base/host_array.h"

namespace ovno2::Data {

// 0 written; the library's status; -1 also when there is no memory; else what no session could begin with: -1
// library not started, -2 no such phone, -3 store not opened, -4 no operation, -5 items not listed. A message
// is always a new item.
Long WriteDataItem(const Text& model, const Text& PhoneId, Text& Msg);

// 0 deleted; -1 no such item; the library's status, or as above.
Long DeleteDataItem(const Text& model, const Text& PhoneId, const Text& Msg);

// Ends the session. With `commit` everything written and deleted is committed, `tempids` and `uids` get the
// temporary id and UID of each result and one element more ("0", empty). The library's status of the last
// step taken. A failed commit leaves the session open.
Long DataEndWriteSession(TextArray& tempids, TextArray& uids, bool commit);

}  // namespace ovno2::Data
