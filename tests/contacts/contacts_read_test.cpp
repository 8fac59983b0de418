#include "contacts/contacts_test.h"
#include "devices/current_phone.h"
#include "devices/devices.h"
#include "driver/progress_object.h"

namespace ovno2::Contacts {
namespace {

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

TEST_F(ContactsReadTest, AppendsToWhatTheHostPassedIn) {
    addContacts(0);
    EXPECT_EQ(0, read());
    EXPECT_FALSE(items.hasElements());
    startOver();
    addContacts(2);
    EXPECT_EQ(2, read());
    EXPECT_THAT(uids(), ElementsAre(u"", u"01", u"02"));
    EXPECT_EQ(4, read());
    EXPECT_THAT(uids(), ElementsAre(u"", u"01", u"02", u"01", u"02"));
    items = HostArray<AdrItem>(std::vector<AdrItem>(1), /*lowerBound=*/5);
    EXPECT_EQ(7, read());
    EXPECT_EQ(u"02", items.at(7).Uid);
}

TEST_F(ContactsReadTest, ForgetsThePhoneThatWasIdentifiedForIt) {
    addContacts(1);
    Content::PIMApiInit();
    Text found;
    const Long contactsFolder = Contacts::GetContactsFolder(model, found);
    EXPECT_EQ(u"356300010000017", Devices::currentPhone().serial);
    EXPECT_EQ(1, GetContacts(contactsFolder, items, table, pictureFolder, progressbar));
    EXPECT_EQ(u"", Devices::currentPhone().serial);
    EXPECT_EQ(u"", Devices::currentPhone().model);
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

// What a failure that lasts comes to, what lies between one pass and the next, and how long it may last until
// a read succeeds all the same.
TEST_F(ContactsReadTest, TriesAgainAsOftenAsTheFailureDeserves) {
    struct Case {
        const char* call;
        library::Status status;
        Long result;
        int opened;              // connections asked for, two a failed check
        int services;            // how often the vendor's service was ended
        std::uint32_t healsFor;  // failures, 0 = none
    };
    constexpr Long itself = 1;  // the status
    const Case cases[] = {
        {"CAAPI_Initialize", 0x80100000, -1, 0, 0, 0}, {"CONAGetDeviceCount", 0x80100000, -2, 0, 0, 0},
        {"DAOpenCA", 0x80200000, -3, 4, 0, 2},         {"DAOpenCA", 0x80200008, -3, 6, 0, 4},
        {"DAOpenCA", 0x80100023, itself, 4, 0, 2},     {"CABeginOperation", 0x80200006, -2, 1, 0, 0},
        {"CAGetIDList", 0x80100014, -5, 2, 0, 1},      {"CAGetIDList", 0x80200006, itself, 3, 3, 2},
        {"CAGetIDList", 0x80200010, itself, 3, 3, 2},  {"CAGetIDList", 0x80100021, itself, 1, 0, 0},
    };
    addContacts(2);
    int services = 0;
    processes().onStartCaptured = [&](TextView command) {
        EXPECT_EQ(u"taskkill /F /IM ServiceLayer.exe", command);
        ++services;
        return nullptr;
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.call + std::to_string(one.status));
        services = 0;
        calls();
        simulator.fail(one.call, one.status, 1, /*onwards=*/true);
        EXPECT_EQ(one.result == itself ? static_cast<Long>(one.status) : one.result, read());
        EXPECT_FALSE(items.hasElements());
        const std::vector<std::string> made = calls();
        EXPECT_EQ(one.opened, std::count(made.begin(), made.end(), "DAOpenCA"));
        EXPECT_EQ(one.services, services);
        simulator.clearPlan();
        letGo();
        for (std::uint32_t n = 1; n <= one.healsFor; ++n)
            simulator.fail(one.call, one.status, n);
        if (one.healsFor == 0) continue;
        EXPECT_EQ(2, read());
        EXPECT_THAT(uids(), ElementsAre(u"", u"01", u"02"));
        letGo();
        items.clear();
    }
    EXPECT_THAT(clock().sleeps(), ElementsAreArray(std::vector<std::uint32_t>(10, 200)));
}

TEST_F(ContactsReadTest, LeavesOutContactsThatWentAway) {
    addContacts(3);
    simulator.vanish(serial, "02");
    RecordingLog log;
    EXPECT_EQ(2, read());
    EXPECT_THAT(uids(), ElementsAre(u"", u"01", u"03"));
    EXPECT_EQ(1, std::count_if(log.lines.begin(), log.lines.end(),
                               [](const std::string& line) { return line.starts_with(" f1:"); }));
}

// Each record is wild in one way; the value or contact is left out, the other contact arrives.
TEST_F(ContactsReadTest, GetsOverWildRecords) {
    struct Case {
        const char* what;
        Json poke;
        TextView values;  // of the contact
    };
    const auto inItem = [](int word, Json value) {
        return Json{{"record", "item"}, {"pair", "b"}, {"word", word}, {"value", std::move(value)}};
    };
    const auto inContact = [](int word, Json value) {
        return Json{{"record", "contact"}, {"word", word}, {"value", std::move(value)}};
    };
    const Case cases[] = {
        {"items behind no pointer", inContact(2, 0), u"||||+49||"},
        {"more in a count than its low byte", inContact(1, 0x7FFFF01), u"Anna||||+49||"},
        {"a text nowhere", inItem(4, "unmapped"), u"Anna||||||"},
        {"a text without end", inItem(4, "unterminated"), u"Anna||||||"},
        {"a size of 4,000,000", inItem(0, 4000000), u"Anna||||||"},
        {"an unknown field", inItem(3, 0xFFFFFFFF), u"Anna||||||"},
        {"items at an odd address", inContact(2, "misaligned"), u"any"},
    };
    for (const Case& one : cases) {
        startOver();
        addPhone({contactOf("0A0B", {{{"id", 2}, {"text", "Anna"}}, {{"id", 32}, {"text", "+49"}}}),
                  contactOf("0C", {{{"id", 2}, {"text", "Bob"}}})});
        Json poke = one.poke;
        poke.update({{"call", "CAReadItem"}, {"uid", "0A0B"}});
        simulator.run("poke", poke);
        EXPECT_EQ(2, read()) << one.what;
        EXPECT_TRUE(one.values == u"any" || one.values == values()) << one.what;
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
    }
    std::filesystem::path image() const { return folder.path() / "phone"; }
    std::filesystem::path pictureFile(const std::string& name) const { return folder.path() / "pics" / name; }
    void addPicture(const std::string& bytes, Json format = "JPEG", const std::string& uid = "0A0B") {
        writeContent(image() / "pictures" / "p", bytes);
        const Json picture = {{"format", std::move(format)}, {"file", "pictures/p"}};
        const Json contact =
            contactOf(uid, {{{"id", 2}, {"text", "Anna"}}, {{"id", 10}, {"picture", picture}}});
        writeContent(image() / "contacts.json", Control::phoneBook(Json::array({contact})).dump());
        simulator.run("addPhone", {{"phone", Control::plainPhone(serial)}, {"image", image().string()}});
    }
};

TEST_F(ContactPictures, BecomeFilesNamedByTheContact) {
    const std::pair<Json, std::string> cases[] = {{"JPEG", "0A0B.jpg"},
                                                  {"PNG", "0A0B.png"},
                                                  {nullptr, "0A0B.jpg"},
                                                  {"image/gif", "0A0B.imagegif"},
                                                  {"..\\..\\x", "0A0B.....x"}};
    for (const auto& [format, name] : cases) {
        startOver();
        addPicture(everyByte(), format);
        EXPECT_EQ(1, read());
        EXPECT_EQ(u"|Anna|" + pictureFolder + Text(name.begin(), name.end()), values());
        EXPECT_EQ(everyByte(), contentOf(pictureFile(name)));
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
    const std::pair<int, Json> cases[] = {{2, 0xFFFFFFFF}, {2, 0}, {3, 0}, {3, "unmapped"}, {2, 0x7FFFFFFF}};
    for (const auto& [word, value] : cases) {
        startOver();
        addPicture("bytes");
        Json poke = {{"call", "CAReadItem"}, {"record", "value"}, {"pair", "a"}, {"index", 1}};
        poke.update({{"word", word}, {"value", value}});
        simulator.run("poke", poke);
        EXPECT_EQ(1, read());
        EXPECT_EQ(u"|Anna|", values());
        EXPECT_FALSE(std::filesystem::exists(pictureFile("0A0B.jpg")));
    }
}

}  // namespace
}  // namespace ovno2::Contacts
