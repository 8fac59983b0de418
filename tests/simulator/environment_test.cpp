// What a process finds at its first call: phones, plan and journal from its environment.
#include <algorithm>
#include <cstdlib>

#include "simulator/library.h"

namespace simulator_tests {
namespace {

using ::testing::StartsWith;

// Run in a process of its own by the test below.
TEST(Environment, DISABLED_ReadsAPhoneBook) {
    const ContentSession session;
    ASSERT_EQ(session.status, statusOk);
    ContactRecord contact;
    EXPECT_EQ(session.read(session.ids()[0], contact), deviceBusy);
}

TEST(Environment, GivesPhonesPlanAndJournalAndSaysOnceWhatIsWrongWithThem) {
    const TemporaryFolder folder;
    folder.write("bad/one\033/phone.json", "{}");
    folder.write("good/one/phone.json",
                 R"({"format": 1, "serialNumber": "356300010000017", "connections": [{"medium": "usb"}]})");
    folder.write("good/one/contacts.json", R"({"format": 1, "folder": {"id": 1, "name": "Contacts"},
                 "contacts": [{"uid": "0A", "fields": [{"id": 2, "text": "Anna"}]}]})");
    folder.write("plan.json", R"([{"command": "fault", "call": "CAReadItem", "status": "0x80100014"},
                                  {"command": "fault", "call": "CAReadItem", "staus": 5}])");
    const std::string path = folder.path.string();
    const std::string command = "cd " + path + " && OVNO2_PHONES=bad:good:none:bad:good/one" +
                                " OVNO2_SIMULATOR_PLAN=plan.json OVNO2_JOURNAL=journal.txt " +
                                std::filesystem::read_symlink("/proc/self/exe").string() +
                                " --gtest_also_run_disabled_tests --gtest_filter=*ReadsAPhoneBook" +
                                " >out.txt 2>errors.txt";
    EXPECT_EQ(std::system(command.c_str()), 0) << fileContent(folder.path / "out.txt");
    EXPECT_EQ(fileContent(folder.path / "errors.txt"),
              "simulated phones: bad/one\\x1B/phone.json: /: expected format 1\n"
              "simulated phones: none: expected a folder of phone images that can be read\n"
              "simulated phones: good/one: expected the folder around it: this is the image of one phone\n"
              "simulated phones: plan.json: /1/staus: expected no member of this name\n");
    const std::string journal = fileContent(folder.path / "journal.txt");
    EXPECT_THAT(journal, StartsWith("CAAPI_Initialize(version 30) = 0\nDAOpenCA("));
    EXPECT_THAT(journal, HasSubstr("uid 0A) = 80100014\n"));
    EXPECT_EQ(std::count(journal.begin(), journal.end(), '\n'), 8);
}

}  // namespace
}  // namespace simulator_tests
