#include "driver/cov_no2.h"

#include <fstream>
#include <gmock/gmock.h>
#include <thread>

#include "common/phone_test.h"
#include "core/settings.h"
#include "library/library_start.h"

namespace ovno2 {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Json = simulator::Control::Json;

constexpr TextView debugKey = u"Software\\Tessaline\\Debug";

// A table whose rows own these host field codes.
TextTable tableOf(const std::vector<Text>& codes) {
    constexpr std::size_t columns = 5;
    std::vector<Text> cells(codes.size() * columns);
    for (std::size_t row = 0; row < codes.size(); ++row)
        cells[row * columns + 4] = codes[row];
    return {std::move(cells), codes.size(), columns};
}

struct PhoneArrays {
    TextArray models;
    LongArray media;
    TextArray ids, addresses, names;
    LongArray types;
};

class CovNo2Test : public PhoneTest {
  protected:
    ~CovNo2Test() override { EXPECT_EQ("", simulator.leaks()); }

    void switchLogOn() {
        setRegistryText(platform::currentUser, debugKey, u"DebugFile", logFile().u16string());
        setRegistryText(platform::currentUser, debugKey, u"On", u"1");
    }
    std::filesystem::path logFile() const { return folder.path() / "debug.txt"; }
    std::vector<std::string> logLines() const {
        std::vector<std::string> lines;
        std::ifstream file(logFile(), std::ios::binary);
        for (std::string line; std::getline(file, line);) {
            EXPECT_TRUE(line.ends_with('\r')) << line;
            lines.push_back(line.substr(0, line.size() - 1));
        }
        return lines;
    }

    Text noText;
    TextArray noTexts;
};

TEST_F(CovNo2Test, InitStartsTheLibraryOnceAndLogsBothVersions) {
    switchLogOn();
    simulator.shape({{"connectivity", 52}, {"contentAccess", 37}});
    covNo2 phone;
    EXPECT_EQ(0, phone.Init());
    EXPECT_EQ(1, library::startCount());
    EXPECT_EQ(37, library::recordedContentVersion());
    EXPECT_THAT(calls(), ElementsAre("CONAGetConnAPIVersion", "CONAInitialize", "CAGetAPIVersion"));
    const std::vector<std::string> lines = logLines();
    EXPECT_THAT(lines, Contains("[ovNo2] ConApiVersion: 520"));
    EXPECT_THAT(lines, Contains("[ovNo2] CaApiVersion: 37"));
    EXPECT_THAT(lines, Contains("[ovNo2] <GetApiVersion>_"));
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
    PhoneArrays none;
    EXPECT_EQ(-7, phone.GetConnectedDevices(none.models, none.media, none.ids, none.addresses, none.names,
                                            none.types));
    EXPECT_EQ(-9, phone.GetConnectedDevices(none.models, none.media, none.ids, none.addresses, none.names,
                                            none.types, eMediaBT));
    EXPECT_EQ(-9, phone.GetConnections());
    HostArray<AdrItem> items;
    EXPECT_EQ(-1, phone.NokiaGetAddressBookItems(noText, noText, noText, items, tableOf({u"1"}), noTexts));
    libraries().missingLibraries.clear();
    EXPECT_EQ(0, phone.Init());
    EXPECT_EQ(1, library::startCount());
    simulator.fail("CONAInitialize", 0x80100001);
    phone.CleanUp();
    EXPECT_EQ(static_cast<Long>(0x80100001), phone.Init());
    EXPECT_EQ(0, phone.Init());
}

TEST_F(CovNo2Test, ListsPhonesAndSwitchesAMediumOnOnlyWhenAsked) {
    simulator.addPhone(simulator::Control::plainPhone("1"));
    covNo2 phone;
    simulator.readJournal();
    PhoneArrays list;
    const auto ask = [&](Long medium) {
        return phone.GetConnectedDevices(list.models, list.media, list.ids, list.addresses, list.names,
                                         list.types, medium);
    };
    EXPECT_EQ(1, ask(-1));
    EXPECT_THAT(calls(), Not(Contains("MCAPI_Initialize")));
    EXPECT_EQ(1, ask(eMediaBT));
    EXPECT_THAT(calls(), Contains("MCAPI_Initialize"));
    EXPECT_THAT(list.models.elements(), ElementsAre(u"Nokia N95"));
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
    EXPECT_THAT(calls(), IsEmpty());
}

// The whole road of one phone book, as the journal of the library's calls.
TEST_F(CovNo2Test, APhoneBookComesAlongTheWholeRoad) {
    simulator.addPhone(simulator::Control::plainPhone("356"),
                       simulator::Control::phoneBook(
                           {{{"uid", "0A"}, {"position", 7}, {"fields", {{{"id", 2}, {"text", "Anna"}}}}},
                            {{"uid", "0B"}, {"position", 8}, {"fields", {{{"id", 2}, {"text", "Bert"}}}}}}));
    switchLogOn();
    covNo2 phone;
    simulator.readJournal();
    HostArray<AdrItem> items;
    Text model = u"Nokia N95";
    EXPECT_EQ(2,
              phone.NokiaGetAddressBookItems(model, noText, noText, items, tableOf({u"1", u"2"}), noTexts));
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
    const std::vector<std::string> lines = logLines();
    EXPECT_THAT(lines, Contains("[ovNo2] <NokiaGetAddressBookItems>_"));
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ("[ovNo2] </NokiaGetAddressBookItems>", lines.back());
    EXPECT_THAT(lines[lines.size() - 2], HasSubstr("] "));
    EXPECT_TRUE(lines[lines.size() - 2].ends_with(" 2")) << lines[lines.size() - 2];
}

TEST_F(CovNo2Test, TwoThreadsShareNothing) {
    const auto book = [](const char* uid, const char* name) {
        return simulator::Control::phoneBook(
            {{{"uid", uid}, {"position", 1}, {"fields", {{{"id", 2}, {"text", name}}}}}});
    };
    simulator.addPhone(simulator::Control::plainPhone("1", "Nokia A"), book("0A", "Anna"));
    simulator.addPhone(simulator::Control::plainPhone("2", "Nokia B"), book("0B", "Bert"));
    const auto read = [&](Text model, Text expected) {
        usePlatform(machine);
        covNo2 phone;
        phone.Meeting_(expected);
        phone.PhoneModel_(model);
        for (int i = 0; i < 20; ++i) {
            HostArray<AdrItem> items;
            Text id, book_;
            TextArray groups;
            EXPECT_EQ(1,
                      phone.NokiaGetAddressBookItems(model, id, book_, items, tableOf({u"1", u"2"}), groups));
            EXPECT_EQ(expected + u"\t", items.at(1).FieldValues);
            EXPECT_EQ(expected, settings().meeting);
            EXPECT_EQ(model, Devices::phoneModel());
            EXPECT_EQ(1, library::startCount());
        }
    };
    std::thread other(read, u"Nokia B", u"Bert");
    read(u"Nokia A", u"Anna");
    other.join();
}

}  // namespace
}  // namespace ovno2
