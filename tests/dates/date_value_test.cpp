#include "dates/date_value.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "base/failure.h"

namespace ovno2 {
namespace {

DateValue at(Long year, Long month, Long day, Long hour = 0, Long minute = 0, Long second = 0) {
    return dateOf(DateFields{year, month, day, hour, minute, second});
}

TEST(DateValueTest, SerialDaysAndWeekdaysAreThoseOfTheCalendar) {
    static constexpr struct {
        Long year, month, day, serial, weekday;
    } days[] = {{100, 1, 1, -657434, 6},   {1582, 10, 15, -115858, 6}, {1899, 12, 29, -1, 6},
                {1899, 12, 30, 0, 7},      {1899, 12, 31, 1, 1},       {1900, 2, 28, 60, 4},
                {1900, 3, 1, 61, 5},       {1970, 1, 1, 25569, 5},     {2000, 2, 29, 36585, 3},
                {2008, 1, 5, 39452, 7},    {2100, 2, 28, 73109, 1},    {2100, 3, 1, 73110, 2},
                {9999, 12, 31, 2958465, 6}};
    for (const auto& day : days) {
        const DateValue date = at(day.year, day.month, day.day);
        EXPECT_EQ(day.serial, date);
        EXPECT_EQ(day.weekday, weekdayOf(date)) << day.serial;
        EXPECT_EQ((DateFields{day.year, day.month, day.day}), fieldsOf(day.serial));
    }
}

TEST(DateValueTest, EverySecondOfADayKeepsItsFieldsOnBothSidesOfDateZero) {
    for (const Long year : {1850, 2008})
        for (Long second = 0; second < 86400; ++second) {
            const DateFields fields{year, 6, 30, second / 3600, second / 60 % 60, second % 60};
            ASSERT_EQ(fields, fieldsOf(dateOf(fields)));
        }
    // Before date zero the time still counts from midnight.
    EXPECT_DOUBLE_EQ(-1.25, at(1899, 12, 29, 6));
    EXPECT_EQ((DateFields{1899, 12, 30, 18}), fieldsOf(addMinutes(at(1899, 12, 29, 18), 24 * 60)));
}

TEST(DateValueTest, FractionsRoundAndPartsRollOverIntoTheirNeighbours) {
    EXPECT_EQ((DateFields{2008, 1, 6, 0, 0, 0}), fieldsOf(39453 - 0.4 / 86400));
    EXPECT_EQ((DateFields{2008, 1, 5, 23, 59, 59}), fieldsOf(39453 - 0.6 / 86400));
    EXPECT_EQ(39453, serialDay(39453 - 0.4 / 86400));
    struct Row {
        DateFields parts, date;
    };
    for (const auto& [parts, date] : {Row{{2008, 13, 1}, {2009, 1, 1}}, Row{{2008, 3, 0}, {2008, 2, 29}},
                                      Row{{2008, 1, 0}, {2007, 12, 31}}, Row{{2008, -12, 0}, {2006, 11, 30}},
                                      Row{{2008, 1, 366}, {2008, 12, 31}}, Row{{29, 1, 1}, {2029, 1, 1}},
                                      Row{{30, 1, 1}, {1930, 1, 1}}, Row{{0, 1, 1}, {2000, 1, 1}}})
        EXPECT_EQ(dateOf(date), dateSerial(parts.year, parts.month, parts.day)) << dateOf(date);
    EXPECT_DOUBLE_EQ(1.5, timeSerial(35, 59, 60));
}

TEST(DateValueTest, WhatIsNoDateFails) {
    EXPECT_THROW(dateOf(DateFields{1900, 2, 29}), RuntimeFailure);
    EXPECT_THROW(dateOf(DateFields{2008, 13, 1}), RuntimeFailure);
    EXPECT_THROW(dateOf(DateFields{99, 1, 1}), RuntimeFailure);
    EXPECT_THROW(dateSerial(9999, 12, 32), RuntimeFailure);
    EXPECT_THROW(dateSerial(2008, std::numeric_limits<Long>::max(), 1), RuntimeFailure);
    EXPECT_THROW(dateSerial(2008, 1, std::numeric_limits<Long>::min()), RuntimeFailure);
    EXPECT_THROW(addIntervals(u"yyyy", 8000, at(2008, 1, 5)), RuntimeFailure);
    EXPECT_THROW(addIntervals(u"x", 1, at(2008, 1, 5)), RuntimeFailure);
    for (const double wild :
         {std::nan(""), std::numeric_limits<double>::infinity(), 1e300, -657435.0, 2958466.0})
        EXPECT_THROW(fieldsOf(wild), RuntimeFailure) << wild;
}

TEST(DateValueTest, IntervalsAreAddedAsTheirCalendarHasThem) {
    const DateValue date = at(2008, 1, 31, 23, 30);
    EXPECT_EQ(at(2008, 2, 29, 23, 30), addIntervals(u"m", 1, date));
    EXPECT_EQ(at(2007, 2, 28, 23, 30), addIntervals(u"M", -11, date));
    EXPECT_EQ(at(2007, 10, 31, 23, 30), addIntervals(u"q", -1, date));
    EXPECT_EQ(at(2009, 2, 28), addIntervals(u"yyyy", 1, at(2008, 2, 29)));
    EXPECT_EQ(at(2008, 2, 14, 23, 30), addIntervals(u"ww", 2, date));
    EXPECT_EQ(at(2008, 2, 1, 23, 30), addIntervals(u"d", 1, date));
    EXPECT_EQ(at(2008, 2, 1, 1, 30), addIntervals(u"h", 2, date));
    EXPECT_EQ(at(2008, 2, 1, 0, 15), addIntervals(u"n", 45, date));
    EXPECT_EQ(at(2008, 1, 31, 23, 29, 59), addIntervals(u"s", -1, date));
}

TEST(DateValueTest, DifferencesCountTheBoundariesBetween) {
    using Row = std::tuple<TextView, DateFields, DateFields, Long>;
    for (const auto& [interval, from, to, difference] :
         {Row{u"d", {2008, 1, 5, 23, 59}, {2008, 1, 6, 0, 1}, 1}, Row{u"d", {2008, 1, 6}, {2008, 1, 5}, -1},
          Row{u"d", {1899, 12, 29, 18}, {1899, 12, 31}, 2}, Row{u"yyyy", {2007, 12, 31}, {2008, 1, 1}, 1},
          Row{u"m", {2007, 12, 31}, {2009, 2, 1}, 14}, Row{u"q", {2008, 3, 31}, {2008, 4, 1}, 1},
          Row{u"ww", {2008, 1, 5}, {2008, 1, 6}, 1}, Row{u"ww", {2008, 1, 6}, {2008, 1, 12}, 0},
          Row{u"w", {2008, 1, 5}, {2008, 1, 18}, 1}, Row{u"h", {2008, 1, 5, 10, 59}, {2008, 1, 5, 11, 1}, 1},
          Row{u"n", {2008, 1, 5, 10, 0}, {2008, 1, 6, 10, 0}, 1440},
          Row{u"s", {2008, 1, 5}, {2008, 1, 4}, -86400}})
        EXPECT_EQ(difference, intervalsBetween(interval, dateOf(from), dateOf(to))) << difference;
    EXPECT_THROW(intervalsBetween(u"s", at(100, 1, 1), at(9999, 12, 31)), RuntimeFailure);
}

}  // namespace
}  // namespace ovno2
