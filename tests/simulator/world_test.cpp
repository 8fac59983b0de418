// What belongs to no single phone: balance, commands, Bluetooth search and pairing.
#include "simulator/library.h"

namespace simulator_tests {
namespace {

TEST_F(World, TheBalanceTellsWhatIsHandedOutAndEveryFreeThatDoesNotFit) {
    control.addPhone(control.plainPhone(annasSerial), control.phoneBook(Json::parse(R"([
        {"uid": "0A", "fields": [{"id": 2, "text": "Anna"}]}])")));
    char16_t* const text = CONNAPI(CONAAllocString)(u"text");
    CONNAPI(CONAInitialize)(52, u"Nokia");
    CONNAPI(CONAInitialize)(52, u"Nokia");
    ContactRecord contact;
    {
        ContentSession session;
        ASSERT_EQ(session.read(session.ids()[0], contact), statusOk);
        Json open = control.balance();
        open.erase("misuse");
        EXPECT_EQ(open.dump(),
                  R"({"closedInside":0,"handedOut":{"items":1,"strings":1},)"
                  R"("open":{"content":1,"operation":1},"started":{"connectivity":2,"content":1}})");
        // Parts of an item may go back one by one, but not twice.
        auto* const part = reinterpret_cast<char16_t*>(at(recordAt<DataItemRecord>(contact.a.items).value));
        EXPECT_EQ(CONNAPI(CONAFreeString)(part), statusOk);
        EXPECT_NE(CONNAPI(CONAFreeString)(part), statusOk);
        EXPECT_EQ(session.free(contact), statusOk);
        EXPECT_NE(session.free(contact), statusOk);
        session.operation = 0;  // left to the connection
    }
    DeviceRecord device{};
    device.connections = 0x1234;
    EXPECT_NE(CONNAPI(CONAFreeMemory)(text), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeString)(text + 1), statusOk);
    EXPECT_EQ(CONNAPI(CONAFreeString)(text), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeMemory)(&device), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeDeviceStructure)(1, &device), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeMemory)(nullptr), statusOk) << "refused, and no misuse";
    CONNAPI(CONAUninitialize)(0);
    CONNAPI(CONAUninitialize)(0);
    EXPECT_NE(CONNAPI(CONAUninitialize)(0), statusOk);
    Json whole = control.balance();
    EXPECT_EQ(whole["misuse"].size(), 6U);
    EXPECT_THAT(whole["misuse"].dump(), AllOf(HasSubstr("freed twice"), HasSubstr("CAFreeItemData")));
    whole.erase("misuse");
    EXPECT_EQ(whole.dump(), R"({"closedInside":1,"handedOut":{},"open":{},"started":{}})");
    control.reset();
}

TEST_F(World, ACommandThatCannotBeUnderstoodSaysWhy) {
    for (const char* const command :
         {R"({"command": "fault", "call": "CAReadItem", "status": 5})",
          R"({"command": "fault", "call": "CAReadItem", "staus": "0x80100014"})",
          R"({"command": "vanish", "serial": "nobody", "uid": "0A"})", R"({"command": "jump"})",
          R"({"command": "shape", "dataItem": 18})", R"({"call": "CAReadItem"})", "no JSON"}) {
        EXPECT_THROW(control.runText(command), std::runtime_error) << command;
    }
    control.addPhone(control.plainPhone(annasSerial));
    EXPECT_THROW(control.addPhone(control.plainPhone(annasSerial)), std::runtime_error);
}

int progressCalls = 0;

Status countProgress(Word, Word) {
    progressCalls += CONNAPI(DMAPI_GetAPIVersion)() != 0;  // the library may be called from here
    return statusOk;
}

