// The instruments: balance, faults, lost connections and wild records.
#include "simulator/library.h"

namespace simulator_tests {
namespace {

using ::testing::HasSubstr;

constexpr Word pretended = 0x80100014;

class Instruments : public World {
  protected:
    Instruments() {
        control.addPhone(control.plainPhone(annasSerial), control.phoneBook(Json::parse(R"([
            {"uid": "0A", "fields": [{"id": 2, "text": "Anna"}, {"id": 4, "text": "M"},
                                     {"id": 9, "date": "1975-04-12"}]},
            {"uid": "0B", "fields": [{"id": 2, "text": "Ben"}]},
            {"uid": "0C", "fields": [{"id": 2, "text": "Cem"}]}])")));
    }
};

TEST_F(Instruments, TheBalanceCountsByKindWhatIsHandedOut) {
    char16_t* const text = CONNAPI(CONAAllocString)(u"text");
    void* const block = CONNAPI(CONAAllocMemory)(28);
    CONNAPI(CONAInitialize)(52, u"Nokia");
    CONNAPI(CONAInitialize)(52, u"Nokia");
    {
        ContentSession session;
        ContactRecord contact;
        ASSERT_EQ(session.read(session.ids()[0], contact), statusOk);
        EXPECT_EQ(balance("handedOut"), R"({"blocks":1,"items":1,"strings":1})");
        EXPECT_EQ(balance("open"), R"({"content":1,"operation":1})");
        EXPECT_EQ(balance("started"), R"({"connectivity":2,"content":1})");
        session.free(contact);
        session.operation = 0;  // left to the connection
    }
    CONNAPI(CONAFreeString)(text);
    CONNAPI(CONAFreeMemory)(block);
    CONNAPI(CONAUninitialize)(0);
    CONNAPI(CONAUninitialize)(0);
    EXPECT_NE(CONNAPI(CONAUninitialize)(0), statusOk);
    EXPECT_EQ(control.balance().dump(),
              R"({"closedInside":1,"handedOut":{},"misuse":[],"open":{},"started":{}})");
}

TEST_F(Instruments, AFreeThatDoesNotFitOrCameBeforeIsMisuse) {
    char16_t* const text = CONNAPI(CONAAllocString)(u"text");
    int own = 0;
    EXPECT_NE(CONNAPI(CONAFreeMemory)(text), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeString)(text + 1), statusOk);
    EXPECT_EQ(CONNAPI(CONAFreeString)(text), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeString)(text), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeMemory)(&own), statusOk);
    DeviceRecord device{};
    device.connections = 0x1234;
    EXPECT_NE(CONNAPI(CONAFreeDeviceStructure)(1, &device), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeMemory)(nullptr), statusOk);
    EXPECT_EQ(control.balance()["misuse"].size(), 5U);

    // Parts of an item may go back one by one, but not twice.
    ContentSession session;
    ContactRecord contact;
    ASSERT_EQ(session.read(session.ids()[0], contact), statusOk);
    const Word value = recordAt<DataItemRecord>(contact.a.items).value;
    auto* const part = reinterpret_cast<char16_t*>(static_cast<std::uintptr_t>(value));
    EXPECT_EQ(CONNAPI(CONAFreeString)(part), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeString)(part), statusOk);
    EXPECT_EQ(session.free(contact), statusOk);
    EXPECT_NE(session.free(contact), statusOk);
    EXPECT_THAT(balance("misuse"), AllOf(HasSubstr("freed twice"), HasSubstr("CAFreeItemData")));
    EXPECT_EQ(balance("handedOut"), "{}");
    control.reset();
}

TEST_F(Instruments, TheNthCallFailsOnceOrFromThenOn) {
    struct Case {
        const char* fault;
        std::vector<Status> reads;
    };
    const Case cases[] = {
        {R"("call": "CAReadItem", "nth": 2, "status": "0x80100014")", {0, pretended, 0}},
        {R"("call": "CAReadItem", "nth": 2, "onwards": true, "status": "0x80100014")",
         {0, pretended, pretended}},
        {R"("call": "*", "nth": 4, "status": "0x80100014")", {0, 0, 0}},  // met by a free call, which frees
        {R"("call": "CAReadItem", "allocation": true)", {0x80108004, 0, 0}},
    };
    ContentSession session;
    const std::vector<ItemIdRecord> ids = session.ids();
    for (const Case& one : cases) {
        control.clearPlan();
        control.runText(std::string(R"({"command": "fault", )") + one.fault + "}");
        std::vector<Status> reads;
        for (const ItemIdRecord& id : ids) {
            ContactRecord contact;
            reads.push_back(session.read(id, contact));
            if (reads.back() == statusOk) session.free(contact);
        }
        EXPECT_EQ(reads, one.reads) << one.fault;
        EXPECT_EQ(balance("handedOut"), "{}");
    }
    control.failAllocation("CONAAllocString");
    EXPECT_EQ(CONNAPI(CONAAllocString)(u"x"), nullptr);
}

