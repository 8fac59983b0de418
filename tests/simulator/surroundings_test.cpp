// What belongs to no single phone: the media, Bluetooth search and pairing, and several threads at once.
#include <thread>

#include "simulator/library.h"

namespace simulator_tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

int progressCalls = 0;

Status SIMULATOR_STDCALL countProgress(Word, Word) {
    ++progressCalls;
    Word version = CONNAPI(DMAPI_GetAPIVersion)();  // the library may be called from here
    return version == 0 ? Status{1} : statusOk;
}

// The declared type says nothing of the calling convention.
signature::SearchProgress asCallback() {
    return reinterpret_cast<signature::SearchProgress>(&countProgress);
}

class Surroundings : public World {
  protected:
    Surroundings() {
        Json phone = control.plainPhone(annasSerial);
        phone["connections"][0]["medium"] = "bluetooth";
        phone["connections"][0]["address"] = "00:1A:DC:1B:2C:3D";
        folder.write("one/phone.json", phone.dump());
        folder.write("bluetooth.json", R"({"format": 1, "found": [
            {"deviceNumber": 7, "deviceName": "Nokia N95", "address": "00:1A:DC:1B:2C:3D", "state": 8,
             "passkey": "1234", "reach": "afterSearch"},
            {"deviceName": "far away", "address": "00:00:00:00:00:01", "reach": "never"}]})");
        EXPECT_THAT(control.load(folder.path), IsEmpty());
        CONNAPI(DMAPI_Initialize)(30, 0);
        CONNAPI(MCAPI_Initialize)(30, 0);
        CONNAPI(CONAOpenDM)(&devices);
        CONNAPI(CONAOpenMM)(&media, 0);
    }
    ~Surroundings() override {
        CONNAPI(CONACloseMM)(media);
        CONNAPI(CONACloseDM)(devices);
        CONNAPI(MCAPI_Terminate)(0);
        CONNAPI(DMAPI_Terminate)(0);
    }
    Word phones() {
        Word count = 0;
        EXPECT_EQ(CONNAPI(CONAGetDeviceCount)(devices, &count), statusOk);
        return count;
    }
    Status change(Word operation, const char16_t* passkey, const char16_t* address = u"00:1A:DC:1B:2C:3D") {
        return CONNAPI(CONAChangeDeviceTrustedState)(devices, operation, address, passkey, nullptr);
    }
    std::vector<ConnectionRecord> search() {
        Word count = 0;
        ovno2::Address list = 0;
        EXPECT_EQ(CONNAPI(CONASearchDevices)(devices, 0x2008, 200, asCallback(), &count, &list), statusOk);
        std::vector<ConnectionRecord> found(count);
        for (Word i = 0; i < count; ++i) {
            found[i] = recordAt<ConnectionRecord>(static_cast<Word>(list + i * sizeof(ConnectionRecord)));
        }
        if (list != 0) {
            EXPECT_EQ(CONNAPI(CONAFreeDeviceStructure)(
                          count, reinterpret_cast<void*>(static_cast<std::uintptr_t>(list))),
                      statusOk);
        }
        return found;
    }
    Status setBluetooth(Word state) {
        MediaRecord record{sizeof record, mediumBluetooth, 0, state, 0, 0, 0};
        return CONNAPI(CONAMMSetMedia)(media, &record);
    }

    TemporaryFolder folder;
    Handle devices = 0;
    Handle media = 0;
};

