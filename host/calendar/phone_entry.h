// A phone's entry as a calendar entry, and an entry as the cells that the driver writes.
#pragma once

#include <optional>

#include "host/calendar/calendar_entry.h"
#include "host/driver/driver.h"

namespace ovno2::host {

// None for a block that is none of a calendar. Of a note the end is the first day after it, but on older
// platforms one of two days looks like one of one: the driver does not tell them apart. A to-do that older
// phones could only keep with a date far away has none.
std::optional<CalendarEntry> entryOf(const CalendarItem& item, const ListedPhone& phone);

// Everything of an entry, for a phone that has not got it. An entry of another kind than the phone's own
// becomes a meeting there.
std::vector<CalendarCell> cellsOf(const CalendarEntry& entry, const ListedPhone& phone);

// What is to be written so that an entry of the phone becomes another: cells of the fields that differ; all
// of them when it moves to another calendar. Without a difference there is no cell.
std::vector<CalendarCell> changedCells(const CalendarEntry& before, const CalendarEntry& after,
                                       const ListedPhone& phone);

// The entry as it is after it went to a phone and back, as far as that is known beforehand: what a phone
// cannot keep of it is gone.
CalendarEntry asPhonesKeepIt(CalendarEntry entry);

// What differs between an entry and what a phone has of it: "start", "rule" and so on; a rule says the same
// when its dates are the same.
std::vector<std::string> differences(const CalendarEntry& wanted, const CalendarEntry& there);

// "meeting", "to-do" and so on.
const char* nameOf(CalendarEntry::Kind kind);
std::optional<CalendarEntry::Kind> kindCalled(std::string_view name);

// Whether the days of that kind have no times: birthdays and notes.
bool hasWholeDays(CalendarEntry::Kind kind);

}  // namespace ovno2::host
