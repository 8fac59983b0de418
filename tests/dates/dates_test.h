// A machine whose locale, time zone and clock a test sets.
#pragma once

#include <fstream>
#include <ostream>

#include "base/text_pairs.h"
#include "base/utf8.h"
#include "common/machine_test.h"
#include "dates/date_value.h"
#include "dates/iso_date.h"
#include "platform/portable/time_zone.h"

namespace ovno2 {

struct UserLocale {
    const char* name;
    TextView shortDate;
    TextView timeFormat = u"HH:mm:ss", timeSeparator = u":", morning = u"", afternoon = u"";
    Long everyNthDay = 1;  // days that a test of all days takes
};

inline std::ostream& operator<<(std::ostream& stream, const UserLocale& locale) {
    return stream << locale.name;
}

inline constexpr UserLocale german = {"German", u"dd.MM.yyyy"};
inline constexpr UserLocale american = {"American", u"M/d/yyyy", u"h:mm:ss tt", u":", u"AM", u"PM"};
inline constexpr UserLocale czech = {"Czech", u"d. M. yyyy", u"H:mm:ss", u":", u"dop.", u"odp."};
inline constexpr UserLocale hungarian = {"Hungarian", u"yyyy. MM. dd.", u"H:mm:ss"};
inline constexpr UserLocale chinese = {"Chinese", u"yyyy/M/d", u"tth:mm:ss", u":", u"上午", u"下午"};
inline constexpr UserLocale italian = {"Italian", u"dd/MM/yyyy", u"H.mm.ss", u".", u"", u"", 37};
inline constexpr UserLocale finnish = {"Finnish", u"d.M.yyyy", u"H.mm.ss", u".", u"", u"", 37};
inline constexpr UserLocale bulgarian = {"Bulgarian", u"d.M.yyyy 'г.'", u"H:mm:ss", u":", u"", u"", 37};

inline constexpr UserLocale everyLocale[] = {
    german,
    american,
    czech,
    hungarian,
    chinese,
    italian,
    finnish,
    bulgarian,
    {"British", u"dd/MM/yyyy"},
    {"ISO", u"yyyy-MM-dd"},
    {"MonthNames", u"dd-MMM-yyyy", u"HH:mm:ss", u":", u"", u"", 37},
    {"Weekdays", u"ddd dd.MM.yyyy", u"HH:mm:ss", u":", u"", u"", 37},
};

class DatesTest : public MachineTest {
  protected:
    DatesTest() {
        clock().set({.year = 2008, .month = 7, .day = 15, .hour = 12});
        use(german);
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

}  // namespace ovno2
