#include "dates/date_parser.h"

#include "dates/date_text.h"
#include "dates/dates_test.h"

namespace ovno2 {
namespace {

class DateParserTest : public DatesTest {
  protected:
    void expectReads(const UserLocale& locale, TextView text, const DateFields& fields) {
        const std::optional<DateFields> read = readDateFields(text);
        ASSERT_TRUE(read) << locale << ": " << narrow(text);
        EXPECT_EQ(dateOf(fields), dateOf(*read)) << locale << ": " << narrow(text);
    }
};

TEST_F(DateParserTest, ReadsDatesInTheOrderOfTheUser) {
    static constexpr DateFields fifth{2008, 1, 5};
    static const struct {
        UserLocale locale;
        TextView text;
        DateFields fields;
    } cases[] = {
        {german, u"05.01.2008", fifth},
        {german, u"5.1.08", fifth},
        {german, u"  5. 1. 2008 ", fifth},
        {german, u"5/1/2008", fifth},
        {german, u"5-1-2008", fifth},
        {german, u"5 1 2008", fifth},
        {german, u"2008-01-05", fifth},
        {german, u"2008-1-05", fifth},
        {german, u"2008/1/5", fifth},
        {german, u"5.1.", fifth},
        {german, u"5.1", fifth},
        {german, u"1/2008", {2008, 1, 1}},
        {german, u"01.13.2008", {2008, 1, 13}},
        {german, u"5. January 2008", fifth},
        {german, u"5-Jan-08", fifth},
        {german, u"Jan. 5, 2008", fifth},
        {german, u"2008 Jan 5", fifth},
        {german, u"5 jan", fifth},
        {german, u"Jan 2008", {2008, 1, 1}},
        {german, u"1.1.29", {2029, 1, 1}},
        {german, u"1.1.30", {1930, 1, 1}},
        {german, u"29.02.2000", {2000, 2, 29}},
        {german, u"1.1.100", {100, 1, 1}},
        {american, u"1/5/2008", fifth},
        {american, u"1.5.2008", fifth},
        {american, u"13/5/2008", {2008, 5, 13}},
        {american, u"1/5", fifth},
        {hungarian, u"2008.1.5", fifth},
        {hungarian, u"08.01.05", fifth},
        {hungarian, u"2008. 01. 05", fifth},
        {chinese, u"2008-01-05", fifth},
        {chinese, u"1/5/2008", fifth},
        {{.name = "CompactPicture", .shortDate = u"yyyyMMdd"}, u"20080105", fifth},
        {{.name = "Narrow", .shortDate = u"d\u00A0M\u00A0yyyy"}, u"5\u00A01\u00A02008", fifth},
        {{.name = "Eras", .shortDate = u"d.M.yyyy gg"}, u"5.1.2008", fifth},
    };
    for (const auto& row : cases) {
        use(row.locale);
        expectReads(row.locale, row.text, row.fields);
    }
}

TEST_F(DateParserTest, ReadsTimesWithAndWithoutSecondsAndDesignators) {
    static const struct {
        UserLocale locale;
        TextView text;
        DateFields fields;
    } cases[] = {
        {german, u"05.01.2008 10:30:15", {2008, 1, 5, 10, 30, 15}},
        {german, u"05.01.2008  9:05", {2008, 1, 5, 9, 5}},
        {german, u"05.01.2008 11 pm", {2008, 1, 5, 23}},
        {german, u"5.1. 10:30", {2008, 1, 5, 10, 30}},
        {german, u"5 Jan 2008 10:30 PM", {2008, 1, 5, 22, 30}},
        {german, u"Jan 5 10:30", {2008, 1, 5, 10, 30}},
        {german, u"2008-01-05T10:30:15", {2008, 1, 5, 10, 30, 15}},
        {german, u"23:59:59", {1899, 12, 30, 23, 59, 59}},
        {german, u"00:00:00", {1899, 12, 30}},
        {american, u"1/5/2008 12:00:00 AM", {2008, 1, 5}},
        {american, u"1/5/2008 12:30 pm", {2008, 1, 5, 12, 30}},
        {american, u"1/5/2008 1:30:00PM", {2008, 1, 5, 13, 30}},
        {american, u"1/5/2008 13:30:00", {2008, 1, 5, 13, 30}},
        {czech, u"5. 1. 2008 9:05:07", {2008, 1, 5, 9, 5, 7}},
        {czech, u"5. 1. 2008 9:05 odp.", {2008, 1, 5, 21, 5}},
        {chinese, u"2008/1/5 下午3:04:05", {2008, 1, 5, 15, 4, 5}},
        {italian, u"05/01/2008 10.30.15", {2008, 1, 5, 10, 30, 15}},
        {italian, u"05/01/2008 10:30", {2008, 1, 5, 10, 30}},
        {italian, u"10.30.15", {1899, 12, 30, 10, 30, 15}},
        {finnish, u"5.1.2008 10.30.15", {2008, 1, 5, 10, 30, 15}},
        {finnish, u"5.1.2008", {2008, 1, 5}},
    };
    for (const auto& row : cases) {
        use(row.locale);
        expectReads(row.locale, row.text, row.fields);
    }
}

TEST_F(DateParserTest, RejectsWhatIsNoDate) {
    const Text megabyte(1 << 20, u'1');
    const TextView texts[] = {u"",
                              u" ",
                              u"31.02.2008",
                              u"31.02.",
                              u"31.02.08",
                              u"29.02.1900",
                              u"00.01.2008",
                              u"05.00.2008",
                              u"2008-13-01",
                              u"2008-02-30",
                              u"20080105",
                              u"20080105T103000",
                              u"99999999T999999",
                              u"5",
                              u"2008",
                              u"1,5",
                              u"-5.1.2008",
                              u"5.1.2008 10",
                              u"5.1.2008 24:00",
                              u"5.1.2008 10:60",
                              u"5.1.2008 10:30:60",
                              u"5.1.2008 10:",
                              u"5.1.2008 13:00 AM",
                              u"5.1.2008T10:30",
                              u"5.1.2008-",
                              u"5.1.2008 10:30 a",
                              u"5.1.2008 10:30 x",
                              u"5.1.20080",
                              u"5.1.2008.1",
                              u"5..1.2008",
                              u"5.1.0008",
                              u"5 1",
                              u"Jan",
                              u"5 Janu 2008",
                              u"5 Jan Feb",
                              u"MO 05.01.2008",
                              u"TZ",
                              u"W2 MO TH",
                              u"1e5",
                              TextView(u"5.1.2008\0", 9),
                              TextView(u"\0", 1),
                              u"\xD800.\xDC00.2008",
                              u"５.１.２００８",
                              TextView(megabyte)};
    for (const TextView text : texts)
        EXPECT_FALSE(readDateFields(text)) << narrow(text.substr(0, 40));
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
    const auto texts = [&](const UserLocale& locale) {
        use(locale);
        return std::array<Text, 5>{shortDateText(morning), localDateText(morning), generalDateText(morning),
                                   generalDateText(midnight), generalDateText(dateZero)};
    };
    using Texts = std::array<Text, 5>;
    EXPECT_EQ(
        (Texts{u"05.01.2008", u"05.01.2008 09:05:07", u"05.01.2008 09:05:07", u"05.01.2008", u"00:00:00"}),
        texts(german));
    EXPECT_EQ((Texts{u"1/5/2008", u"1/5/2008 09:05:07", u"1/5/2008 9:05:07 AM", u"1/5/2008", u"12:00:00 AM"}),
              texts(american));
    EXPECT_EQ(
        (Texts{u"05/01/2008", u"05/01/2008 09.05.07", u"05/01/2008 9.05.07", u"05/01/2008", u"0.00.00"}),
        texts(italian));
    EXPECT_EQ(
        (Texts{u"5.1.2008 г.", u"5.1.2008 г. 09:05:07", u"5.1.2008 г. 9:05:07", u"5.1.2008 г.", u"0:00:00"}),
        texts({.name = "Bulgarian", .shortDate = u"d.M.yyyy 'г.'", .timeFormat = u"H:mm:ss"}));
    EXPECT_EQ(
        (Texts{u"Sat 5 o'clock January 08", u"Sat 5 o'clock January 08 09:05:07",
               u"Sat 5 o'clock January 08 09h05", u"Sat 5 o'clock January 08", u"00h00"}),
        texts({.name = "Literals", .shortDate = u"ddd d 'o''clock' MMMM yy", .timeFormat = u"HH'h'mm"}));
}

}  // namespace
}  // namespace ovno2
