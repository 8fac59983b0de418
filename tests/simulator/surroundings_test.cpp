// What belongs to no single phone: Bluetooth search and pairing.
#include "simulator/library.h"

namespace simulator_tests {
namespace {

int progressCalls = 0;

Status countProgress(Word, Word) {
    progressCalls += CONNAPI(DMAPI_GetAPIVersion)() != 0;  // the library may be called from here
    return statusOk;
}

class Surroundings : public World {};

TEST_F(Surroundings, APhoneIsFoundPairedWithItsPasskeyAndListedFromThenOn) {
    const TemporaryFolder folder;
    Json phone = control.plainPhone(annasSerial);
    phone["connections"][0]["medium"] = "bluetooth";
    phone["connections"][0]["address"] = "00:1A:DC:1B:2C:3D";
    folder.write("one/phone.json", phone.dump());
    folder.write("bluetooth.json", R"({"format": 1, "found": [
        {"deviceName": "Nokia N95", "address": "00:1A:DC:1B:2C:3D", "state": 8,
         "passkey": "1234", "reach": "afterSearch"},
        {"deviceName": "far away", "address": "00:00:00:00:00:01", "reach": "never"}]})");
    EXPECT_THAT(control.load(folder.path), IsEmpty());
    CONNAPI(DMAPI_Initialize)(30, 0);
    Handle devices = 0;
    CONNAPI(CONAOpenDM)(&devices);

    const auto phones = [&] {
        Word count = 0;
        EXPECT_EQ(CONNAPI(CONAGetDeviceCount)(devices, &count), statusOk);
        return count;
    };
    const auto change = [&](Word operation, const char16_t* passkey,
                            const char16_t* address = u"00:1A:DC:1B:2C:3D") {
        return CONNAPI(CONAChangeDeviceTrustedState)(devices, operation, address, passkey, nullptr);
    };
    // The state of the one device that a search finds.
    const auto searchedState = [&] {
        Word count = 0;
        ovno2::Address list = 0;
        EXPECT_EQ(CONNAPI(CONASearchDevices)(devices, 0x2008, 200, &countProgress, &count, &list), statusOk);
        EXPECT_EQ(count, 1U);
        const auto found = recordAt<ConnectionRecord>(list);
        EXPECT_EQ(CONNAPI(CONAFreeDeviceStructure)(count, at(list)), statusOk);
        return found.state;
    };
    EXPECT_EQ(phones(), 0U);
    EXPECT_EQ(change(0x100, u"1234"), phoneNotReached) << "no search has found it yet";
    EXPECT_EQ(searchedState(), 8U);
    EXPECT_GT(progressCalls, 0);
    EXPECT_EQ(change(0x100, u"0000"), pairingRefused);
    EXPECT_EQ(change(0x100, nullptr), 0x80108002);
    EXPECT_EQ(change(0x100, u"1234", u"00:00:00:00:00:01"), phoneNotReached);
    EXPECT_EQ(phones(), 0U);
    EXPECT_EQ(change(0x100, u"1234"), statusOk);
    EXPECT_EQ(change(0x400, nullptr), statusOk);
    EXPECT_EQ(phones(), 1U);
    EXPECT_EQ(searchedState(), 11U);
    const Json kept = Json::parse(fileContent(folder.path / "bluetooth.json"))["found"][0];
    EXPECT_TRUE(kept["paired"] && kept["trusted"]);
    CONNAPI(CONACloseDM)(devices);
    CONNAPI(DMAPI_Terminate)(0);
}

}  // namespace
}  // namespace simulator_tests
