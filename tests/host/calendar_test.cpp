// `ovphone calendar` on a phone of the test's own.
#include "host/calendar/phone_entry.h"
#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::SizeIs;

class OvphoneCalendar : public Ovphone {
  protected:
    OvphoneCalendar() {
        const fs::path bundled = phones;
        phones = folder.path() / "phones";
        fs::create_directories(phones / "n95");
        fs::copy_file(bundled / "demo" / "phone.json", phones / "n95" / "phone.json");
        fs::copy_file(bundled / "demo" / "calendar.json", phones / "n95" / "calendar.json");
    }
    std::string store() const { return contentOf(phones / "n95" / "calendar.json"); }
    static std::string fault(const std::string& call, const std::string& more) {
        return R"([{"command": "fault", "call": ")" + call + R"(", )" + more + "}]";
    }
};

}  // namespace

TEST_F(OvphoneCalendar, RepeatsAreExpandedAndWhatGoesOnIsShown) {
    EXPECT_THAT(items("calendar --month 2008-07 --calendar 'praxis am muhlbach'"), SizeIs(10));
    const std::string days = run("calendar list --from 2008-08-01 --to 2008-08-07").output;
    EXPECT_THAT(days, HasSubstr("Urlaub: Berchtesgaden (to 2008-08-08)"));
    EXPECT_THAT(run("calendar --month 2008-07").output, HasSubstr("whole day    Sperrm"));
    EXPECT_THAT(items("calendar show"), SizeIs(300));
    expectOutcome({"calendar --month 2008-13", 2, "is no month"});
    expectOutcome({"calendar --from 2008-02-02 --to 2008-02-01", 2, "lies before"});
    expectOutcome({"calendar show --calendar Nowhere", 1, "It has: Privat"});
}

TEST_F(OvphoneCalendar, WhatThePhoneDoesNotHandOutIsNamed) {
    expectOutcome({"calendar show urlaub -q", 1, "299 of 300 calendar entries",
                   fault("CAReadItem", R"("nth": 7, "status": "0x80100000")")});
    expectOutcome({"calendar show -q", 1, "reported error",
                   fault("CAGetIDList", R"("onwards": true, "status": "0x80100000")")});
}

TEST_F(OvphoneCalendar, EntriesComeBackAsTheyWereWritten) {
    struct {
        const char* fields;
        const char* shown;
    } cases[] = {
        {"summary=Zahn 'start=2030-07-15 10:00' 'end=2030-07-15 10:30' alarm=15m 'rule=W2 MO TH 20301231' "
         "not-on=2030-07-29 calendar=privat",
         R"("start":"2030-07-15T10:00:00","end":"2030-07-15T10:30:00","alarm":"2030-07-15T09:45:00","summary":"Zahn","rule":"W2 MO TH 20301231","exceptions":["2030-07-29"])"},
        {"summary=Zahn start=2030-08-05 end=2030-08-19",
         R"("start":"2030-08-05","end":"2030-08-19","summary":"Zahn")"},
        {"summary=Zahn type=birthday start=1921-02-28",
         R"("start":"1921-02-28","end":"1921-03-01","summary":"Zahn","birthYear":1921,"rule":"YD1")"},
        {"summary=Zahn type=to-do", R"("summary":"Zahn","priority":2,"done":false)"},
        {"summary=Zahn type=to-do due=2030-03-01 done=yes priority=3",
         R"("due":"2030-03-01","summary":"Zahn","priority":3,"done":true)"},
        {"summary=Zahn 'start=2030-10-15 10:00' 'rule=FREQ=MONTHLY;BYDAY=3TU;COUNT=2'",
         R"("rule":"MP13+ 20301119")"},
    };
    const std::string before = store();
    for (const auto& [fields, shown] : cases) {
        expectOutcome({std::string("calendar add ") + fields, 0, "1 entry added"});
        const std::vector<std::string> found = items("calendar show zahn");
        const auto added = std::ranges::find_if(found, [](const std::string& one) {
            return one.find(R"("summary":"Zahn")") != std::string::npos;
        });
        ASSERT_NE(added, found.end()) << fields;
        EXPECT_THAT(*added, HasSubstr(shown));
        const std::size_t uid = added->find(R"("uid":")") + 7;
        expectOutcome({"calendar remove " + added->substr(uid, 8), 0, "1 entry deleted"});
    }
    EXPECT_THAT(items("calendar show"), SizeIs(300));
}

