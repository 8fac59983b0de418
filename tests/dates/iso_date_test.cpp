#include "dates/iso_date.h"

#include <gmock/gmock.h>

#include "base/values.h"
#include "common/recording_log.h"
#include "core/log_front.h"
#include "dates/date_text.h"
#include "dates/dates_test.h"
#include "platform/portable/registry.h"

namespace ovno2 {
namespace {

using namespace ISODate;
using ::testing::ElementsAre;

using IsoDateTest = DatesTest;

TEST_F(IsoDateTest, EveryDayOfTwoCenturiesSurvivesTheConversionsInEveryLocale) {
    for (const UserLocale& locale : everyLocale) {
        use(locale);
        // The date format that dashed days become knows numbers only.
        const bool named =
            locale.shortDate.find(u"MMM") != TextView::npos || locale.shortDate.starts_with(u"ddd");
        for (DateValue day = dateSerial(1900, 1, 1); day <= dateSerial(2100, 12, 31);
             day += locale.everyNthDay) {
            const DateFields fields = fieldsOf(day);
            const Text iso = decimalText(fields.year * 10000 + fields.month * 100 + fields.day);
            SCOPED_TRACE(toUtf8(iso) + " " + locale.name);
            ASSERT_EQ(iso, FormatISODate(day, /*dateOnly=*/true));
            ASSERT_EQ(iso, ConvertToISO8601Date(toLocal(iso), /*dateOnly=*/true));
            ASSERT_EQ(iso + u"T235901", ConvertToISO8601Date(toLocal(iso + u"T235901"), /*dateOnly=*/false));
            ASSERT_EQ(iso, ConvertToISO8601Date(DateSerialText(fields.year, fields.month, fields.day), true));
            const Text dashed = iso.substr(0, 4) + u'-' + iso.substr(4, 2) + u'-' + iso.substr(6);
            ASSERT_TRUE(named || iso == ConvertToISO8601Date(ISODashedToLocal(dashed), true));
        }
    }
}

TEST_F(IsoDateTest, IsoTextsBecomeLocalTexts) {
    for (const auto& [iso, local] : pairsOf(
             u"20080105=05.01.2008|20080105T103000=05.01.2008 10:30:00|20080105T1030=05.01.2008 10:30:00|"
             u"20080105T10305=05.01.2008 10:30:05|20081301=01.01.2009|MO 20081231=31.12.2008|"
             u"mo 20081231=31.12.2008|TH 20081231T080000=31.12.2008 08:00:00|2 20081231=2 20081231|"
             u"x 20081231T080000=31.12.2008 08:00:00|2008-01-05=2008-01-05|05.01.2008=05.01.2008|"
             u"2008-13-40=40.13.2008|2008-1-400=00.01.2008|2008010=2008010|hello=hello|=|0=|TZ=|00000105=|"
             u"99999999T999999= 99:99:99|00070105=05.01.2007"))
        EXPECT_EQ(local, toLocal(iso)) << toUtf8(iso);
    for (const TextView mark : {u"TZ", u"0"}) {
        Text text(mark);
        GetISO8601Date(text, true, true);
        EXPECT_EQ(mark == u"0" ? u"0" : u"", text) << "of the two only TZ is emptied for the caller";
    }
}

TEST_F(IsoDateTest, UtcTextsAreShiftedByTheBiasInForceNow) {
    setActiveBias(-60);
    for (const auto& [utc, local] :
         pairsOf(u"20080105T103000Z=05.01.2008 11:30:00|20080705T103000Z=05.07.2008 11:30:00|"
                 u"20081231T232959Z=01.01.2009 00:29:59|20080105T230000Z=06.01.2008|"
                 u"20080105T103000=05.01.2008 10:30:00"))
        EXPECT_EQ(local, toLocal(utc, /*convertUtc=*/true)) << toUtf8(utc);
    EXPECT_EQ(u"05.01.2008 10:30:00", toLocal(u"20080105T103000Z", /*convertUtc=*/false));
    setActiveBias(300);
    EXPECT_EQ(u"04.01.2008 22:30:00", toLocal(u"20080105T033000Z", true));
    use(american);
    EXPECT_EQ(u"1/4/2008 22:30:00", toLocal(u"20080105T033000Z", true));
}

TEST_F(IsoDateTest, LocalTextsBecomeIsoTexts) {
    const std::pair<UserLocale, TextView> cases[] = {
        {german,
         u"05.01.2008 10:30:00=20080105T103000|05.01.2008 10:30:00 "
         u"a=20080105T103000|05.01.2008=20080105T000000|"
         u"5.1.08 9:05=20080105T090500|05.01.2008 10=20080105T100000|05.01.2008 10:30:00 P =T|31.02.2008=T|"
         u"29.02.1900=T|hello=T|hello wonderful world=T| a=|=|05.01.2008 p=20080105T000000|"
         u"5. Jan. 2008=20080105T000000|5. Jan. 2008 10:30=20080105T103000|24.12. 18=20081224T180000"},
        {american,
         u" a=|=|1/5/2008 10:30:00 p=20080105T103000|1/5/2008 10:30:00 PM=20080105T223000|1/5/2008 10=T"},
        {czech, u"5. 1. 2008=20080105T000000|5. 1. 08 10=20080105T100000|5. 1. 2008 10=20080105T100000"},
        {hungarian, u"2008. 01. 05. 10=20080105T100000"},
        {italian, u"05/01/2008 10=20080105T100000"}};
    for (const auto& [locale, texts] : cases) {
        use(locale);
        for (const auto& [local, iso] : pairsOf(texts)) {
            EXPECT_EQ(iso, ConvertToISO8601Date(local, /*dateOnly=*/false)) << locale << " " << toUtf8(local);
            EXPECT_EQ(iso.substr(0, iso.find(u'T')), ConvertToISO8601Date(local, true)) << toUtf8(local);
        }
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
    for (const auto& [shortDate, format] :
         pairsOf(u"dd.MM.yyyy=dd.MM.yyyy|d/M/yyyy=dd/MM/yyyy|M/d/yy=MM/dd/yy|d. M. yyyy=dd. MM. yyyy|"
                 u"d.M.yyyy 'г.'=dd.MM.yyyy|d.M.yyyy'g'=dd.MM.yyyy|d 'x' M 'y' yyyy=dd MM 'y' yyyy|"
                 u"d.M.yyyy 'open=dd.MM.yyyy|yyyy年M月d日=yyyy年MM月dd日|d.M.y=dd.MM.yy")) {
        use({"", shortDate});
        EXPECT_EQ(format, GetDateformat()) << toUtf8(shortDate);
    }
}

TEST_F(IsoDateTest, AFormatThatCannotBeReadBackIsCutAtItsLastBlank) {
    use({"", u"dd.MM. ddd"});
    EXPECT_EQ(u"05.01.", toLocal(u"20080105"));
    EXPECT_EQ(u"dd.MM.", Settings().DateOnlyFormat);
    use({"", u"dddd, ddd"});
    EXPECT_EQ(u"Saturday, Sat", toLocal(u"20080105"));
    EXPECT_EQ(u"", Settings().DateOnlyFormat);
}

TEST_F(IsoDateTest, ARenderingWithAMarkForLostCharactersGivesWayToTheFormat) {
    use({"", u"dd.MM.yyyy'?'"});
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
    struct Row {
        Text first, second;
        Long days;
    };
    for (const auto& [first, second, days] :
         {Row{u"", u"", 0}, Row{u"", u"05.01.2008", -1}, Row{u"05.01.2008", u"", 1}, Row{u"hello", u"", 1},
          Row{u"hello", u"05.01.2008", -1}, Row{u"05.01.2008", u"hello", -1},
          Row{u"05.01.2008", u"05.01.2009", 366}})
        EXPECT_EQ(days, DateDiffText(u"d", first, second)) << toUtf8(first) << " " << toUtf8(second);
    EXPECT_EQ(-12, DateDiffText(u"m", u"05.01.2009", u"05.01.2008"));
    EXPECT_EQ(u"31.12.2007", DateSerialText(2008, 1, 0));
    EXPECT_EQ(u"", DateSerialText(9999, 13, 1));
}

TEST_F(IsoDateTest, TheLogShowsFormatsAndWhatCouldNotBeRead) {
    RecordingLog log;
    toLocal(u"hello");
    EXPECT_THAT(log.lines, ElementsAre("<GetISO8601Date", "<DateTimeInit",
                                       "GetTimeFormat: :", "DateTimeInit>", "<GetDateformat", "dd.MM.yyyy",
                                       "GetDateFormat: dd.MM.yyyy", "GetDateFormat: dd.MM.yyyy",
                                       "GetDateformat>", "GetISO8601Date: hello", "GetISO8601Date>"));
    log.lines.clear();
    ConvertToISO8601Date(u"31.02.2008", /*dateOnly=*/false);
    toLocal(u"99999999T999999");
    EXPECT_THAT(log.lines, ElementsAre("ConvertToISO8601Date: 'dd.MM.yyyy' '31.02.2008'", "<GetISO8601Date",
                                       " 99:99:99", "GetISO8601Date>"));
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
