// A machine whose locale, time zone and clock a test sets.
#pragma once

#include <fstream>
#include <ostream>

#include "common/machine_test.h"
#include "dates/date_value.h"
#include "dates/iso_date.h"
#include "platform/portable/clock.h"
#include "platform/portable/time_zone.h"

namespace ovno2 {

struct UserLocale {
    const char* name;
    TextView shortDate;
    TextView timeFormat = u"HH:mm:ss";
    TextView timeSeparator = u":";
    TextView morning = u"";
    TextView afternoon = u"";
    Long everyNthDay = 1;  // days that a test of all days takes
};

inline std::ostream& operator<<(std::ostream& stream, const UserLocale& locale) {
    return stream << locale.name;
}

inline constexpr UserLocale german = {.name = "German", .shortDate = u"dd.MM.yyyy"};
inline constexpr UserLocale american = {.name = "American",
                                        .shortDate = u"M/d/yyyy",
                                        .timeFormat = u"h:mm:ss tt",
                                        .morning = u"AM",
                                        .afternoon = u"PM"};
inline constexpr UserLocale czech = {.name = "Czech",
                                     .shortDate = u"d. M. yyyy",
                                     .timeFormat = u"H:mm:ss",
                                     .morning = u"dop.",
                                     .afternoon = u"odp."};
inline constexpr UserLocale hungarian = {
    .name = "Hungarian", .shortDate = u"yyyy. MM. dd.", .timeFormat = u"H:mm:ss"};
inline constexpr UserLocale chinese = {.name = "Chinese",
                                       .shortDate = u"yyyy/M/d",
                                       .timeFormat = u"tth:mm:ss",
                                       .morning = u"上午",
                                       .afternoon = u"下午"};
inline constexpr UserLocale italian = {.name = "Italian",
                                       .shortDate = u"dd/MM/yyyy",
                                       .timeFormat = u"H.mm.ss",
                                       .timeSeparator = u".",
                                       .everyNthDay = 37};
inline constexpr UserLocale finnish = {.name = "Finnish",
                                       .shortDate = u"d.M.yyyy",
                                       .timeFormat = u"H.mm.ss",
                                       .timeSeparator = u".",
                                       .everyNthDay = 37};

inline constexpr UserLocale everyLocale[] = {
    german,
    american,
    czech,
    hungarian,
    chinese,
    italian,
    finnish,
    {.name = "British", .shortDate = u"dd/MM/yyyy"},
    {.name = "Polish", .shortDate = u"dd.MM.yyyy", .timeFormat = u"HH:mm:ss"},
    {.name = "ISO", .shortDate = u"yyyy-MM-dd"},
    {.name = "Bulgarian", .shortDate = u"d.M.yyyy 'г.'", .timeFormat = u"H:mm:ss", .everyNthDay = 37},
    {.name = "MonthNames", .shortDate = u"dd-MMM-yyyy", .everyNthDay = 37},
    {.name = "Weekdays", .shortDate = u"ddd dd.MM.yyyy", .everyNthDay = 37},
};

class DatesTest : public MachineTest {
  protected:
    DatesTest() {
        clock().set({.year = 2008, .month = 7, .day = 15, .hour = 12});
        use(german);
    }

    platform::portable::PortableClock& clock() {
        return static_cast<platform::portable::PortableClock&>(machine.clock());
    }

    // The locale as the module sees it after a fresh start on this thread.
    void use(const UserLocale& locale) {
        static constexpr TextView key = u"HKEY_CURRENT_USER\\Control Panel\\International";
        const auto set = [&](TextView name, TextView text) {
            registry_.set(key, name, {.type = 1, .text = Text(text) + u'\0', .bytes = {}, .number = 0});
        };
        set(u"sShortDate", locale.shortDate);
        set(u"sTimeFormat", locale.timeFormat);
        set(u"sTime", locale.timeSeparator);
        set(u"s1159", locale.morning);
        set(u"s2359", locale.afternoon);
        writeRegistry();
        resetThreadState();
        usePlatform(machine);
        ISODate::DateTimeInit();
    }

    void setActiveBias(Long minutes) {
        setZoneNumber(u"ActiveTimeBias", minutes);
        writeRegistry();
        ISODate::DateTimeInit();
    }

    void setZone(const platform::SystemTime& daylight, const platform::SystemTime& standard,
                 Long daylightBias) {
        setZoneNumber(u"Bias", -60);
        setZoneNumber(u"DaylightBias", daylightBias);
        setRule(u"DaylightStart", daylight);
        setRule(u"StandardStart", standard);
        writeRegistry();
    }

    // A date-time conversion with formats initialised, of a text that nobody else holds.
    static Text toLocal(Text iso, bool convertUtc = false) {
        return ISODate::GetISO8601Date(iso, true, convertUtc);
    }

  private:
    void setZoneNumber(TextView name, Long number) {
        registry_.set(platform::portable::timeZoneKey, name,
                      {.type = 4, .text = {}, .bytes = {}, .number = static_cast<std::uint32_t>(number)});
    }
    void setRule(TextView name, const platform::SystemTime& rule) {
        registry_.set(
            platform::portable::timeZoneKey, name,
            {.type = 3, .text = {}, .bytes = platform::portable::bytesOfTransition(rule), .number = 0});
    }
    // All values at once, which is quicker than through the machine.
    void writeRegistry() {
        std::ofstream(folder.path() / "registry.reg", std::ios::binary) << registry_.bytes();
    }

    platform::portable::RegistryFile registry_;
};

// Texts in messages of failed tests.
inline std::string narrow(TextView text) {
    std::string bytes;
    for (const char16_t c : text)
        bytes += c < 0x80 ? std::string(1, static_cast<char>(c)) : "\\u" + std::to_string(c);
    return bytes;
}

}  // namespace ovno2