TEST_F(World, APhoneIsFoundPairedWithItsPasskeyAndListedFromThenOn) {
    const TemporaryFolder folder;
    Json phone = control.plainPhone(annasSerial);
    phone["connections"][0]["medium"] = "bluetooth";
    phone["connections"][0]["address"] = "00:1A";
    folder.write("one/phone.json", phone.dump());
    folder.write("bluetooth.json", R"({"format": 1, "found": [
        {"deviceName": "N95", "address": "00:1A", "state": 8, "passkey": "1234", "reach": "afterSearch"},
        {"deviceName": "far away", "address": "00:2B", "reach": "never"},
        {"deviceName": "shy", "address": "00:3C", "reach": "afterTwoSearches", "appearsAfter": 1,
         "refuses": "0x80200100"}]})");
    control.journal(true);
    EXPECT_THAT(control.load(folder.path), IsEmpty());
    CONNAPI(DMAPI_Initialize)(30, 0);
    Handle devices = 0;
    CONNAPI(CONAOpenDM)(&devices);
    constexpr Word search = 0, pair = 0x100, trust = 0x400;
    struct Step {
        Word operation;
        const char16_t* address;
        const char16_t* passkey;
        Status status;
        Word attached;   // phones, afterwards
        Word state = 0;  // of the one device that a search finds
    };
    const Step steps[] = {
        {pair, u"00:1A", u"1234", phoneNotReached, 0},  // no search has found it yet
        {search, u"", u"", statusOk, 0, 8},
        {pair, u"00:3C", u"1234", phoneNotReached, 0},
        {pair, u"00:1A", u"0000", pairingRefused, 0},
        {pair, u"00:1A", nullptr, 0x80108002, 0},
        {pair, u"00:2B", u"1234", phoneNotReached, 0},
        {pair, u"00:1A", u"1234", statusOk, 1},
        {trust, u"00:1A", nullptr, statusOk, 1},
        {search, u"", u"", statusOk, 1, 11},
        {pair, u"00:3C", u"1234", pairingRefused, 1},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(&step - steps);
        Word count = 0;
        ovno2::Address list = 0;
        if (step.operation == search) {
            EXPECT_EQ(CONNAPI(CONASearchDevices)(devices, 0x2008, 200, &countProgress, &count, &list),
                      step.status);
            EXPECT_EQ(count, 2U);
            EXPECT_EQ(recordAt<ConnectionRecord>(list).state, step.state);
            EXPECT_EQ(CONNAPI(CONAFreeDeviceStructure)(count, at(list)), statusOk);
        } else {
            EXPECT_EQ(CONNAPI(CONAChangeDeviceTrustedState)(devices, step.operation, step.address,
                                                            step.passkey, nullptr),
                      step.status);
        }
        EXPECT_EQ(CONNAPI(CONAGetDeviceCount)(devices, &count), statusOk);
        EXPECT_EQ(count, step.attached);
    }
    EXPECT_GT(progressCalls, 0);
    EXPECT_THAT(control.run("readJournal").dump(), AllOf(HasSubstr("***"), Not(HasSubstr("1234"))));
    const Json kept = Json::parse(fileContent(folder.path / "bluetooth.json"))["found"][0];
    EXPECT_TRUE(kept["paired"] && kept["trusted"]);
    CONNAPI(CONACloseDM)(devices);
    CONNAPI(DMAPI_Terminate)(0);
}

Handle searched = 0;

Status closeSearched(Word, Word) {
    CONNAPI(CONACloseDM)(searched);
    return statusOk;
}

TEST_F(World, ASearchThatTheCallerStopsOrWhoseSessionItClosesFindsNothing) {
    control.run("surroundings", Json::parse(R"({"bluetooth": {"format": 1, "found": [
        {"deviceName": "late", "address": "00:1A", "reach": "afterSearch", "appearsAfter": 200}]}})"));
    CONNAPI(DMAPI_Initialize)(30, 0);
    CONNAPI(CONAOpenDM)(&searched);
    Word count = 7;
    ovno2::Address list = 7;
    const auto search = [&](Word timeout, ovno2::library::signature::SearchProgress progress) {
        return CONNAPI(CONASearchDevices)(searched, 0x2008, timeout, progress, &count, &list);
    };
    const ovno2::library::signature::SearchProgress stop = [](Word, Word) { return Status{1}; };
    EXPECT_EQ(search(200, stop), 0x80108010);
    EXPECT_EQ(search(200, closeSearched), 0x80108003);
    EXPECT_EQ(count, 7U);
    CONNAPI(CONAOpenDM)(&searched);
    EXPECT_EQ(search(199, nullptr), statusOk) << "too short for it";
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(CONNAPI(CONAChangeDeviceTrustedState)(searched, 0x400, u"00:1A", nullptr, nullptr),
              phoneNotReached);
    CONNAPI(CONACloseDM)(searched);
    CONNAPI(DMAPI_Terminate)(0);
    EXPECT_THAT(control.leaks(), IsEmpty());
}

TEST_F(World, AMediumThatIsSwitchedStaysSoForOthers) {
    const TemporaryFolder folder;
    folder.write("one/phone.json", control.plainPhone(annasSerial).dump());
    control.load(folder.path);
    CONNAPI(MCAPI_Initialize)(30, 0);
    Handle media = 0;
    CONNAPI(CONAOpenMM)(&media, 0);
    MediaRecord record{sizeof(MediaRecord), ovno2::library::mediumUsb, 0, /*state=*/2, 0, 0, 0};
    EXPECT_EQ(CONNAPI(CONAMMSetMedia)(media, &record), statusOk);
    const Json kept = Json::parse(fileContent(folder.path / "media.json"))["media"];
    ASSERT_EQ(kept.size(), 4U);
    EXPECT_EQ(kept[3].dump(), R"({"description":"USB","medium":"usb","state":"off"})");
    control.reset();
    control.load(folder.path);
    EXPECT_EQ(control.run("phones")["phones"].size(), 1U);
    CONNAPI(MCAPI_Initialize)(30, 0);
    CONNAPI(CONAOpenMM)(&media, 0);
    folder.write("media.json", R"({"format": 1, "media": [{"medium": "usb", "state": "on"}]})");
    Word count = 0;
    ovno2::Address list = 0;
    EXPECT_EQ(CONNAPI(CONAMMGetMedia)(media, &count, &list), statusOk);
    EXPECT_EQ(count, 1U) << "what another process has left";
    EXPECT_EQ(recordAt<MediaRecord>(list).state, 1U);
    EXPECT_EQ(CONNAPI(CONAMMFreeMediaStructures)(count, at(list)), statusOk);
    control.reset();
}

}  // namespace
}  // namespace simulator_tests
