#include "dates/iso_date.h"

#include <gmock/gmock.h>

#include "base/values.h"
#include "core/log_front.h"
#include "dates/date_text.h"
#include "dates/dates_test.h"
#include "platform/portable/registry.h"

namespace ovno2 {
namespace {

using namespace ISODate;

class IsoDateTest : public DatesTest {};

Text isoDay(const DateFields& day, TextView separator) {
    const auto digits = [](Long number, std::size_t count) {
        const Text text = decimalText(number);
        return Text(count - text.size(), u'0') + text;
    };
    return digits(day.year, 4).append(separator) + digits(day.month, 2).append(separator) +
           digits(day.day, 2);
}

TEST_F(IsoDateTest, EveryDayOfTwoCenturiesSurvivesTheConversionsInEveryLocale) {
    for (const UserLocale& locale : everyLocale) {
        use(locale);
        for (DateValue day = dateSerial(1900, 1, 1); day <= dateSerial(2100, 12, 31);
             day += locale.everyNthDay) {
            const DateFields fields = fieldsOf(day);
            const Text iso = isoDay(fields, u"");
            ASSERT_EQ(iso, FormatISODate(day, /*dateOnly=*/true));
            ASSERT_EQ(iso, ConvertToISO8601Date(toLocal(iso), /*dateOnly=*/true))
                << locale << " " << narrow(iso);
            const Text moment = iso + u"T235901";
            ASSERT_EQ(moment, ConvertToISO8601Date(toLocal(moment), /*dateOnly=*/false))
                << locale << " " << narrow(iso);
            ASSERT_EQ(iso, ConvertToISO8601Date(DateSerialText(fields.year, fields.month, fields.day), true))
                << locale << " " << narrow(iso);
        }
    }
}

TEST_F(IsoDateTest, EveryDashedDayOfTwoCenturiesSurvives) {
    for (const UserLocale& locale : everyLocale) {
        if (locale.shortDate.find(u"MMM") != TextView::npos ||
            locale.shortDate.find(u"ddd") != TextView::npos)
            continue;  // the date format knows numbers only
        use(locale);
        toLocal(u"20080105");  // fetches the date format
        for (DateValue day = dateSerial(1900, 1, 1); day <= dateSerial(2100, 12, 31);
             day += locale.everyNthDay) {
            const DateFields fields = fieldsOf(day);
            ASSERT_EQ(isoDay(fields, u""), ConvertToISO8601Date(ISODashedToLocal(isoDay(fields, u"-")), true))
                << locale << " " << narrow(isoDay(fields, u"-"));
        }
    }
}

TEST_F(IsoDateTest, IsoTextsBecomeLocalTexts) {
    static constexpr struct {
        TextView iso, local;
    } cases[] = {
        {u"20080105", u"05.01.2008"},
        {u"20080105T103000", u"05.01.2008 10:30:00"},
        {u"20080105T1030", u"05.01.2008 10:30:00"},
        {u"20080105T10305", u"05.01.2008 10:30:05"},
        {u"20081301", u"01.01.2009"},
        {u"MO 20081231", u"31.12.2008"},
        {u"mo 20081231", u"31.12.2008"},
        {u"TH 20081231T080000", u"31.12.2008 08:00:00"},
        {u"2 20081231", u"2 20081231"},
        {u"x 20081231T080000", u"31.12.2008 08:00:00"},
        {u"2008-01-05", u"2008-01-05"},
        {u"05.01.2008", u"05.01.2008"},
        {u"2008-13-40", u"40.13.2008"},
        {u"2008-1-400", u"00.01.2008"},
        {u"2008010", u"2008010"},
        {u"hello", u"hello"},
        {u"", u""},
        {u"0", u""},
        {u"00000105", u""},
        {u"99999999T999999", u" 99:99:99"},
        {u"00070105", u"05.01.2007"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(row.local, toLocal(Text(row.iso)))
            << narrow(row.iso) << " " << narrow(toLocal(Text(row.iso)));
}

TEST_F(IsoDateTest, TheMarkTzIsEmptiedForTheCallerAndZeroIsNot) {
    Text tz = u"TZ";
    EXPECT_EQ(u"", GetISO8601Date(tz, true, true));
    EXPECT_EQ(u"", tz);
    Text zero = u"0";
    EXPECT_EQ(u"", GetISO8601Date(zero, true, true));
    EXPECT_EQ(u"0", zero);
}

TEST_F(IsoDateTest, UtcTextsAreShiftedByTheBiasInForceNow) {
    setActiveBias(-60);
    EXPECT_EQ(u"05.01.2008 11:30:00", toLocal(u"20080105T103000Z", true));
    EXPECT_EQ(u"05.07.2008 11:30:00", toLocal(u"20080705T103000Z", true));
    EXPECT_EQ(u"01.01.2009 00:29:59", toLocal(u"20081231T232959Z", true));
    EXPECT_EQ(u"06.01.2008", toLocal(u"20080105T230000Z", true));
    EXPECT_EQ(u"05.01.2008 10:30:00", toLocal(u"20080105T103000Z", false));
    EXPECT_EQ(u"05.01.2008 10:30:00", toLocal(u"20080105T103000", true));
    setActiveBias(300);
    EXPECT_EQ(u"04.01.2008 22:30:00", toLocal(u"20080105T033000Z", true));
    use(american);
    EXPECT_EQ(u"1/4/2008 22:30:00", toLocal(u"20080105T033000Z", true));
}

TEST_F(IsoDateTest, LocalTextsBecomeIsoTexts) {
    static const struct {
        UserLocale locale;
        TextView local, iso, isoDate;
    } cases[] = {
        {german, u"05.01.2008 10:30:00", u"20080105T103000", u"20080105"},
        {german, u"05.01.2008", u"20080105T000000", u"20080105"},
        {german, u"5.1.08 9:05", u"20080105T090500", u"20080105"},
        {german, u"05.01.2008 10", u"20080105T100000", u"20080105"},
        {german, u"05.01.2008 10:30:00 a", u"20080105T103000", u"20080105"},
        {german, u"05.01.2008 10:30:00 P ", u"T", u""},
        {german, u"31.02.2008", u"T", u""},
        {german, u"29.02.1900", u"T", u""},
        {german, u"hello", u"T", u""},
        {german, u"hello wonderful world", u"T", u""},
        {german, u" a", u"T", u""},
        {american, u" a", u"", u""},
        {german, u"", u"", u""},
        {american, u"1/5/2008 10:30:00 p", u"20080105T103000", u"20080105"},
        {american, u"1/5/2008 10:30:00 PM", u"20080105T223000", u"20080105"},
        {american, u"1/5/2008 10", u"T", u""},
        {czech, u"5. 1. 2008", u"20080105T000000", u"20080105"},
        {czech, u"5. 1. 2008 10", u"20080105T100000", u"20080105"},
        {hungarian, u"2008. 01. 05. 10", u"20080105T100000", u"20080105"},
        {italian, u"05/01/2008 10", u"20080105T100000", u"20080105"},
    };
    for (const auto& row : cases) {
        use(row.locale);
        EXPECT_EQ(row.iso, ConvertToISO8601Date(row.local, false)) << row.locale << " " << narrow(row.local);
        EXPECT_EQ(row.isoDate, ConvertToISO8601Date(row.local, true))
            << row.locale << " " << narrow(row.local);
    }
}

TEST_F(IsoDateTest, TextsWithoutEndAndHalfCharactersAreOnlyUnreadable) {
    Text repeated = u":";
    for (int i = 0; i < 1 << 19; ++i)
        repeated.append(u" a");
    EXPECT_EQ(u"T", ConvertToISO8601Date(repeated, false));
    Text megabyte(1 << 20, u'9');
    EXPECT_EQ(megabyte, toLocal(megabyte));
    megabyte[8] = u'T';
    EXPECT_EQ(u" 99:99:99", toLocal(megabyte));
    EXPECT_EQ(u"T", ConvertToISO8601Date(u"\xDC00 \xD800", false));
    EXPECT_EQ(u"\xDC00 \xD800", toLocal(u"\xDC00 \xD800"));
}

TEST_F(IsoDateTest, TheDateFormatIsNormalised) {
    static constexpr struct {
        TextView shortDate, format;
    } cases[] = {
        {u"dd.MM.yyyy", u"dd.MM.yyyy"},
        {u"d/M/yyyy", u"dd/MM/yyyy"},
        {u"M/d/yy", u"MM/dd/yy"},
        {u"d. M. yyyy", u"dd. MM. yyyy"},
        {u"d.M.yyyy 'г.'", u"dd.MM.yyyy"},
        {u"d.M.yyyy'g'", u"dd.MM.yyyy"},
        {u"d 'x' M 'y' yyyy", u"dd MM 'y' yyyy"},  // only the first literal goes
        {u"d.M.yyyy 'open", u"dd.MM.yyyy"},
        {u"yyyy年M月d日", u"yyyy年MM月dd日"},
        {u"d.M.y", u"dd.MM.yy"},
    };
    for (const auto& row : cases) {
        use({.name = "", .shortDate = row.shortDate});
        EXPECT_EQ(row.format, GetDateformat()) << narrow(row.shortDate);
    }
}

TEST_F(IsoDateTest, AFormatThatCannotBeReadBackIsCutAtItsLastBlank) {
    use({.name = "", .shortDate = u"dd.MM. ddd"});
    EXPECT_EQ(u"05.01.", toLocal(u"20080105"));
    EXPECT_EQ(u"dd.MM.", Settings().DateOnlyFormat);
    use({.name = "", .shortDate = u"dddd, ddd"});
    EXPECT_EQ(u"Saturday, Sat", toLocal(u"20080105"));
    EXPECT_EQ(u"", Settings().DateOnlyFormat);
}

TEST_F(IsoDateTest, ARenderingWithAMarkForLostCharactersGivesWayToTheFormat) {
    use({.name = "", .shortDate = u"dd.MM.yyyy'?'"});
    EXPECT_EQ(u"5.1.2008", toLocal(u"20080105"));
    EXPECT_EQ(u"15.11.2008 08:00:00", toLocal(u"20081115T080000"));
}

TEST_F(IsoDateTest, SettingsComeFromTheUsersTimeFormat) {
    use(american);
    EXPECT_EQ(u":", Settings().TimeSeparator);
    EXPECT_EQ(u"00:00:00", Settings().ZeroTime);
    EXPECT_EQ(u"AM", Settings().AMSymbol);
    EXPECT_EQ(u"PM", Settings().PMSymbol);
    use(chinese);  // designators that do not end the format are none
    EXPECT_EQ(u"", Settings().AMSymbol);
    use(italian);
    EXPECT_EQ(u"00.00.00", Settings().ZeroTime);
}

TEST_F(IsoDateTest, DateTextsAreAddedAndCompared) {
    EXPECT_EQ(u"29.02.2008", DateAddText(u"m", 1, u"31.01.2008"));
    EXPECT_EQ(u"06.01.2008 00:15:00", DateAddText(u"n", 30, u"05.01.2008 23:45"));
    EXPECT_EQ(u"hello", DateAddText(u"d", 1, u"hello"));
    EXPECT_EQ(u"", DateAddText(u"yyyy", 9000, u"05.01.2008"));
    EXPECT_EQ(u"", DateAddText(u"fortnight", 1, u"05.01.2008"));
    EXPECT_EQ(0, DateDiffText(u"d", u"", u""));
    EXPECT_EQ(-1, DateDiffText(u"d", u"", u"05.01.2008"));
    EXPECT_EQ(1, DateDiffText(u"d", u"05.01.2008", u""));
    EXPECT_EQ(1, DateDiffText(u"d", u"hello", u""));
    EXPECT_EQ(-1, DateDiffText(u"d", u"hello", u"05.01.2008"));
    EXPECT_EQ(-1, DateDiffText(u"d", u"05.01.2008", u"hello"));
    EXPECT_EQ(366, DateDiffText(u"d", u"05.01.2008", u"05.01.2009"));
    EXPECT_EQ(-12, DateDiffText(u"m", u"05.01.2009", u"05.01.2008"));
    EXPECT_EQ(u"31.12.2007", DateSerialText(2008, 1, 0));
    EXPECT_EQ(u"", DateSerialText(9999, 13, 1));
}

// Takes the lines as the log writer gets them, with their kind where they have one.
class RecordedLines : public LogWriter {
  public:
    std::vector<Text> lines;

    void writeLine(TextView message, Long kind, Long, TextView) noexcept override {
        lines.push_back(kind == plainLine ? Text(message)
                                          : Text(message).append(u"|").append(decimalText(kind)));
        clearPendingFailure();
    }
    void recheckSwitches() noexcept override {}
};

TEST_F(IsoDateTest, TheLogShowsFormatsAndWhatCouldNotBeRead) {
    RecordedLines log;
    LogFront& front = stateOf<LogFront>();
    front.enabled = true;
    front.writer = &log;
    toLocal(u"hello");
    EXPECT_THAT(log.lines, ::testing::ElementsAre(u"GetISO8601Date|0", u"DateTimeInit|0", u"GetTimeFormat: :",
                                                  u"DateTimeInit|999", u"GetDateformat|0", u"dd.MM.yyyy",
                                                  u"GetDateFormat: dd.MM.yyyy", u"GetDateFormat: dd.MM.yyyy",
                                                  u"GetDateformat|999", u"GetISO8601Date: hello",
                                                  u"GetISO8601Date|999"));
    log.lines.clear();
    ConvertToISO8601Date(u"31.02.2008", /*dateOnly=*/false);
    EXPECT_THAT(log.lines, ::testing::ElementsAre(u"ConvertToISO8601Date: 'dd.MM.yyyy' '31.02.2008'"));
    log.lines.clear();
    toLocal(u"99999999T999999");
    EXPECT_THAT(log.lines, ::testing::ElementsAre(u"GetISO8601Date|0", u" 99:99:99", u"GetISO8601Date|999"));
    front.writer = nullptr;
}

TEST_F(IsoDateTest, ARegistryThatFailsLeavesTheFallbacks) {
    auto& registry = static_cast<platform::portable::PortableRegistry&>(machine.registry());
    registry.interfere = [](auto) { return platform::registryAccessDenied; };
    resetThreadState();
    usePlatform(machine);
    DateTimeInit();
    EXPECT_EQ(u":", Settings().TimeSeparator);
    EXPECT_EQ(0, Settings().ActiveTimeBias);
    EXPECT_EQ(u"2008-01-05 10:30:00", toLocal(u"20080105T103000Z", true));
}

}  // namespace
}  // namespace ovno2
