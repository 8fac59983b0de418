#include "devices/devices.h"

#include <fstream>
#include <gmock/gmock.h>

#include "common/phone_test.h"
#include "core/settings.h"
#include "devices/current_phone.h"
#include "devices/session.h"

namespace ovno2::Devices {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using Json = simulator::Control::Json;

class DevicesTest : public PhoneTest {
  protected:
    ~DevicesTest() override { Session::DMApiTerminate(); }

    // A phone with one connection of that name.
    static Json phone(const char* name, Json more = Json::object()) {
        Json phone = simulator::Control::plainPhone("1", name);
        phone.erase("typeName");
        phone.update(more);
        return phone;
    }

    PhoneList list;
};

TEST_F(DevicesTest, ListsEveryConnectionOfAPhone) {
    Json n95 =
        Json{{"format", 1},
             {"serialNumber", "356300010000017"},
             {"typeName", "Nokia N95"},
             {"platform", {{"code", "0x2000020"}, {"level", 310}}},
             {"connections",
              {{{"deviceNumber", 1}, {"medium", "usb"}, {"deviceName", "Nokia N95"}, {"address", "USB01"}},
               {{"deviceNumber", 2}, {"medium", "bluetooth"}, {"deviceName", "Anna"}, {"address", "02:00"}},
               {{"deviceNumber", 3}, {"medium", "cable"}, {"deviceName", "Disk"}, {"state", 8}}}}};
    simulator.addPhone(n95);
    EXPECT_EQ(1, GetPhoneList(list));
    EXPECT_THAT(list.models.elements(), Each(u"Nokia N95"));
    EXPECT_THAT(list.media.elements(), ElementsAre(eMediaUSB, eMediaBT, eMediaUSBDrive));
    EXPECT_THAT(list.deviceIds.elements(), Each(u"356300010000017"));
    EXPECT_THAT(list.addresses.elements(), ElementsAre(u"USB01", u"02:00", u""));
    EXPECT_THAT(list.names.elements(), ElementsAre(u"Nokia N95", u"Anna", u"Disk"));
    EXPECT_THAT(list.types.elements(), Each(eNokiaPhoneS60_3));
}

// Each phone has one connection; the rules that name it are told by its members.
TEST_F(DevicesTest, NamesPhonesByTheRulesInTheirOrder) {
    struct Case {
        Json phone;
        TextView model;  // empty = not listed
        TextView name;
    };
    const Case cases[] = {
        {phone("Nokia 6230i"), u"Nokia 6230i", u"Nokia 6230i"},
        {phone("6230i (USB Device)"), u"Nokia 6230i", u"6230i (USB Device)"},
        {phone("6230i", {{"typeName", "Nokia Phone"}}), u"Nokia 6230i", u"6230i"},
        {phone("x", {{"typeName", "Nokia N95"}}), u"Nokia N95", u"x"},
        {phone("NOKIA", {{"typeName", "T"}, {"friendlyName", "Toms"}}), u"Nokia Toms", u"Toms"},
        {phone("Nokia S60 x", {{"friendlyName", "Nokia Tom"}}), u"Nokia Tom", u"Nokia Tom"},
        {phone("", {{"manufacturer", "SAMSUNG"}, {"model", "SGH-D600"}}), u"SAMSUNG SGH-D600", u""},
        {phone("", {{"manufacturer", "LG"}}), u"LG", u""},
        {phone("ab c", {{"typeName", "A#1"}}), u"Nokia abc", u"ab c"},
        {phone("My Sony phone"), u"", u""},
        {phone("siemens S65"), u"", u""},
        {phone(""), u"", u""},
        {phone("Nokia"), u"Nokia Nokia", u"Nokia"},
    };
    for (const Case& c : cases) {
        simulator.reset();
        resetThreadState();
        usePlatform(machine);
        simulator.addPhone(c.phone);
        list = {};
        EXPECT_EQ(1, GetPhoneList(list));
        EXPECT_EQ(c.model, list.models.hasElements() ? list.models.at(0) : Text()) << c.phone;
        EXPECT_EQ(c.name, list.names.hasElements() ? list.names.at(0) : Text()) << c.phone;
        Session::DMApiTerminate();
    }
}

TEST(PlatformType, FollowsItsTable) {
    struct Case {
        std::uint32_t code, level;
        Long type;
    };
    for (const Case& c :
         {Case{0x1000001, 499, 1}, {0x1000001, 500, 3},   {0x1000001, 719, 3},   {0x1000001, 720, 6},
          {0x1000001, 908, 6},     {0x1000001, 909, 7},   {0x1000001, 919, 7},   {0x1000001, 920, 8},
          {0x1000001, 1129, 8},    {0x1000001, 1130, 9},  {0x2000010, 9999, 62}, {0x2000020, 499, 63},
          {0x2000020, 500, 65},    {0x2000020, 2999, 65}, {0x2000020, 3000, 66}, {0, 5, 0},
          {0x2000100, 5, 0},       {0x1000002, 5, 63},    {0x2000101, 5, 63},    {0x51000077, 5, 63},
          {0x3000000, 5, 0}})
        EXPECT_EQ(c.type, platformTypeOf(c.code, c.level)) << std::hex << c.code << " " << c.level;
}

TEST_F(DevicesTest, EveryFailedStepHasItsResult) {
    simulator.addPhone(simulator::Control::plainPhone("1"));
    simulator.fail("CONAGetDeviceCount", 0x80100001);
    EXPECT_EQ(-2, GetPhoneList(list));
    simulator.fail("CONAGetDevices", 0x80100001);
    EXPECT_EQ(-3, GetPhoneList(list));
    simulator.fail("CONAGetDeviceInfo", 0x80100001, 1, /*onwards=*/true);
    EXPECT_EQ(1, GetPhoneList(list));
    EXPECT_THAT(list.names.elements(), ElementsAre(u"Nokia N95"));
    EXPECT_THAT(list.types.elements(), ElementsAre(0));
    simulator.clearPlan();
    // More than a PC can have is not believed.
    simulator.runText(R"({"command": "poke", "call": "CONAGetDeviceCount", "record": "count", "word": 0,
                          "value": 1000000})");
    EXPECT_EQ(-3, GetPhoneList(list));
    simulator.clearPlan();
}

