#include "dates/daylight.h"

#include <cmath>

#include "base/values.h"
#include "core/attempt.h"
#include "core/current_platform.h"
#include "dates/dates_state.h"
#include "pc/registry_access.h"

namespace ovno2::ISODate {

namespace {

constexpr std::uint16_t lastOccurrence = 5;

// The zone's daylight bias in hours, halves to even, at least one.
Long daylightShift() {
    Long minutes = 0;
    attempt([&] {
        minutes = numericLong(Registry::GetRegValue(
            platform::localMachine, u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation",
            u"DaylightBias"));
    });
    const Long hours = roundHalfToEven(std::fabs(static_cast<double>(minutes)) / 60);
    return hours == 0 ? 1 : hours;
}

}  // namespace

DateValue TransitionDate(const platform::SystemTime& rule, Long year) {
    if (rule.day < 1 || rule.day > lastOccurrence) return dateZero;
    const Long weekday = rule.dayOfWeek % 7 + 1;
    if (rule.day == lastOccurrence) {
        const DateValue last = dateSerial(year, rule.month + 1, /*day=*/0);
        return addDays(last, -((weekdayOf(last) - weekday + 7) % 7));
    }
    const DateValue first = dateSerial(year, rule.month, /*day=*/1);
    return addDays(first, (weekday - weekdayOf(first) + 7) % 7 + (rule.day - 1) * 7);
}

Long DaylightOffsetHours(DateValue date) noexcept {
    Long offset = 0;
    attempt([&] {
        platform::TimeZoneInformation& zone = stateOf<DatesState>().timeZone;
        if (zone.standardDate.year == 0)
            attempt([&] { static_cast<void>(currentPlatform().locale().timeZone(zone)); });
        const Long year = fieldsOf(date).year;
        const DateValue begin = TransitionDate(zone.daylightDate, year);
        const DateValue end = TransitionDate(zone.standardDate, year);
        const DateValue day = dayOf(date);
        if (end < begin)
            offset = day < end || day >= begin ? 1 : 0;
        else if (day >= begin && day < end)
            offset = daylightShift();
    });
    return offset;
}

}  // namespace ovno2::ISODate
