// The road of one phone book: the phones, the connection, the identifiers, the items, and everything given
// back.
#include <chrono>

#include "simulator/library.h"

namespace simulator_tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Reading : public World {
  protected:
    Reading() {
        Json phone = control.plainPhone(annasSerial);
        phone["friendlyName"] = "Anna's phone";
        phone["connections"].push_back(
            {{"deviceNumber", 2}, {"medium", "bluetooth"}, {"address", "00:1A:2B"}});
        control.addPhone(phone, control.phoneBook(Json::parse(R"([
            {"uid": "0A0B", "fields": [{"id": 512, "text": "note"}, {"id": 4, "text": "Müller"},
                                       {"id": 2, "text": "Anna"}, {"id": 32, "text": "+49"},
                                       {"id": 259, "text": "a@b"}]},
            {"uid": "0C", "position": 7, "fields": []},
            {"uid": "0D", "fields": [{"id": 9, "date": "1975-04-12"}, {"id": 516, "number": 3},
                                     {"id": 256, "address": [null, "Ringstraße 4", null, "Berlin"]}]}])")));
    }
};

TEST_F(Reading, APhoneBookComesInTheOrderOfTheImageWithItsFieldsInFourPairs) {
    ContentSession session;
    const std::vector<ItemIdRecord> ids = session.ids();
    ASSERT_EQ(ids.size(), 3U);
    EXPECT_EQ(uidText(ids[0]), u"0A0B");
    EXPECT_EQ(ids[1].position, 7U);
    EXPECT_THAT(session.texts(ids[0]),
                ElementsAre(u"4=Müller", u"2=Anna", u"32=+49", u"259=a@b", u"512=note"));
    EXPECT_THAT(session.texts(ids[1]), IsEmpty());
}

TEST_F(Reading, DatesNumbersAndAddressesComeAsTheirRecords) {
    ContentSession session;
    ContactRecord contact;
    ASSERT_EQ(session.read(session.ids()[2], contact), statusOk);
    const auto birthday = recordAt<DateRecord>(recordAt<DataItemRecord>(contact.a.items).value);
    EXPECT_EQ(birthday.size, 20U);
    EXPECT_EQ(birthday.year, 1975);
    EXPECT_EQ(birthday.month, 4);
    EXPECT_EQ(birthday.day, 12);
    const auto address = recordAt<std::array<Word, 8>>(recordAt<DataItemRecord>(contact.c.items).value);
    EXPECT_EQ(address[0], 32U);
    EXPECT_EQ(address[1], 0U);
    EXPECT_EQ(textAt(address[2]), u"Ringstraße 4");
    EXPECT_EQ(textAt(address[4]), u"Berlin");
    EXPECT_EQ(recordAt<DataItemRecord>(contact.d.items).value, 3U);
    EXPECT_EQ(session.free(contact), statusOk);
}

TEST_F(Reading, PhonesAreReportedWithEveryConnectionAndTheirInformation) {
    CONNAPI(DMAPI_Initialize)(30, 0);
    Handle session = 0;
    ASSERT_EQ(CONNAPI(CONAOpenDM)(&session), statusOk);
    Word count = 0;
    ASSERT_EQ(CONNAPI(CONAGetDeviceCount)(session, &count), statusOk);
    ASSERT_EQ(count, 1U);
    DeviceRecord device;
    ASSERT_EQ(CONNAPI(CONAGetDevices)(session, &count, &device), statusOk);
    EXPECT_EQ(textAt(device.serialNumber), u"356300010000017");
    EXPECT_EQ(textAt(device.friendlyName), u"Anna's phone");
    EXPECT_EQ(device.model, 0U);
    ASSERT_EQ(device.connectionCount, 2U);
    const auto second = recordAt<ConnectionRecord>(device.connections + sizeof(ConnectionRecord));
    EXPECT_EQ(second.medium, mediumBluetooth);
    EXPECT_EQ(textAt(second.address), u"00:1A:2B");
    EXPECT_EQ(CONNAPI(CONAFreeDeviceStructure)(count, &device), statusOk);

    ovno2::Address info = 0;
    ASSERT_EQ(CONNAPI(CONAGetDeviceInfo)(session, u"356300010000017", propertiesInformation, &info),
              statusOk);
    EXPECT_EQ(recordAt<PropertiesRecord>(info).platformCode, 0x2000020U);
    EXPECT_EQ(CONNAPI(CONAFreeDeviceInfoStructure)(
                  propertiesInformation, reinterpret_cast<void*>(static_cast<std::uintptr_t>(info))),
              statusOk);
    CONNAPI(CONACloseDM)(session);
    CONNAPI(DMAPI_Terminate)(0);
}

}  // namespace
}  // namespace simulator_tests
