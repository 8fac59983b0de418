// What `ovphone files` does with a phone that does not list what it should, and how a command is broken off.
#include "host/files/phone_files.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/output/command_output.h"
#include "host/output/incoming.h"
#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::HasSubstr;

using Lister = std::function<Long(const Text& folder, std::vector<FolderEntry>& entries)>;

// A driver that only lists.
class ListingDriver : public PhoneDriver {
  public:
    explicit ListingDriver(Lister lister) : lister_(std::move(lister)) {}

    Long listFolder(const ListedPhone&, const Text& folder, std::vector<FolderEntry>& entries) override {
        return lister_(folder, entries);
    }
    std::string connectivityFolder() override { return {}; }
    SoftwareReport software() override { return {}; }
    Long listPhones(std::vector<ListedPhone>&) override { return 0; }
    Long switchMedium(Long, bool) override { return -1; }
    Long searchBluetooth(std::vector<FoundPhone>&) override { return -1; }
    Long connections() override { return -1; }
    Long changeTrust(const Text&, Long, const Text&) override { return -1; }
    Long readContacts(const ListedPhone&, const TextTable&, const std::string&,
                      const std::function<void(Long)>&, std::vector<Contact>&) override {
        return -1;
    }
    Long writeContact(const ListedPhone&, const TextTable&, const Text&, Text&,
                      const LossQuestion&) override {
        return -1;
    }
    Long deleteContact(const ListedPhone&, const Text&) override { return -1; }
    Long endContacts(bool, std::vector<AddedItem>&) override { return -1; }
    Long readData(const ListedPhone&, DataStore, const std::function<void(Long)>&,
                  std::vector<Text>&) override {
        return -1;
    }
    Long writeData(const ListedPhone&, const Text&) override { return -1; }
    Long deleteData(const ListedPhone&, const Text&) override { return -1; }
    Long endData(bool) override { return -1; }
    Long listCalendars(const ListedPhone&, std::vector<Text>&) override { return -1; }
    Long createCalendar(const ListedPhone&, const Text&) override { return -1; }
    Long renameCalendar(const ListedPhone&, const Text&, const Text&) override { return -1; }
    Long deleteCalendar(const ListedPhone&, const Text&) override { return -1; }
    Long readCalendar(const ListedPhone&, const std::function<void(Long)>&,
                      std::vector<CalendarItem>&) override {
        return -1;
    }
    Long writeCalendarItem(const ListedPhone&, const std::vector<CalendarCell>&, Text&) override {
        return -1;
    }
    Long deleteCalendarItem(const ListedPhone&, const Text&) override { return -1; }
    Long endCalendar(bool, std::vector<AddedItem>&) override { return -1; }
    Long getFile(const Text&, const std::string&) override { return -1; }
    Long putFile(const std::string&, const Text&) override { return -1; }
    Long renameFile(const Text&, const Text&) override { return -1; }
    Long deleteFile(const Text&) override { return -1; }
    Long renameFolder(const Text&, const Text&) override { return -1; }
    Long createFolder(const Text&) override { return -1; }
    Long deleteFolder(const Text&) override { return -1; }
    void endFiles() override {}

  private:
    Lister lister_;
};

FolderEntry folderNamed(const Text& name) {
    FolderEntry entry;
    entry.name = name;
    entry.isFolder = true;
    return entry;
}

TEST(PhoneFiles, AWalkEndsWhateverThePhoneLists) {
    int serial = 0;
    struct {
        const char* name;
        Lister lister;
        bool isGivenUp;  // altogether
        const char* message;
    } const phones[] = {
        {"two folders in every folder",
         [](const Text&, std::vector<FolderEntry>& entries) {
             entries = {folderNamed(u"A"), folderNamed(u"B")};
             return Long{0};
         },
         false, "leads in circles at A/A/A/A/A/A; "},
        {"another folder in every folder",
         [&](const Text&, std::vector<FolderEntry>& entries) {
             entries = {folderNamed(fromUtf8(std::to_string(++serial)))};
             return Long{0};
         },
         true, "more than 64 folders in each other"},
        {"many others in every folder",
         [&](const Text& folder, std::vector<FolderEntry>& entries) {
             for (int i = 0; i < 1000 && std::ranges::count(folder, u'\\') < 2; ++i)
                 entries.push_back(folderNamed(fromUtf8(std::to_string(++serial))));
             return Long{0};
         },
         true, "more than 300000 files and folders"},
        {"some of its entries",
         [](const Text& folder, std::vector<FolderEntry>& entries) {
             if (folder.empty()) entries = {folderNamed(u"C:"), folderNamed(u"E:")};
             return Long{folder.empty() ? -1 : 0};
         },
         false, "listed its drives only in part: after 2 of"},
    };
    const std::vector<ListedPhone> attached = {{u"N95", 0, u"356", u"", u"", 0}};
    for (const auto& [name, lister, isGivenUp, message] : phones) {
        ListingDriver driver(lister);
        std::string told;
        const PhoneFiles phone(driver, attached, attached[0],
                               [&](const Text&, const std::string& problem) { told += problem + "\n"; });
        std::size_t entries = 0;
        try {
            phone.walk(phone.findOne("/"), [&](const PhoneEntry&, std::size_t, bool) { ++entries; });
            EXPECT_FALSE(isGivenUp) << name;
        } catch (const CommandFailure& failure) {
            EXPECT_TRUE(isGivenUp) << name;
            told += failure.message;
        }
        EXPECT_THAT(told, HasSubstr(message)) << name;
        EXPECT_GT(entries, 1u) << name;
        EXPECT_LT(entries, 400000u) << name;
    }
}

TEST(Interruption, EndsTheProgramWhenThePhoneDoesNotAnswer) {
    const auto waitForThePhone = [] {
        Interruption interruption({.tick = [] {}, .end = [] { std::fputs("2 of 3 copied", stderr); }});
        std::raise(SIGTERM);
        EXPECT_EQ(SIGTERM, interruption.signal());
        interruption.whileAsking([] { std::this_thread::sleep_for(std::chrono::hours(1)); });
    };
    EXPECT_EXIT(waitForThePhone(), ::testing::ExitedWithCode(128 + SIGTERM), "2 of 3 copied");
}

// What is interrupted in order goes on after a killed one.
TEST(Incoming, BelongsToOneProgramAndGoesWithIt) {
    TemporaryFolder folder;
    const auto count = [&] {
        return std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator());
    };
    EXPECT_EXIT(
        {
            const Incoming killed(folder.path());
            std::ofstream(killed.path() / "half a file") << "x";
            std::raise(SIGKILL);
        },
        ::testing::KilledBySignal(SIGKILL), "");
    for (int i = 0; i < 100 && count() != 0; ++i)  // somebody else removes it
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(0, count());
    fs::create_directory(folder.path() / ".ovphone-incoming-left");
    {
        const Incoming one(folder.path()), other(folder.path());
        EXPECT_NE(one.path(), other.path());
        EXPECT_EQ(2, count());
        std::ofstream(one.path() / "a") << "one";
        EXPECT_TRUE(Incoming::move(one.arrived(), folder.path() / "place", /*overwrite=*/false));
        std::ofstream(other.path() / "b") << "other";
        EXPECT_FALSE(Incoming::move(other.arrived(), folder.path() / "place", /*overwrite=*/false));
        EXPECT_EQ("one", contentOf(folder.path() / "place"));
        EXPECT_TRUE(Incoming::move(other.arrived(), folder.path() / "place", /*overwrite=*/true));
    }
    EXPECT_EQ(1, count());
}

}  // namespace

}  // namespace ovno2::host
