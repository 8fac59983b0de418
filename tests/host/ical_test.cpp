// Calendar files: what other programs and phones write is read, and what is written reads back as it was, by
// the reader here and by libical.
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <libical/ical.h>
#include <random>

#include "host/calendar/ical_names.h"
#include "host/calendar/ical_reader.h"
#include "host/calendar/ical_writer.h"
#include "host/calendar/recurrence.h"

namespace ovno2::host {

namespace {

void setZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

class CalendarFiles : public testing::Test {
  protected:
    CalendarFiles() { setZone("Europe/Berlin"); }
    ~CalendarFiles() override {
        unsetenv("TZ");
        tzset();
    }
};

std::string told(const CalendarEntry& entry) {
    std::string text(kindName(entry.kind));
    const auto add = [&](const char* name, const Text& value) {
        if (!value.empty()) text.append(" ").append(name).append("=").append(toUtf8(value));
    };
    add("start", entry.start);
    add("end", entry.end);
    add("due", entry.due);
    add("alarm", entry.alarm);
    add("rule", entry.rule);
    for (const Text& date : entry.exceptions)
        add("but", date);
    add("summary", entry.summary);
    add("location", entry.location);
    add("description", entry.description);
    add("uid", entry.uid);
    add("calendar", entry.calendar);
    if (entry.birthYear != 0) text.append(" born=").append(std::to_string(entry.birthYear));
    if (entry.priority != 0) text.append(" priority=").append(std::to_string(entry.priority));
    if (entry.isDone) text.append(" done");
    for (const std::string& one : entry.unplaced)
        text.append(" {").append(one).append("}");
    return text;
}

std::string told(const CalendarFile& file) {
    std::string text;
    for (const CalendarEntry& entry : file.entries)
        text.append(told(entry)).append("\n");
    for (const std::string& problem : file.problems)
        text.append("! ").append(problem).append("\n");
    return text;
}

std::string calendar(const char* version, const std::string& lines) {
    return "BEGIN:VCALENDAR\nVERSION:" + std::string(version) + "\n" + lines + "END:VCALENDAR\n";
}

std::string event(const char* version, const std::string& lines) {
    return calendar(version, "BEGIN:VEVENT\n" + lines + "END:VEVENT\n");
}

constexpr const char* newYork =
    "BEGIN:VTIMEZONE\nTZID:NY\nBEGIN:STANDARD\nDTSTART:20071104T020000\n"
    "RRULE:FREQ=YEARLY;BYMONTH=11;BYDAY=1SU\nTZOFFSETFROM:-0400\nTZOFFSETTO:-0500\nEND:STANDARD\n"
    "BEGIN:DAYLIGHT\nDTSTART:20070311T020000\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=2SU\n"
    "TZOFFSETFROM:-0500\nTZOFFSETTO:-0400\nEND:DAYLIGHT\nEND:VTIMEZONE\n";

TEST_F(CalendarFiles, AreReadInBothForms) {
    const std::pair<std::string, const char*> cases[] = {
        {event("2.0",
               "DTSTART:20080105T090000Z\nDURATION:PT90M\nSUMMARY:a\\, b\nUID:u\n"
               "BEGIN:VALARM\nTRIGGER:-P1DT1H\nEND:VALARM\n"),
         "MEETING start=2008-01-05T10:00:00 end=2008-01-05T11:30:00 alarm=2008-01-04T09:00:00 summary=a, b "
         "uid=u\n"},
        {event("2.0", "DTSTART:20080705T090000Z\nATTENDEE:x\nATTENDEE:y\nRDATE:20090101\nX/Y:1\n"),
         "MEETING start=2008-07-05T11:00:00 {ATTENDEE} {RDATE} {line 8: it is no property}\n"},
        {event("2.0", "DTSTART;VALUE=DATE:20080105\nDTEND;VALUE=DATE:20080105\nCATEGORIES:Memo,x\n"),
         "NOTE start=2008-01-05 end=2008-01-06 {CATEGORIES}\n"},
        {event("2.0", "DTSTART;TZID=NY:20080316T200000\nSUMMARY:s\n").insert(28, newYork),
         "MEETING start=2008-03-17T01:00:00 summary=s\n"},
        {event("2.0",
               "DTSTART;TZID=NY:20081218T200000\nRRULE:FREQ=WEEKLY;BYDAY=TH;COUNT=3\n"
               "EXDATE;TZID=NY:20081225T200000\n")
             .insert(28, newYork),
         "MEETING start=2008-12-19T02:00:00 rule=W1 FR 20090102 but=2008-12-26\n"},
        {event("2.0", "DTSTART;TZID=NY:20081218T100000\nRRULE:FREQ=DAILY\n").insert(28, newYork),
         "MEETING start=2008-12-18T16:00:00 {RRULE: it repeats by another clock; some of its dates "
         "are at another time of day here}\n"},
        {event("2.0", "DTSTART;TZID=NY:20080131T200000\nRRULE:FREQ=MONTHLY\n").insert(28, newYork),
         "MEETING start=2008-02-01T02:00:00 {RRULE: it repeats by another clock, on other days here}\n"},
        {event("2.0", "DTSTART;TZID=Mars:20080105T100000\nRRULE:FREQ=MONTHLY;BYDAY=-1SA\n"),
         "MEETING start=2008-01-05T10:00:00 {TZID: the file does not describe Mars; its times are taken as "
         "they stand} {RRULE: BYDAY=-1SA: a phone does not count from the end of the month}\n"},
        {calendar("2.0",
                  "BEGIN:VTODO\nDTSTART:20080105\nDUE:20080106\nPRIORITY:5\nPERCENT-COMPLETE:100\n"
                  "END:VTODO\nBEGIN:VJOURNAL\nEND:VJOURNAL\n"),
         "TODO due=2008-01-06 priority=2 done {DTSTART: a to-do has its due date alone}\n"
         "! f:9: \"VJOURNAL\" is no calendar entry\n"},
        {calendar("2.0",
                  "BEGIN:VEVENT\nUID:u\nDTSTART:20080105T100000\nRRULE:FREQ=DAILY;COUNT=3\nEND:VEVENT\n"
                  "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080106T100000\nDTSTART:20080106T120000\nEND:"
                  "VEVENT\n"),
         "MEETING start=2008-01-05T10:00:00 rule=D1 20080107 but=2008-01-06 uid=u\n"
         "MEETING start=2008-01-06T12:00:00 {RECURRENCE-ID}\n"},
        {event("1.0",
               "DTSTART:20061005T080000Z\nAALARM;TYPE=X-E:20061005T075000Z;;0;x\n"
               "RRULE:MP1 1+ TH 21001231T000000\nSUMMARY;ENCODING=QUOTED-PRINTABLE:=C3=A4\n"
               "CATEGORIES:PHONE CALL\nPRIORITY:0\n"),
         "CALL start=2006-10-05T10:00:00 alarm=2006-10-05T09:50:00 rule=MP1 1+ TH 21001231 summary=ä\n"},
        {event("1.0", "DTSTART:20061005T080000\n")
             .insert(28,
                     "TZ:-05\nDAYLIGHT:TRUE;-04;20060402T070000Z;"
                     "20061029T060000Z;EST;EDT\n"),
         "MEETING start=2006-10-05T14:00:00\n"},
        {event("1.0", "DTSTART:20060705T080000\n").insert(28, "TZ:+01\n"),
         "MEETING start=2006-07-05T08:00:00\n"},
        {"BEGIN:VEVENT\r\nTYPE:Birthday\r\nDESCRIPTION:1975\r\nDTSTART:19750305\r\nRRULE:YD1\r\nAALARM:\r\n"
         "X-IRMC-LUID:7\r\nCALENDAR:Work\r\nEND:VEVENT",
         "BIRTHDAY start=1975-03-05 rule=YD1 uid=7 calendar=Work born=1975\n"},
        {event("2.0", "DTSTART:20081305\n") + "junk\n",
         "! f:7: what stands here is in no calendar\n! f:3: its DTSTART is no date\n"},
        {"BEGIN:VCALENDAR\nBEGIN:VEVENT\nDTSTART:20080105\nEND:VCALENDAR\nEND:X\nBEGIN:VEVENT\n",
         "MEETING start=2008-01-05\n! f:2: the VEVENT that begins here has no end\n"
         "! f:5: this ends \"X\", which has not begun\n"
         "! f:6: the file ends in the middle of the VEVENT that begins here\n! f:6: it has no DTSTART\n"},
        {"", "! f:1: there is no calendar entry in this file\n"},
    };
    for (const auto& [file, expected] : cases) {
        EXPECT_EQ(expected, told(readCalendarFile(file, "f"))) << file;
    }
}

class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    CalendarEntry entry() {
        CalendarEntry entry;
        entry.kind = static_cast<CalendarEntry::Kind>(upTo(6));
        const bool isToDo = entry.kind == CalendarEntry::Kind::toDo;
        const std::chrono::local_days day =
            readMoment(std::string_view("19750101"))->day + std::chrono::days(upTo(22000));
        Moment start{.day = day, .clock = std::chrono::minutes(upTo(95) * 15), .isDay = upTo(2) == 0};
        if (start.isDay) start.clock = {};
        if (upTo(30) == 0) start = *readMoment(std::string_view("20240331T023000"));  // skipped in Berlin
        if (!isToDo || upTo(3) > 0) (isToDo ? entry.due : entry.start) = isoText(start);
        const bool hasStart = !entry.due.empty() || !entry.start.empty();
        if (!isToDo && upTo(3) > 0)
            entry.end = isoText(start.isDay ? Moment{.day = day + std::chrono::days(1 + upTo(3))}
                                            : momentAt(start.time() + std::chrono::minutes(upTo(5000))));
        if (start.day != day) entry.end.clear();
        if (upTo(2) == 0) entry.alarm = isoText(momentAt(start.time() - std::chrono::minutes(upTo(900000))));
        entry.summary = text();
        entry.location = text();
        entry.description = text();
        if (upTo(1) == 0) entry.uid = u"uid" + decimalText(upTo(100000));
        if (upTo(1) == 0) entry.calendar = u"Wörk; b";
        if (entry.kind == CalendarEntry::Kind::birthday && upTo(1) == 0) entry.birthYear = 1901 + upTo(100);
        if (isToDo) entry.priority = upTo(3);
        if (isToDo) entry.isDone = upTo(1) == 0;
        if (hasStart && upTo(1) == 0) repeat(entry, start);
        return entry;
    }

