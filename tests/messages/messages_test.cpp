#include <fstream>
#include <gmock/gmock.h>
#include <map>

#include "common/phone_test.h"
#include "content/sessions.h"
#include "dates/date_text.h"
#include "dates/date_value.h"
#include "devices/session.h"
#include "messages/data_connection.h"
#include "messages/data_reading.h"
#include "messages/data_writing.h"

namespace ovno2::Data {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using Control = simulator::Control;
using Json = Control::Json;

class MessagesTest : public PhoneTest {
  protected:
    MessagesTest() {
        image_ = folder.path() / "phone";
        std::filesystem::create_directories(image_);
    }
    ~MessagesTest() override { letGo(); }
    void letGo() {
        CloseDatasConnection();
        Content::PIMApiTerminate();
        Session::DMApiTerminate();
    }
    void addPhone(const Json& items, const char* kind = "messages") {
        letGo();
        simulator.reset();
        simulator.journal(true);
        resetThreadState();
        usePlatform(machine);
        const Json folders = {{"id", 1},
                              {"name", "\\"},
                              {"path", "\\"},
                              {"subfolders",
                               {{{"id", 2}, {"name", ""}, {"path", "In|box"}},
                                {{"id", 3}, {"name", "predefOUTBOX"}, {"path", "a"}},
                                {{"id", 4}, {"name", "b"}, {"path", "OutBox"}}}}};
        std::ofstream(image_ / (std::string(kind) + ".json"))
            << Json{{"format", 1}, {"folder", folders}, {kind, items}};
        simulator.run("addPhone",
                      {{"phone", Control::plainPhone("356300010000017")}, {"image", image_.string()}});
    }
    std::vector<Text> read(Long what = messages) {
        TextArray items;
        EXPECT_EQ(0, NokiaGetDataItems(model, u"", what, items, nullptr));
        return items.elements();
    }
    Json stored(const char* kind = "messages") const {
        std::ifstream file(image_ / (std::string(kind) + ".json"));
        return Json::parse(file)[kind];
    }
    Long write(Text item) {
        msg = std::move(item);
        return WriteDataItem(model, u"", msg);
    }

