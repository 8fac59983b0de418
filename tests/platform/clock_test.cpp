#include <chrono>
#include <cmath>
#include <gtest/gtest.h>

#include "core/current_platform.h"
#include "platform/locale.h"

namespace ovno2::platform {
namespace {

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