TEST_F(OvphoneCalendar, AnEditChangesItsFieldsAlone) {
    expectOutcome({"calendar edit 0C0001C6 'start=2008-01-17 18:30'", 0, "1 entry changed"});
    EXPECT_THAT(
        items("calendar show 0C0001C6"),
        ElementsAre(HasSubstr(
            R"("start":"2008-01-17T18:30:00","end":"2008-01-17T20:30:00","alarm":"2008-01-17T17:30:00")")));
    EXPECT_THAT(items("calendar show 0C0001C6"), ElementsAre(HasSubstr(R"("rule":"MP13+")")));
    expectOutcome({"calendar edit 0C0001C6 calendar=Privat", 0, "1 entry changed"});
    const std::string before = store();
    for (const Case& c :
         {Case{"calendar add summary=X 'start=2008-07-16 10:00' 'rule=MP1 1- SU #2'", 2, "rule"},
          Case{"calendar add summary=X start=2008-02-30", 2, "no time"},
          Case{"calendar add summary=X type=meeting start=2008-02-03", 2, "needs a time"},
          Case{"calendar edit 0C0001C3 summary=X -n", 0, "would be changed"},
          Case{"calendar edit 0C0001C3 summary=X", 1, "Nothing was changed",
               fault("CAWriteItem", R"("nth": 1, "status": "0x80100000")")},
          Case{"calendar edit 0C0001C3 summary=X", 1, "Nothing was changed",
               fault("CACommitOperations", R"("onwards": true, "status": "0x80100000")")},
          Case{"calendar remove 0C", 1, "several"}})
        expectOutcome(c);
    EXPECT_EQ(before, store());
}

// Through a file of either form to an empty phone, where a second time nothing is left to do.
TEST_F(OvphoneCalendar, EntriesTravelThroughFiles) {
    for (const char* const name : {"all.ics", "all.vcs"}) {
        expectOutcome({std::string("calendar export ") + name, 0, "300 of 300"});
        EXPECT_THAT(run(std::string("calendar import ") + name).output, HasSubstr("300 unchanged\n"));
    }
    std::ofstream(phones / "n95" / "calendar.json")
        << R"({"format": 1, "folder": {"id": 1, "name": "\\", "path": "\\", "subfolders": [)"
        << R"({"id": 2, "name": "Privat", "path": "\\Privat", "subfolders": []}]}, "entries": []})";
    const Case cases[] = {{"calendar import all.ics --calendar Nowhere", 1, "no calendar \"Nowhere\""},
                          {"calendar import gone.ics", 1, "is not there"},
                          {"calendar import all.ics", 1, "Nothing was changed",
                           fault("CAWriteItem", R"("nth": 200, "status": "0x80100000")")}};
    for (const Case& c : cases)
        expectOutcome(c);
    EXPECT_TRUE(items("calendar show").empty());
    // Repeats by the day of the month would become others.
    EXPECT_THAT(run("calendar import all.ics").output, HasSubstr("295 added, 5 failed"));
    EXPECT_THAT(run("calendar import all.ics").output, HasSubstr("295 unchanged, 5 failed"));
    // A whole day of a kind that has a time of day is that day from midnight on.
    std::ofstream(folder.path() / "day.ics")
        << "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nSUMMARY:Fair\nDTSTART;VALUE=DATE:20090317\n"
           "DTEND;VALUE=DATE:20090318\nEND:VEVENT\nEND:VCALENDAR\n";
    EXPECT_THAT(run("calendar import day.ics").output, HasSubstr("1 added\n"));
    EXPECT_THAT(run("calendar import day.ics").output, HasSubstr("1 unchanged\n"));
}