    std::filesystem::path image_;
    const Text model = u"Nokia N95";
    Text msg;
    TextArray tempids, uids;
};

Json message(const char* uid, int folderId, Json more) {
    Json all = {{"uid", uid}, {"folderId", folderId}, {"date", "2008-07-19T16:04:11"}};
    all.update(more);
    return all;
}

TEST_F(MessagesTest, ALineHoldsWhatThePhoneSays) {
    struct Case {
        Json message;
        const char16_t* line;
        Json poke = nullptr;
    };
    const auto poked = [](const char* record, int word, Json value) {
        return Json{{"call", "CAReadItem"}, {"record", record}, {"word", word}, {"value", std::move(value)}};
    };
    const Case cases[] = {
        {message("01", 2, {{"text", "Hi"}, {"addresses", {"first", "second"}}}),
         u"In|box|In|box|2|@|01|first,second|Hi"},
        {message("01", 4, {{"text", "a|b\tc"}, {"date", "2008-07-19T00:00:00"}}),
         u"b|OutBox|4|@day|01||a|b\tc"},
        {message("01", 4, {{"text", "x"}, {"addresses", {nullptr, "a"}}}), u"b|OutBox|4|@|01|a|x"},
        // Control characters at the end go while two characters stay.
        {message("01", 4, {{"text", "Hi\r\n\n"}}), u"b|OutBox|4|@|01||Hi"},
        {message("01", 4, {{"text", "\n\n\n"}}), u"b|OutBox|4|@|01||\n\n"},
        {message("01", 4, {{"text", "€ 海"}}), u"b|OutBox|4|@|01||€ ?"},
        {message("01", 4, {{"bytes", "418080"}}), u"b|OutBox|4|@|01||A€€"},
        {message("01", 4, {{"text", "x"}, {"info", 3}}), u"b|OutBox|4|@|01||"},
        // Lengths and addresses that are none: halves to even, up to the text's end, or no text.
        {message("01", 4, {{"text", "abcdef"}}), u"b|OutBox|4|@|01||ab", poked("message", 2, 5)},
        {message("01", 4, {{"text", "abcdef"}}), u"b|OutBox|4|@|01||abcd", poked("message", 2, 7)},
        {message("01", 4, {{"text", "abc"}}), u"b|OutBox|4|@|01||abc", poked("message", 2, 0x7FFFFFFF)},
        {message("01", 4, {{"text", "abc"}}), u"b|OutBox|4|@|01||", poked("message", 2, 0xFFFFFFF0)},
        {message("01", 4, {{"bytes", "4142"}}), u"b|OutBox|4|@|01||", poked("message", 2, 0x7FFFFFFF)},
        {message("01", 4, {{"text", "abc"}}), u"b|OutBox|4|@|01||abc", poked("message", 4, 255)},
        {message("01", 4, {{"text", "abc"}, {"addresses", {"a"}}}), u"b|OutBox|4|@|01||abc",
         poked("message", 5, "unmapped")},
    };
    for (const auto& [item, line, poke] : cases) {
        addPhone(Json::array({item}));
        if (!poke.is_null()) simulator.run("poke", poke);
        const DateValue day = dateSerial(2008, 7, 19);
        Text expected = replaceAll(line, u"@day", generalDateText(day));
        expected = replaceAll(expected, u"@", generalDateText(addSeconds(day, (16 * 60 + 4) * 60 + 11)));
        EXPECT_THAT(read(), ElementsAre(expected)) << item << poke;
        letGo();
        simulator.reset();  // a poked record leads nowhere, and so nobody can give it back
    }
    addPhone({{{"uid", "01"}, {"text", "a|b"}}, {{"uid", "02"}, {"text", nullptr}}}, "notes");
    EXPECT_THAT(read(notes), ElementsAre(u"01|a|b", u"02|"));
}

TEST_F(MessagesTest, ReadingAppendsAndTellsWhereItStopped) {
    addPhone({message("01", 2, {{"text", "x"}}), message("02", 4, {{"text", "y"}})});
    TextArray items({u"there"}, /*lowerBound=*/1);
    EXPECT_EQ(0, NokiaGetDataItems(model, u"", messages, items, nullptr));
    EXPECT_EQ(3, items.upperBound());
    EXPECT_EQ(u"there", items.at(1));
    simulator.run("vanish", {{"serial", "356300010000017"}, {"uid", "01"}, {"content", "messages"}});
    EXPECT_EQ(1u, read().size());
    EXPECT_EQ(-3, NokiaGetDataItems(model, u"", notes, items, nullptr));
    EXPECT_EQ(-2, NokiaGetDataItems(u"Other", u"9", messages, items, nullptr));
    // The folders are asked for twice, over a connection of its own each time.
    calls();
    simulator.fail("CAGetFolderInfo", 0x80100010, 1, /*onwards=*/true);
    EXPECT_EQ(-4, NokiaGetDataItems(model, u"", messages, items, nullptr));
    EXPECT_THAT(calls(), Contains("DAOpenCA").Times(2));
}

TEST_F(MessagesTest, MessagesGoToTheirFolderOrTheOutbox) {
    addPhone(Json::array());
    EXPECT_EQ(0, write(u"17\t\t\t\t\t\ta;b,c\tHello"));  // only the kind's low four bits count
    EXPECT_EQ(u"17\t\t\t\t\t1\ta;b,c\tHello", msg);
    EXPECT_EQ(0, write(u"1\t\t\t2\t\t\t\tthere"));
    EXPECT_EQ(0, write(u"1\t\t\t\t\tanything\t\t"));
    EXPECT_EQ(u"1\t\t\t0\t\t3\t\t", msg);
    EXPECT_EQ(0, DataEndWriteSession(tempids, uids, /*commit=*/true));
    EXPECT_THAT(tempids.elements(), ElementsAre(u"1", u"2", u"3", u"0"));
    EXPECT_EQ(4u, uids.size());
    EXPECT_EQ(u"", uids.at(3));
    const Json all = stored();
    ASSERT_EQ(3u, all.size()) << all;
    EXPECT_EQ(4, all[0]["folderId"]);  // the second of two outboxes
    EXPECT_EQ(4, all[2]["folderId"]);
    EXPECT_EQ(Json({"a", "b", "c"}), all[0]["addresses"]);
    EXPECT_EQ("Hello", all[0]["text"]);
    EXPECT_EQ(0x3611, all[0]["info"]);
    EXPECT_EQ(2, all[1]["folderId"]);
    EXPECT_EQ(-1, DeleteDataItem(model, u"", u"1\t\t\t4\t\tnothing such"));
    EXPECT_EQ(0, DeleteDataItem(model, u"", u"1\t\t\t4\t\t" + fromUtf8(all[0]["uid"].get<std::string>())));
    EXPECT_EQ(0, DataEndWriteSession(tempids, uids, /*commit=*/true));
    EXPECT_EQ(2u, stored().size());
    for (const auto& [tooFew, result] :
         std::map<Text, Long>{{u"", -3}, {u"1", 0}, {u"4\t", -3}, {u"\t\t", -3}}) {
        letGo();
        EXPECT_EQ(result, write(tooFew)) << toUtf8(tooFew);
    }
}

TEST_F(MessagesTest, NotesAreChangedInPlace) {
    addPhone({{{"uid", "0A0B0C0D"}, {"text", "old"}}, {{"uid", "02"}, {"text", "stays"}}}, "notes");
    EXPECT_EQ(0, write(u"4\t\t\t\t\t0A0B0C0D\t\tnew\ttab"));
    EXPECT_EQ(u"4\t\t\t\t\t0A0B0C0D\t\tnew\ttab", msg);
    EXPECT_EQ(0, write(u"4\t\t\t\t\tFFFF\t\tanother"));
    EXPECT_EQ(0, DeleteDataItem(model, u"", u"4\t02"));
    EXPECT_EQ(-1, DeleteDataItem(model, u"", u"4"));
    EXPECT_EQ(0, DataEndWriteSession(tempids, uids, /*commit=*/true));
    const Json all = stored("notes");
    ASSERT_EQ(2u, all.size()) << all;
    EXPECT_EQ("new", all[0]["text"]);
    EXPECT_EQ("0A0B0C0D", all[0]["uid"]);
    EXPECT_EQ("another", all[1]["text"]);
}

// Each failing step of the start is tried once more, as often as the others let it.
TEST_F(MessagesTest, ASessionStartsOverOnce) {
    struct Case {
        const char* call;
        std::uint32_t status;
        Long lasting;  // the result while it fails every time
        int tries;
        Long once;  // when it fails once
    };
    for (const auto& [call, status, lasting, tries, once] :
         {Case{"CABeginOperation", 0x80100014, -4, 2, 0}, Case{"CABeginOperation", 0x80100010, -4, 1, -4},
          Case{"CAGetIDList", 0x80100010, -5, 2, 0}, Case{"DAOpenCA", 0x80100010, -3, 2, 0},
          Case{"CAGetFolderInfo", 0x80100010, -5, 4, 0}}) {
        SCOPED_TRACE(call);
        addPhone(Json::array());
        simulator.fail(call, status, 1, /*onwards=*/true);
        EXPECT_EQ(lasting, write(u"1\t\t\t\t\t\ta\tx"));
        EXPECT_THAT(calls(), Contains(call).Times(tries));
        simulator.clearPlan();
        letGo();
        simulator.fail(call, status);
        EXPECT_EQ(once, write(u"1\t\t\t\t\t\ta\tx"));
        EXPECT_EQ(0, write(u"1\t\t\t\t\t\ta\tx"));
    }
    // Reading gives the session up.
    EXPECT_TRUE(read().empty());
    EXPECT_EQ(0u, stored().size());
}

}  // namespace
}  // namespace ovno2::Data
