// The instruments: journal, balance, faults, lost connections, wild records and other shapes.
#include "simulator/library.h"

namespace simulator_tests {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

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
    void pokeItem(const std::string& members) {
        control.runText(R"({"command": "poke", "call": "CAReadItem", )" + members + "}");
    }
};

TEST_F(Instruments, TheJournalTellsEveryCallInOrderAndNothingWhileItIsOff) {
    { ContentSession silent; }
    EXPECT_THAT(control.readJournal(), IsEmpty());
    control.journal(true);
    {
        ContentSession session;
        session.texts(session.ids()[0]);
    }
    EXPECT_THAT(
        control.readJournal(),
        ElementsAre("CAAPI_Initialize(version 30) = 0",
                    "DAOpenCA(\"356300010000017\", medium 1, target 1) = 0", "CABeginOperation(handle 3) = 0",
                    "CAGetIDList(handle 3, folder 1) = 0", "CAReadItem(handle 4, position 1, uid 0A) = 0",
                    "CAFreeItemData(handle 3) = 0", "CAEndOperation(handle 4) = 0", "DACloseCA(handle 3) = 0",
                    "CAAPI_Terminate() = 0"));
    EXPECT_THAT(control.readJournal(), IsEmpty());
}

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

TEST_F(Instruments, AFreeThatDoesNotFitIsMisuse) {
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
    control.reset();
}

TEST_F(Instruments, PartsOfAnItemMayGoBackOneByOneButNotTwice) {
    ContentSession session;
    ContactRecord contact;
    ASSERT_EQ(session.read(session.ids()[0], contact), statusOk);
    const Word value = recordAt<DataItemRecord>(contact.a.items).value;
    auto* const text = reinterpret_cast<char16_t*>(static_cast<std::uintptr_t>(value));
    EXPECT_EQ(CONNAPI(CONAFreeString)(text), statusOk);
    EXPECT_NE(CONNAPI(CONAFreeString)(text), statusOk);
    EXPECT_EQ(session.free(contact), statusOk);
    EXPECT_NE(session.free(contact), statusOk);
    EXPECT_THAT(balance("misuse"), AllOf(HasSubstr("freed twice"), HasSubstr("CAFreeItemData")));
    EXPECT_EQ(balance("handedOut"), "{}");
    control.reset();
}

TEST_F(Instruments, TheNthCallFailsOnceOrFromThenOn) {
    ContentSession session;
    const std::vector<ItemIdRecord> ids = session.ids();
    ContactRecord contact;
    const auto statuses = [&] {
        std::vector<Status> all;
        for (const ItemIdRecord& id : ids) {
            all.push_back(session.read(id, contact));
            if (all.back() == statusOk) session.free(contact);
        }
        return all;
    };
    control.fail("CAReadItem", pretended, 2);
    EXPECT_THAT(statuses(), ElementsAre(statusOk, pretended, statusOk));
    control.clearPlan();
    control.fail("CAReadItem", pretended, 2, /*onwards=*/true);
    EXPECT_THAT(statuses(), ElementsAre(statusOk, pretended, pretended));
    control.clearPlan();
    control.fail("*", pretended, 4);
    EXPECT_THAT(statuses(), ElementsAre(statusOk, statusOk, statusOk)) << "the free call met it";
    control.clearPlan();
    control.failAllocation("CAReadItem", 1);
    EXPECT_THAT(statuses(), ElementsAre(0x80108004, statusOk, statusOk));
    control.failAllocation("CONAAllocString");
    EXPECT_EQ(CONNAPI(CONAAllocString)(u"x"), nullptr);
}

TEST_F(Instruments, AFailingReleaseStillReleases) {
    {
        ContentSession session;
        ContactRecord contact;
        ASSERT_EQ(session.read(session.ids()[0], contact), statusOk);
        control.fail("*", pretended, 1, /*onwards=*/true);
        EXPECT_EQ(session.free(contact), pretended);
    }
    EXPECT_EQ(balance("open"), "{}");
}

