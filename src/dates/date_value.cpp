#include "dates/date_value.h"

#include <chrono>
#include <cmath>
#include <limits>

#include "base/values.h"
#include "core/current_platform.h"

namespace ovno2 {

namespace {

constexpr std::int64_t secondsADay = 86400;
constexpr std::int64_t unixEpochSerial = 25569;   // 1 January 1970
constexpr std::int64_t firstSerialDay = -657434;  // 1 January 100
constexpr std::int64_t lastSerialDay = 2958465;   // 31 December 9999

// The result of a division that rounds down, and the rest that belongs to it.
constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t by) {
    const std::int64_t quotient = value / by;
    return value % by < 0 ? quotient - 1 : quotient;
}
constexpr std::int64_t floorRemainder(std::int64_t value, std::int64_t by) {
    return value - floorDivide(value, by) * by;
}

std::int64_t serialOfCivil(std::int64_t year, std::int64_t month, std::int64_t day) {
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(1));
    return std::chrono::sys_days(date).time_since_epoch().count() + unixEpochSerial + day - 1;
}

std::chrono::year_month_day civilOfSerial(std::int64_t serial) {
    return std::chrono::sys_days(std::chrono::days(static_cast<int>(serial - unixEpochSerial)));
}

// Seconds since date zero on an even scale, on which arithmetic is plain.
std::int64_t evenSeconds(DateValue date) {
    if (!(date > static_cast<double>(firstSerialDay) - 1 && date < static_cast<double>(lastSerialDay) + 1))
        throw RuntimeFailure(invalidProcedureCall);
    const double day = std::trunc(date);
    const auto timeOfDay =
        static_cast<std::int64_t>(std::floor(std::fabs(date - day) * static_cast<double>(secondsADay) + 0.5));
    return static_cast<std::int64_t>(day) * secondsADay + timeOfDay;
}

DateValue dateOfEvenSeconds(std::int64_t seconds) {
    const std::int64_t day = floorDivide(seconds, secondsADay);
    if (day < firstSerialDay || day > lastSerialDay) throw RuntimeFailure(invalidProcedureCall);
    const double fraction = static_cast<double>(seconds - day * secondsADay) / secondsADay;
    return day < 0 ? static_cast<double>(day) - fraction : static_cast<double>(day) + fraction;
}

std::int64_t evenDay(DateValue date) {
    return floorDivide(evenSeconds(date), secondsADay);
}

DateValue addMonths(DateValue date, std::int64_t count) {
    DateFields fields = fieldsOf(date);
    const std::int64_t months = fields.year * 12 + (fields.month - 1) + count;
    const std::int64_t year = floorDivide(months, 12);
    if (year < minimumYear || year > maximumYear) throw RuntimeFailure(invalidProcedureCall);
    fields.year = static_cast<Long>(year);
    fields.month = static_cast<Long>(floorRemainder(months, 12)) + 1;
    fields.day = std::min(fields.day, daysInMonth(fields.year, fields.month));
    return dateOf(fields);
}

Long checkedLong(std::int64_t value) {
    if (value < std::numeric_limits<Long>::min() || value > std::numeric_limits<Long>::max())
        throw RuntimeFailure(overflowFailure);
    return static_cast<Long>(value);
}

enum class Interval { year, quarter, month, day, weekday, week, hour, minute, second };

Interval intervalNamed(TextView name) {
    static constexpr struct {
        TextView name;
        Interval interval;
    } names[] = {{u"yyyy", Interval::year}, {u"q", Interval::quarter}, {u"m", Interval::month},
                 {u"y", Interval::day},     {u"d", Interval::day},     {u"w", Interval::weekday},
                 {u"ww", Interval::week},   {u"h", Interval::hour},    {u"n", Interval::minute},
                 {u"s", Interval::second}};
    for (const auto& entry : names)
        if (equalsIgnoringCase(entry.name, name)) return entry.interval;
    throw RuntimeFailure(invalidProcedureCall);
}

}  // namespace

Long fullYear(Long year) {
    if (year < 0 || year > 99) return year;
    return year < 30 ? year + 2000 : year + 1900;
}

Long daysInMonth(Long year, Long month) {
    const auto last = std::chrono::year(year) / static_cast<int>(month) / std::chrono::last;
    return static_cast<Long>(static_cast<unsigned>(last.day()));
}

bool isValid(const DateFields& fields) {
    return fields.year >= minimumYear && fields.year <= maximumYear && fields.month >= 1 &&
           fields.month <= 12 && fields.day >= 1 &&
           (fields.day <= 28 || fields.day <= daysInMonth(fields.year, fields.month)) && fields.hour >= 0 &&
           fields.hour <= 23 && fields.minute >= 0 && fields.minute <= 59 && fields.second >= 0 &&
           fields.second <= 59;
}