TEST_F(DevicesTest, AStaleListReopensTheSessionOnceAndStillReportsTheCount) {
    simulator.addPhone(simulator::Control::plainPhone("1"));
    simulator.fail("CONAGetDeviceCount", 0x80100004);
    EXPECT_EQ(-2, GetPhoneList(list));
    EXPECT_THAT(calls(),
                ElementsAre("DMAPI_Terminate", "DMAPI_Initialize", "CONAOpenDM", "CONAGetDeviceCount",
                            "CONACloseDM", "DMAPI_Terminate", "DMAPI_Terminate", "DMAPI_Initialize",
                            "CONAOpenDM", "CONAGetDeviceCount"));
    EXPECT_EQ(1, GetPhoneList(list));
}

TEST_F(DevicesTest, FindsThePhoneTheHostMeans) {
    const auto add = [&](const char* serial, const char* name) {
        simulator.addPhone(simulator::Control::plainPhone(serial, name));
    };
    add("11", "Nokia 6230i");
    add("22", "Nokia E65-1");
    add("33", "Samsung SGH");
    struct Case {
        Text model, id;
        TextView serial, matched;
    };
    const TextView first = u"Nokia 6230i", second = u"Nokia E65-1";
    const Case cases[] = {{u"", u"22", u"11", first},
                          {u"anything", u"22", u"22", second},
                          {u"Nokia 6230i", u"99", u"11", first},
                          {u"Nokia 6230i-1", u"", u"11", first},
                          {u"Nokia E65", u"", u"22", second},
                          {u"Nokia 6230i special", u"", u"11", first},
                          {u"SGH", u"", u"33", u"Samsung SGH"},
                          {u"Nokia N00", u"", u"11", first},
                          {u"nokia 6230i", u"", u"", u""}};
    for (const Case& c : cases) {
        Devices::forgetCurrentPhone();
        EXPECT_EQ(c.serial, GetSerialNumber(c.model, c.id, /*force=*/false));
        EXPECT_EQ(c.matched, Devices::currentPhone().model);
        EXPECT_EQ(u"", Devices::currentPhone().serial);
    }
    EXPECT_EQ(eNokiaPhoneS60_5, GetPhoneType(u"11"));
    EXPECT_EQ(0, GetPhoneType(u"44"));
}

TEST_F(DevicesTest, ThePhoneLastIdentifiedAnswersUntilAFreshLookIsForced) {
    simulator.addPhone(simulator::Control::plainPhone("1"));
    Devices::setCurrentPhone(u"cached", u"Nokia N95");
    EXPECT_EQ(u"cached", GetSerialNumber(u"Nokia N95", u"", /*force=*/false));
    EXPECT_THAT(calls(), ElementsAre());
    EXPECT_EQ(u"1", GetSerialNumber(u"Nokia N95", u"", /*force=*/true));
}

TEST_F(DevicesTest, TheProfileTellsThePlatformOfAModel) {
    std::ofstream profile(folder.path() / "defaults.ini");
    profile << "[A]\r\nType=S60_3_FP1\r\n[B]\r\nSameAs=A\r\n[C]\r\nType=S40_5\r\n[D]\r\nType=S60x\r\n[E]"
               "\r\nType=s60\r\n"
               "[Loop]\r\nSameAs=Loop\r\n";
    for (int i = 0; i <= 11; ++i)
        profile << "[N" << i << "]\r\nSameAs=" << (i == 11 ? "A" : "N" + std::to_string(i + 1)) << "\r\n";
    profile.close();
    settings().profilePath = folder.path().u16string() + u"\\defaults.ini";
    struct Case {
        Text model;
        Long type;
    };
    const Case cases[] = {{u"A", 64},   {u"B", 64},   {u"C", 1},   {u"D", 60}, {u"E", 0},
                          {u"Loop", 0}, {u"none", 0}, {u"N2", 64}, {u"N1", 0}};
    for (const Case& c : cases) {
        PhoneModel_(c.model);
        EXPECT_EQ(c.type, stateOf<State>().platformType) << std::string(c.model.begin(), c.model.end());
        EXPECT_EQ(c.model, stateOf<State>().phoneModel);
    }
}

}  // namespace
}  // namespace ovno2::Devices