TEST_F(Instruments, ALostConnectionEndsItsSessionsAndAStaleSessionItself) {
    ContactRecord contact;
    ItemIdListRecord list{sizeof list, 0, 0};
    {
        ContentSession session;
        const std::vector<ItemIdRecord> ids = session.ids();
        control.runText(R"({"command": "drop", "after": 1, "status": "0x80200006"})");
        EXPECT_EQ(session.read(ids[0], contact), statusOk);
        session.free(contact);
        EXPECT_EQ(session.read(ids[1], contact), connectionLost);
        EXPECT_EQ(DAAPI(CAGetIDList)(session.connection, 1, 0, &list), connectionLost);
    }
    control.plug(annasSerial, false);
    EXPECT_EQ(ContentSession().status, phoneNotReached);
    control.plug(annasSerial, true);
    ContentSession session;
    control.fail("CAGetIDList", deviceListStale);
    EXPECT_EQ(DAAPI(CAGetIDList)(session.connection, 1, 0, &list), deviceListStale);
    EXPECT_EQ(balance("open"), "{}");
    EXPECT_EQ(DAAPI(CAGetIDList)(session.connection, 1, 0, &list), 0x80108003);
}

TEST_F(Instruments, WildRecordsAreHandedOutAsPlannedAndStillBalance) {
    struct Case {
        const char* poke;
        Word count;  // of pair a, as handed out
    };
    const Case cases[] = {
        {R"("record": "contact", "word": 1, "value": 255)", 255},
        {R"("record": "contact", "word": 1, "or": "0xABCDEF00")", 0xABCDEF03},
        {R"("record": "contact", "word": 2, "value": 0)", 3},  // nothing leads to its block any more
        {R"("record": "item", "word": 0, "value": 4000000)", 3},
        {R"("record": "item", "word": 4, "value": "unmapped")", 3},
        {R"("record": "item", "word": 4, "value": "unterminated")", 3},
        {R"("record": "value", "index": 2, "word": 0, "value": 0)", 3},
    };
    ContentSession session;
    std::vector<ItemIdRecord> ids = session.ids();
    for (const Case& one : cases) {
        SCOPED_TRACE(one.poke);
        control.clearPlan();
        control.runText(std::string(R"({"command": "poke", "call": "CAReadItem", "uid": "0A", )") + one.poke +
                        "}");
        ContactRecord contact;
        ASSERT_EQ(session.read(ids[0], contact), statusOk);
        EXPECT_EQ(contact.a.count, one.count);
        EXPECT_EQ(session.free(contact), statusOk);
        EXPECT_EQ(balance("handedOut"), "{}");
    }
    control.runText(
        R"({"command": "poke", "call": "CAReadItem", "record": "item", "word": 4, "value": "unterminated"})");
    ContactRecord contact;
    ASSERT_EQ(session.read(ids[1], contact), statusOk);
    const Word text = recordAt<DataItemRecord>(contact.a.items).value;
    EXPECT_EQ(recordAt<char16_t>(text + 4094), u'M');
    EXPECT_DEATH(std::exit(recordAt<char>(text + 4096)), "");
    session.free(contact);
    ids[2].uidLength = 100000;
    EXPECT_NE(session.read(ids[2], contact), statusOk) << "a uid of that length cannot be read back";
}

TEST_F(Instruments, CallsWithoutTheirStartHandleOrPhoneAreRefused) {
    Handle handle = 0;
    Word word = 0;
    const auto open = [&](const char16_t* serial, Word medium, Word target = signature::targetContacts) {
        return DAAPI(DAOpenCA)(serial, &medium, target, &handle);
    };
    EXPECT_EQ(CONNAPI(CONAOpenDM)(&handle), 0x80108001);
    EXPECT_EQ(open(u"356300010000017", 1), 0x80108001);
    EXPECT_EQ(CONNAPI(CONAGetDeviceCount)(7, &word), 0x80108003);
    ContentSession session;
    EXPECT_EQ(CONNAPI(CONACloseDM)(session.connection), 0x80108003) << "a handle of another kind";
    EXPECT_EQ(DAAPI(CABeginOperation)(session.connection, 0, nullptr), 0x80108002);
    EXPECT_EQ(open(u"unknown", 1), phoneNotReached);
    EXPECT_EQ(open(u"356300010000017", mediumInfrared), phoneNotReached);
    EXPECT_EQ(open(u"356300010000017", 1, 99), 0x80108005);
}

TEST_F(Instruments, ACommandThatCannotBeUnderstoodSaysWhy) {
    EXPECT_THROW(control.run("jump"), std::runtime_error);
    for (const char* const command :
         {R"({"command": "fault", "call": "CAReadItem", "status": 5})",
          R"({"command": "fault", "call": "CAReadItem", "staus": "0x80100014"})",
          R"({"command": "vanish", "serial": "nobody", "uid": "0A"})",
          R"({"command": "shape", "dataItem": 18})", R"({"call": "CAReadItem"})", "no JSON"}) {
        EXPECT_THROW(control.runText(command), std::runtime_error) << command;
    }
    EXPECT_THROW(control.addPhone(control.plainPhone(annasSerial)), std::runtime_error);
}

}  // namespace
}  // namespace simulator_tests
