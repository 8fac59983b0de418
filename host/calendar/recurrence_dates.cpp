#include "host/calendar/recurrence_dates.h"

#include <array>
#include <cstdio>

namespace ovno2::host {

using namespace std::chrono;

namespace {

struct Digits {
    std::string_view text;

    // -1 when there are not that many digits.
    int take(std::size_t count) {
        if (text.size() < count) return -1;
        int number = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (text[i] < '0' || text[i] > '9') return -1;
            number = number * 10 + (text[i] - '0');
        }
        text.remove_prefix(count);
        return number;
    }

    bool skip(char mark) {
        if (text.empty() || text.front() != mark) return false;
        text.remove_prefix(1);
        return true;
    }
};

std::string dated(const Moment& moment, const char* dayForm, const char* clockForm) {
    const year_month_day date(moment.day);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), dayForm, static_cast<int>(date.year()) % 10000,
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    std::string whole(text.data());
    if (moment.isDay) return whole;
    const hh_mm_ss time(moment.clock);
    std::snprintf(text.data(), text.size(), clockForm, static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return whole.append(text.data());
}

}  // namespace

Moment momentAt(local_seconds time) {
    const local_days day = floor<days>(time);
    return {.day = day, .clock = time - day, .isDay = false};
}

std::optional<Moment> readMoment(std::string_view text) {
    Digits digits{text};
    const int year = digits.take(4);
    const bool isExtended = digits.skip('-');
    const int month = digits.take(2);
    if (isExtended && !digits.skip('-')) return std::nullopt;
    const int day = digits.take(2);
    if (year < 1 || month < 1 || day < 1) return std::nullopt;
    const year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                              std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) return std::nullopt;
    Moment moment{.day = local_days(date)};
    if (digits.text.empty()) return moment;
    if (!digits.skip('T')) return std::nullopt;
    const int hour = digits.take(2);
    digits.skip(':');
    const int minute = digits.take(2);
    digits.skip(':');
    const bool hasSeconds = !digits.text.empty() && digits.text.front() != 'Z';
    const int second = hasSeconds ? digits.take(2) : 0;
    moment.isUtc = digits.skip('Z');
    constexpr int leapSecond = 60;
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > leapSecond ||
        !digits.text.empty())
        return std::nullopt;
    moment.isDay = false;
    moment.clock = hours(hour) + minutes(minute) + seconds(std::min(second, leapSecond - 1));
    return moment;
}

std::optional<Moment> readMoment(TextView text) {
    return readMoment(std::string_view(toUtf8(text)));
}

Text isoText(const Moment& moment) {
    const year_month_day date(moment.day);
    if (date.year() < year(1) || date.year() > year(9999)) return {};
    return fromUtf8(dated(moment, "%04d-%02u-%02u", "T%02d:%02d:%02d"));
}

std::string basicText(const Moment& moment) {
    return dated(moment, "%04d%02u%02u", moment.isUtc ? "T%02d%02d%02dZ" : "T%02d%02d%02d");
}

Moment shownBy(const Clock& clock, const Moment& moment) {
    if (!moment.isUtc) return moment;
    return momentAt(clock(sys_seconds(moment.time().time_since_epoch())));
}

}  // namespace ovno2::host
