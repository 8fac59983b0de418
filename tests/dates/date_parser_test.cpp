#include "dates/date_parser.h"

#include "dates/date_text.h"
#include "dates/dates_test.h"

namespace ovno2 {
namespace {

class DateParserTest : public DatesTest {
  protected:
    void expectReads(const UserLocale& locale, TextView text, const DateFields& fields) {
        const std::optional<DateFields> read = readDateFields(text);
        ASSERT_TRUE(read) << locale << ": " << toUtf8(text);
        EXPECT_EQ(dateOf(fields), dateOf(*read)) << locale << ": " << toUtf8(text);
    }
};

TEST_F(DateParserTest, ReadsDatesInTheOrderOfTheUserAndTimesWithAndWithoutSecondsAndDesignators) {
    using Row = std::pair<UserLocale, TextView>;  // "text|text=moment", with a semicolon between moments
    for (const auto& [locale, cases] :
         {Row{german,
              u"05.01.2008|5.1.08|  5. 1. 2008 |5/1/2008|5-1-2008|5 1 "
              u"2008|2008-01-05|2008-1-05|2008/1/5|5.1.|"
              u"5.1|5. January 2008|5-Jan-08|Jan. 5, 2008|2008 Jan 5|5 jan=20080105T000000;"
              u"1/2008|Jan 2008=20080101T000000;01.13.2008=20080113T000000;13. April 2008=20080413T000000;"
              u"1.1.29=20290101T000000;1.1.30=19300101T000000;29.02.2000=20000229T000000;"
              u"1.1.100=01000101T000000;05.01.2008 10:30:15|2008-01-05T10:30:15=20080105T103015;"
              u"05.01.2008  9:05=20080105T090500;05.01.2008 11 pm=20080105T230000;"
              u"5.1. 10:30|Jan 5 10:30=20080105T103000;5 Jan 2008 10:30 PM=20080105T223000;"
              u"23:59:59=18991230T235959;00:00:00=18991230T000000"},
          Row{american,
              u"1/5/2008|1.5.2008|1/5|1/5/2008 12:00:00 AM=20080105T000000;13/5/2008=20080513T000000;"
              u"1/5/2008 12:30 pm=20080105T123000;1/5/2008 1:30:00PM|1/5/2008 13:30:00=20080105T133000"},
          Row{hungarian, u"2008.1.5|08.01.05|2008. 01. 05=20080105T000000"},
          Row{chinese, u"2008-01-05|1/5/2008=20080105T000000;2008/1/5 下午3:04:05=20080105T150405"},
          Row{czech, u"5. 1. 2008 9:05:07=20080105T090507;5. 1. 2008 9:05 odp.=20080105T210500"},
          Row{italian,
              u"05/01/2008 10.30.15=20080105T103015;05/01/2008 "
              u"10:30=20080105T103000;10.30.15=18991230T103015"},
          Row{finnish, u"5.1.2008 10.30.15=20080105T103015;5.1.2008=20080105T000000"},
          Row{{"CompactPicture", u"yyyyMMdd"}, u"20080105=20080105T000000"},
          Row{{"Narrow", u"d\u00A0M\u00A0yyyy"}, u"5\u00A01\u00A02008=20080105T000000"},
          Row{{"Eras", u"d.M.yyyy gg"}, u"5.1.2008=20080105T000000"}}) {
        use(locale);
        for (const Text& group : split(cases, u';'))
            for (const Text& text : split(group.substr(0, group.find(u'=')), u'|')) {
                const std::optional<DateFields> read = readDateFields(text);
                ASSERT_TRUE(read) << locale << ": " << toUtf8(text);
                EXPECT_EQ(group.substr(group.find(u'=') + 1), ISODate::FormatISODate(dateOf(*read), false))
                    << locale << ": " << toUtf8(text);
            }
    }
}

TEST_F(DateParserTest, RejectsWhatIsNoDate) {
    std::vector<Text> texts = split(
        u"| |31.02.2008|31.02.|31.02.08|29.02.1900|00.01.2008|05.00.2008|2008-13-01|2008-02-30|20080105|"
        u"20080105T103000|99999999T999999|5|2008|1,5|-5.1.2008|5.1.2008 10|5.1.2008 24:00|5.1.2008 10:60|"
        u"5.1.2008 10:30:60|5.1.2008 10:|5.1.2008 13:00 AM|5.1.2008T10:30|5.1.2008-|5.1.2008 10:30 a|"
        u"5.1.2008 10:30 x|5.1.20080|5.1.2008.1|5..1.2008|5.1.0008|5 1|Jan|5 Janu 2008|5 Jan Feb|"
        u"MO 05.01.2008|TZ|W2 MO TH|1e5|\xD800.\xDC00.2008|５.１.２００８",
        u'|');
    texts.insert(texts.end(), {Text(u"5.1.2008\0", 9), Text(u"\0", 1), Text(1 << 20, u'1')});
    for (const Text& text : texts)
        EXPECT_FALSE(readDateFields(text)) << toUtf8(text.substr(0, 40));
}

TEST_F(DateParserTest, ReadsBackWhateverIsRenderedInEveryLocale) {
    static constexpr DateFields moments[] = {{2008, 1, 5},          {2008, 12, 31, 23, 59, 59},
                                             {1931, 2, 1, 0, 0, 1}, {2030, 11, 10, 12},
                                             {1899, 12, 30},        {1899, 12, 30, 9, 5}};
    for (const UserLocale& locale : everyLocale) {
        use(locale);
        for (const DateFields& moment : moments) {
            // A time alone looks like a date there.
            if (TextView(locale.shortDate) == finnish.shortDate && moment.year == 1899) continue;
            expectReads(locale, localDateText(dateOf(moment)), moment);
            expectReads(locale, generalDateText(dateOf(moment)), moment);
        }
    }
}

TEST_F(DateParserTest, KnowsTheYearOfTheClockWhereNoneIsGiven) {
    clock().set({.year = 2013, .month = 1, .day = 1});
    expectReads(german, u"24.12.", {2013, 12, 24});
    EXPECT_FALSE(readDateFields(u"29.2."));
    clock().set({.year = 2012, .month = 1, .day = 1});
    expectReads(german, u"29.2.", {2012, 2, 29});
}

TEST_F(DateParserTest, RendersTheFormsOfTheUser) {
    const DateValue morning = dateOf(DateFields{2008, 1, 5, 9, 5, 7});
    const DateValue midnight = dateOf(DateFields{2008, 1, 5});
    struct Row {
        UserLocale locale;
        TextView date, time, generalTime, midnight;
    };
    for (const auto& row : {Row{german, u"05.01.2008", u"09:05:07", u"09:05:07", u"00:00:00"},
                            Row{american, u"1/5/2008", u"09:05:07", u"9:05:07 AM", u"12:00:00 AM"},
                            Row{italian, u"05/01/2008", u"09.05.07", u"9.05.07", u"0.00.00"},
                            Row{bulgarian, u"5.1.2008 г.", u"09:05:07", u"9:05:07", u"0:00:00"},
                            Row{{"Literals", u"ddd d 'o''clock' MMMM yy", u"HH'h'mm"},
                                u"Sat 5 o'clock January 08",
                                u"09:05:07",
                                u"09h05",
                                u"00h00"}}) {
        use(row.locale);
        const Text date(row.date);
        EXPECT_EQ(date, shortDateText(morning));
        EXPECT_EQ((date + u" ").append(row.time), localDateText(morning));
        EXPECT_EQ((date + u" ").append(row.generalTime), generalDateText(morning));
        EXPECT_EQ(date, generalDateText(midnight));
        EXPECT_EQ(row.midnight, generalDateText(dateZero));
    }
}

}  // namespace
}  // namespace ovno2
