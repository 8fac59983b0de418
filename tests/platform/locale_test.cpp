#include "platform/locale.h"

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

}  // namespace
}  // namespace ovno2::platform
