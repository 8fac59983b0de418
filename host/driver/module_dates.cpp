#include "host/driver/module_dates.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "dates/date_parser.h"
#include "dates/date_text.h"
#include "host/driver/driver.h"
#include "host/output/console.h"

namespace ovno2::host {

namespace {

using namespace std::chrono;

constexpr TextView isoPicture = u"yyyy-MM-dd";

// Like "1975-04-12".
bool hasIsoForm(TextView text) {
    constexpr TextView form = u"dddd-dd-dd";
    const auto fits = [](char16_t c, char16_t wanted) {
        return wanted == u'd' ? c >= u'0' && c <= u'9' : c == wanted;
    };
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), fits);
}

// The user's own form is that of the standard.
bool isIsoAlready(TextView text) {
    return hasIsoForm(text) && localeFormats().shortDateText == isoPicture;
}

bool yearsHaveTwoDigits() {
    constexpr std::uint8_t digits = 2;
    return std::ranges::any_of(localeFormats().shortDate, [](const PicturePiece& piece) {
        return piece.kind == PicturePiece::Kind::year && piece.width <= digits;
    });
}

DateFields fieldsOfTime(local_seconds time);

// What a text in the user's form says; of years with two digits the last that is not to come.
std::optional<DateFields> fieldsInThePast(TextView text) {
    std::optional<DateFields> fields = readDateFields(text);
    if (!fields || *fields == DateFields{}) return std::nullopt;
    if (yearsHaveTwoDigits()) {
        const DateFields today = fieldsOfTime(console::localTime(floor<seconds>(system_clock::now())));
        constexpr Long century = 100;
        if (fields->year > today.year) fields->year -= century;
    }
    return fields;
}

DateFields fieldsOfTime(local_seconds time) {
    const local_days day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    return {.year = static_cast<Long>(static_cast<int>(date.year())),
            .month = static_cast<Long>(static_cast<unsigned>(date.month())),
            .day = static_cast<Long>(static_cast<unsigned>(date.day())),
            .hour = static_cast<Long>(clock.hours().count()),
            .minute = static_cast<Long>(clock.minutes().count()),
            .second = static_cast<Long>(clock.seconds().count())};
}

// None for a text that is no day of the calendar.
std::optional<DateFields> fieldsOfIsoDate(TextView text) {
    if (!hasIsoForm(text)) return std::nullopt;
    const DateFields fields{.year = numericLong(text.substr(0, 4)),
                            .month = numericLong(text.substr(5, 2)),
                            .day = numericLong(text.substr(8, 2))};
    const year_month_day date{year(static_cast<int>(fields.year)), month(static_cast<unsigned>(fields.month)),
                              day(static_cast<unsigned>(fields.day))};
    constexpr Long firstYear = 100;
    if (!date.ok() || fields.year < firstYear) return std::nullopt;
    return fields;
}

}  // namespace

minutes timeBias() {
    return minutes(numericLong(computer::machineValue(
        u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation", u"ActiveTimeBias")));
}

// A file's time comes as text only: the directory record, which hosts have always had, has no other member
// for it. It is read back with the module's own parser.
std::optional<sys_seconds> timeOf(TextView text, minutes bias) {
    const std::optional<DateFields> fields = readDateFields(text);
    if (!fields || *fields == DateFields{}) return std::nullopt;
    constexpr Long firstYear = 1900, lastYear = 2400;  // what the clocks of file systems count to
    if (fields->year < firstYear || fields->year > lastYear) return std::nullopt;
    const year_month_day date{year(static_cast<int>(fields->year)),
                              month(static_cast<unsigned>(fields->month)),
                              day(static_cast<unsigned>(fields->day))};
    return sys_days(date) + hours(fields->hour) + minutes(fields->minute) + seconds(fields->second) + bias;
}

Text localText(sys_seconds time) {
    return localDateText(dateOf(fieldsOfTime(console::localTime(time))));
}

Text isoDate(TextView birthday) {
    if (isIsoAlready(birthday)) return Text(birthday);
    const std::optional<DateFields> fields = fieldsInThePast(birthday);
    if (!fields) return Text(birthday);
    return dateInPicture(dateOf(*fields), datePicture(isoPicture));
}

Text isoTime(TextView time) {
    const std::optional<DateFields> fields = fieldsInThePast(time);
    constexpr Long firstYear = 1900;
    if (!fields || fields->year < firstYear) return {};
    std::array<char, 16> clock{};
    std::snprintf(clock.data(), clock.size(), "T%02d:%02d:%02d", static_cast<int>(fields->hour),
                  static_cast<int>(fields->minute), static_cast<int>(fields->second));
    DateFields day = *fields;
    day.hour = day.minute = day.second = 0;
    return dateInPicture(dateOf(day), datePicture(isoPicture)) + fromUtf8(clock.data());
}

// A date whose year comes first is read whatever the user's form is.
Text birthdayText(TextView isoDate) {
    const std::optional<DateFields> wanted = fieldsOfIsoDate(isoDate);
    return wanted && readDateFields(isoDate) == wanted ? Text(isoDate) : Text();
}

Text birthdayReadBack(TextView date) {
    const std::optional<DateFields> fields = fieldsOfIsoDate(date);
    return fields ? isoDate(shortDateText(dateOf(*fields))) : Text(date);
}

}  // namespace ovno2::host
