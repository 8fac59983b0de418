#include <fstream>

#include "contacts/contacts_test.h"
#include "devices/devices.h"
#include "driver/progress_object.h"

namespace ovno2::Contacts {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

class ContactsReadTest : public ContactsTest {
  protected:
    ContactsReadTest() { clock().set({.year = 2008, .month = 7, .day = 1, .hour = 12}); }

    // `count` contacts with the uids 01, 02, ... and their number as first name.
    void addContacts(int count) {
        Json contacts = Json::array();
        for (int i = 1; i <= count; ++i)
            contacts.push_back(
                contactOf("0" + std::to_string(i), {{{"id", 2}, {"text", std::to_string(i)}}}));
        addPhone(std::move(contacts));
    }
    std::vector<Text> uids() {
        std::vector<Text> all;
        for (const AdrItem& item : items.elements())
            all.push_back(item.Uid);
        return all;
    }
};

TEST_F(ContactsReadTest, TakesOneRoadThroughTheLibrary) {
    addContacts(2);
    simulator.shape({{"folder", 32}});
    EXPECT_EQ(2, read());
    std::vector<std::string> road = calls();
    const auto opened = std::find(road.begin(), road.end(), "CONAFreeDeviceStructure");
    ASSERT_NE(road.end(), opened);
    road.erase(road.begin() + 3, opened + 1);  // the device list has tests of its own
    EXPECT_THAT(
        road, ElementsAre("CAAPI_Terminate", "CAGetAPIVersion", "CAAPI_Initialize", "CONAAllocString",
                          "DAOpenCA", "CONAFreeString", "CAGetFolderInfo", "CAGetIDList", "CABeginOperation",
                          "DMAPI_GetAPIVersion", "CAReadItem", "CAFreeItemData", "CAReadItem",
                          "CAFreeItemData", "CAEndOperation", "DACloseCA", "CAAPI_Terminate"));
}

TEST_F(ContactsReadTest, AppendsToWhatTheHostPassedIn) {
    addContacts(2);
    EXPECT_EQ(2, read());
    EXPECT_THAT(uids(), ElementsAre(u"", u"01", u"02"));
    EXPECT_EQ(4, read());
    EXPECT_THAT(uids(), ElementsAre(u"", u"01", u"02", u"01", u"02"));
    items = HostArray<AdrItem>(std::vector<AdrItem>(1), /*lowerBound=*/5);
    EXPECT_EQ(7, read());
    EXPECT_EQ(u"02", items.at(7).Uid);
}

TEST_F(ContactsReadTest, LeavesTheArrayAloneWhenThePhoneBookIsEmpty) {
    addContacts(0);
    EXPECT_EQ(0, read());
    EXPECT_FALSE(items.hasElements());
}

TEST_F(ContactsReadTest, AdvancesTheProgressControlAndNeedsNone) {
    addContacts(3);
    std::vector<Long> steps;
    const auto control = std::make_shared<ProgressObject>([&](Long value) { steps.push_back(value); });
    progressbar = control;
    EXPECT_EQ(3, read());
    EXPECT_THAT(steps, ElementsAre(1, 2, 3, 4, 54, 55, 56, 57));
    progressbar = std::make_shared<ProgressObject>([](Long) { throw RuntimeFailure(memberNotSupported); });
    EXPECT_EQ(6, read());
}

TEST_F(ContactsReadTest, ReportsTheStepThatFailed) {
    struct Case {
        const char* call;
        library::Word status;
        Long result;
    };
    addContacts(1);
    const Case cases[] = {
        {"CAAPI_Initialize", 0x80100000, -1},
        {"CONAGetDeviceCount", 0x80100000, -2},
        {"DAOpenCA", 0x80200000, -3},
        {"DAOpenCA", 0x80100023, static_cast<Long>(0x80100023)},
        {"CABeginOperation", 0x80200006, -2},
        {"CAGetIDList", 0x80100014, -5},
        {"CAGetIDList", 0x80100021, static_cast<Long>(0x80100021)},
    };
    for (const Case& one : cases) {
        simulator.fail(one.call, one.status, 1, /*onwards=*/true);
        EXPECT_EQ(one.result, read()) << one.call;
        EXPECT_FALSE(items.hasElements());
        simulator.clearPlan();
        letGo();
    }
}

// What lies between one pass and the next, per kind of failure.
TEST_F(ContactsReadTest, TriesAgainAsOftenAsTheFailureDeserves) {
    const std::vector<std::string> close = {"DACloseCA", "CAAPI_Terminate"};
    struct Case {
        const char* call;
        library::Status status;
        int opened;    // connections asked for, two a failed check
        int services;  // how often the vendor's service was ended
    };
    const Case cases[] = {
        {"DAOpenCA", 0x80200000, 4, 0},    {"DAOpenCA", 0x80200008, 6, 0},
        {"CAGetIDList", 0x80100014, 2, 0}, {"CAGetIDList", 0x80200006, 3, 3},
        {"CAGetIDList", 0x80200010, 3, 3}, {"CAGetIDList", 0x80100021, 1, 0},
    };
    addContacts(1);
    int services = 0;
    processes().onStartCaptured = [&](TextView command) {
        EXPECT_EQ(u"taskkill /F /IM ServiceLayer.exe", command);
        ++services;
        return nullptr;
    };
    for (const Case& one : cases) {
        services = 0;
        calls();
        simulator.fail(one.call, one.status, 1, /*onwards=*/true);
        EXPECT_GT(0, read());
        const std::vector<std::string> made = calls();
        EXPECT_EQ(one.opened, std::count(made.begin(), made.end(), "DAOpenCA")) << one.call << one.status;
        EXPECT_EQ(one.services, services) << one.call << one.status;
        simulator.clearPlan();
        letGo();
    }
    EXPECT_THAT(clock().sleeps(), ElementsAreArray(std::vector<std::uint32_t>(6, 200)));
}

TEST_F(ContactsReadTest, SucceedsWhenAFailureHealsInTime) {
    struct Case {
        const char* call;
        std::uint32_t status;
        std::uint32_t failures;
    };
    addContacts(2);
    processes().onStartCaptured = [](TextView) { return nullptr; };
    for (const Case& one : {Case{"DAOpenCA", 0x80200000, 2}, Case{"DAOpenCA", 0x80200008, 4},
                            Case{"CAGetIDList", 0x80100014, 1}, Case{"CAGetIDList", 0x80200010, 2}}) {
        for (std::uint32_t n = 1; n <= one.failures; ++n)
            simulator.fail(one.call, one.status, n);
        items.clear();
        EXPECT_EQ(2, read()) << one.call;
        EXPECT_THAT(uids(), ElementsAre(u"", u"01", u"02"));
    }
}

TEST_F(ContactsReadTest, LeavesOutContactsThatWentAway) {
    addContacts(3);
    simulator.vanish(serial, "02");
    RecordingLog log;
    EXPECT_EQ(2, read());
    EXPECT_THAT(uids(), ElementsAre(u"", u"01", u"03"));
    EXPECT_EQ(1, std::count_if(log.lines.begin(), log.lines.end(),
                               [](const Text& line) { return line.starts_with(u" f1:"); }));
}

// Each record is wild in one way; the value or contact is left out, the other contact arrives.
TEST_F(ContactsReadTest, GetsOverWildRecords) {
    struct Case {
        const char* what;
        Json poke;
        TextView values;  // of the contact, "" = nothing but empty rows
        Long result;
    };
    const auto poke = [](const char* record, int word, Json value, Json more = Json::object()) {
        Json command = {{"record", record}, {"word", word}, {"value", std::move(value)}, {"uid", "0A0B"}};
        command.update(more);
        return command;
    };
    const Json phone = {{"pair", "b"}};
    const Case cases[] = {
        {"255 items behind no pointer", poke("contact", 2, 0), u"||||+49||", 2},
        {"more in a count than its low byte", poke("contact", 1, 0x7FFFF01), u"Anna||||+49||", 2},
        {"items at an odd address", poke("contact", 2, "misaligned"), u"", 2},
        {"a text nowhere", poke("item", 4, "unmapped", phone), u"Anna||||||", 2},
        {"a text without end", poke("item", 4, "unterminated", phone), u"Anna||||||", 2},
        {"a size of 4,000,000", poke("item", 0, 4000000, phone), u"Anna||||||", 2},
        {"an unknown field", poke("item", 3, 0xFFFFFFFF, phone), u"Anna||||||", 2},
    };
    for (const Case& one : cases) {
        startOver();
        addPhone({contactOf("0A0B", {{{"id", 2}, {"text", "Anna"}}, {{"id", 32}, {"text", "+49"}}}),
                  contactOf("0C", {{{"id", 2}, {"text", "Bob"}}})});
        Json command = one.poke;
        command["call"] = "CAReadItem";
        if (std::string(one.what).starts_with("255")) {
            Json count = command;
            count["word"] = 1;
            count["value"] = 255;
            simulator.run("poke", count);
        }
        simulator.run("poke", command);
        EXPECT_EQ(one.result, read()) << one.what;
        if (!one.values.empty()) {
            EXPECT_EQ(one.values, values()) << one.what;
        }
        EXPECT_EQ(u"Bob||||||", values(2)) << one.what;
    }
    for (const Json& list : {Json{{"word", 2}, {"value", 0}}, Json{{"word", 2}, {"value", "unmapped"}},
                             Json{{"word", 1}, {"value", 4000000}}}) {
        startOver();
        addContacts(2);
        Json command = list;
        command.update({{"call", "CAGetIDList"}, {"record", "list"}});
        simulator.run("poke", command);
        EXPECT_EQ(0, read());
    }
}

class ContactPictures : public ContactsReadTest {
  protected:
    ContactPictures() {
        table = tableOf({4, 1, 80});
        pictureFolder = replaceAll(folder.path().u16string(), u"/", u"\\") + u"\\pics\\";
        std::filesystem::create_directories(image() / "pictures");
    }
    std::filesystem::path image() const { return folder.path() / "phone"; }
    std::filesystem::path pictureFile(const char* name) const { return folder.path() / "pics" / name; }
    void addPicture(const std::string& bytes, Json format = "JPEG", const std::string& uid = "0A0B") {
        std::ofstream(image() / "pictures" / "p", std::ios::binary) << bytes;
        const Json picture = {{"format", std::move(format)}, {"file", "pictures/p"}};
        const Json contact =
            contactOf(uid, {{{"id", 2}, {"text", "Anna"}}, {{"id", 10}, {"picture", picture}}});
        std::ofstream(image() / "contacts.json") << Control::phoneBook(Json::array({contact}));
        simulator.run("addPhone", {{"phone", Control::plainPhone(serial)}, {"image", image().string()}});
    }
    static std::string contentOf(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

TEST_F(ContactPictures, BecomeFilesNamedByTheContact) {
    std::string everyByte;
    for (int i = 0; i < 300; ++i)
        everyByte.push_back(static_cast<char>(i));
    struct Case {
        Json format;
        const char* name;
    };
    for (const Case& one : {Case{"JPEG", "0A0B.jpg"}, Case{"PNG", "0A0B.png"}, Case{nullptr, "0A0B.jpg"},
                            Case{"image/gif", "0A0B.imagegif"}, Case{"..\\..\\x", "0A0B.....x"}}) {
        startOver();
        addPicture(everyByte, one.format);
        EXPECT_EQ(1, read());
        EXPECT_EQ(u"|Anna|" + pictureFolder + Text(one.name, one.name + std::strlen(one.name)), values());
        EXPECT_EQ(everyByte, contentOf(pictureFile(one.name)));
    }
}

TEST_F(ContactPictures, AreWrittenOnlyWhenTheyDiffer) {
    addPicture("first");
    read();
    const auto file = pictureFile("0A0B.jpg");
    std::filesystem::last_write_time(file,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(24));
    const auto longAgo = std::filesystem::last_write_time(file);
    read();
    EXPECT_EQ(longAgo, std::filesystem::last_write_time(file));
    for (const char* other : {"other", "longer than first"}) {
        startOver();
        addPicture(other);
        read();
        EXPECT_EQ(other, contentOf(file));
    }
}

TEST_F(ContactPictures, GoToTheTemporaryFolderWithoutAFolder) {
    pictureFolder.clear();
    addPicture("bytes", "JPEG", "0A0BFEED");
    EXPECT_EQ(1, read());
    const Text path = items.at(1).FieldValues.substr(6);
    EXPECT_TRUE(path.ends_with(u"\\ovpic0A0BFEED.jpg")) << std::string(path.begin(), path.end());
    machine.files().remove(path);
}

TEST_F(ContactPictures, ThatCannotBeReadAreLeftOut) {
    struct Case {
        int word;
        Json value;
    };
    for (const Case& one :
         {Case{2, 0xFFFFFFFF}, Case{2, 0}, Case{3, 0}, Case{3, "unmapped"}, Case{2, 0x7FFFFFFF}}) {
        startOver();
        addPicture("bytes");
        simulator.run("poke", {{"call", "CAReadItem"},
                               {"record", "value"},
                               {"pair", "a"},
                               {"index", 1},
                               {"word", one.word},
                               {"value", one.value}});
        EXPECT_EQ(1, read());
        EXPECT_EQ(u"|Anna|", values());
        EXPECT_FALSE(std::filesystem::exists(pictureFile("0A0B.jpg")));
    }
}

}  // namespace
}  // namespace ovno2::Contacts