TEST_F(Surroundings, APhoneIsFoundPairedWithItsPasskeyAndListedFromThenOn) {
    EXPECT_EQ(phones(), 0U);
    EXPECT_EQ(change(0x100, u"1234"), phoneNotReached) << "no search has found it yet";
    progressCalls = 0;
    std::vector<ConnectionRecord> found = search();
    EXPECT_GT(progressCalls, 0);
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].deviceNumber, 7U);
    EXPECT_EQ(found[0].medium, mediumBluetooth);
    EXPECT_EQ(found[0].state, 8U);
    EXPECT_EQ(change(0x100, u"0000"), pairingRefused);
    EXPECT_EQ(change(0x100, nullptr), 0x80108002);
    EXPECT_EQ(change(0x100, u"1234", u"00:00:00:00:00:01"), phoneNotReached);
    EXPECT_EQ(phones(), 0U);
    EXPECT_EQ(change(0x100, u"1234"), statusOk);
    EXPECT_EQ(change(0x400, nullptr), statusOk);
    EXPECT_EQ(phones(), 1U);
    EXPECT_EQ(search()[0].state, 11U);
    const Json kept = Json::parse(fileContent(folder.path / "bluetooth.json"))["found"][0];
    EXPECT_TRUE(kept["paired"] && kept["trusted"]);
}

TEST_F(Surroundings, AMediumThatIsOffHidesItsPhonesAndStopsTheSearch) {
    search();
    change(0x100, u"1234");
    ASSERT_EQ(phones(), 1U);
    ASSERT_EQ(setBluetooth(2), statusOk);
    EXPECT_EQ(phones(), 0U);
    EXPECT_EQ(change(0x400, nullptr), mediumOff);
    Word count = 0;
    ovno2::Address list = 0;
    EXPECT_EQ(CONNAPI(CONASearchDevices)(devices, 0x2008, 200, nullptr, &count, &list), mediumOff);
    ASSERT_EQ(setBluetooth(1), statusOk);
    EXPECT_EQ(phones(), 1U);
}

TEST_F(Surroundings, TheMediaAreListedWithTheirState) {
    ASSERT_EQ(setBluetooth(2), statusOk);
    EXPECT_NE(setBluetooth(3), statusOk);
    Word count = 0;
    ovno2::Address list = 0;
    ASSERT_EQ(CONNAPI(CONAMMGetMedia)(media, &count, &list), statusOk);
    std::vector<Word> on;
    for (Word i = 0; i < count; ++i) {
        const auto record = recordAt<MediaRecord>(static_cast<Word>(list + i * sizeof(MediaRecord)));
        if (record.state == 1) on.push_back(record.medium);
    }
    EXPECT_THAT(on, ElementsAre(mediumInfrared, mediumCable, mediumUsb));
    EXPECT_EQ(
        CONNAPI(CONAMMFreeMediaStructures)(count, reinterpret_cast<void*>(static_cast<std::uintptr_t>(list))),
        statusOk);
}

class Threads : public World {};

TEST_F(Threads, ReadTheirPhonesAtTheSameTimeEachWithItsOwnStart) {
    constexpr int threadCount = 4;
    constexpr std::uint32_t contacts = 300;
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        const std::string serial = std::to_string(i);
        control.addPhone(control.plainPhone(serial));
        control.fillContacts(serial, contacts, static_cast<std::uint32_t>(5 + i));
    }
    std::vector<std::size_t> fields(threadCount);
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&fields, i] {
            for (int round = 0; round < 5; ++round) {
                const ContentSession session(std::u16string(1, static_cast<char16_t>(u'0' + i)));
                for (const ItemIdRecord& id : session.ids()) {
                    fields[static_cast<std::size_t>(i)] += session.texts(id).size();
                    CONNAPI(CONAFreeString)(CONNAPI(CONAAllocString)(u"beside"));
                }
                EXPECT_EQ(ContentSession(u"none").status, phoneNotReached);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t i = 0; i < threadCount; ++i)
        EXPECT_EQ(fields[i], 5 * contacts * (5 + i));
}

TEST_F(Threads, AreNotStartedByEachOther) {
    control.addPhone(control.plainPhone(annasSerial), control.phoneBook(Json::array()));
    ContentSession session;
    std::thread([&] {
        ItemIdListRecord list{sizeof list, 0, 0};
        EXPECT_EQ(DAAPI(CAGetIDList)(session.connection, 1, 0, &list), 0x80108001);
        EXPECT_NE(DAAPI(CAAPI_Terminate)(0), statusOk);
    }).join();
    EXPECT_THAT(session.ids(), IsEmpty());
}

}  // namespace
}  // namespace simulator_tests
