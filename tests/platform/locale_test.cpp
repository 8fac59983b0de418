#include "platform/locale.h"

#include <gtest/gtest.h>
#include <set>

#include "core/current_platform.h"

namespace ovno2::platform {
namespace {

Text item(LocaleItem first, Long offset = 0) {
    return currentPlatform().locale().item(static_cast<LocaleItem>(static_cast<Long>(first) + offset));
}

bool has(const Text& picture, char16_t letter) {
    return picture.find(letter) != Text::npos;
}

TEST(LocaleTest, ThePicturesHaveTheirParts) {
    const Text shortDate = item(LocaleItem::shortDate);
    EXPECT_TRUE(has(shortDate, u'd') && has(shortDate, u'M') && has(shortDate, u'y'));
    const Text time = item(LocaleItem::timeFormat);
    EXPECT_TRUE((has(time, u'h') || has(time, u'H')) && has(time, u'm'));
    EXPECT_FALSE(item(LocaleItem::timeSeparator).empty());
    EXPECT_FALSE(item(LocaleItem::dateSeparator).empty());
}

TEST(LocaleTest, EveryMonthAndDayHasANameOfItsOwn) {
    const auto names = [](LocaleItem first, Long count) {
        std::set<Text> different;
        for (Long i = 0; i < count; ++i)
            different.insert(item(first, i));
        different.erase(Text());
        return different.size();
    };
    EXPECT_EQ(12u, names(LocaleItem::monthName, 12));
    EXPECT_EQ(12u, names(LocaleItem::abbreviatedMonthName, 12));
    EXPECT_EQ(7u, names(LocaleItem::dayName, 7));
    EXPECT_EQ(7u, names(LocaleItem::abbreviatedDayName, 7));
}

TEST(LocaleTest, AnItemThatDoesNotExistIsEmpty) {
    EXPECT_EQ(Text(), item(static_cast<LocaleItem>(0xFFF)));
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