TEST_F(Instruments, AStaleSessionIsGoneWithItsHandle) {
    ContentSession session;
    control.fail("CAGetIDList", deviceListStale);
    ItemIdListRecord list{sizeof list, 0, 0};
    EXPECT_EQ(DAAPI(CAGetIDList)(session.connection, 1, 0, &list), deviceListStale);
    EXPECT_EQ(balance("open"), "{}");
    EXPECT_EQ(DAAPI(CAGetIDList)(session.connection, 1, 0, &list), 0x80108003);
}

TEST_F(Instruments, ALostConnectionEndsEverySessionWithThePhoneUntilItIsOpenedAgain) {
    {
        ContentSession session;
        const std::vector<ItemIdRecord> ids = session.ids();
        control.runText(R"({"command": "drop", "after": 1, "status": "0x80200006"})");
        ContactRecord contact;
        EXPECT_EQ(session.read(ids[0], contact), statusOk);
        session.free(contact);
        EXPECT_EQ(session.read(ids[1], contact), connectionLost);
        ItemIdListRecord list{sizeof list, 0, 0};
        EXPECT_EQ(DAAPI(CAGetIDList)(session.connection, 1, 0, &list), connectionLost);
    }
    { EXPECT_EQ(ContentSession().status, statusOk); }
    control.plug(annasSerial, false);
    { EXPECT_EQ(ContentSession().status, phoneNotReached); }
    control.plug(annasSerial, true);
    { EXPECT_EQ(ContentSession().status, statusOk); }
}

TEST_F(Instruments, AVanishedContactIsListedButCannotBeRead) {
    control.vanish(annasSerial, "0B");
    ContentSession session;
    const std::vector<ItemIdRecord> ids = session.ids();
    EXPECT_THAT(ids, SizeIs(3));
    EXPECT_THAT(session.texts(ids[0]), SizeIs(3));
    EXPECT_THAT(session.texts(ids[1]), IsEmpty());
}

TEST_F(Instruments, WildRecordsAreHandedOutAsPlannedAndStillBalance) {
    pokeItem(R"("uid": "0A", "record": "contact", "word": 1, "value": 255)");
    pokeItem(R"("uid": "0A", "record": "contact", "word": 2, "value": 0)");
    pokeItem(R"("uid": "0B", "record": "item", "word": 4, "value": "unmapped")");
    pokeItem(R"("uid": "0B", "record": "item", "word": 0, "value": 4000000)");
    pokeItem(R"("uid": "0B", "record": "contact", "word": 1, "or": "0xABCDEF00")");
    pokeItem(R"("uid": "0C", "record": "item", "word": 4, "value": "unterminated")");
    control.runText(R"({"command": "poke", "call": "CAGetIDList", "record": "id", "index": 2, "word": 3,
                        "value": 100000})");
    ContentSession session;
    std::vector<ItemIdRecord> ids = session.ids();
    EXPECT_EQ(ids[2].uidLength, 100000U);
    ContactRecord contact;
    ASSERT_EQ(session.read(ids[0], contact), statusOk);
    EXPECT_EQ(contact.a.count, 255U);
    EXPECT_EQ(contact.a.items, 0U);
    EXPECT_EQ(session.free(contact), statusOk) << "nothing of it was handed out";

    ASSERT_EQ(session.read(ids[1], contact), statusOk);
    EXPECT_EQ(contact.a.count, 0xABCDEF01);
    const auto item = recordAt<DataItemRecord>(contact.a.items);
    EXPECT_EQ(item.size, 4000000U);
    EXPECT_DEATH(std::exit(recordAt<char>(item.value)), "");
    EXPECT_EQ(session.free(contact), statusOk);

    EXPECT_NE(session.read(ids[2], contact), statusOk) << "a uid of that length cannot be read back";
    ids[2].uidLength = 1;
    ASSERT_EQ(session.read(ids[2], contact), statusOk);
    const Word text = recordAt<DataItemRecord>(contact.a.items).value;
    EXPECT_EQ(recordAt<char16_t>(text + 4094), u'M');
    EXPECT_DEATH(std::exit(recordAt<char>(text + 4096)), "");
    EXPECT_EQ(session.free(contact), statusOk);
}

