// What only the portable machine can be told: its clock, and where locale and time zone come from.
#include <chrono>
#include <fstream>

#include "base/text_pairs.h"
#include "base/utf8.h"
#include "common/machine_test.h"
#include "platform/environment_variable.h"
#include "platform/portable/system_locale.h"
#include "platform/portable/system_values.h"
#include "platform/portable/time_zone.h"

namespace ovno2::platform::portable {

namespace {

using PortableLocaleTest = MachineTest;

TEST_F(PortableLocaleTest, AStoppedClockMovesBySleepingOnly) {
    clock().set({2008, 12, 0, 31, 23, 59, 58, 500});
    EXPECT_FLOAT_EQ(86398.5F, clock().secondsSinceMidnight());
    clock().sleep(1600);
    clock().advance(std::chrono::milliseconds(50));
    EXPECT_EQ((SystemTime{2009, 1, 4, 1, 0, 0, 0, 150}), clock().localTime());
    EXPECT_EQ(std::vector<std::uint32_t>{1600}, clock().sleeps());
    clock().run();
    EXPECT_GE(clock().localTime().year, 2024);
}

TEST_F(PortableLocaleTest, TheClockRunsInTheZoneOfTheRegistry) {
    using namespace std::chrono;
    for (const Long bias : {-120, 300}) {
        setRegistryNumber(localMachine, u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation",
                          u"ActiveTimeBias", static_cast<std::uint32_t>(bias));
        const SystemTime now = clock().localTime();
        const sys_seconds local = sys_days(year(now.year) / month(now.month) / day(now.day)) +
                                  hours(now.hour) + minutes(now.minute) + seconds(now.second);
        EXPECT_LT(abs(local + minutes(bias) - system_clock::now()), seconds(30)) << bias;
    }
}

TEST_F(PortableLocaleTest, TheZonesOfTheSystemBecomeRules) {
    struct Rule {
        std::uint16_t month, day, dayOfWeek, hour, minute;
    };
    struct Row {
        const char* zone;
        Long bias, daylightBias;
        Rule begin, end;
    };
    for (const auto& row :
         {Row{"CET-1CEST,M3.5.0,M10.5.0/3", -60, -60, {3, 5, 0, 2, 0}, {10, 5, 0, 3, 0}},
          Row{"EST5EDT,M3.2.0,M11.1.0", 300, -60, {3, 2, 0, 2, 0}, {11, 1, 0, 2, 0}},
          Row{"AEST-10AEDT,M10.1.0,M4.1.0/3", -600, -60, {10, 1, 0, 2, 0}, {4, 1, 0, 3, 0}},
          Row{"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", -630, -30, {10, 1, 0, 2, 0}, {4, 1, 0, 2, 0}},
          Row{"XST3XDT,M5.3.5/1:30,M9.2.2/0", 180, -60, {5, 3, 5, 1, 30}, {9, 2, 2, 0, 0}},
          Row{"IST-5:30", -330, 0, {}, {}}, Row{"UTC0", 0, 0, {}, {}}}) {
        SCOPED_TRACE(row.zone);
        const EnvironmentVariable environment("TZ", row.zone);
        const TimeZoneInformation zone = systemTimeZone();
        EXPECT_EQ(row.bias, zone.bias);
        EXPECT_EQ(0, zone.standardBias);
        EXPECT_EQ(row.daylightBias, zone.daylightBias);
        for (const auto& [rule, date] :
             {std::pair{row.begin, zone.daylightDate}, {row.end, zone.standardDate}})
            EXPECT_EQ((SystemTime{0, rule.month, rule.dayOfWeek, rule.day, rule.hour, rule.minute, 0, 0}),
                      date);
        const Long now = systemActiveBias();
        EXPECT_TRUE(now == row.bias || now == row.bias + row.daylightBias) << now;
    }
    for (std::uint16_t weekday = 0; weekday < 7;
         ++weekday) {  // the first of a month and the seventh are among them
        const std::string first = ".1." + std::to_string(weekday);
        const EnvironmentVariable environment("TZ", "XST3XDT,M3" + first + ",M9" + first);
        EXPECT_EQ((SystemTime{0, 3, weekday, 1, 2, 0, 0, 0}), systemTimeZone().daylightDate);
    }
}

TEST_F(PortableLocaleTest, TheRegistrysZoneWinsOverTheSystems) {
    const EnvironmentVariable environment("TZ", "EST5EDT,M3.2.0,M11.1.0");
    Machine native(folder.path(), SystemValues::shown);
    TimeZoneInformation zone;
    EXPECT_FALSE(machine.locale().timeZone(zone));
    ASSERT_TRUE(native.locale().timeZone(zone));
    EXPECT_EQ(300, zone.bias);
    // As an export from a German machine has it.
    std::ofstream(folder.path() / "registry.reg")
        << "Windows Registry Editor Version 5.00\n"
           "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation]\n"
           "\"Bias\"=dword:ffffffc4\n\"StandardBias\"=dword:00000000\n\"DaylightBias\"=dword:ffffffc4\n"
           "\"StandardName\"=\"Mitteleuropäische Zeit\"\n"
           "\"StandardStart\"=hex:00,00,0a,00,05,00,03,00,00,00,00,00,00,00,00,00\n"
           "\"DaylightStart\"=hex:00,00,03,00,05,00,02,00,00,00,00,00,00,00,00,00\n";
    for (Machine* each : {&machine, &native}) {
        ASSERT_TRUE(each->locale().timeZone(zone));
        EXPECT_EQ(-60, zone.bias);
        EXPECT_EQ(-60, zone.daylightBias);
        EXPECT_EQ(u"Mitteleuropäische Zeit", zone.standardName);
        EXPECT_EQ((SystemTime{.month = 10, .day = 5, .hour = 3}), zone.standardDate);
        EXPECT_EQ((SystemTime{.month = 3, .day = 5, .hour = 2}), zone.daylightDate);
    }
}

TEST_F(PortableLocaleTest, TransitionsAreReadInBothOrdersOfTheirFields) {
    // Year, month, weekday, day, hour: a rule on Sundays as the platform's calls order it.
    const std::string inCallOrder("\0\0\x0b\0\0\0\x01\0\x02\0\0\0\0\0\0\0", 16);
    EXPECT_EQ((SystemTime{.month = 11, .day = 1, .hour = 2}), transitionFromBytes(inCallOrder));
    const SystemTime friday{.month = 3, .dayOfWeek = 5, .day = 4, .hour = 23, .minute = 30};
    EXPECT_EQ(friday, transitionFromBytes(bytesOfTransition(friday)));
    EXPECT_EQ(SystemTime(), transitionFromBytes("short"));
}

TEST_F(PortableLocaleTest, TheRegistryAnswersSystemValuesOnlyWhereToldTo) {
    const EnvironmentVariable environment("TZ", "EST5EDT,M3.2.0,M11.1.0");
    Machine native(folder.path(), SystemValues::shown);
    static constexpr TextView zoneKey = u"System\\CurrentControlSet\\Control\\TimeZoneInformation";
    static constexpr TextView localeKey = u"Control Panel\\International";
    std::unique_ptr<RegistryKey> key;
    RegistryValue value;
    EXPECT_EQ(registryNotFound, machine.registry().open(localMachine, zoneKey, false, key));
    ASSERT_EQ(registryOk, native.registry().open(localMachine, zoneKey, false, key));
    ASSERT_EQ(registryOk, key->read(u"bias", value));
    EXPECT_EQ(300u, value.number);
    ASSERT_EQ(registryOk, key->read(u"DaylightStart", value));
    EXPECT_EQ((SystemTime{.month = 3, .day = 2, .hour = 2}), transitionFromBytes(value.bytes));
    EXPECT_EQ(registryNotFound, key->read(u"NoSuchValue", value));
    ASSERT_EQ(registryOk, native.registry().open(currentUser, localeKey, false, key));
    ASSERT_EQ(registryOk, key->read(u"sShortDate", value));
    EXPECT_EQ(systemLocaleItem(LocaleItem::shortDate) + u'\0', value.text);

    setRegistryText(currentUser, localeKey, u"sShortDate", u"d/M/yy");
    ASSERT_EQ(registryOk, key->read(u"sShortDate", value));
    EXPECT_EQ(Text(u"d/M/yy") + u'\0', value.text);
    EXPECT_EQ(u"d/M/yy", native.locale().item(LocaleItem::shortDate));
    EXPECT_EQ(u"HH:mm:ss", machine.locale().item(LocaleItem::timeFormat));
}

TEST_F(PortableLocaleTest, FormatsOfTheCLibraryBecomePictures) {
    for (const auto& [format, picture] : pairsOf(
             u"%d.%m.%Y=dd.MM.yyyy|%m/%d/%y=MM/dd/yy|%-d. %-m. %Y=d. M. yyyy|%Y. %m. %d.=yyyy. MM. dd.|"
             u"%Y年%m月%d日=yyyy年MM月dd日|%D=MM/dd/yy|%e de %B=d 'de' MMMM|%I:%M:%S %p=hh:mm:ss tt|"
             u"%T=HH:mm:ss|%OH時%OM分=HH時mm分|%H:%M:%S %Z=HH:mm:ss|%d.%m.%Y r=dd.MM.yyyy 'r'|%d a=dd 'a'|"
             u"%l o'clock%=h 'o''clock'"))
        EXPECT_EQ(picture, pictureFromTimeFormat(format)) << toUtf8(format);
}

}  // namespace
}  // namespace ovno2::platform::portable
