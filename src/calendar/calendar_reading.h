// Reading a phone's calendars into the host's records. No state of its own; nothing here throws.
#pragma once

#include "base/host_array.h"
#include "calendar/cal_item.h"
#include "content/folders.h"
#include "platform/automation.h"

namespace ovno2::Calendar {

// Reads every entry of every calendar of the phone named by `model` or `PhoneId` into `CalItems`, anew from
// index 0. `Progressbar` may be null.
//
// The result is the highest index of `CalItems`, 0 also when there is none, or
//   -1          the content-access library could not be started
//   -2          no such phone, or an operation could not begin
//   -3          the calendar connection could not be opened; the status itself when that is 0x80100023
//   -4          the calendars could not be listed
//   any other   the library status with which the identifiers of a calendar were refused, after as many as
//               four attempts
// An entry that cannot be read is left out.
Long NokiaGetCalendarItems(const Text& model, const Text& PhoneId, HostArray<CalItem>& CalItems,
                           const platform::ObjectPointer& Progressbar);

// Reads the entries of the first 100 of `folders` over the open connection, an operation each. Results as
// above: a library status, -1 for a positive one, -2, or the highest index.
Long GetCalendarItems(const std::vector<Content::FolderEntry>& folders, HostArray<CalItem>& CalItems,
                      const platform::ObjectPointer& Progressbar);

}  // namespace ovno2::Calendar
