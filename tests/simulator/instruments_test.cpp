// What tests rely on: the balance, and commands that say what is wrong with them.
#include "simulator/library.h"

namespace simulator_tests {
namespace {

class Instruments : public World {
  protected:
    Instruments() {
        control.addPhone(control.plainPhone(annasSerial), control.phoneBook(Json::parse(R"([
            {"uid": "0A", "fields": [{"id": 2, "text": "Anna"}]}])")));
    }
};

TEST_F(Instruments, TheBalanceTellsWhatIsHandedOutAndEveryFreeThatDoesNotFit) {
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

TEST_F(Instruments, ACommandThatCannotBeUnderstoodSaysWhy) {
    for (const char* const command :
         {R"({"command": "fault", "call": "CAReadItem", "status": 5})",
          R"({"command": "fault", "call": "CAReadItem", "staus": "0x80100014"})",
          R"({"command": "vanish", "serial": "nobody", "uid": "0A"})", R"({"command": "jump"})",
          R"({"command": "shape", "dataItem": 18})", R"({"call": "CAReadItem"})", "no JSON"}) {
        EXPECT_THROW(control.runText(command), std::runtime_error) << command;
    }
    EXPECT_THROW(control.addPhone(control.plainPhone(annasSerial)), std::runtime_error);
}

}  // namespace
}  // namespace simulator_tests