TEST_F(OvphoneCalendar, WhatNoPhoneCanRepeatBecomesSingleEntries) {
    std::ofstream(folder.path() / "wide.ics")
        << "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:u\nSUMMARY:Chor\nDTSTART:20300127T190000\n"
           "DTEND:20300127T210000\nRRULE:FREQ=MONTHLY;BYDAY=-1SU\nEXDATE:20300331T190000\n"
           "BEGIN:VALARM\nTRIGGER:-PT1H\nEND:VALARM\nEND:VEVENT\n"
           "BEGIN:VEVENT\nUID:u\nSUMMARY:Chor im Freien\nRECURRENCE-ID:20300428T190000\n"
           "DTSTART:20300429T190000\nEND:VEVENT\n"
           "BEGIN:VEVENT\nSUMMARY:Uhrwerk\nDTSTART:20300101T190000Z\nRRULE:FREQ=MINUTELY\nEND:VEVENT\n"
           "BEGIN:VEVENT\nSUMMARY:Pillen\nDTSTART:20300301T080000\n"
           "RRULE:FREQ=DAILY;BYHOUR=8,20;COUNT=5\nEXDATE:20300302T080000\nEND:VEVENT\nEND:VCALENDAR\n";
    expectOutcome({"calendar import wide.ics -n", 1, "\"--expand-until DAY\" makes single entries"});
    expectOutcome({"calendar import wide.ics --expand-until soon", 2, "is no date"});
    const std::string line = "calendar import wide.ics --expand-until 2030-06-01";
    const Outcome first = run(line), second = run(line);
    EXPECT_EQ(1, first.status);
    EXPECT_THAT(first.errors, HasSubstr("becomes 3 single entries up to 2030-06-01"));
    EXPECT_THAT(first.errors, HasSubstr("no single entries are made of it: it "
                                        "has more than 1000 dates up to 2030-06-01"));
    EXPECT_THAT(first.output, HasSubstr("8 added, 1 failed"));
    EXPECT_THAT(second.output, HasSubstr("8 unchanged, 1 failed"));
    EXPECT_THAT(items("calendar show chor"),
                IsSupersetOf({HasSubstr(R"("start":"2030-02-24T19:00:00","end":"2030-02-24T21:00:00",)"
                                        R"("alarm":"2030-02-24T18:00:00")"),
                              HasSubstr(R"("start":"2030-05-26T19:00:00")")}));
    EXPECT_THAT(items("calendar show pillen"), SizeIs(4));
    EXPECT_THAT(items("calendar import wide.ics --expand-until 2030-06-01", 1),
                Contains(HasSubstr(R"("result":"failed","message":"Not written)")));
    EXPECT_THAT(items("calendar add summary=Miete start=2030-01-31 rule=MD1 --expand-until 2030-12-31"),
                AllOf(SizeIs(7), Contains(HasSubstr(R"-("name":"Miete (2030-12-31)","result":"added")-"))));
    EXPECT_THAT(items("calendar edit 0C0001C3 summary=Neu -n"),
                ElementsAre(HasSubstr(R"("uid":"0C0001C3","result":"would be changed","fields":"summary")")));
    EXPECT_THAT(items("calendar remove 0C0001C3 0C0001C6"),
                AllOf(SizeIs(2), Each(HasSubstr(R"("result":"removed")"))));
    const std::string refused = R"([{"command": "fault", "call": "CAWriteItem", "status": "0x80100000"}])";
    EXPECT_THAT(run("calendar edit 0C0001F9 summary=Neu --format json", refused).output,
                HasSubstr(R"("result":"failed","fields":"summary","message":)"));
    expectOutcome({"calendar add summary=Miete start=2030-01-31 rule=FREQ=EVER --expand-until 2030-12-31", 2,
                   "FREQ=EVER is none"});
}

TEST_F(OvphoneCalendar, CalendarsAreMadeRenamedAndDeleted) {
    expectOutcome({"calendar mkdir New/Place", 0, "\"New Place\" made"});
    expectOutcome({"calendar mkdir 'New Place'", 1, "already has"});
    expectOutcome({"calendar rename 'New Place' Trips", 0, "is now"});
    EXPECT_THAT(items("calendar folders"), SizeIs(4));
    expectOutcome({"calendar rmdir Privat", 1, "say so with -r"});
    expectOutcome({"calendar rmdir Trips", 0, "deleted"});
    EXPECT_THAT(items("calendar folders"), SizeIs(3));
}

// What stands in a block is what is written back, so that a second phone holds the same.
TEST(PhoneEntry, CellsOfAnEntryGiveItsBlockAgain) {
    ListedPhone older, newer;
    older.type = eNokiaPhoneS60;
    newer.type = eNokiaPhoneS60_3_FP1;
    const CalendarItem note{
        u"BEGIN:VEVENT\r\nTYPE:Note\r\nDESCRIPTION:a\\nb:c\r\nSUMMARY:S\r\nDTSTART:20080804\r\n"
        u"DTEND:20080815\r\nAALARM:20080803T090000\r\nEND:VEVENT",
        u"01"};
    const auto entry = entryOf(note, older);
    ASSERT_TRUE(entry);
    EXPECT_EQ(u"a\nb:c", entry->description);
    EXPECT_EQ(u"2008-08-16", entry->end);
    EXPECT_EQ(u"2008-08-15", entryOf(note, newer)->end);
    EXPECT_TRUE(changedCells(*entry, *entry, older).empty());
    CalendarEntry other = *entry;
    other.alarm.clear();
    const std::vector<CalendarCell> cells = changedCells(*entry, other, older);
    ASSERT_THAT(cells, SizeIs(1));
    EXPECT_EQ(CalendarCell::alarm, cells[0].field);
    EXPECT_FALSE(entryOf({u"BEGIN:VJOURNAL\r\nEND:VJOURNAL", u"02"}, older));
    EXPECT_TRUE(
        entryOf({u"BEGIN:VEVENT\r\nDTSTART:2008\r\nRRULE\r\n:\r\nDTEND:99999999T999999", u""}, older));
}

}  // namespace ovno2::host
