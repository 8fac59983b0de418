// The calendars of a phone: listed, made, renamed and deleted. The phone shows them as folders below a root.
//
// The list read last is kept (calendar_state.h) for the phone last identified; what changes the calendars
// drops it. The connection stays open behind every call. Nothing here throws.
#pragma once

#include "base/host_array.h"
#include "content/folders.h"

namespace ovno2::Calendar {

// The folders of the phone with that serial number, or of that model when it is empty; entry 0 is the root.
// `list` keeps what it holds when they cannot be read. Answers from what was read last while the phone last
// identified is the same.
void GetCalendarFolder(const Text& model, Text serial, std::vector<Content::FolderEntry>& list);

// All four: 0; -1 library not started, -2 no such phone, -3 not connected, 0x80100023 when the phone said so
// twice.

// The names and the ids, as decimal text, of the folders; element 0 is the root. A leading "Nokia\" is taken
// off `model`.
Long GetCalendarFolders(Text& model, const Text& PhoneId, TextArray& CalNames, TextArray& CalIds);

// "/" and ":" in a name become blanks, and blanks at its ends are dropped. Beside the results above: -1 also
// when the root cannot be read or has no calendar to rename or delete, -7 no memory for the name, -8 no such
// calendar, else the library's status.
Long CreateCalender(const Text& model, const Text& PhoneId, const Text& NewName);
Long RenameCalender(const Text& model, const Text& PhoneId, const Text& oldname, const Text& NewName);
Long DeleteCalender(const Text& model, const Text& PhoneId, const Text& Name);

}  // namespace ovno2::Calendar
