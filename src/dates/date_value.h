// Date values: days since 30 December 1899, the time of day as fraction, and their arithmetic.
//
// Two representations with one bridge: a date is either a `DateValue` (see platform/types.h) or fields. Years
// run from 100 to 9999. Before date zero the fraction still counts forwards from midnight: -1.25 is 29
// December 1899, 06:00. Values are exact to the second; what lies between is rounded. No state; every part of
// the calendar and the content access calls in here.
//
// A date outside the years, or an unknown interval, throws RuntimeFailure 5; a number that is too big
// throws 6.
#pragma once

#include <cstdint>

#include "base/types.h"
#include "platform/locale.h"

namespace ovno2 {

inline constexpr DateValue dateZero = 0;
inline constexpr Long minimumYear = 100;
inline constexpr Long maximumYear = 9999;

// month 1..12, day 1..31, hour 0..23; date zero unless set.
struct DateFields {
    Long year = 1899, month = 12, day = 30, hour = 0, minute = 0, second = 0;

    bool operator==(const DateFields&) const = default;
};

// Years without a century: 0 to 29 lie in the 2000s, 30 to 99 in the 1900s; other years are as they stand.
Long fullYear(Long year);
Long daysInMonth(Long year, Long month);
bool isValid(const DateFields& fields);

DateFields fieldsOf(DateValue date);
DateValue dateOf(const DateFields& fields);          // 5 when they are not a valid date and time
DateValue dateOf(const platform::SystemTime& time);  // milliseconds are dropped

// A date from parts that may roll over: month 13, day 0 or -5. Years 0 to 99 are read by `fullYear`.
DateValue dateSerial(Long year, Long month, Long day);
// A time of day from parts that may roll over; 24 hours and more give whole days.
DateValue timeSerial(Long hour, Long minute, Long second);

Long serialDay(DateValue date);   // whole days since date zero, the calendar day
Long weekdayOf(DateValue date);   // 1 = Sunday to 7 = Saturday
DateValue dayOf(DateValue date);  // the same day at midnight

DateValue addDays(DateValue date, Long days);
DateValue addMinutes(DateValue date, Long minutes);
DateValue addSeconds(DateValue date, std::int64_t seconds);

// `interval`: "yyyy" years, "q" quarters, "m" months, "y", "d" or "w" days, "ww" weeks, "h" hours, "n"
// minutes, "s" seconds, in any case. A day that the new month does not have becomes its last one.
DateValue addIntervals(TextView interval, Long count, DateValue date);
// Interval boundaries between `from` and `to`, negative when `to` is earlier: 23:59 and 00:01 are one day
// apart. "ww" counts the Sundays, "w" whole weeks.
Long intervalsBetween(TextView interval, DateValue from, DateValue to);

// Local time by the platform's clock.
DateValue currentDateTime();
Long currentYear();

}  // namespace ovno2
