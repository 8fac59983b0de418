// Entries as calendar files. What is written reads back as the same entries (ical_reader.h), apart from
// `unplaced` and from line ends, which come back as "\n".
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/calendar/calendar_entry.h"

namespace ovno2::host {

enum class CalendarForm {
    iCalendar,  // 2.0, RFC 5545: times by this computer's zone, which the file describes
    vCalendar,  // 1.0, what old phones take: times as clocks here show them
};

struct CalendarText {
    std::string text;  // UTF-8, lines ending in CR LF
    // What of which entry could not be written, for people, by its place in `entries`: "RRULE: ...".
    std::vector<std::pair<std::size_t, std::string>> lost;
};

CalendarText writeCalendarFile(std::span<const CalendarEntry> entries, CalendarForm form);

}  // namespace ovno2::host
