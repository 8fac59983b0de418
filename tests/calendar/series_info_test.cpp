#include "calendar/series_info.h"

#include <bit>
#include <gtest/gtest.h>

#include "base/utf8.h"
#include "dates/date_text.h"
#include "dates/dates_test.h"
#include "dates/iso_date.h"

namespace ovno2::CalSeriesInfo {
namespace {

DateValue day(Long year, Long month, Long day) {
    return dateSerial(year, month, day);
}

// A date in the user's form, midnight without its time.
Text local(Long year, Long month, Long dayOfMonth) {
    return localDateText(day(year, month, dayOfMonth));
}

class SeriesInfoTest : public DatesTest {
  protected:
    static SeriesInfo parsed(const Text& rule) {
        SeriesInfo series;
        GetSeriesInfo(rule, series, /*start=*/{}, /*options=*/0);
        return series;
    }
    // "frequency interval count days" and, for a rule with an end, the end as ISO date.
    static std::string shown(const SeriesInfo& series) {
        std::string text;
        for (const Long part : {series.Frequency, series.Interval, series.Count, series.Days})
            text += std::to_string(part) + ' ';
        if (series.WeekOfMonth != 0 || series.DayIndex != 0)
            text += std::to_string(series.WeekOfMonth) + '/' + std::to_string(series.DayIndex) + ' ';
        if (!series.Exdates.empty()) text += "EX:" + toUtf8(series.Exdates) + ' ';
        text += toUtf8(ISODate::ConvertToISO8601Date(series.Until, /*dateOnly=*/true));
        while (text.ends_with(' '))
            text.pop_back();
        return text;
    }
};

TEST_F(SeriesInfoTest, RulesOfBothStylesAreTakenApart) {
    const struct {
        const char16_t* rule;
        const char* expected;
    } rules[] = {
        {u"RRULE:FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,TH;UNTIL=20081231", "1 2 0 18 20081231"},
        {u"FREQ=MONTHLY;BYDAY=2TU", "3 0 0 0 2/3"},
        {u"FREQ=MONTHLY;BYDAY=-1SU;COUNT=4", "3 0 4 0 -1/1"},
        {u"BYDAY=MO;FREQ=DAILY", "0 0 0 2"},  // what comes later counts
        {u"freq=x;FREQ=DAILY;interval=3;Count=7\\n", "0 3 7 0"},
        {u"FREQ=Weekly", "0 0 0 0"},
        {u"FREQ=YEARLY;BYMONTHDAY=3;WKST=SU;;X", "5 0 0 0"},
        {u"EXDATE:20080105;EXDATE=20080112", "0 0 0 0 EX:20080105;20080112"},
        {u"D1 #5", "0 1 5 0"},
        {u"MD1 15 #10", "2 1 10 15"},
        {u"W2 MO TH 20081231", "1 2 0 18 20081231"},
        {u"W2 MO TH EX:20080107;20080110", "1 2 0 18 EX:20080107;20080110"},
        {u"D3 20050630T000000", "0 3 0 0 20050630"},
        {u"D12 20081231", "0 12 0 0 20081231"},
        {u"D400 20081231", "0 400 0 0 20081231"},
        {u"W2 MO WE 20240630T000000", "1 2 0 10 20240630"},
        {u"MP13+", "3 1 0 0"},
        {u"MP22- 20101231", "3 2 0 0 20101231"},
        {u"MP121+", "3 12 0 0"},
        {u"MP1 3+ TU", "3 1 0 0"},
        {u"MP1 1- SU #2", "3 1 2 0"},
        {u"MP1 2+ TU TH 1- FR #6", "3 1 6 0"},
        {u"MD1 LD #3", "2 1 3 0"},
        {u"YD1 20200301", "5 0 0 0 20200301"},
        {u"YM1 #0", "5 0 0 0"},
        {u"X1", "0 0 0 0"},
        {u"", "0 0 0 0"},
    };
    for (const auto& [rule, expected] : rules) {
        SeriesInfo series = parsed(rule);
        EXPECT_EQ(expected, shown(series)) << toUtf8(rule);
    }
    EXPECT_FALSE(parsed(u"X1").isRule || parsed(u"EXDATE:20080105").isRule);
    SeriesInfo kept = parsed(u"D1 #5");
    GetSeriesInfo(u"EXDATE:20080105", kept, /*start=*/{}, keepsSeries);
    EXPECT_EQ("0 1 5 0 EX:20080105", shown(kept));
}

TEST_F(SeriesInfoTest, ASeriesEndsWithItsLastOccurrenceOrAfterAHundredYears) {
    const struct {
        const char16_t* rule;
        Text start, expected;
    } rules[] = {
        {u"D1 #5", local(2008, 1, 1), local(2008, 1, 5)},
        {u"D2 #3", local(2008, 2, 27), local(2008, 3, 2)},
        {u"W1 MO TH #4", local(2008, 1, 7), local(2008, 1, 31)},
        {u"W1 #2", local(2008, 1, 7), local(2008, 1, 14)},
        {u"MD1 15 #10", local(2008, 1, 15), local(2008, 10, 15)},
        {u"MD1 31 #2", local(2008, 1, 31), local(2008, 2, 29)},
        {u"YD1 #3", local(2008, 2, 29), local(2010, 2, 28)},
        {u"D1", local(2008, 1, 1), local(2108, 1, 1)},
        {u"FREQ=DAILY;COUNT=2147483647;INTERVAL=2147483647", local(2008, 1, 1), u""},
        {u"D1 #5", u"", u""},
        {u"D1 #5", u"no date", u"no date"},
    };
    for (const auto& [rule, start, expected] : rules) {
        SeriesInfo series = parsed(rule);
        EXPECT_EQ(expected, SeriesEndDate(start, series)) << toUtf8(rule);
    }
    SeriesInfo series;
    GetSeriesInfo(u"D1 #5", series, local(2008, 1, 1), /*options=*/0);
    EXPECT_EQ(local(2008, 1, 5), series.Until);
}

// 19 February 2008 was the third Tuesday of its month.
TEST_F(SeriesInfoTest, TheRecurrenceWordKeepsWhatItCanHoldAndComesBackAsText) {
    const struct {
        const char16_t* rule;
        Long version;
        library::Word word;
        const char16_t* text;
    } rules[] = {
        {u"D1", 36, 0x000101, u"D1"},
        {u"FREQ=DAILY", 36, 0x000001, u"D1"},
        {u"FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,TH", 36, 0x090202, u"W2 MO TH"},
        {u"W1 SU SA", 50, 0x600102, u"W1 SA SU"},
        {u"W2 MO TH", 35, 0x000202, u"W2"},
        {u"MD1 19", 35, 0x000103, u"MD1"},
        {u"MD1 19", 36, 0x020103, u"MP13+"},
        {u"MP22-", 36, 0x020203, u"MP23+"},
        {u"YD1", 36, 0x000004, u"YD1"},
        {u"D255", 36, 0x00FF01, u"D255"},
    };
    for (const auto& [rule, version, word, text] : rules) {
        EXPECT_EQ(word, recurrenceWord(parsed(rule), day(2008, 2, 19), version)) << toUtf8(rule);
        EXPECT_EQ(text, ruleText(word, day(2008, 2, 19)));
    }
    EXPECT_THROW(recurrenceWord(parsed(u"D256"), day(2008, 2, 19), 36), RuntimeFailure);
    // Every day of a month and every weekday: as often as the day has come since the first.
    for (Long start = 1; start <= 31; ++start)
        for (library::Word bit = 0; bit < 7; ++bit) {
            Long count = 0;
            for (Long i = 1; i <= start; ++i)
                if ((weekdayOf(day(2008, 7, i)) + 5) % 7 == static_cast<Long>(bit)) ++count;
            EXPECT_EQ(u"MP1" + decimalText(count) + u"+",
                      ruleText(0x103 | 1u << (16 + bit), day(2008, 7, start)));
        }
    for (const library::Word none : {0x000100u, 0x000105u, 0x7F02FFu})
        EXPECT_EQ(u"", ruleText(none, day(2008, 2, 19)));
}

}  // namespace
}  // namespace ovno2::CalSeriesInfo
