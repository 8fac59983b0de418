#include "devices/session.h"

#include <gmock/gmock.h>

#include "common/phone_test.h"
#include "core/settings.h"
#include "devices/current_phone.h"
#include "devices/devices.h"
#include "devices/media.h"
#include "library/library_start.h"
#include "pc/registry_access.h"

namespace ovno2 {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class SessionTest : public PhoneTest {
  protected:
    ~SessionTest() override {
        Session::DMApiTerminate();
        MediaControl::MediaApiTerminate();
    }

    // The journal lines of one function since the last look.
    std::vector<std::string> linesOf(const std::string& function) {
        std::vector<std::string> found = simulator.readJournal();
        std::erase_if(found, [&](const std::string& line) { return !line.starts_with(function + "("); });
        return found;
    }
};

TEST_F(SessionTest, OpensOnceAndStartsAfreshAfterClosing) {
    EXPECT_EQ(0, Session::DMApiInit().result);
    EXPECT_EQ(0, Session::DMApiInit().result);
    EXPECT_THAT(calls(), ElementsAre("DMAPI_Terminate", "DMAPI_Initialize", "CONAOpenDM"));
    Devices::setCurrentPhone(u"1", u"2");
    EXPECT_EQ(0, Session::DMApiTerminate());
    EXPECT_FALSE(Session::isOpen());
    EXPECT_EQ(u"", Devices::currentPhone().serial + Devices::currentPhone().model);
    EXPECT_THAT(calls(), ElementsAre("CONACloseDM", "DMAPI_Terminate"));
    EXPECT_EQ(0, Session::DMApiInit().result);
    EXPECT_THAT(calls(), ElementsAre("DMAPI_Terminate", "DMAPI_Initialize", "CONAOpenDM"));
}

TEST_F(SessionTest, TheContentAccessVersionDecidesWhichDeviceManagementVersionIsAskedFor) {
    struct Case {
        Long contentAccess;
        int deviceManagement;
        std::string requested;
        bool asked;
    };
    for (const Case& c : {Case{36, 50, "30", false}, Case{37, 50, "50", true}, Case{37, 20, "34", true},
                          Case{40, 30, "30", true}}) {
        library::recordContentVersion(c.contentAccess);
        simulator.shape({{"deviceManagement", c.deviceManagement}});
        EXPECT_EQ(0, Session::DMApiInit().result);
        const std::string journal = ::testing::PrintToString(simulator.readJournal());
        EXPECT_THAT(journal, HasSubstr("DMAPI_Initialize(version " + c.requested));
        EXPECT_EQ(c.asked, journal.find("DMAPI_GetAPIVersion") != std::string::npos) << c.contentAccess;
        Session::DMApiTerminate();
        simulator.readJournal();
    }
}

TEST_F(SessionTest, AMissingEntryPointIsWorkedAroundTheOldWayAndUndoneTheOldWay) {
    libraries().missingFunctions = {"DMAPI_Initialize"};
    EXPECT_EQ(0, Session::DMApiInit().result);
    EXPECT_EQ(1, library::startCount());
    EXPECT_THAT(calls(),
                ElementsAre("DMAPI_Terminate", "CONAGetConnAPIVersion", "CONAInitialize", "CONAOpenDM"));
    Session::DMApiTerminate();
    EXPECT_THAT(calls(), ElementsAre("CONACloseDM", "CONAUninitialize", "DMAPI_Terminate"));
    libraries().missingFunctions.clear();
    EXPECT_EQ(0, Session::DMApiInit().result);
    EXPECT_THAT(calls(), ElementsAre("CONAUninitialize", "DMAPI_Initialize", "CONAOpenDM"));
}

TEST_F(SessionTest, WithoutTheLibraryNothingStartsWhetherTheLogIsOnOrOff) {
    libraries().missingLibraries = {u"ConnAPI"};
    for (const bool logOn : {false, true}) {
        std::optional<RecordingLog> log;
        if (logOn) log.emplace();
        const Session::OpenResult open = Session::DMApiInit();
        EXPECT_EQ(-1, open.result);
        EXPECT_EQ(fileNotFound, open.failure);
    }
    EXPECT_EQ(0, library::startCount());
    libraries().missingLibraries.clear();
    EXPECT_EQ(0, Session::DMApiInit().result);
}

TEST_F(SessionTest, ASessionThatDoesNotOpenIsTriedAgain) {
    simulator.fail("CONAOpenDM", 0x80100001);
    EXPECT_EQ(-2, Session::DMApiInit().result);
    EXPECT_FALSE(Session::isOpen());
    EXPECT_EQ(0, Session::DMApiInit().result);
}

TEST_F(SessionTest, MediaAreListedAndOnlyThoseInAnotherStateAreSet) {
    const Long active = MediaControl::MediaGetConnections();
    EXPECT_THAT(linesOf("CONAMMSetMedia"), IsEmpty());
    EXPECT_EQ(0, MediaControl::MediaConnect(2, -1, /*disconnect=*/true));
    EXPECT_EQ(active & ~8, MediaControl::MediaGetConnections());
    EXPECT_EQ(0, MediaControl::MediaConnect(2, 8, /*disconnect=*/false));
    EXPECT_EQ(active | 8 | 16, MediaControl::MediaGetConnections());
    simulator.readJournal();
    EXPECT_EQ(0, MediaControl::MediaConnect(2, -1, /*disconnect=*/false));
    EXPECT_EQ(0, MediaControl::MediaConnect(16, -1, /*disconnect=*/false));
    EXPECT_THAT(linesOf("CONAMMSetMedia"), IsEmpty());
}

}  // namespace
}  // namespace ovno2
