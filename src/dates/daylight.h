// The daylight-saving test: whether a date lies in daylight time by the rule in force now, and by how much.
//
// Only calendar days count: the day on which daylight time begins is wholly daylight time, the day on which
// it ends wholly standard time. Keeps the time-zone record on the thread; it is refreshed on every call
// unless the platform gave a rule for one fixed year.
#pragma once

#include "dates/date_value.h"

namespace ovno2::ISODate {

// Hours to shift on that date: 0 in standard time; else the zone's daylight bias in whole hours, at least 1.
// In zones whose daylight time spans the turn of the year it is always 1. Never fails: a date out of range
// gives 0.
Long DaylightOffsetHours(DateValue date) noexcept;

// The day in `year` on which a transition rule falls; date zero when the rule names no occurrence (1 to 5).
// Throws RuntimeFailure 5 for a year out of range.
DateValue TransitionDate(const platform::SystemTime& rule, Long year);

}  // namespace ovno2::ISODate