  private:
    int upTo(int last) { return static_cast<int>(random_() % static_cast<unsigned>(last + 1)); }

    Text text() {
        constexpr TextView pieces[] = {u"Lunch", u"a,b;c", u"\\n", u"\n", u"é日",
                                       u" ",     u"1975",  u":\"", u"=3D"};
        Text whole;
        for (int left = upTo(12); left > 0; --left)
            whole.append(pieces[upTo(8)]);
        return trimBlanks(whole);
    }

    void repeat(CalendarEntry& entry, const Moment& start) {
        Repetition rule;
        rule.kind = static_cast<Repetition::Kind>(upTo(4));
        rule.interval = 1 + upTo(upTo(1) * 254);
        if (rule.kind == Repetition::Kind::weekly)
            rule.weekdays =
                static_cast<unsigned>(upTo(126)) | 1u << (std::chrono::weekday(start.day).iso_encoding() - 1);
        if (upTo(1) == 0) rule.last = start.day + std::chrono::days(upTo(9000));
        entry.rule = shortRule(rule, start);
        for (int left = upTo(3); left > 0; --left)
            entry.exceptions.push_back(isoText({.day = start.day + std::chrono::days(left * 7)}));
    }

    std::mt19937 random_;
};

std::vector<CalendarEntry> generated(unsigned seed) {
    Generator generator(seed);
    std::vector<CalendarEntry> entries(300);
    for (CalendarEntry& entry : entries)
        entry = generator.entry();
    return entries;
}

TEST_F(CalendarFiles, BringEveryEntryBackInEveryZone) {
    unsigned seed = 0;
    for (const char* const zone : {"Europe/Berlin", "America/New_York", "Australia/Adelaide", "Asia/Kolkata",
                                   "Pacific/Auckland", "America/Sao_Paulo", "UTC"}) {
        setZone(zone);
        const std::vector<CalendarEntry> entries = generated(++seed);
        for (const CalendarForm form : {CalendarForm::iCalendar, CalendarForm::vCalendar}) {
            const CalendarText written = writeCalendarFile(entries, form);
            EXPECT_TRUE(written.lost.empty()) << written.lost.front().second;
            const CalendarFile read = readCalendarFile(written.text, "f");
            ASSERT_TRUE(read.problems.empty()) << read.problems.front();
            ASSERT_EQ(entries.size(), read.entries.size());
            for (std::size_t i = 0; i < entries.size(); ++i)
                ASSERT_EQ(told(entries[i]), told(read.entries[i]))
                    << zone << (form == CalendarForm::iCalendar ? " 2.0" : " 1.0");
        }
    }
}

// The dates of an event by libical, in its own clock.
std::vector<Text> datesByLibical(icalcomponent* event, const Moment& to) {
    std::vector<Text> dates;
    std::pair<std::vector<Text>*, Text> into{&dates, isoText(to)};
    icalcomponent_foreach_recurrence(
        event, icaltime_from_string("19700101"), icaltime_from_string(basicText(to).c_str()),
        [](icalcomponent* one, icaltime_span* span, void* data) {
            auto& [found, end] = *static_cast<decltype(into)*>(data);
            const icaltimetype start = icalcomponent_get_dtstart(one);
            icaltimetype time =
                icaltime_from_timet_with_zone(span->start, 0, icaltimezone_get_utc_timezone());
            if (start.zone) time = icaltime_convert_to_zone(time, const_cast<icaltimezone*>(start.zone));
            std::string text = icaltime_as_ical_string(time);
            if (start.is_date) text.resize(8);
            if (!start.is_date) text.resize(15);
            Text date = isoText(*readMoment(std::string_view(text)));
            if (date < end) found->push_back(std::move(date));
        },
        &into);
    return dates;
}

TEST_F(CalendarFiles, OpenInLibicalWithTheSameDates) {
    std::vector<CalendarEntry> entries = generated(42);
    std::erase_if(entries, [](const CalendarEntry& entry) {
        return entry.kind == CalendarEntry::Kind::toDo ||  // Where the clock skips that hour libical goes on
                                                           // to the next.
               (entry.start.size() > 10 && entry.start.substr(11, 2) == u"02");
    });
    const std::string text = writeCalendarFile(entries, CalendarForm::iCalendar).text;
    icalcomponent* const file = icalparser_parse_string(text.c_str());
    ASSERT_NE(nullptr, file);
    EXPECT_EQ(0, icalcomponent_count_errors(file));
    std::size_t place = 0;
    for (icalcomponent* event = icalcomponent_get_first_component(file, ICAL_VEVENT_COMPONENT); event;
         event = icalcomponent_get_next_component(file, ICAL_VEVENT_COMPONENT), ++place) {
        const CalendarEntry& entry = entries[place];
        const char* const summary = icalcomponent_get_summary(event);
        EXPECT_EQ(toUtf8(entry.summary), summary ? summary : "");
        Moment to = *readMoment(TextView(entry.start));
        to = {.day = to.day + std::chrono::days(4000)};
        EXPECT_EQ(datesOf(entry, u"1970-01-01", isoText(to)), datesByLibical(event, to)) << told(entry);
    }
    EXPECT_EQ(entries.size(), place);
    icalcomponent_free(file);
}

}  // namespace

}  // namespace ovno2::host
