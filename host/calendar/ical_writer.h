// Entries as calendar files. What is written reads back as the same entries (ical_reader.h), apart from
// `unplaced` and from line ends, which come back as "\n".
#pragma once

#include <chrono>
#include <optional>
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

// `stamp` is the time of which the file says that the entries were written; now, unless another is given.
CalendarText writeCalendarFile(std::span<const CalendarEntry> entries, CalendarForm form,
                               std::optional<std::chrono::sys_seconds> stamp = {});

// An iCalendar file around components that were taken from others, with this computer's zone for all years.
std::string calendarFileAround(std::string_view components);
// How such files call this computer's zone.
std::string ownZoneName();

}  // namespace ovno2::host