DateFields fieldsOf(DateValue date) {
    const std::int64_t seconds = evenSeconds(date);
    const std::int64_t day = floorDivide(seconds, secondsADay);
    if (day < firstSerialDay || day > lastSerialDay) throw RuntimeFailure(invalidProcedureCall);
    const std::chrono::year_month_day civil = civilOfSerial(day);
    const auto timeOfDay = static_cast<Long>(seconds - day * secondsADay);
    return {.year = static_cast<int>(civil.year()),
            .month = static_cast<Long>(static_cast<unsigned>(civil.month())),
            .day = static_cast<Long>(static_cast<unsigned>(civil.day())),
            .hour = timeOfDay / 3600,
            .minute = timeOfDay / 60 % 60,
            .second = timeOfDay % 60};
}

DateValue dateOf(const DateFields& fields) {
    if (!isValid(fields)) throw RuntimeFailure(invalidProcedureCall);
    return dateOfEvenSeconds(serialOfCivil(fields.year, fields.month, fields.day) * secondsADay +
                             fields.hour * 3600 + fields.minute * 60 + fields.second);
}

DateValue dateOf(const platform::SystemTime& time) {
    return dateOf(DateFields{.year = time.year,
                             .month = time.month,
                             .day = time.day,
                             .hour = time.hour,
                             .minute = time.minute,
                             .second = time.second});
}

DateValue dateSerial(Long year, Long month, Long day) {
    const std::int64_t months = static_cast<std::int64_t>(fullYear(year)) * 12 + month - 1;
    const std::int64_t rolledYear = floorDivide(months, 12);
    // Days may lead back into the range, but not further than the calendar itself reaches.
    if (rolledYear < -30000 || rolledYear > 30000) throw RuntimeFailure(invalidProcedureCall);
    return dateOfEvenSeconds(serialOfCivil(rolledYear, floorRemainder(months, 12) + 1, day) * secondsADay);
}

DateValue timeSerial(Long hour, Long minute, Long second) {
    return dateOfEvenSeconds(static_cast<std::int64_t>(hour) * 3600 + static_cast<std::int64_t>(minute) * 60 +
                             second);
}

Long serialDay(DateValue date) {
    return static_cast<Long>(evenDay(date));
}

Long weekdayOf(DateValue date) {
    return static_cast<Long>(floorRemainder(evenDay(date) - 1, 7)) + 1;
}

DateValue dayOf(DateValue date) {
    return dateOfEvenSeconds(evenDay(date) * secondsADay);
}

DateValue addDays(DateValue date, Long days) {
    return addSeconds(date, days * secondsADay);
}

DateValue addMinutes(DateValue date, Long minutes) {
    return addSeconds(date, static_cast<std::int64_t>(minutes) * 60);
}

DateValue addSeconds(DateValue date, std::int64_t seconds) {
    return dateOfEvenSeconds(evenSeconds(date) + seconds);
}

DateValue addIntervals(TextView interval, Long count, DateValue date) {
    const std::int64_t wide = count;
    switch (intervalNamed(interval)) {
        case Interval::year:
            return addMonths(date, wide * 12);
        case Interval::quarter:
            return addMonths(date, wide * 3);
        case Interval::month:
            return addMonths(date, wide);
        case Interval::day:
        case Interval::weekday:
            return addSeconds(date, wide * secondsADay);
        case Interval::week:
            return addSeconds(date, wide * 7 * secondsADay);
        case Interval::hour:
            return addSeconds(date, wide * 3600);
        case Interval::minute:
            return addSeconds(date, wide * 60);
        case Interval::second:
            break;
    }
    return addSeconds(date, wide);
}

Long intervalsBetween(TextView interval, DateValue from, DateValue to) {
    const auto months = [](const DateFields& fields) { return fields.year * 12 + fields.month - 1; };
    const auto boundaries = [&](std::int64_t length, std::int64_t offset = 0) {
        return checkedLong(floorDivide(evenSeconds(to) - offset, length) -
                           floorDivide(evenSeconds(from) - offset, length));
    };
    switch (intervalNamed(interval)) {
        case Interval::year:
            return fieldsOf(to).year - fieldsOf(from).year;
        case Interval::quarter:
            return months(fieldsOf(to)) / 3 - months(fieldsOf(from)) / 3;
        case Interval::month:
            return months(fieldsOf(to)) - months(fieldsOf(from));
        case Interval::day:
            return boundaries(secondsADay);
        case Interval::weekday:
            return boundaries(secondsADay) / 7;
        case Interval::week:
            // The day after date zero was a Sunday.
            return boundaries(7 * secondsADay, /*offset=*/secondsADay);
        case Interval::hour:
            return boundaries(3600);
        case Interval::minute:
            return boundaries(60);
        case Interval::second:
            break;
    }
    return boundaries(1);
}

DateValue currentDateTime() {
    return dateOf(currentPlatform().clock().localTime());
}

Long currentYear() {
    return currentPlatform().clock().localTime().year;
}

}  // namespace ovno2
