// The user's locale, time zone and code page, and the clock.
#pragma once

#include <array>
#include <string>

#include "base/types.h"

namespace ovno2::platform {

// Items of the user's locale, numbered as the platform numbers them. Names count from the first: January,
// Monday.
enum class LocaleItem : Long {
    dateSeparator = 29,
    timeSeparator = 30,
    shortDate = 31,             // such as "dd.MM.yyyy"
    morning = 40,               // "AM"
    afternoon = 41,             // "PM"
    dayName = 42,               // 42 to 48, "Monday" to "Sunday"
    abbreviatedDayName = 49,    // 49 to 55
    monthName = 56,             // 56 to 67
    abbreviatedMonthName = 68,  // 68 to 79
    timeFormat = 0x1003,        // such as "HH:mm:ss"
};

// A date and time in fields. month 1..12, day 1..31, dayOfWeek 0 = Sunday; as a transition rule, `day` is the
// occurrence of that weekday in the month (1..4, 5 = last).
struct SystemTime {
    std::uint16_t year = 0, month = 0, dayOfWeek = 0, day = 0, hour = 0, minute = 0, second = 0,
                  millisecond = 0;

    bool operator==(const SystemTime&) const = default;
};

struct TimeZoneInformation {
    Long bias = 0;  // minutes to add to local time for UTC
    Text standardName;
    SystemTime standardDate;  // when daylight time ends; month 0 = no rule
    Long standardBias = 0;
    Text daylightName;
    SystemTime daylightDate;  // when daylight time begins
    Long daylightBias = 0;
};

class Locale {
  public:
    virtual ~Locale() = default;
    virtual Text item(LocaleItem item) = 0;                // empty when the platform does not know it
    virtual bool timeZone(TimeZoneInformation& zone) = 0;  // false: `zone` is untouched
};

class Clock {
  public:
    virtual ~Clock() = default;
    virtual SystemTime localTime() = 0;
    virtual Single secondsSinceMidnight() = 0;  // local time, with fraction
    virtual void sleep(std::uint32_t milliseconds) = 0;
    // A 64-bit file time (100 ns since 1601, UTC) as fields in UTC; false when it is out of range.
    virtual bool fileTimeToSystemTime(std::uint64_t fileTime, SystemTime& time) = 0;
};

}  // namespace ovno2::platform
