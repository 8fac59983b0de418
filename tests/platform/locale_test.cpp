#include "platform/locale.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <set>

#include "core/current_platform.h"

namespace ovno2::platform {
namespace {

Text item(LocaleItem first, Long offset = 0) {
    return currentPlatform().locale().item(static_cast<LocaleItem>(static_cast<Long>(first) + offset));
}

TEST(LocaleTest, ThePicturesHaveTheirPartsAndEveryMonthAndDayANameOfItsOwn) {
    const auto has = [](const Text& picture, TextView letters) {
        return picture.find_first_of(letters) != Text::npos;
    };
    const Text date = item(LocaleItem::shortDate), time = item(LocaleItem::timeFormat);
    EXPECT_TRUE(has(date, u"d") && has(date, u"M") && has(date, u"y"));
    EXPECT_TRUE(has(time, u"hH") && has(time, u"m"));
    EXPECT_FALSE(item(LocaleItem::timeSeparator).empty());
    EXPECT_FALSE(item(LocaleItem::dateSeparator).empty());
    EXPECT_EQ(Text(), item(static_cast<LocaleItem>(0xFFF)));
    using Row = std::pair<LocaleItem, Long>;
    for (const auto& [first, count] :
         {Row{LocaleItem::monthName, 12}, Row{LocaleItem::abbreviatedMonthName, 12},
          Row{LocaleItem::dayName, 7}, Row{LocaleItem::abbreviatedDayName, 7}}) {
        std::set<Text> names = {Text()};
        for (Long i = 0; i < count; ++i)
            names.insert(item(first, i));
        EXPECT_EQ(count + 1u, names.size());
    }
}

TEST(LocaleTest, TheTimeZoneIsOneOfThisEarth) {
    TimeZoneInformation zone;
    ASSERT_TRUE(currentPlatform().locale().timeZone(zone));
    EXPECT_LE(std::abs(zone.bias), 15 * 60);
    EXPECT_LE(std::abs(zone.daylightBias), 2 * 60);
    EXPECT_EQ(zone.daylightDate.month == 0, zone.standardDate.month == 0);
    for (const SystemTime& rule : {zone.daylightDate, zone.standardDate}) {
        EXPECT_LE(rule.month, 12);
        EXPECT_LE(rule.dayOfWeek, 6);
        if (rule.month != 0 && rule.year == 0) {
            EXPECT_GE(rule.day, 1);
            EXPECT_LE(rule.day, 5);
        }
    }
}

TEST(ClockTest, FileTimesAreUtcSince1601UpToTheTopBit) {
    Clock& clock = currentPlatform().clock();
    using Row = std::pair<std::uint64_t, SystemTime>;
    SystemTime time;
    for (const auto& [fileTime, expected] :
         {Row{0, {1601, 1, 1, 1, 0, 0, 0, 0}}, Row{94353120000000000, {1899, 12, 6, 30, 0, 0, 0, 0}},
          Row{116444736000000000, {1970, 1, 4, 1, 0, 0, 0, 0}},
          Row{125963423999990000, {2000, 2, 2, 29, 23, 59, 59, 999}},
          Row{128440026152509999, {2008, 1, 6, 5, 10, 30, 15, 250}},
          Row{2650467743990000000, {9999, 12, 5, 31, 23, 59, 59, 0}}}) {
        ASSERT_TRUE(clock.fileTimeToSystemTime(fileTime, time));
        EXPECT_EQ(expected, time) << fileTime;
    }
    EXPECT_FALSE(clock.fileTimeToSystemTime(0x8000000000000000u, time));
    EXPECT_FALSE(clock.fileTimeToSystemTime(0xFFFFFFFFFFFFFFFFu, time));
    EXPECT_EQ(9999, time.year) << "as it was";
    EXPECT_TRUE(clock.fileTimeToSystemTime(0x7FFF35F4F06C58F0u, time));
    EXPECT_GT(time.year, 30000);
}

TEST(ClockTest, LocalTimeIsADateWithItsWeekdayAndItsSecondsSinceMidnight) {
    using namespace std::chrono;
    const SystemTime now = currentPlatform().clock().localTime();
    const double seconds = currentPlatform().clock().secondsSinceMidnight();
    const year_month_day date(year(now.year), month(now.month), day(now.day));
    ASSERT_TRUE(date.ok());
    EXPECT_GE(now.year, 2024);
    EXPECT_EQ(weekday(sys_days(date)).c_encoding(), now.dayOfWeek);
    EXPECT_LT(now.hour, 24);
    EXPECT_LT(now.millisecond, 1000);
    EXPECT_LT(std::fmod(seconds - (now.hour * 3600 + now.minute * 60 + now.second) + 86400, 86400), 60);
}

TEST(ClockTest, SleepingTakesItsTime) {
    const auto before = std::chrono::steady_clock::now();
    currentPlatform().clock().sleep(60);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(45));
}

}  // namespace
}  // namespace ovno2::platform
