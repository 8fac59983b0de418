// What only the portable machine can be told: its clock, and where locale and time zone come from.
#include <ctime>
#include <fstream>

#include "common/machine_test.h"
#include "platform/portable/clock.h"
#include "platform/portable/system_locale.h"
#include "platform/portable/system_values.h"
#include "platform/portable/time_zone.h"

namespace ovno2::platform::portable {

namespace {

// Puts a zone in the environment for the test's time.
class ZoneOfEnvironment {
  public:
    explicit ZoneOfEnvironment(const char* zone) {
        setenv("TZ", zone, /*overwrite=*/1);
        tzset();
    }
    ~ZoneOfEnvironment() {
        unsetenv("TZ");
        tzset();
    }
    ZoneOfEnvironment(const ZoneOfEnvironment&) = delete;
    ZoneOfEnvironment& operator=(const ZoneOfEnvironment&) = delete;
};

class PortableLocaleTest : public MachineTest {
  protected:
    PortableClock& clock() { return static_cast<PortableClock&>(machine.clock()); }
    void writeRegistryFile(const char* lines) {
        std::ofstream(folder.path() / "registry.reg") << "Windows Registry Editor Version 5.00\n\n" << lines;
    }
};

TEST_F(PortableLocaleTest, AStoppedClockMovesBySleepingOnly) {
    clock().set(
        {.year = 2008, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 58, .millisecond = 500});
    EXPECT_FLOAT_EQ(86398.5F, clock().secondsSinceMidnight());
    clock().sleep(1600);
    clock().advance(std::chrono::milliseconds(50));
    EXPECT_EQ((SystemTime{2009, 1, 4, 1, 0, 0, 0, 150}), clock().localTime());
    EXPECT_EQ(std::vector<std::uint32_t>{1600}, clock().sleeps());
    clock().run();
    EXPECT_GE(clock().localTime().year, 2024);
}

TEST_F(PortableLocaleTest, TheClockRunsInTheZoneOfTheRegistry) {
    const auto secondsApart = [&](std::uint32_t bias) {
        setRegistryNumber(localMachine, u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation",
                          u"ActiveTimeBias", bias);
        const std::time_t now = std::time(nullptr);
        const SystemTime local = clock().localTime();
        std::tm fields{};
        fields.tm_year = local.year - 1900;
        fields.tm_mon = local.month - 1;
        fields.tm_mday = local.day;
        fields.tm_hour = local.hour;
        fields.tm_min = local.minute;
        fields.tm_sec = local.second;
        return static_cast<double>(timegm(&fields) - now);
    };
    EXPECT_NEAR(2 * 3600, secondsApart(static_cast<std::uint32_t>(-120)), 30);
    EXPECT_NEAR(-5 * 3600, secondsApart(300), 30);
}

TEST_F(PortableLocaleTest, TheZonesOfTheSystemBecomeRules) {
    static constexpr struct {
        const char* zone;
        Long bias, daylightBias;
        SystemTime begin, end;
    } cases[] = {
        {"CET-1CEST,M3.5.0,M10.5.0/3",
         -60,
         -60,
         {.month = 3, .day = 5, .hour = 2},
         {.month = 10, .day = 5, .hour = 3}},
        {"EST5EDT,M3.2.0,M11.1.0",
         300,
         -60,
         {.month = 3, .day = 2, .hour = 2},
         {.month = 11, .day = 1, .hour = 2}},
        {"AEST-10AEDT,M10.1.0,M4.1.0/3",
         -600,
         -60,
         {.month = 10, .day = 1, .hour = 2},
         {.month = 4, .day = 1, .hour = 3}},
        {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
         -630,
         -30,
         {.month = 10, .day = 1, .hour = 2},
         {.month = 4, .day = 1, .hour = 2}},
        {"XST3XDT,M5.3.5/1:30,M9.2.2/0",
         180,
         -60,
         {.month = 5, .dayOfWeek = 5, .day = 3, .hour = 1, .minute = 30},
         {.month = 9, .dayOfWeek = 2, .day = 2}},
        {"IST-5:30", -330, 0, {}, {}},
        {"UTC0", 0, 0, {}, {}},
    };
    for (const auto& row : cases) {
        const ZoneOfEnvironment environment(row.zone);
        const TimeZoneInformation zone = systemTimeZone();
        EXPECT_EQ(row.bias, zone.bias) << row.zone;
        EXPECT_EQ(0, zone.standardBias);
        EXPECT_EQ(row.daylightBias, zone.daylightBias) << row.zone;
        EXPECT_EQ(row.begin, zone.daylightDate) << row.zone;
        EXPECT_EQ(row.end, zone.standardDate) << row.zone;
        const Long now = systemActiveBias();
        EXPECT_TRUE(now == row.bias || now == row.bias + row.daylightBias) << row.zone << " " << now;
    }
}

TEST_F(PortableLocaleTest, TheRegistrysZoneWinsOverTheSystems) {
    const ZoneOfEnvironment environment("EST5EDT,M3.2.0,M11.1.0");
    Machine native(folder.path(), SystemValues::shown);
    TimeZoneInformation zone;
    EXPECT_FALSE(machine.locale().timeZone(zone));
    ASSERT_TRUE(native.locale().timeZone(zone));
    EXPECT_EQ(300, zone.bias);
    // As an export from a German machine has it.
    writeRegistryFile(
        "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation]\n"
        "\"Bias\"=dword:ffffffc4\n\"StandardBias\"=dword:00000000\n\"DaylightBias\"=dword:ffffffc4\n"
        "\"StandardName\"=\"Mitteleuropäische Zeit\"\n"
        "\"StandardStart\"=hex:00,00,0a,00,05,00,03,00,00,00,00,00,00,00,00,00\n"
        "\"DaylightStart\"=hex:00,00,03,00,05,00,02,00,00,00,00,00,00,00,00,00\n");
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
    const ZoneOfEnvironment environment("EST5EDT,M3.2.0,M11.1.0");
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
    static constexpr struct {
        TextView format, picture;
    } cases[] = {
        {u"%d.%m.%Y", u"dd.MM.yyyy"},
        {u"%m/%d/%y", u"MM/dd/yy"},
        {u"%-d. %-m. %Y", u"d. M. yyyy"},
        {u"%Y. %m. %d.", u"yyyy. MM. dd."},
        {u"%Y年%m月%d日", u"yyyy年MM月dd日"},
        {u"%D", u"MM/dd/yy"},
        {u"%e de %B", u"d 'de' MMMM"},
        {u"%I:%M:%S %p", u"hh:mm:ss tt"},
        {u"%T", u"HH:mm:ss"},
        {u"%OH時%OM分", u"HH時mm分"},
        {u"%H:%M:%S %Z", u"HH:mm:ss"},
        {u"%d.%m.%Y r", u"dd.MM.yyyy 'r'"},
        {u"%l o'clock%", u"h 'o''clock'"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(row.picture, pictureFromTimeFormat(row.format));
}

}  // namespace
}  // namespace ovno2::platform::portable
