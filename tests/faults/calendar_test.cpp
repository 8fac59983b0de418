#include <algorithm>
#include <fstream>

#include "common/every_fault.h"
#include "driver/grid_object.h"

namespace ovno2 {
namespace {

// A phone with two calendars and three entries.
class CalendarFaults : public EveryFault<PhoneTest> {
  protected:
    CalendarFaults() {
        const simulator::Control::Json folders = {{{"id", 2}, {"name", "Work"}, {"path", "\\Work"}},
                                                  {{"id", 3}, {"name", "Home"}, {"path", "\\Home"}}};
        const simulator::Control::Json calendar = {
            {"format", 1},
            {"folder", {{"id", 1}, {"name", "\\"}, {"path", "\\"}, {"subfolders", folders}}},
            {"entries",
             {{{"uid", "0A"},
               {"folderId", 2},
               {"start", "2008-01-05T09:00:00"},
               {"end", "2008-01-05T10:00:00"},
               {"repeat", {{"every", "week"}, {"days", {"SA"}}}},
               {"exceptions", {"2008-01-12T09:00:00"}},
               {"summary", "A summary that is not short"}},
              {{"uid", "0B"},
               {"folderId", 2},
               {"type", "birthday"},
               {"start", "1975-03-05"},
               {"birthYear", 1975}},
              {{"uid", "0C"},
               {"folderId", 3},
               {"type", "to-do"},
               {"start", "2008-07-31"},
               {"priority", 1}}}}};
        std::filesystem::create_directories(image());
        before = calendar.dump();
        putBack();
    }
    std::filesystem::path image() const { return folder.path() / "phone"; }
    void putBack() { std::ofstream(image() / "calendar.json") << before; }
    std::string kept() const {
        std::ifstream file(image() / "calendar.json");
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void attachPhones() override {
        putBack();
        simulator.run("addPhone", {{"phone", simulator::Control::plainPhone("356300010000017")},
                                   {"image", image().string()}});
    }

    Text model, phoneId;
    std::string before;
};

// Each entry that arrived is whole, and the result counts them.
TEST_F(CalendarFaults, AReadKeepsWhatArrivedAndCountsIt) {
    HostArray<CalItem> items;
    std::vector<Text> whole;
    const TextTable table;
    forEveryFault({.prepare =
                       [&] {
                           model = u"Nokia N95";
                           items.clear();
                       },
                   .run =
                       [&](covNo2& phone) {
                           return phone.NokiaGetCalendarItems(model, phoneId, items, table, nullptr);
                       },
                   .done = 2,
                   .otherwise = {1, 0, -1, -2, -3, -4},
                   .statusToo = true},
                  [&](Long result, Fault fault) {
                      if (whole.empty())
                          for (const CalItem& item : items.elements())
                              whole.push_back(item.VCalText);
                      if (result >= 0) {
                          EXPECT_EQ(result, std::max(items.upperBound(), 0));
                      }
                      EXPECT_TRUE(fault != Fault::none || items.size() == 3);
                      for (const CalItem& item : items.elements()) {
                          EXPECT_TRUE(std::ranges::find(whole, item.VCalText) != whole.end())
                              << toUtf8(item.VCalText);
                          EXPECT_EQ(item.VCalText, item.VCalTextRead);
                      }
                  });
}

// One entry changes, one moves to another calendar, one is new and one goes.
TEST_F(CalendarFaults, ASessionChangesAllOfTheCalendarOrNothing) {
    std::vector<Text> cells;
    const TextTable table({u"", u"1", u"", u"4", u"", u"12", u"", u"8", u"", u"9", u"", u"15"}, 6, 2);
    const platform::ObjectPointer grid = std::make_shared<GridObject>(
        [&](Long row, Long column) { return cells.at(static_cast<std::size_t>(row * 6 + column - 1)); });
    CalItem rows[3];
    std::string after;
    TextArray tempids, uids;
    bool allWritten = false;
    forEveryFault({.prepare =
                       [&] {
                           putBack();
                           model = u"Nokia N95";
                           phoneId.clear();
                           cells = {u"meeting",
                                    u"05.01.2008 11:00",
                                    u"Another summary, longer",
                                    u"W1 SA EX:20080119",
                                    u"15",
                                    u"Work",
                                    u"birthday",
                                    u"05.03.1974",
                                    u"Moved to another calendar",
                                    u"",
                                    u"",
                                    u"Home",
                                    u"call",
                                    u"07.01.2008 12:00:00",
                                    u"New, with a long summary",
                                    u"D1 20080131",
                                    u"",
                                    u""};
                           for (CalItem& row : rows)
                               row = {};
                           rows[0].ItemUid = u"0A";
                           rows[1].ItemUid = u"0B";
                           tempids.clear();
                           uids.clear();
                       },
                   .run =
                       [&](covNo2& phone) {
                           Long results[4] = {};
                           for (Long row = 0; row < 3; ++row)
                               results[row] =
                                   phone.WriteCalendarItem(model, phoneId, rows[row], grid, row, table);
                           results[3] = phone.DeleteCalendarItem(model, phoneId, u"0C");
                           allWritten = std::ranges::all_of(results, [](Long result) { return result == 0; });
                           const Long ended = phone.EndWriteSession(2, tempids, uids, allWritten);
                           for (const Long result : results)
                               if (result != 0) return result;
                           return ended;
                       },
                   .done = 0,
                   .otherwise = {-1, -2, -3, -4, -5},
                   .statusToo = true,
                   .leavesOpen = true},
                  [&](Long result, Fault fault) {
                      const std::string found = kept();
                      if (fault == Fault::none && after.empty()) after = found;
                      EXPECT_NE(before, after);
                      if (!allWritten) {
                          EXPECT_EQ(before, found);
                      }
                      // An entry that cannot be read back is written as a new one; the old one stays whole.
                      using Json = simulator::Control::Json;
                      const bool asNew = fault != Fault::none && Json::parse(found)["entries"].size() > 3;
                      EXPECT_TRUE(found == before || found == after || asNew) << found;
                      if (fault == Fault::none) {
                          EXPECT_EQ(result == 0, found == after);
                      }
                  });
}

TEST_F(CalendarFaults, CalendarsAreListedMadeRenamedAndDeletedOrLeftAlone) {
    TextArray names, ids;
    Variant results[3];
    forEveryFault(
        {.prepare =
             [&] {
                 putBack();
                 model = u"Nokia\\Nokia N95";
                 names.clear();
             },
         .run =
             [&](covNo2& phone) {
                 const Long listed = phone.GetCalendarFolders(model, phoneId, names, ids);
                 if (listed != 0) return listed;
                 const Variant changed[] = {phone.CreateCalender(model, phoneId, u"A/B: "),
                                            phone.RenameCalender(model, phoneId, u"Home", u"Away"),
                                            phone.DeleteCalender(model, phoneId, u"Work")};
                 for (const Variant& result : changed)
                     if (std::get<Long>(result) != 0) return std::get<Long>(result);
                 return 0;
             },
         .done = 0,
         .otherwise = {-1, -2, -3, -7, -8},
         .statusToo = true,
         .leavesOpen = true},
        [&](Long result, Fault fault) {
            const auto folders = simulator::Control::Json::parse(kept())["folder"]["subfolders"];
            std::string found;
            for (const auto& one : folders)
                found += one["name"].get<std::string>() + ';';
            if (result == 0) {
                EXPECT_EQ("Away;A B;", found);
                EXPECT_EQ(u"Work", fault == Fault::allocation ? u"Work" : names.at(1));
            }
            EXPECT_TRUE(names.elements().empty() || names.size() == 3 || fault == Fault::allocation);
        });
}

}  // namespace
}  // namespace ovno2
