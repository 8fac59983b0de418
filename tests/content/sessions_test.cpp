#include "content/sessions.h"

#include <fstream>

#include "contacts/contacts_connection.h"
#include "content/content_test.h"
#include "devices/current_phone.h"

namespace ovno2::Content {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;

class Sessions : public ContentTest {
  protected:
    Sessions() {
        simulator.addPhone(Control::plainPhone("1"), Control::phoneBook(Json::array()));
        simulator.addPhone(Control::plainPhone("2", "Nokia 6300"), Control::phoneBook(Json::array()));
        clock().set({.year = 2008, .month = 7, .day = 1, .hour = 12});
        PIMApiInit();
        calls();
    }

    using Control = simulator::Control;
    void waitASecond() { clock().advance(std::chrono::milliseconds(1000)); }
};

TEST_F(Sessions, StartAfreshAndForgetThePhone) {
    Devices::setCurrentPhone(u"1", u"Nokia N95");
    EXPECT_EQ(0, PIMApiInit());
    EXPECT_THAT(calls(), ElementsAre("CAAPI_Terminate", "CAGetAPIVersion", "CAAPI_Initialize"));
    EXPECT_EQ(u"", Devices::currentPhone().serial + Devices::currentPhone().model);
}

TEST_F(Sessions, AskForTheLibrarysVersionButNoneBelowThirty) {
    // Only 16 bits of it count.
    for (const auto& [version, asked] : {std::pair{29, "30"}, std::pair{0x10034, "52"}}) {
        simulator.shape({{"contentAccess", version}});
        PIMApiInit();
        EXPECT_THAT(simulator.readJournal(),
                    Contains("CAAPI_Initialize(version " + std::string(asked) + ") = 0"));
    }
    simulator.shape({{"contentAccess", nullptr}});
    PIMApiTerminate();
    calls();
    EXPECT_EQ(50, GetApiVersion());
    EXPECT_EQ(50, GetApiVersion());
    EXPECT_THAT(calls(), ElementsAre("CAGetAPIVersion"));
}

// The helper of the host is asked to register the library once; nothing comes of it here.
TEST_F(Sessions, WithoutTheLibraryAreRepairedOnceAndReportThatTheyDidNotStart) {
    resetThreadState();
    usePlatform(machine);
    libraries().missingLibraries = {u"DAAPI"};
    int repairs = 0;
    processes().onShellExecute = [&](auto&&...) {
        ++repairs;
        return 33;
    };
    std::filesystem::create_directories(folder.path() / "PC");
    std::ofstream(folder.path() / "PC" / "ConnApi.dll").put('x');
    setRegistryText(platform::localMachine, u"SOFTWARE\\PC Connectivity Solution", u"PlatformPath",
                    (folder.path() / "PC").u16string());
    EXPECT_EQ(-1, PIMApiInit());
    EXPECT_EQ(-1, PIMApiInit());
    EXPECT_EQ(1, repairs);
    EXPECT_EQ(0, GetApiVersion());
    EXPECT_EQ(-1, Contacts::CheckContactsConnection(u"1"));
    libraries().missingLibraries.clear();
    EXPECT_EQ(0, PIMApiInit());
}

TEST_F(Sessions, KeepOneContactsConnectionForOnePhone) {
    EXPECT_EQ(0, Contacts::CheckContactsConnection(u"1"));
    EXPECT_THAT(calls(), ElementsAre("CONAAllocString", "DAOpenCA", "CONAFreeString"));
    waitASecond();
    EXPECT_EQ(0, Contacts::CheckContactsConnection(u"1"));
    EXPECT_THAT(calls(), ElementsAre());
    EXPECT_EQ(0, Contacts::CheckContactsConnection(u"2"));
    EXPECT_THAT(calls(), ElementsAre("DACloseCA", "CONAAllocString", "DAOpenCA", "CONAFreeString"));
    EXPECT_EQ(0, Contacts::CloseContactsConnection());
    EXPECT_EQ(0, Contacts::CloseContactsConnection());
    EXPECT_THAT(calls(), ElementsAre("DACloseCA"));
}

// The log line of the status is missing where a check is answered without looking.
TEST_F(Sessions, TrustASuccessfulCheckOfTheSamePhoneForASecond) {
    RecordingLog log;
    const auto linesOfCheck = [&](const Text& serial) {
        log.lines.clear();
        EXPECT_EQ(0, Contacts::CheckContactsConnection(serial));
        return log.lines.size();
    };
    Contacts::CheckContactsConnection(u"1");
    EXPECT_EQ(2u, linesOfCheck(u"1"));
    clock().advance(std::chrono::milliseconds(900));
    EXPECT_EQ(2u, linesOfCheck(u"1"));
    EXPECT_LT(2u, linesOfCheck(u"2"));
    waitASecond();
    EXPECT_EQ(3u, linesOfCheck(u"2"));
    Contacts::CloseContactsConnection();
    EXPECT_LT(3u, linesOfCheck(u"2"));
    EXPECT_NE(0u, Contacts::connection().handle);
}

TEST_F(Sessions, OpenTheConnectionOverUsbWhenItDoesNotOpenOtherwise) {
    RecordingLog log;
    simulator.fail("DAOpenCA", 0x80200000);
    EXPECT_EQ(0, Contacts::CheckContactsConnection(u"1"));
    EXPECT_THAT(simulator.readJournal(), IsSupersetOf({"DAOpenCA(\"1\", medium 1, target 1) = 80200000",
                                                       "DAOpenCA(\"1\", medium 16, target 1) = 0"}));
    EXPECT_THAT(log.lines, IsSupersetOf({"e1:80200000", "e2:0"}));
    Contacts::CloseContactsConnection();
    simulator.fail("DAOpenCA", 0x80200008, 1, /*onwards=*/true);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(static_cast<Long>(0x80200008), Contacts::CheckContactsConnection(u"1")) << "not trusted";
    simulator.clearPlan();
    EXPECT_EQ(0, Contacts::CheckContactsConnection(u"1"));
}

TEST_F(Sessions, EndTheContactsWriteSessionWithTheConnection) {
    Contacts::CheckContactsConnection(u"1");
    Contacts::connection().writeSession.operation = 7;
    Contacts::connection().writeSession.open = true;
    simulator.fail("DACloseCA", 0x80200006);
    Contacts::CloseContactsConnection();
    EXPECT_EQ(0u, Contacts::connection().writeSession.operation);
    EXPECT_FALSE(Contacts::connection().writeSession.open);
    EXPECT_EQ(0u, Contacts::connection().handle);
}

TEST_F(Sessions, FindTheContactsFolderOncePerPhone) {
    Text serial;
    EXPECT_EQ(1, Contacts::GetContactsFolder(u"Nokia 6300", serial));
    EXPECT_EQ(u"2", serial);
    EXPECT_EQ(u"2", Devices::currentPhone().serial);
    EXPECT_THAT(calls(), Contains("CAGetFolderInfo"));
    EXPECT_EQ(1, Contacts::GetContactsFolder(u"Nokia 6300", serial));
    EXPECT_THAT(calls(), ElementsAre());
    PIMApiInit();
    simulator.fail("CAGetFolderInfo", 0x80200006, 1, /*onwards=*/true);
    EXPECT_EQ(0, Contacts::GetContactsFolder(u"Nokia 6300", serial));  // there is a connection, and no record
    EXPECT_EQ(u"2", Devices::currentPhone().serial);
    PIMApiInit();
    serial = u"1";
    simulator.fail("DAOpenCA", 0x80200008, 1, /*onwards=*/true);
    EXPECT_EQ(-1, Contacts::GetContactsFolder(u"Nokia N95", serial));
    EXPECT_EQ(u"", Devices::currentPhone().serial);
    simulator.clearPlan();
}

}  // namespace
}  // namespace ovno2::Content
