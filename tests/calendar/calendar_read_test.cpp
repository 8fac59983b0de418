#include <algorithm>

#include "calendar/calendar_test.h"
#include "common/recording_log.h"

namespace ovno2::Calendar {
namespace {

using ::testing::HasSubstr;

TEST_F(CalendarTest, AnEntryIsABlockOfLinesInTheirOrder) {
    const struct {
        Json entry;
        const char* expected;  // without its first line and END
        Long platformSet = 0;
    } entries[] = {
        {{{"start", "2008-01-05T09:00:00"}, {"end", "2008-01-05T10:00:00"}, {"summary", "Lunch"}},
         "TYPE:Meeting | DESCRIPTION: | SUMMARY:Lunch | DTSTART:20080105T100000 | DTEND:20080105T110000 | "
         "CALENDAR:Work | AALARM: | DALARM:"},
        {{{"type", "to-do"},
          {"start", "2008-07-30T22:30:00"},
          {"status", 0},
          {"location", "L"},
          {"alarm", "2008-07-30T10:00:00+60+60"}},
         "DESCRIPTION: | DUE:20080731 | PRIORITY:2 | STATUS:0 | CALENDAR:Work | AALARM:20080730T120000 | "
         "DALARM:20080730T120000 | LOCATION:L"},
        {{{"type", "birthday"},
          {"start", "2008-03-05"},
          {"end", "2008-03-06"},
          {"birthYear", 1975},
          {"alarm", "2008-03-05T08:00:00"},
          {"repeat", {{"every", "year"}}},
          {"fields", {{{"id", 0x306}, {"number", 0}}}}},
         "TYPE:Birthday | DESCRIPTION:1975 | DTSTART:19750305 | DTEND:19750305 | CALENDAR:Work | "
         "AALARM:19750305T090000 | "
         "DALARM:19750305T090000 | RRULE:YD1 | X-BIRTHDAY:1"},
        {{{"type", "birthday"}, {"start", "2008-03-05"}, {"birthYear", 1980}},
         "TYPE:Birthday | DESCRIPTION:1980 | DTSTART:20080305 | DTEND: | CALENDAR:Work | AALARM: | DALARM:"},
        {{{"type", "note"}, {"start", "2008-01-05"}, {"end", "2008-01-08"}},
         "TYPE:Note | DESCRIPTION: | DTSTART:20080105 | DTEND:20080107 | CALENDAR:Work | AALARM: | DALARM:"},
        {{{"type", "note"}, {"start", "2008-01-04T23:00:00"}, {"end", "2008-01-05T22:59:00"}},
         "TYPE:Note | DESCRIPTION: | DTSTART:20080105 | DTEND:20080106 | CALENDAR:Work | AALARM: | DALARM:",
         eNokiaPhoneS60_3_FP1},
        {{{"type", "unnamed"},
          {"start", "2008-02-19"},
          {"description", "a\r\nb\nc"},
          {"repeat", {{"every", "month"}, {"days", {"TU"}}}},
          {"until", "2008-12-31"}},
         "DESCRIPTION:a\\nbc | DTSTART:20080219T010000 | DTEND: | CALENDAR:Work | AALARM: | DALARM: | "
         "RRULE:MP13+ 20081231"},
        // Numbers that are no dates roll over; words that are no texts are left out.
        {{{"type", 9},
          {"summary", nullptr},
          {"fields", {{{"id", 0x300}, {"number", 0xFFFF}}, {{"id", 0x301}, {"number", 5}}}},
          {"repeat", 0x105}},
         "DESCRIPTION: | DTSTART: | DTEND: | CALENDAR:Work | AALARM: | DALARM:"},
    };
    subfolders = {{{"id", 2}, {"name", "Work"}, {"path", "\\Work"}}};
    for (const auto& [entry, expected, platformSet] : entries) {
        platform = platformSet;
        Json whole = entry;
        whole.update({{"uid", "0A"}, {"folderId", 2}, {"position", 7}});
        begin(Json::array({whole}));
        ASSERT_EQ(0, read());
        const bool isToDo = entry.value("type", Json()) == "to-do";
        EXPECT_EQ(std::string(isToDo ? "BEGIN:VTODO | " : "BEGIN:VEVENT | ") + expected +
                      (isToDo ? " | END:VTODO" : " | END:VEVENT"),
                  text());
        EXPECT_EQ(9, items.at(0).ItemNumber);  // the position and the folder
        EXPECT_EQ(isToDo ? 2 : 1, items.at(0).ItemKind);
        EXPECT_EQ(u"0A", items.at(0).ItemUid);
        EXPECT_THAT(toUtf8(items.at(0).VCalText), HasSubstr("\r\nX-IRMC-LUID:0A\r\nEND:"));
    }
}

TEST_F(CalendarTest, OnlyTheFirstFiftyExceptionsAndTheFirstHundredCalendarsAreRead) {
    Json exceptions = Json::array(), entries = Json::array();
    for (Long day = 1; day <= 52; ++day)
        exceptions.push_back(
            toUtf8(ISODate::FormatISODate(dateSerial(2008, 1, day), true)).insert(6, "-").insert(4, "-") +
            "T09:00:00");
    for (int id = 2; id <= 101; ++id) {
        subfolders.push_back({{"id", id}, {"name", std::to_string(id)}, {"path", "\\" + std::to_string(id)}});
        entries.push_back({{"uid", (id < 16 ? "AAA0" : "AAAA") + std::to_string(1000 + id)},
                           {"folderId", id},
                           {"start", "2008-01-01"},
                           {"repeat", {{"every", "day"}}},
                           {"exceptions", exceptions}});
    }
    begin(entries);
    EXPECT_EQ(98, read());  // the root is the first of the hundred
    EXPECT_EQ(u"2", split(replaceAll(items.at(0).VCalText, u"CALENDAR:", u"|"), u'|').at(1).substr(0, 1));
    EXPECT_THAT(text(), HasSubstr("20080218;20080219 |"));
}

// Three times the service is ended, then the read is tried once more.
TEST_F(CalendarTest, AReadIsTriedFourTimesAtMost) {
    for (const auto& [status, reads] :
         {std::pair{library::connectionLost, 4}, {library::serviceFailed, 4}, {library::deviceBusy, 2}}) {
        begin(Json::array({{{"uid", "0A"}, {"start", "2008-01-05"}}}));
        simulator.fail("CAGetIDList", status, /*nth=*/1, /*onwards=*/true);
        EXPECT_EQ(static_cast<Long>(status), read());
        EXPECT_EQ(reads, std::ranges::count(calls(), "CAGetIDList"));
        simulator.clearPlan();
        EXPECT_EQ(0, read());
    }
    begin(Json::array());
    simulator.fail("DAOpenCA", library::contentAccessDenied);
    EXPECT_EQ(0, read());
    simulator.fail("DAOpenCA", library::contentAccessDenied, /*nth=*/1, /*onwards=*/true);
    EXPECT_EQ(static_cast<Long>(library::contentAccessDenied), read());
    simulator.clearPlan();
}

TEST_F(CalendarTest, CalendarsAreChangedByName) {
    TextArray names, ids;
    const auto listed = [&] {
        EXPECT_EQ(0, GetCalendarFolders(model, phoneId, names, ids));
        return toUtf8(join(names.elements(), u'|'));
    };
    begin(Json::array());
    EXPECT_EQ("\\", listed());
    EXPECT_EQ(-1, DeleteCalender(model, phoneId, u"Work"));
    EXPECT_EQ(0, CreateCalender(model, phoneId, u"Work/Home: A "));
    EXPECT_EQ(0, RenameCalender(model, phoneId, u"", u"Play"));
    EXPECT_EQ("\\|Work Home  A|Play", listed());
    EXPECT_EQ(-8, DeleteCalender(model, phoneId, u"play"));
    EXPECT_EQ(-8, CreateCalender(model, phoneId, u" "));
    EXPECT_EQ(0, RenameCalender(model, phoneId, u"Play", u"Rest"));
    EXPECT_EQ(0, DeleteCalender(model, phoneId, u"Work Home  A"));
    std::vector<Content::FolderEntry> folders;
    GetCalendarFolder(model, {}, folders);  // what was changed is not answered from what was read before
    EXPECT_EQ(u"Rest", folders.back().Name);
    calls();
    GetCalendarFolder(model, Text(serial.begin(), serial.end()), folders);
    EXPECT_THAT(calls(), ::testing::IsEmpty());
    simulator.failAllocation("CONAAllocString");
    EXPECT_EQ(-7, CreateCalender(model, phoneId, u"New"));
    simulator.clearPlan();
    model = u"Nokia\\Nokia N95";
    EXPECT_EQ("\\|Rest", listed());
    EXPECT_EQ(u"Nokia N95", model);
    phoneId = model = u"none";
    EXPECT_EQ(-2, GetCalendarFolders(model, phoneId, names, ids));
}

}  // namespace
}  // namespace ovno2::Calendar
