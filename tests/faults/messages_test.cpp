#include <algorithm>
#include <fstream>

#include "common/every_fault.h"
#include "dates/date_text.h"
#include "dates/date_value.h"

namespace ovno2 {
namespace {

class MessageFaults : public EveryFault<PhoneTest> {
  protected:
    using Json = simulator::Control::Json;

    MessageFaults() { std::filesystem::create_directories(image()); }
    std::filesystem::path image() const { return folder.path() / "phone"; }
    std::string store(const char* name) const {
        std::ifstream file(image() / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // New messages have the time of their writing.
    static Json withoutTimes(const std::string& messages) {
        Json all = Json::parse(messages);
        for (Json& message : all["messages"])
            message.erase("date");
        return all;
    }
    void putBack() {
        std::ofstream(image() / "messages.json") << R"({"format": 1,
            "folder": {"id": 1, "name": "\\", "path": "\\", "subfolders": [
                {"id": 2, "name": "predefInbox", "path": "Inbox"}, {"id": 3, "name": "Out", "path": "Outbox"}]},
            "messages": [
                {"uid": "01", "folderId": 2, "date": "2008-07-19T00:01:00", "addresses": ["+49 1", "+49 2"],
                 "text": "Are you there?"},
                {"uid": "02", "folderId": 3, "date": "2008-07-19T00:00:00", "bytes": "414243"}]})";
        std::ofstream(image() / "notes.json") << R"({"format": 1,
            "folder": {"id": 1, "name": "\\", "path": "\\"},
            "notes": [{"uid": "01", "text": "Milk and bread"}, {"uid": "02", "text": "Tea, coffee, cake"}]})";
    }
    void attachPhones() override {
        putBack();
        simulator.run("addPhone", {{"phone", simulator::Control::plainPhone("356300010000017")},
                                   {"image", image().string()}});
    }
};

// What arrives is whole but for parts that there was no memory for.
TEST_F(MessageFaults, AReadGivesWholeLines) {
    const DateValue day = dateSerial(2008, 7, 19);
    const std::vector<Text> whole[] = {
        {u"predefInbox|Inbox|2|" + generalDateText(addSeconds(day, 60)) + u"|01|+49 1,+49 2|Are you there?",
         u"Out|Outbox|3|" + generalDateText(day) + u"|02||ABC"},
        {u"01|Milk and bread", u"02|Tea, coffee, cake"}};
    for (const Long what : {1, 4}) {
        const std::vector<Text>& all = whole[what == 1 ? 0 : 1];
        Text model, phoneId;
        TextArray items;
        forEveryFault(
            {.prepare =
                 [&] {
                     model = u"Nokia N95";
                     items.clear();
                 },
             .run = [&](covNo2& phone) { return phone.NokiaGetDataItems(model, phoneId, what, items); },
             .done = 0,
             .otherwise = {-1, -2, -3, -4}},
            [&](Long, Fault fault) {
                EXPECT_TRUE(fault != Fault::none || items.elements() == all);
                if (fault == Fault::allocation) return;
                for (const Text& item : items.elements())
                    EXPECT_NE(all.end(), std::ranges::find(all, item)) << toUtf8(item);
            });
    }
}

// One is written, one changed where that can be, one goes, in one session.
TEST_F(MessageFaults, ASessionChangesAllOrNothing) {
    struct Session {
        const char* file;
        std::vector<Text> written;
        Text deleted;
    };
    const Session sessions[] = {
        {"messages.json",
         {u"1\t\t\t\t\t\t+49 3;+49 4\tSee you at six", u"1\t\t\t\t\t\t\tto nobody"},
         u"1\t\t\t3\t\t02\t\t"},
        {"notes.json", {u"4\t\t\t\t\t01\t\tMilk, bread and tea", u"4\t\t\t\t\t\t\tA new one"}, u"4\t02"}};
    for (const auto& [file, written, deleted] : sessions) {
        const auto content = [this, name = file] {
            const std::string all = store(name);
            return name == std::string("messages.json") ? withoutTimes(all) : Json::parse(all);
        };
        putBack();
        const Json before = content();
        Json after;
        Text model, phoneId;
        std::vector<Text> items;
        TextArray tempids, uids;
        bool allWritten = false;
        forEveryFault({.prepare =
                           [&] {
                               putBack();
                               model = u"Nokia N95";
                               phoneId.clear();
                               items = written;
                               tempids.clear();
                               uids.clear();
                           },
                       .run =
                           [&](covNo2& phone) {
                               const Long results[] = {phone.WriteDataItem(model, phoneId, items[0]),
                                                       phone.WriteDataItem(model, phoneId, items[1]),
                                                       phone.DeleteDataItem(model, phoneId, deleted)};
                               allWritten =
                                   std::ranges::all_of(results, [](Long result) { return result == 0; });
                               const Long ended = phone.EndWriteSession(4, tempids, uids, allWritten);
                               for (const Long result : results)
                                   if (result != 0) return result;
                               return ended;
                           },
                       .done = 0,
                       .otherwise = {-1, -2, -3, -4, -5},
                       .statusToo = true,
                       .leavesOpen = true},
                      [&](Long result, Fault fault) {
                          Json found = content();
                          // A folder that there was no memory for is no outbox.
                          if (fault == Fault::allocation && found.contains("messages"))
                              for (Json& message : found["messages"])
                                  if (message["uid"].get<std::string>().size() > 2) message["folderId"] = 3;
                          if (fault == Fault::none && after.is_null()) after = found;
                          EXPECT_NE(before, after);
                          // A note that cannot be read back is written as a new one; the old one stays whole.
                          const bool asNew = fault != Fault::none && found.contains("notes") &&
                                             found["notes"][0]["text"] == "Milk and bread";
                          EXPECT_TRUE(found == before || found == after || asNew) << found;
                          if (fault == Fault::none) {
                              EXPECT_EQ(result == 0, found == after);
                          }
                          if (!allWritten) {
                              EXPECT_EQ(before, found);
                          }
                      });
    }
}

}  // namespace
}  // namespace ovno2
