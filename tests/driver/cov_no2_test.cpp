#include "driver/cov_no2.h"

#include <gmock/gmock.h>
#include <thread>

#include "common/field_table.h"
#include "common/phone_test.h"
#include "core/attempt.h"
#include "core/settings.h"
#include "driver/progress_object.h"
#include "library/library_start.h"

namespace ovno2 {
namespace {

using simulator::Control;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Json = Control::Json;

class CovNo2Test : public PhoneTest {
  protected:
    void switchLogOn() {
        constexpr TextView key = u"Software\\Tessaline\\Debug";
        setRegistryText(platform::currentUser, key, u"DebugFile", (folder.path() / "debug.txt").u16string());
        setRegistryText(platform::currentUser, key, u"On", u"1");
    }
    std::string logText() const { return contentOf(folder.path() / "debug.txt"); }
    // A phone book whose contacts have one field each.
    static Json bookOf(const std::vector<std::pair<const char*, const char*>>& uidsAndNames) {
        Json contacts = Json::array();
        for (const auto& [uid, name] : uidsAndNames)
            contacts.push_back(
                {{"uid", uid}, {"position", contacts.size() + 7}, {"fields", {{{"id", 2}, {"text", name}}}}});
        return Control::phoneBook(contacts);
    }
    // Reads the phone book of the phone of that model into a table with the columns that own the names.
    static Long read(covNo2& phone, Text model, HostArray<AdrItem>& items) {
        Text none;
        TextArray noTexts;
        return phone.NokiaGetAddressBookItems(model, none, none, items, tableOf({1, 2}), noTexts);
    }
    Long list(covNo2& phone, Long medium = -1) {
        LongArray media, types;
        TextArray ids, addresses, names;
        return phone.GetConnectedDevices(models, media, ids, addresses, names, types, medium);
    }

