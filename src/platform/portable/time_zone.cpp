#include "platform/portable/time_zone.h"

#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <vector>

namespace ovno2::platform::portable {

namespace {

constexpr std::time_t secondsADay = 86400;
constexpr std::uint16_t lastOccurrence = 5;

// A moment at which the offset to UTC changes.
struct Transition {
    std::time_t moment = 0;
    long before = 0;  // offsets in seconds, east positive
    long after = 0;
};

std::tm localTimeOf(std::time_t moment) {
    std::tm local{};
    localtime_r(&moment, &local);
    return local;
}

long offsetAt(std::time_t moment) {
    return localTimeOf(moment).tm_gmtoff;
}

std::time_t startOfYear(int year) {
    std::tm start{};
    start.tm_year = year - 1900;
    start.tm_mday = 1;
    return timegm(&start);
}

std::vector<Transition> transitionsOf(int year) {
    std::vector<Transition> transitions;
    const std::time_t end = startOfYear(year + 1);
    for (std::time_t day = startOfYear(year); day < end; day += secondsADay) {
        const long before = offsetAt(day);
        const long after = offsetAt(day + secondsADay);
        if (before == after) continue;
        std::time_t low = day, high = day + secondsADay;
        while (high - low > 1) {
            const std::time_t middle = low + (high - low) / 2;
            (offsetAt(middle) == before ? low : high) = middle;
        }
        transitions.push_back({.moment = high, .before = before, .after = after});
    }
    return transitions;
}

// The weekday of the month on which the clocks of the time before show the transition.
SystemTime ruleOf(const Transition& transition) {
    const std::time_t shown = transition.moment + transition.before;
    const std::time_t weekLater = shown + 7 * secondsADay;
    std::tm local{}, later{};
    gmtime_r(&shown, &local);
    gmtime_r(&weekLater, &later);
    const auto narrow = [](int number) { return static_cast<std::uint16_t>(number); };
    return {.month = narrow(local.tm_mon + 1),
            .dayOfWeek = narrow(local.tm_wday),
            .day = later.tm_mon != local.tm_mon ? lastOccurrence : narrow((local.tm_mday - 1) / 7 + 1),
            .hour = narrow(local.tm_hour),
            .minute = narrow(local.tm_min),
            .second = narrow(local.tm_sec)};
}

Text zoneName(std::time_t moment) {
    const std::tm local = localTimeOf(moment);
    const char* name = local.tm_zone ? local.tm_zone : "";
    return Text(name, name + std::strlen(name));
}

TimeZoneInformation zoneOf(int year, std::time_t now) {
    const std::vector<Transition> transitions = transitionsOf(year);
    TimeZoneInformation zone;
    if (transitions.size() != 2 || transitions[0].before != transitions[1].after) {
        zone.bias = static_cast<Long>(-offsetAt(now) / 60);
        zone.standardName = zoneName(now);
        zone.daylightName = zone.standardName;
        return zone;
    }
    const bool beginsFirst = transitions[0].after > transitions[0].before;
    const Transition& begin = transitions[beginsFirst ? 0 : 1];
    const Transition& end = transitions[beginsFirst ? 1 : 0];
    zone.bias = static_cast<Long>(-begin.before / 60);
    zone.standardName = zoneName(end.moment);
    zone.standardDate = ruleOf(end);
    zone.daylightName = zoneName(begin.moment);
    zone.daylightDate = ruleOf(begin);
    zone.daylightBias = static_cast<Long>((begin.before - begin.after) / 60);
    return zone;
}

Text textIn(const RegistryFile& file, TextView name) {
    const RegistryValue* value = file.find(timeZoneKey, name);
    return value ? value->text.substr(0, value->text.find(u'\0')) : Text();
}

std::optional<Long> numberIn(const RegistryFile& file, TextView name) {
    const RegistryValue* value = file.find(timeZoneKey, name);
    if (!value || value->type != static_cast<Long>(RegistryType::number)) return {};
    return static_cast<Long>(value->number);
}

SystemTime transitionIn(const RegistryFile& file, TextView name) {
    const RegistryValue* value = file.find(timeZoneKey, name);
    return value ? transitionFromBytes(value->bytes) : SystemTime();
}

}  // namespace

SystemTime transitionFromBytes(const std::string& bytes) {
    std::array<std::uint16_t, 8> words{};
    if (bytes.size() != sizeof words) return {};
    static_assert(std::endian::native == std::endian::little);
    std::memcpy(words.data(), bytes.data(), sizeof words);
    if (words[2] == 0) return std::bit_cast<SystemTime>(words);
    return {.year = words[0],
            .month = words[1],
            .dayOfWeek = words[7],
            .day = words[2],
            .hour = words[3],
            .minute = words[4],
            .second = words[5],
            .millisecond = words[6]};
}

std::string bytesOfTransition(const SystemTime& rule) {
    const std::array<std::uint16_t, 8> words = {rule.year,   rule.month,  rule.day,         rule.hour,
                                                rule.minute, rule.second, rule.millisecond, rule.dayOfWeek};
    std::string bytes(sizeof words, '\0');
    std::memcpy(bytes.data(), words.data(), sizeof words);
    return bytes;
}

std::optional<TimeZoneInformation> timeZoneIn(const RegistryFile& file) {
    const std::optional<Long> bias = numberIn(file, u"Bias");
    if (!bias) return {};
    return TimeZoneInformation{.bias = *bias,
                               .standardName = textIn(file, u"StandardName"),
                               .standardDate = transitionIn(file, u"StandardStart"),
                               .standardBias = numberIn(file, u"StandardBias").value_or(0),
                               .daylightName = textIn(file, u"DaylightName"),
                               .daylightDate = transitionIn(file, u"DaylightStart"),
                               .daylightBias = numberIn(file, u"DaylightBias").value_or(0)};
}

std::optional<Long> activeBiasIn(const RegistryFile& file) {
    const std::optional<Long> active = numberIn(file, u"ActiveTimeBias");
    return active ? active : numberIn(file, u"Bias");
}

Long systemActiveBias() {
    tzset();
    return static_cast<Long>(-offsetAt(std::time(nullptr)) / 60);
}

TimeZoneInformation systemTimeZone() {
    // Looking for the transitions of a year takes hundreds of conversions; the last answer is kept.
    static std::mutex mutex;
    static std::string keptZone;
    static int keptYear = 0;
    static TimeZoneInformation kept;
    const std::lock_guard guard(mutex);
    tzset();
    const std::time_t now = std::time(nullptr);
    const int year = localTimeOf(now).tm_year + 1900;
    const char* variable = std::getenv("TZ");
    const std::string zone = variable ? variable : "";
    if (keptYear != year || keptZone != zone) {
        kept = zoneOf(year, now);
        keptZone = zone;
        keptYear = year;
    }
    return kept;
}

}  // namespace ovno2::platform::portable
