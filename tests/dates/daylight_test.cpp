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

// Month * 100 + day of the two changes.
struct YearOfChanges {
    Long year, begin, end;
};

class DaylightTest : public DatesTest {
  protected:
    static DateValue dayOfYear(Long year, Long monthAndDay) {
        return dateSerial(year, monthAndDay / 100, monthAndDay % 100);
    }
    static void expectOnlyDaysBetween(std::span<const YearOfChanges> years, Long shift) {
        for (const YearOfChanges& row : years)
            for (DateValue day = dateSerial(row.year, 1, 1); day <= dateSerial(row.year, 12, 31); ++day) {
                const DateValue begin = dayOfYear(row.year, row.begin);
                const DateValue end = dayOfYear(row.year, row.end);
                const bool daylight = begin < end ? day >= begin && day < end : day < end || day >= begin;
                ASSERT_EQ(daylight ? shift : 0, DaylightOffsetHours(day)) << row.year << " " << day;
            }
    }
};

TEST_F(DaylightTest, EuropeanYearsShiftFromTheLastSundayOfMarchToTheLastOfOctober) {
    static constexpr YearOfChanges berlin[] = {{2007, 325, 1028}, {2008, 330, 1026}, {2009, 329, 1025},
                                               {2010, 328, 1031}, {2013, 331, 1027}, {2019, 331, 1027},
                                               {2021, 328, 1031}, {2024, 331, 1027}};
    setZone(lastSundayOfMarch, lastSundayOfOctober, -60);
    expectOnlyDaysBetween(berlin, 1);
}

TEST_F(DaylightTest, AmericanYearsShiftFromTheSecondSundayOfMarch) {
    static constexpr YearOfChanges newYork[] = {
        {2007, 311, 1104}, {2008, 309, 1102}, {2009, 308, 1101}, {2010, 314, 1107}, {2015, 308, 1101}};
    setZone(secondSundayOfMarch, firstSundayOfNovember, -60);
    expectOnlyDaysBetween(newYork, 1);
}

TEST_F(DaylightTest, SouthernYearsShiftAroundNewYearByOneHourWhateverTheBias) {
    static constexpr YearOfChanges sydney[] = {
        {2008, 1005, 406}, {2009, 1004, 405}, {2012, 1007, 401}, {2017, 1001, 402}};
    setZone(firstSundayOfOctober, firstSundayOfApril, -120);
    expectOnlyDaysBetween(sydney, 1);
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

TEST_F(DaylightTest, ZonesWithoutARuleNeverShift) {
    setZone({}, {}, -60);
    for (Long month = 1; month <= 12; ++month)
        EXPECT_EQ(0, DaylightOffsetHours(dateSerial(2008, month, 15)));
    setZone({.month = 3, .day = 6}, {.month = 10, .day = 6}, -60);
    EXPECT_EQ(0, DaylightOffsetHours(dateSerial(2008, 7, 1)));
}

TEST_F(DaylightTest, NothingShiftsWithoutATimeZoneOrADate) {
    EXPECT_EQ(0, DaylightOffsetHours(dateSerial(2008, 7, 1)));
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
    // January 2010 began on a Friday and ended on a Sunday.
    EXPECT_EQ(dateSerial(2010, 1, 1), ISODate::TransitionDate({.month = 1, .dayOfWeek = 5, .day = 1}, 2010));
    EXPECT_EQ(dateSerial(2010, 1, 7), ISODate::TransitionDate({.month = 1, .dayOfWeek = 4, .day = 1}, 2010));
    EXPECT_EQ(dateSerial(2010, 1, 23), ISODate::TransitionDate({.month = 1, .dayOfWeek = 6, .day = 4}, 2010));
    EXPECT_EQ(dateSerial(2010, 1, 31), ISODate::TransitionDate({.month = 1, .dayOfWeek = 0, .day = 5}, 2010));
    EXPECT_EQ(dateSerial(2010, 1, 25), ISODate::TransitionDate({.month = 1, .dayOfWeek = 1, .day = 5}, 2010));
    EXPECT_EQ(dateSerial(2012, 2, 29), ISODate::TransitionDate({.month = 2, .dayOfWeek = 3, .day = 5}, 2012));
    EXPECT_EQ(dateSerial(2010, 12, 31),
              ISODate::TransitionDate({.month = 12, .dayOfWeek = 5, .day = 5}, 2010));
    EXPECT_EQ(dateZero, ISODate::TransitionDate({.month = 3, .day = 0}, 2010));
}

}  // namespace
}  // namespace ovno2