TEST_F(Instruments, ItemsAndDatesComeInTheShapeOfThePhone) {
    control.shape(Json::parse(R"({"dataItem": 16, "date": 28, "deviceManagement": 20})"));
    EXPECT_EQ(CONNAPI(DMAPI_GetAPIVersion)(), 20U);
    ContentSession session;
    ContactRecord contact;
    ASSERT_EQ(session.read(session.ids()[0], contact), statusOk);
    const auto words = recordAt<std::array<Word, 12>>(contact.a.items);
    EXPECT_THAT(std::vector<Word>(words.begin(), words.begin() + 3), ElementsAre(0, 1, 2));
    EXPECT_EQ(textAt(words[3]), u"Anna");
    EXPECT_EQ(words[10], 9U);
    EXPECT_EQ(recordAt<DateRecord>(words[11]).size, 28U);
    session.free(contact);
}

TEST_F(Instruments, AFolderRecordIsWrittenOnlyInThePhonesOwnSizeAndNotBeyond) {
    for (const Word size : {32U, 48U}) {
        control.runText(R"({"command": "shape", "folder": )" + std::to_string(size) + "}");
        ContentSession session;
        std::vector<unsigned char> buffer(97, 77);
        const Word other = size == 32 ? 48 : 32;
        std::memcpy(buffer.data(), &other, sizeof other);
        const std::vector<unsigned char> untouched = buffer;
        EXPECT_EQ(DAAPI(CAGetFolderInfo)(session.connection, buffer.data()), 0x80108006);
        EXPECT_EQ(buffer, untouched);
        std::memcpy(buffer.data(), &size, sizeof size);
        EXPECT_EQ(DAAPI(CAGetFolderInfo)(session.connection, buffer.data()), statusOk);
        FolderInfoRecord folder;
        std::memcpy(&folder, buffer.data(), sizeof folder);
        EXPECT_EQ(folder.folderId, 1U);
        EXPECT_EQ(textAt(folder.name), u"Contacts");
        EXPECT_NE(buffer[size - 1], 77);
        EXPECT_EQ(buffer[size], 77);
    }
}

TEST_F(Instruments, CallsWithoutTheirStartOrHandleAreRefused) {
    Handle handle = 0;
    Word medium = 1;
    Word word = 0;
    EXPECT_EQ(CONNAPI(CONAOpenDM)(&handle), 0x80108001);
    EXPECT_EQ(CONNAPI(CONAOpenMM)(&handle, 0), 0x80108001);
    EXPECT_EQ(CONNAPI(CONAOpenFS)(u"356300010000017", &medium, &handle, &word), 0x80108001);
    EXPECT_EQ(DAAPI(DAOpenCA)(u"356300010000017", &medium, 1, &handle), 0x80108001);
    EXPECT_EQ(handle, 0U);
    EXPECT_EQ(CONNAPI(CONAGetDeviceCount)(7, &word), 0x80108003);
    EXPECT_EQ(DAAPI(DACloseCA)(0), 0x80108003);

    ContentSession session;
    EXPECT_EQ(CONNAPI(CONACloseDM)(session.connection), 0x80108003) << "a handle of another kind";
    EXPECT_EQ(DAAPI(CABeginOperation)(session.connection, 0, nullptr), 0x80108002);
    EXPECT_EQ(DAAPI(DAOpenCA)(u"unknown", &medium, 1, &handle), phoneNotReached);
    EXPECT_EQ(DAAPI(DAOpenCA)(u"356300010000017", &medium, 99, &handle), 0x80108005);
    medium = mediumUsb;
    EXPECT_EQ(DAAPI(DAOpenCA)(u"356300010000017", &medium, 1, &handle), statusOk);
    EXPECT_EQ(DAAPI(DACloseCA)(handle), statusOk);
    EXPECT_EQ(DAAPI(DACloseCA)(handle), 0x80108003);
    medium = mediumInfrared;
    EXPECT_EQ(DAAPI(DAOpenCA)(u"356300010000017", &medium, 1, &handle), phoneNotReached);
    DAAPI(CAAPI_Terminate)(0);
    ItemIdListRecord list{sizeof list, 0, 0};
    EXPECT_EQ(DAAPI(CAGetIDList)(session.connection, 1, 0, &list), 0x80108001);
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
