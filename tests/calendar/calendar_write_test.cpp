#include <algorithm>

#include "calendar/calendar_state.h"
#include "calendar/calendar_test.h"

namespace ovno2::Calendar {
namespace {

// The members of an entry that matter, in the order of the alphabet.
std::string shown(const Json& entry, std::initializer_list<const char*> names) {
    std::string text;
    for (const char* const name : names) {
        if (!text.empty()) text += ' ';
        text += entry.contains(name) ? entry[name].dump() : "-";
    }
    return text;
}

class CalendarWriteTest : public CalendarTest {
  protected:
    CalendarWriteTest() {
        settings().meeting = u"Termin";
        settings().task = u"Aufgabe";
        settings().hour = u"Stunden";
        settings().day = u"Tage";
        const Settings words = settings();
        remembered_ = words;
    }
    void begin(const Json& entries, Long contentVersion = 50, const Json& identity = Json::object()) {
        CalendarTest::begin(entries, contentVersion, identity);
        settings() = remembered_;
        item = {};
    }
    // The entry that a new row gives.
    Json written(const Cells& cells, Long contentVersion = 50, const Json& identity = Json::object()) {
        begin(Json::array(), contentVersion, identity);
        EXPECT_EQ(0, write(cells));
        EXPECT_EQ(0, commit());
        const Json entries = stored();
        return entries.size() == 1 ? entries[0] : Json::object();
    }
    Settings remembered_;
};

const Text at10 = u"05.01.2008 10:00:00";
const Text march = u"05.03.1975";

TEST_F(CalendarWriteTest, ARowBecomesAnEntry) {
    const Json oldPhone = {{"versions", {{"contentAccess", 35}}}, {"recordSizes", {{"calendar", 104}}}};
    const Json s40 = {{"platform", {{"code", "0x1000001"}, {"level", 100}}}};
    const struct {
        Cells cells;
        std::vector<const char*> names;
        const char* expected;
        Long version = 50;
        Long platformSet = 0;
    } rows[] = {
        {{{1, u"TERMIN"}, {4, at10}, {12, u"x"}},
         {"type", "start"},
         R"("meeting" "2008-01-05T09:00:00+60+0")"},
        {{{1, u"what"}, {4, at10}, {12, u""}}, {"type", "summary"}, R"("meeting" " ")"},
        {{{1, u"AufGabe"}, {7, u""}, {13, u""}, {6, u""}},
         {"type", "start", "end", "priority", "status"},
         R"("to-do" "2050-12-30T23:00:00+60+0" "2050-12-30T23:00:00+60+0" 2 1)"},
        {{{1, u"call"}, {4, at10}, {6, u"1"}, {11, u"l"}, {3, u"a\r\nb"}},
         {"type", "status", "location", "description"},
         R"("call" - "l" "a\rb")"},
        {{{1, u"birthday"}, {4, march}, {5, march}, {8, u""}},
         {"start", "end", "birthYear", "repeat"},
         R"("1975-03-05" "1975-03-05" 1975 {"every":"year","interval":0})"},
        {{{1, u"note"}, {4, at10}, {5, u"06.01.2008 23:59:59"}},
         {"start", "end"},
         R"("2008-01-05" "2008-01-07")"},
        {{{4, at10}, {9, u"15"}}, {"alarm", "alarmState"}, R"("2008-01-05T08:45:00+60+0" -)"},
        {{{4, at10}, {9, u"2 stunden"}}, {"alarm"}, R"("2008-01-05T07:00:00+60+0")"},
        {{{4, at10}, {9, u"-1 Tage"}}, {"alarm"}, R"("2008-01-04T09:00:00+60+0")"},
        {{{4, at10}, {9, u"0"}}, {"alarm"}, R"("2008-01-05T09:00:00+60+0")"},
        {{{4, at10}, {9, u"nie"}}, {"alarm", "alarmState"}, "- -"},
        {{{4, at10}, {8, u"D1 20080131 EX:20080105;20080112;20080105"}},
         {"until", "exceptions"},
         R"("2008-01-31T01:00:00" ["2008-01-05T09:00:00+60+0","2008-01-12T09:00:00+60+0"])"},
        {{{4, at10}, {8, u"D1 20080131 EX:20080105"}}, {"exceptions"}, "-", 35},
        {{{4, at10}, {8, u"RRULE:FREQ=WEEKLY;BYDAY=SA;COUNT=3"}},
         {"repeat", "until"},
         R"({"days":["SA"],"every":"week","interval":0} "2008-01-26T10:00:00")"},
        {{{4, at10}, {8, u"MP13+"}}, {"repeat", "until"}, R"({"days":["SA"],"every":"month"} -)"},
        {{{4, u"29.02.2008"}, {8, u"W1"}}, {"until"}, R"("2100-02-28")", 50, eNokiaPhoneS60},
        {{{4, at10}, {8, u"what"}}, {"repeat"}, "-"},
    };
    for (const auto& [cells, names, expected, version, platformSet] : rows) {
        platform = platformSet;
        const Json entry = written(cells, version, version < 36 ? oldPhone : Json::object());
        std::string found;
        for (const char* const name : names)
            found += (found.empty() ? "" : " ") + shown(entry, {name});
        EXPECT_EQ(expected, found) << (cells.contains(8) ? toUtf8(cells.at(8)) : "");
    }
    const Json old = written({{1, u"birthday"}, {4, march}, {5, march}}, 50, s40);
    EXPECT_EQ(R"("1980-03-05" 1975)", shown(old, {"start", "birthYear"}));
    settings().priorities = remembered_.priorities = TextArray({u"Hoch", u"Mittel"});
    for (const auto& [word, number] : {std::pair{u"MITTEL", 1}, {u"egal", 2}, {u"", 2}})
        EXPECT_EQ(number, written({{1, u"task"}, {13, word}})["priority"]);
}

TEST_F(CalendarWriteTest, AnEntryIsChangedWhereTheRowDiffers) {
    const Json meeting = {{"uid", "0A"},
                          {"type", "meeting"},
                          {"start", "2008-01-05T09:00:00+60+0"},
                          {"summary", "Old"},
                          {"description", "Text"},
                          {"end", "2008-01-05T10:00:00+60+0"},
                          {"repeat", {{"every", "week"}, {"days", {"SA"}}}},
                          {"until", "2008-02-02"},
                          {"exceptions", {"2008-01-12T09:00:00+60+0"}}};
    const Json birthday = {{"uid", "0A"}, {"type", "birthday"}, {"start", "2008-03-05"}, {"birthYear", 1975}};
    const struct {
        const Json& before;
        Cells cells;
        Json changes;  // null = the member is gone
    } rows[] = {
        {meeting, {{12, u"New"}}, {{"summary", "New"}}},
        {meeting, {{3, u""}, {11, u"Here"}}, {{"description", ""}, {"location", "Here"}}},
        {meeting, {{8, u""}}, {{"repeat", nullptr}, {"until", nullptr}, {"exceptions", nullptr}}},
        {meeting, {{8, u"W1 SA 20080202"}}, {{"exceptions", nullptr}}},
        {meeting, {{8, u"W1 SA"}}, {{"until", nullptr}, {"exceptions", nullptr}}},
        {meeting, {{1, u"note"}, {4, u"06.01.2008"}}, {{"type", "note"}, {"start", "2008-01-06"}}},
        {birthday,
         {{1, u"meeting"}, {3, u"Text"}},
         {{"type", "meeting"}, {"birthYear", nullptr}, {"description", "Text"}}},
        {birthday, {{4, u"05.03.1974"}}, {{"start", "1974-03-05"}, {"birthYear", 1974}}},
    };
    for (const auto& [before, cells, changes] : rows) {
        begin(Json::array({before}));
        item.ItemUid = u"0A";
        EXPECT_EQ(0, write(cells));
        EXPECT_EQ(0, commit());
        Json expected = before, found = stored()[0];
        expected.merge_patch(changes);
        for (Json* const entry : {&expected, &found}) {
            if (entry->value("type", "") == "meeting") entry->erase("type");
            entry->erase("position");
        }
        EXPECT_EQ(expected, found);
        EXPECT_EQ(u"0A", item.ItemUid);
    }
}

TEST_F(CalendarWriteTest, ASessionFindsMovesAndDeletesWhatItKnows) {
    subfolders = {{{"id", 2}, {"name", "Work"}, {"path", "\\Work"}},
                  {{"id", 3}, {"name", "Home"}, {"path", "\\Home"}}};
    begin({{{"uid", "0A"}, {"folderId", 2}, {"start", "2008-01-05"}, {"summary", "A"}},
           {{"uid", "0B"}, {"folderId", 2}, {"start", "2008-01-05"}, {"summary", "B"}}});
    EXPECT_EQ(0, DeleteCalItem(model, phoneId, u"0C"));
    EXPECT_EQ(0, DeleteCalItem(model, phoneId, u"0B"));
    item.ItemUid = u"0A";
    EXPECT_EQ(0, write({{4, at10}, {12, u"moved"}, {15, u"Home"}}));
    item.ItemUid.clear();
    EXPECT_EQ(0, write({{4, at10}, {12, u"new"}, {15, u"nowhere"}}));
    const Text temporaryId = item.ItemUid;
    EXPECT_EQ(0, write({{12, u"newer"}}));
    EXPECT_EQ(temporaryId, item.ItemUid);
    EXPECT_EQ(0, commit());
    ASSERT_EQ(2, tempids.upperBound());
    EXPECT_EQ(temporaryId, tempids.at(1));
    EXPECT_EQ(u"0", tempids.at(2));
    EXPECT_EQ(u"", uids.at(2));
    std::string all;
    for (const Json& entry : stored())
        all += shown(entry, {"folderId", "summary"}) + ' ';
    EXPECT_EQ(R"(3 "moved" 2 "newer" )", all);
}

// Cells that cannot be read leave their fields; a row that no entry can hold is not written.
TEST_F(CalendarWriteTest, BadRowsDoNoHarm) {
    begin({{{"uid", "0A"}, {"start", "2008-01-05T09:00:00"}, {"summary", "Old"}, {"location", "Here"}}});
    const TextTable table({u"", u"12", u"", u"11"}, 2, 2);
    const auto grid = std::make_shared<GridObject>([](Long, Long column) -> Text {
        if (column == 1) throw RuntimeFailure(memberNotSupported);
        return u"There";
    });
    item.ItemUid = u"0A";
    EXPECT_EQ(0, WriteCalItem(model, phoneId, item, grid, 1, table));
    EXPECT_EQ(0, WriteCalItem(model, phoneId, item, nullptr, 1, table));
    Text many = u"D1 EX:";
    for (Long day = 0; day < 256; ++day)
        many += ISODate::FormatISODate(dateSerial(2008, 1, day), /*dateOnly=*/true) + u";";
    for (const Text& rule : {Text(u"D256"), Text(u"FREQ=DAILY;INTERVAL=99999"), many})
        EXPECT_EQ(-1, write({{8, rule}}));
    EXPECT_EQ(0, commit());
    EXPECT_EQ(R"("Old" "There" -)", shown(stored()[0], {"summary", "location", "repeat"}));
}

}  // namespace
}  // namespace ovno2::Calendar