    TextArray models;
};

TEST_F(CovNo2Test, InitStartsTheLibraryOnceAndLogsBothVersions) {
    switchLogOn();
    simulator.shape({{"connectivity", 52}, {"contentAccess", 37}});
    covNo2 phone;
    EXPECT_EQ(0, phone.Init());
    EXPECT_EQ(1, library::startCount());
    EXPECT_EQ(37, library::recordedContentVersion());
    EXPECT_THAT(calls(), ElementsAre("CONAGetConnAPIVersion", "CONAInitialize", "CAGetAPIVersion"));
    for (const char* line : {"ConApiVersion: 520", "CaApiVersion: 37", "<GetApiVersion>_"})
        EXPECT_THAT(logText(), HasSubstr(std::string("[ovNo2] ") + line + "\r\n"));
    EXPECT_TRUE(settings().profilePath.ends_with(u"\\defaults.ini"));
}

TEST_F(CovNo2Test, CleanUpClosesInItsOrderAndTheNextInitStartsAfresh) {
    covNo2 phone;
    simulator.readJournal();
    EXPECT_EQ(0, phone.CleanUp());
    EXPECT_THAT(calls(),
                ElementsAre("FSAPI_Terminate", "MCAPI_Terminate", "DMAPI_Terminate", "CONAUninitialize"));
    EXPECT_EQ(0, library::startCount());
    EXPECT_EQ(0, phone.Init());
    EXPECT_THAT(calls(), ElementsAre("CONAGetConnAPIVersion", "CONAInitialize"));
}

TEST_F(CovNo2Test, ALibraryThatComesBackIsStartedByTheNextInit) {
    libraries().missingLibraries = {u"ConnAPI", u"DAAPI"};
    covNo2 phone;
    EXPECT_NE(0, phone.Init());
    EXPECT_EQ(0, library::startCount());
    HostArray<AdrItem> items;
    EXPECT_EQ(-7, list(phone));
    EXPECT_EQ(-9, list(phone, eMediaBT));
    EXPECT_EQ(-9, phone.GetConnections());
    EXPECT_EQ(-1, read(phone, u"", items));
    libraries().missingLibraries.clear();
    EXPECT_EQ(0, phone.Init());
    EXPECT_EQ(1, library::startCount());
    simulator.fail("CONAInitialize", 0x80100001);
    phone.CleanUp();
    EXPECT_EQ(static_cast<Long>(0x80100001), phone.Init());
    EXPECT_EQ(0, phone.Init());
}

TEST_F(CovNo2Test, ListsPhonesAndSwitchesAMediumOnOnlyWhenAsked) {
    simulator.addPhone(Control::plainPhone("1"));
    covNo2 phone;
    simulator.readJournal();
    EXPECT_EQ(1, list(phone));
    EXPECT_THAT(calls(), Not(Contains("MCAPI_Initialize")));
    EXPECT_EQ(1, list(phone, eMediaBT));
    EXPECT_THAT(calls(), Contains("MCAPI_Initialize"));
    EXPECT_THAT(models.elements(), ElementsAre(u"Nokia N95"));
}

TEST_F(CovNo2Test, WriteSessionsOfUnknownKindsDoNothing) {
    covNo2 phone;
    simulator.readJournal();
    TextArray tempids({u"kept"}), uids({u"kept"});
    for (const Long what : {0, 5, -1})
        EXPECT_EQ(0, phone.EndWriteSession(what, tempids, uids, true));
    for (const Long what : {0, 2, 3, 4, 5})
        EXPECT_EQ(0, phone.GetAllUids(what, uids));
    EXPECT_EQ(u"kept", tempids.at(0));
    EXPECT_EQ(u"kept", uids.at(0));
    EXPECT_THAT(calls(), ElementsAre());
}

// The whole road of one phone book, as the journal of the library's calls.
TEST_F(CovNo2Test, APhoneBookComesAlongTheWholeRoad) {
    simulator.addPhone(Control::plainPhone("356"), bookOf({{"0A", "Anna"}, {"0B", "Bert"}}));
    switchLogOn();
    covNo2 phone;
    simulator.readJournal();
    HostArray<AdrItem> items;
    EXPECT_EQ(2, read(phone, u"Nokia N95", items));
    ASSERT_EQ(2, items.upperBound());
    EXPECT_EQ(u"", items.at(0).Uid);
    EXPECT_EQ(u"Anna\t", items.at(1).FieldValues);
    EXPECT_EQ(u"7 (SB)", items.at(1).Location);
    EXPECT_EQ(u"0B", items.at(2).Uid);
    std::vector<std::string> road;
    for (const std::string& call : calls())
        if (call.find("Alloc") == std::string::npos && call.find("Free") == std::string::npos)
            road.push_back(call);
    EXPECT_THAT(
        road,
        ElementsAre("CAAPI_Terminate", "CAGetAPIVersion", "CAAPI_Initialize",      // library session
                    "DMAPI_Terminate", "DMAPI_GetAPIVersion", "DMAPI_Initialize",  // phone found
                    "CONAOpenDM", "CONAGetDeviceCount", "CONAGetDevices", "CONAGetDeviceInfo",
                    "CONAGetDeviceInfo", "DAOpenCA", "CAGetFolderInfo", "CAGetFolderInfo",  // connection
                    "CAGetIDList", "CABeginOperation", "DMAPI_GetAPIVersion",               // contacts
                    "CAReadItem", "CAReadItem", "CAEndOperation", "DACloseCA", "CAAPI_Terminate"));
    EXPECT_THAT(logText(), HasSubstr("[ovNo2] <NokiaGetAddressBookItems>_\r\n"));
    EXPECT_TRUE(logText().ends_with(" 2\r\n[ovNo2] </NokiaGetAddressBookItems>\r\n")) << logText();
}

TEST_F(CovNo2Test, TwoThreadsShareNothing) {
    simulator.addPhone(Control::plainPhone("1", "Nokia A"), bookOf({{"0A", "Anna"}}));
    simulator.addPhone(Control::plainPhone("2", "Nokia B"), bookOf({{"0B", "Bert"}}));
    const auto readOften = [&](Text model, Text expected) {
        usePlatform(machine);
        covNo2 phone;
        phone.Meeting_(expected);
        phone.PhoneModel_(model);
        for (int i = 0; i < 20; ++i) {
            HostArray<AdrItem> items;
            EXPECT_EQ(1, read(phone, model, items));
            EXPECT_EQ(expected + u"\t", items.at(1).FieldValues);
            EXPECT_EQ(expected, settings().meeting);
            EXPECT_EQ(model, Devices::phoneModel());
            EXPECT_EQ(1, library::startCount());
        }
    };
    std::thread other(readOften, u"Nokia B", u"Bert");
    readOften(u"Nokia A", u"Anna");
    other.join();
}

TEST(ProgressObject, ItsValueIsAdvancedByPuttingASumBack) {
    std::vector<Long> heard;
    ProgressObject progress([&](Long value) { heard.push_back(value); });
    platform::AutomationObject& object = progress;
    EXPECT_EQ(platform::Variant(Long{0}), object.get(u"value"));
    object.put(u"Value", Long{51});
    object.put(u"value", 52.5);
    EXPECT_EQ(platform::Variant(Long{52}), object.get(u"VALUE"));
    EXPECT_EQ((std::vector<Long>{51, 52}), heard);
    EXPECT_EQ(typeMismatch, attempt([&] { object.put(u"value", Text(u"1")); }));
    EXPECT_EQ(overflowFailure, attempt([&] { object.put(u"value", 1e10); }));
    EXPECT_EQ(memberNotSupported, attempt([&] { object.get(u"max"); }));
    EXPECT_EQ(memberNotSupported, attempt([&] { object.call(u"value"); }));
    EXPECT_EQ(52, progress.value());
}

}  // namespace
}  // namespace ovno2
