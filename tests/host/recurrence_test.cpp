// Rules in all their forms: what a phone can hold comes through as it is, with the dates that libical gives;
// the rest is refused with a reason.
#include "host/calendar/recurrence.h"

#include <gtest/gtest.h>
#include <libical/ical.h>
#include <random>

#include "host/calendar/recurrence_general.h"

namespace ovno2::host {

namespace {

// A zone without daylight saving, two hours east.
std::chrono::local_seconds east(std::chrono::sys_seconds time) {
    return std::chrono::local_seconds(time.time_since_epoch() + std::chrono::hours(2));
}

std::string fromFile(bool isOld, const char* rule, const char* start) {
    Repetition read;
    const Moment moment = *readMoment(std::string_view(start));
    const std::string why =
        isOld ? readOldRule(rule, moment, east, read) : readRecurrenceRule(rule, moment, east, read);
    return why.empty() ? toUtf8(shortRule(read, moment)) : "! " + why;
}

TEST(Recurrence, OfFilesIsHeldExactlyOrRefused) {
    constexpr bool old = true, current = false;
    constexpr struct {
        bool isOld;
        const char *rule, *start, *expected;  // a part of it, where it is a reason
    } cases[] = {
        {old, "MP1 1- SU #2", "20240630T100000", "! \"1-\", counted from the end"},
        {old, "MD1 LD #3", "20240131", "! LD, the last day"},
        {old, "D3 20050630T000000", "20050601T100000", "D3 20050630"},
        {old, "W2 MO WE 20240630T000000", "20240603T100000", "W2 MO WE 20240630"},
        {old, "MP1 2+ TU TH 1- FR #6", "20240109", "! several weekdays a month"},
        {old, "YM1 #0", "19811227", "YD1"},
        {old, "D1 20100228T083000Z", "20100226T100000", "D1 20100228"},
        {old, "D1 20100228T073000Z", "20100226T100000", "D1 20100227"},
        {old, "MP13+ 20300101", "20240116", "MP1 3+ TU 20300101"},
        {old, "MP121+ TU #2", "20240102", "MP12 1+ TU 20250107"},
        {old, "MP1 2+ TU #2", "20240116", "! it begins on the month's 3. weekday"},
        {old, "W1 MO 0900", "20240603T100000", "! \"0900\" is nothing"},
        {old, "D256", "20240101", "! \"D256\": a phone's intervals end at 255"},
        {old, "D0", "20240101", "! \"D0\" has no interval"},
        {old, "D1 20231231", "20240101", "! it ends before"},
        {old, "", "20240101", "! it is empty"},
        {current, "FREQ=Weekly;COUNT=10", "20021028T140000", "W1 MO 20021230"},
        {current, "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,TH;UNTIL=20081231T230000Z", "20081201T100000",
         "W2 MO TH 20081231"},
        {current, "FREQ=WEEKLY;INTERVAL=2;BYDAY=SU,MO;WKST=SU", "20240603T100000", "! WKST=SU"},
        {current, "FREQ=WEEKLY;INTERVAL=2;BYDAY=TU,MO;WKST=SU", "20240603T100000", "W2 MO TU"},
        {current, "FREQ=DAILY;BYDAY=MO,TU,WE,TH,FR", "20240603", "W1 MO TU WE TH FR"},
        {current, "FREQ=MONTHLY;BYDAY=2TU;UNTIL=20240901", "20240109", "MP1 2+ TU 20240901"},
        {current, "FREQ=MONTHLY;BYDAY=TU;BYSETPOS=2", "20240109", "MP1 2+ TU"},
        {current, "FREQ=MONTHLY;BYDAY=-1SU", "20240128", "! BYDAY=-1SU: a phone does not count"},
        {current, "FREQ=MONTHLY;BYMONTHDAY=2,15", "19970902", "! BYMONTHDAY=2,15"},
        {current, "FREQ=YEARLY;BYMONTH=5;BYDAY=2SU", "20240512", "MP12 2+ SU"},
        {current, "FREQ=YEARLY;INTERVAL=300;BYMONTH=5;BYDAY=2SU", "20240512", "! INTERVAL=300"},
        {current, "FREQ=YEARLY;BYMONTH=12;BYMONTHDAY=26", "20021226", "YD1"},
        {current, "FREQ=YEARLY;BYDAY=20MO", "19970519", "! BYDAY=20MO in a year"},
        {current, "FREQ=YEARLY;BYWEEKNO=20", "19970512", "! BYWEEKNO=20"},
        {current, "FREQ=HOURLY", "20240101", "! FREQ=HOURLY"},
        {current, "FREQ=DAILY;COUNT=0", "20240101", "! COUNT=0"},
        {current, "FREQ=DAILY;COUNT=2147483647", "20240101", "D1"},
        {current, "FREQ=DAILY;INTERVAL=3;COUNT=4", "20240101", "D3 20240110"},
        {current, "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,FR;COUNT=1", "20240105", "W2 MO FR 20240105"},
        {current, "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,FR;COUNT=3", "20240105", "W2 MO FR 20240119"},
        {current, "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,FR;COUNT=4", "20240105", "W2 MO FR 20240129"},
        {current, "FREQ=DAILY;INTERVAL=99999999999", "20240101", "! INTERVAL=99999999999"},
        {current, "FREQ=DAILY;UNTIL=20241301", "20240101", "! UNTIL=20241301 is no date"},
        {current, "FREQ=DAILY;FREQ=DAILY", "20240101", "! FREQ stands there twice"},
    };
    for (const auto& one : cases) {
        const std::string told = fromFile(one.isOld, one.rule, one.start);
        if (*one.expected == '!')
            EXPECT_TRUE(told.starts_with(one.expected)) << one.rule << ": " << told;
        else
            EXPECT_EQ(one.expected, told) << one.rule;
    }
}

// The dates in the window, by libical.
std::vector<Text> datesByLibical(const std::string& rule, const Moment& start, const Moment& from,
                                 const Moment& to) {
    icalrecurrencetype recurrence = icalrecurrencetype_from_string(rule.c_str());
    icalrecur_iterator* const all =
        icalrecur_iterator_new(recurrence, icaltime_from_string(basicText(start).c_str()));
    std::vector<Text> dates;
    for (icaltimetype time = icalrecur_iterator_next(all); !icaltime_is_null_time(time);
         time = icalrecur_iterator_next(all)) {
        const std::optional<Moment> moment = readMoment(std::string_view(icaltime_as_ical_string(time)));
        if (!moment || moment->day >= to.day) break;
        if (moment->day >= from.day) dates.push_back(isoText(*moment));
    }
    icalrecur_iterator_free(all);
    return dates;
}

TEST(Recurrence, HasTheDatesOfLibicalInEveryForm) {
    // libical starts its weeks elsewhere for a rule that does not begin on one of its own weekdays.
    std::mt19937 random(7);
    const auto upTo = [&](int last) { return static_cast<int>(random() % static_cast<unsigned>(last + 1)); };
    const std::chrono::local_days first = readMoment(std::string_view("19990101"))->day;
    for (int round = 0; round < 300; ++round) {
        Moment start{.day = first + std::chrono::days(upTo(3000)),
                     .clock = std::chrono::minutes(upTo(1439)),
                     .isDay = upTo(3) == 0};
        if (start.isDay) start.clock = {};
        Repetition rule;
        rule.kind = static_cast<Repetition::Kind>(upTo(4));
        rule.interval = std::min(1 + upTo(upTo(3) * 80), 255);
        if (rule.kind == Repetition::Kind::weekly)
            rule.weekdays = static_cast<unsigned>(1 + upTo(126)) |
                            1u << std::chrono::weekday(start.day).iso_encoding() >> 1;
        if (upTo(1) == 0) rule.last = start.day + std::chrono::days(upTo(4000));
        const Text text = shortRule(rule, start);
        Moment until = start;
        if (rule.last) until.day = *rule.last;
        const std::string current = recurrenceRule(rule, start, rule.last ? basicText(until) : "");
        ASSERT_EQ(toUtf8(text), fromFile(false, current.c_str(), basicText(start).c_str())) << current;
        const std::string old = oldRule(rule, start);
        ASSERT_EQ(toUtf8(text), fromFile(true, old.c_str(), basicText(start).c_str())) << old;

        const Moment from{.day = start.day + std::chrono::days(upTo(4000) - 500)};
        const Moment to{.day = from.day + std::chrono::days(upTo(3000))};
        CalendarEntry entry;
        entry.start = isoText(start);
        entry.rule = text;
        ASSERT_EQ(datesByLibical(current, start, from, to), datesOf(entry, isoText(from), isoText(to)))
            << current << " from " << basicText(start);
    }
}

std::string generalDates(bool isOld, const char* text, const char* start, std::size_t most) {
    GeneralRule rule;
    const Moment moment = *readMoment(std::string_view(start));
    const std::string why =
        isOld ? readGeneralOldRule(text, moment, east, rule) : readGeneralRule(text, moment, east, rule);
    if (!why.empty()) return "! " + why;
    const GeneralDates found = datesOf(rule, moment, readMoment(std::string_view("20991231"))->day, most);
    std::string dates;
    for (const Moment& date : found.dates)
        dates.append(dates.empty() ? "" : " ").append(basicText(date).substr(2));
    return dates + (found.isWhole ? "." : "");
}

// A dot behind the dates: the rule has no more.
TEST(Recurrence, InGeneralHasTheDatesThatItsPartsSay) {
    constexpr bool old = true, current = false;
    constexpr struct {
        bool isOld;
        const char *rule, *start, *expected;
    } cases[] = {
        {old, "MP1 1- SU #2", "20240630T100000", "240630T100000 240728T100000."},
        {old, "MD1 LD #3", "20240131", "240131 240229 240331."},
        {old, "MD1 2- 1 #3", "20240131", "240201 240228 240301."},
        {old, "MP1 2+ TU TH 1- FR #6", "20240109", "240109 240111 240126 240208 240213 240223."},
        {old, "YD1 1 366 20250101T000000", "20240101", "240101 241231 250101."},
        {old, "YM1 3 1 #0", "20240115", "240115 240315 250115"},
        {old, "D2 0900 1730 20240103T153000Z", "20240101T100000",
         "240101T173000 240103T090000 240103T173000."},
        {old, "W1 MO 0900 TU 1000", "20240101T090000", "! \"TU\" is nothing that can stand there"},
        {old, "MP1 6+ TU", "20240101", "! \"6+\" is nothing that can stand there"},
        {current, "FREQ=WEEKLY;BYDAY=FR,MO,MO,WE;BYSETPOS=-1,1;COUNT=3", "20240101T100000",
         "240101T100000 240105T100000 240108T100000."},
        {current, "FREQ=WEEKLY;INTERVAL=2;BYDAY=TU,SU;WKST=SU;COUNT=3", "19970805", "970805 970817 970819."},
        {current, "FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1;UNTIL=20240330", "20240131",
         "240131 240229 240329."},
        {current, "FREQ=MONTHLY;BYDAY=FR;BYMONTHDAY=13", "19970902", "980213 980313 981113"},
        {current, "FREQ=DAILY;BYMONTHDAY=-1,-2;COUNT=3", "20241030", "241030 241031 241129."},
        {current, "FREQ=YEARLY;BYWEEKNO=1;BYDAY=MO,TU;INTERVAL=3", "20241231", "241231 280103 280104"},
        {current, "FREQ=YEARLY;BYWEEKNO=-1", "20240101", "241223 251222 261228"},
        {current, "FREQ=YEARLY;BYDAY=20MO", "19970519", "970519 980518 990517"},
        {current, "FREQ=YEARLY;BYDAY=-1TU,2WE;BYMONTH=2", "20240101", "240214 240227 250212"},
        {current, "FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=29", "20240229", "240229 280229 320229"},
        {current, "FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30", "20240229", ""},
        {current, "FREQ=HOURLY;INTERVAL=7;BYHOUR=3,6;BYMINUTE=5,15", "20250101T030500",
         "250101T030500 250101T031500 250107T060500"},
        {current, "FREQ=MINUTELY;INTERVAL=90;UNTIL=20240101T090000Z", "20240101T083000",
         "240101T083000 240101T100000."},
        {current, "FREQ=DAILY;BYHOUR=8;BYMINUTE=0,30;INTERVAL=99999", "20240101", "240101"},
        {current, "FREQ=SECONDLY", "20240101T100000", "! entries every few seconds are no calendar's"},
        {current, "FREQ=MONTHLY;BYWEEKNO=20", "20240101", "! BYWEEKNO=20 cannot go with FREQ=MONTHLY"},
        {current, "FREQ=DAILY;BYEASTER=1", "20240101", "! BYEASTER=1 is none"},
        {current, "FREQ=DAILY;BYMONTHDAY=0", "20240101", "! BYMONTHDAY=0 is none"},
    };
    for (const auto& one : cases)
        EXPECT_EQ(one.expected, generalDates(one.isOld, one.rule, one.start,
                                             std::string_view(one.rule).ends_with("#6") ? 6 : 3))
            << one.rule;
}

TEST(Recurrence, LeavesOutExceptionsAndCostsNothingFarAway) {
    CalendarEntry entry;
    entry.start = u"2008-01-05T10:00:00";
    entry.rule = u"D1 20080108";
    entry.exceptions = {u"2008-01-06", u"nonsense"};
    EXPECT_EQ((std::vector<Text>{u"2008-01-05T10:00:00", u"2008-01-07T10:00:00", u"2008-01-08T10:00:00"}),
              datesOf(entry, u"2000-01-01", u"9999-01-01"));
    entry.rule = u"D255";
    EXPECT_EQ((std::vector<Text>{u"9998-07-11T10:00:00"}), datesOf(entry, u"9998-06-01", u"9999-01-01"));
    entry.rule = u"no rule";
    EXPECT_EQ((std::vector<Text>{u"2008-01-05T10:00:00"}), datesOf(entry, u"2000-01-01", u"9999-01-01"));
    EXPECT_TRUE(datesOf(entry, u"2009-01-01", u"2010-01-01").empty());
    CalendarEntry toDo;
    toDo.kind = CalendarEntry::Kind::toDo;
    toDo.due = u"2008-02-29";
    toDo.rule = u"YD1";
    EXPECT_EQ((std::vector<Text>{u"2008-02-29", u"2012-02-29"}), datesOf(toDo, u"2008-01-01", u"2013-01-01"));
}

}  // namespace

}  // namespace ovno2::host
