// What the reader and the writer of calendar files agree on: kinds, priorities, durations, and the properties
// beside the standards.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "host/calendar/calendar_entry.h"

namespace ovno2::host {

inline constexpr std::string_view kindProperty = "X-OVPHONE-KIND";
inline constexpr std::string_view calendarProperty = "X-OVPHONE-CALENDAR";
inline constexpr std::string_view birthYearProperty = "X-OVPHONE-BIRTH-YEAR";
inline constexpr std::string_view noUid = "@none.ovphone";  // at the end of a uid that the entry has not got

// "MEETING", "CALL" ... in X-OVPHONE-KIND and vCalendar's TYPE, and what other programs call them in
// CATEGORIES. Upper case.
std::optional<CalendarEntry::Kind> fileKindNamed(std::string_view name);
std::string_view kindName(CalendarEntry::Kind kind);
std::string_view categoryOf(CalendarEntry::Kind kind);  // empty = none

// "-P1DT12H", "PT15M", "P2W"; the sign is the duration's.
std::optional<std::chrono::seconds> readDuration(std::string_view text);
std::string durationText(std::chrono::seconds duration);

}  // namespace ovno2::host
