// A repetition that no phone can hold as entries of its own, one for each of its dates up to a day.
#pragma once

#include "host/calendar/calendar_entry.h"

namespace ovno2::host {

inline constexpr std::size_t mostSingleEntries = 1000;  // of one rule

struct SingleEntries {
    std::vector<CalendarEntry> entries;  // in order; the first keeps uid and `unplaced`
    bool isWhole = true;                 // the rule has no more dates
    std::string problem;                 // why there are none, for people; UTF-8
};

// `entry` has a wideRule. Times are those that clocks here show when the rule's own clock shows its times.
SingleEntries singleEntries(const CalendarEntry& entry, std::chrono::local_days until);

// The rule of an entry that most phones can hold, for one that cannot.
WideRule wideRuleOf(const CalendarEntry& entry);

// For people: "12 single entries up to 2009-12-31".
std::string described(const SingleEntries& singles, std::chrono::local_days until);

}  // namespace ovno2::host
