#include "dates/daylight.h"

#include "dates/dates_test.h"
#include "platform/portable/registry.h"

namespace ovno2 {
namespace {

using ISODate::DaylightOffsetHours;
using platform::SystemTime;

// Rules as the platform states them: weekday 0 = Sunday, day = occurrence.
constexpr SystemTime lastSundayOfMarch = {.month = 3, .day = 5, .hour = 2};
constexpr SystemTime lastSundayOfOctober = {.month = 10, .day = 5, .hour = 3};
constexpr SystemTime secondSundayOfMarch = {.month = 3, .day = 2, .hour = 2};
constexpr SystemTime firstSundayOfNovember = {.month = 11, .day = 1, .hour = 2};
constexpr SystemTime firstSundayOfOctober = {.month = 10, .day = 1, .hour = 2};
constexpr SystemTime firstSundayOfApril = {.month = 4, .day = 1, .hour = 3};

using DaylightTest = DatesTest;

TEST_F(DaylightTest, EveryDayBetweenTheChangesOfAYearIsShifted) {
    struct YearOfChanges {
        Long year, begin, end;  // month * 100 + day of the two changes
    };
    const struct {
        SystemTime begin, end;
        Long bias;
        std::vector<YearOfChanges> years;
    } zones[] = {
        {lastSundayOfMarch,
         lastSundayOfOctober,
         -60,
         {{2007, 325, 1028}, {2008, 330, 1026}, {2009, 329, 1025}, {2010, 328, 1031}, {2013, 331, 1027}}},
        {secondSundayOfMarch,
         firstSundayOfNovember,
         -60,
         {{2007, 311, 1104}, {2008, 309, 1102}, {2009, 308, 1101}, {2010, 314, 1107}, {2015, 308, 1101}}},
        // A southern summer shifts by one hour whatever the bias.
        {firstSundayOfOctober,
         firstSundayOfApril,
         -120,
         {{2008, 1005, 406}, {2009, 1004, 405}, {2012, 1007, 401}, {2017, 1001, 402}}}};
    for (const auto& zone : zones) {
        setZone(zone.begin, zone.end, zone.bias);
        for (const YearOfChanges& row : zone.years)
            for (DateValue day = dateSerial(row.year, 1, 1); day <= dateSerial(row.year, 12, 31); ++day) {
                const DateValue begin = dateSerial(row.year, row.begin / 100, row.begin % 100);
                const DateValue end = dateSerial(row.year, row.end / 100, row.end % 100);
                const bool daylight = begin < end ? day >= begin && day < end : day < end || day >= begin;
                ASSERT_EQ(daylight ? 1 : 0, DaylightOffsetHours(day)) << row.year << " " << day;
            }
    }
}

TEST_F(DaylightTest, TheWholeDayOfAChangeCounts) {
    setZone(lastSundayOfMarch, lastSundayOfOctober, -60);
    EXPECT_EQ(1, DaylightOffsetHours(dateOf(DateFields{2008, 3, 30, 0, 0, 0})));
    EXPECT_EQ(0, DaylightOffsetHours(dateOf(DateFields{2008, 3, 29, 23, 59, 59})));
    EXPECT_EQ(1, DaylightOffsetHours(dateOf(DateFields{2008, 10, 25, 23, 59, 59})));
    EXPECT_EQ(0, DaylightOffsetHours(dateOf(DateFields{2008, 10, 26, 0, 0, 0})));
}

TEST_F(DaylightTest, TheShiftIsTheBiasInHoursHalvesToEvenAndAtLeastOne) {
    static constexpr struct {
        Long bias, hours;
    } cases[] = {{-60, 1}, {-30, 1}, {-90, 2}, {-150, 2}, {-120, 2}, {60, 1}, {0, 1}, {-20, 1}, {-210, 4}};
    for (const auto& row : cases) {
        setZone(lastSundayOfMarch, lastSundayOfOctober, row.bias);
        EXPECT_EQ(row.hours, DaylightOffsetHours(dateSerial(2008, 7, 1))) << row.bias;
    }
}

TEST_F(DaylightTest, NothingShiftsWithoutAZoneARuleOrADate) {
    EXPECT_EQ(0, DaylightOffsetHours(dateSerial(2008, 7, 1)));
    for (const std::uint16_t noOccurrence : {std::uint16_t{0}, std::uint16_t{6}}) {
        setZone({.month = 3, .day = noOccurrence}, {.month = 10, .day = noOccurrence}, -60);
        EXPECT_EQ(0, DaylightOffsetHours(dateSerial(2008, 7, 1)));
    }
    setZone(lastSundayOfMarch, lastSundayOfOctober, -60);
    EXPECT_EQ(0, DaylightOffsetHours(1e9));
    EXPECT_EQ(0, DaylightOffsetHours(dateZero));
}

TEST_F(DaylightTest, ARuleIsAskedForAgainUnlessItHoldsForOneYearOnly) {
    setZone(lastSundayOfMarch, lastSundayOfOctober, -60);
    EXPECT_EQ(1, DaylightOffsetHours(dateSerial(2008, 7, 1)));
    SystemTime thisYearOnly = lastSundayOfOctober;
    thisYearOnly.year = 2008;
    setZone(secondSundayOfMarch, thisYearOnly, -60);
    EXPECT_EQ(1, DaylightOffsetHours(dateSerial(2008, 3, 9)));
    setZone({}, {}, -60);
    EXPECT_EQ(1, DaylightOffsetHours(dateSerial(2008, 3, 9)));
}

TEST_F(DaylightTest, TransitionsOnOtherWeekdaysAndOccurrences) {
    const struct {
        std::uint16_t year, month, weekday, occurrence;
        Long day;
    } cases[] = {{2010, 1, 5, 1, 1},  {2010, 1, 4, 1, 7},  {2010, 1, 6, 4, 23}, {2010, 1, 0, 5, 31},
                 {2010, 1, 1, 5, 25}, {2012, 2, 3, 5, 29}, {2010, 12, 5, 5, 31}};
    for (const auto& row : cases)
        EXPECT_EQ(dateSerial(row.year, row.month, row.day),
                  ISODate::TransitionDate(
                      {.month = row.month, .dayOfWeek = row.weekday, .day = row.occurrence}, row.year));
    EXPECT_EQ(dateZero, ISODate::TransitionDate({.month = 3, .day = 0}, 2010));
}

}  // namespace
}  // namespace ovno2
