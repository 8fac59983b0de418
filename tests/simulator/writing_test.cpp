// Writing contacts: what a commit does to the phone book, in memory and on disk.
#include "simulator/writing_fixture.h"

namespace simulator_tests {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST_F(Writing, WhatIsCommittedIsWhatAnotherProcessFinds) {
    {
        ContentSession session;
        WrittenContact dora({{2, u"Dora \"x\"\n"}, {4, u"Ö"}});
        WrittenContact emil({{2, u"Emil"}});
        ItemIdRecord first = newId();
        ItemIdRecord second = newId();
        ASSERT_EQ(write(session, first, dora), statusOk);
        ASSERT_EQ(write(session, second, emil), statusOk);
        EXPECT_NE(first.position, second.position);
        ItemIdRecord ben = session.ids()[1];
        ASSERT_EQ(DAAPI(CADeleteItem)(session.operation, &ben, 0), statusOk);
        EXPECT_THAT(session.ids(), SizeIs(2)) << "nothing changes before the commit";
        ItemIdListRecord written{sizeof written, 0, 0};
        ASSERT_EQ(DAAPI(CACommitOperations)(session.operation, &written), statusOk);
        ASSERT_EQ(written.count, 2U);
        const auto created = recordAt<ItemIdRecord>(written.items);
        EXPECT_EQ(created.position, first.position);
        EXPECT_EQ(uidText(created), u"0000000C") << "never used before";
        EXPECT_EQ(session.ids()[1].position, 10U);
    }
    const std::vector<std::u16string> all = onDisk();
    ASSERT_THAT(all, SizeIs(3));
    EXPECT_EQ(all[1], u"0000000C 2=Dora \"x\"\n 4=Ö");
    EXPECT_EQ(all[2], u"0000000D 2=Emil");
}

TEST_F(Writing, ARewrittenContactKeepsUidPlaceAndTheKindsOfItsFields) {
    {
        ContentSession session;
        WrittenContact changed({{2, u"Anna-Maria"}, {600, u""}, {9, u""}, {10, u""}, {256, u""}});
        changed.put(1, 600, 8);
        DateRecord birthday{20, 1975, 4, 12, 0, 0, 0, 0, 60, 0};
        changed.put(2, 9, changed.copy(birthday));
        const std::array<Word, 8> address{32, 0, 0x20, 0, 0, 0, 0, 0};
        changed.put(4, 256, changed.copy(address));
        const PictureRecord picture{sizeof picture, WrittenContact::low(CONNAPI(CONAAllocString)(u"PNG")), 3,
                                    changed.copy(std::array<char, 3>{'n', 'e', 'w'})};
        changed.put(3, 10, changed.copy(picture));
        ItemIdRecord anna = session.ids()[0];
        EXPECT_NE(write(session, anna, changed), statusOk) << "nothing can be read there";
        const std::array<Word, 8> usable{32, 0, picture.format, 0, 0, 0, 0, 0};
        changed.put(4, 256, changed.copy(usable));
        ASSERT_EQ(write(session, anna, changed), statusOk);
        ASSERT_EQ(DAAPI(CACommitOperations)(session.operation, nullptr), statusOk);
        CONNAPI(CONAFreeString)(reinterpret_cast<char16_t*>(WrittenContact::at(picture.format)));
    }
    const Json book = Json::parse(fileContent(folder.path / "one/contacts.json"));
    EXPECT_EQ(book["contacts"][0], Json::parse(R"({"uid": "00000005", "position": 1, "fields": [
        {"id": 2, "text": "Anna-Maria"}, {"id": 600, "number": 8, "pair": "a"},
        {"id": 9, "date": "1975-04-12", "offsets": [60, 0]},
        {"id": 10, "picture": {"format": "PNG", "file": "pictures/00000005.png"}},
        {"id": 256, "address": [null, "PNG"], "pair": "a"}]})"));
    EXPECT_EQ(fileContent(folder.path / "one/pictures/00000005.png"), "new");
    EXPECT_FALSE(std::filesystem::exists(folder.path / "one/pictures/old.jpg"));
    control.reset();
}

TEST_F(Writing, AChangeThatCannotBeMadeLeavesThePhoneBookAsItWas) {
    const std::string before = fileContent(folder.path / "one/contacts.json");
    ContentSession session;
    WrittenContact dora({{2, u"Dora"}});
    ItemIdRecord unknown = session.ids()[0];
    unknown.uidLength = 1;
    EXPECT_EQ(write(session, unknown, dora), 0x80108007);
    EXPECT_EQ(DAAPI(CADeleteItem)(session.operation, &unknown, 0), 0x80108007);
    dora.record.size = 35;
    ItemIdRecord id = newId();
    EXPECT_EQ(write(session, id, dora), 0x80108006);
    dora.record.size = 36;
    ASSERT_EQ(write(session, id, dora), statusOk);
    ItemIdRecord ben = session.ids()[1];
    ASSERT_EQ(DAAPI(CADeleteItem)(session.operation, &ben, 0), statusOk);

    folder.write("one/contacts.json", R"({"format": 1, "folder": {"id": 1}, "contacts": []})");
    EXPECT_EQ(DAAPI(CACommitOperations)(session.operation, nullptr), 0x80108007) << "Ben went by hand";
    EXPECT_THAT(session.ids(), IsEmpty());
    folder.write("one/contacts.json", "damaged");
    EXPECT_EQ(DAAPI(CACommitOperations)(session.operation, nullptr), 0x8010800F);
    folder.write("one/contacts.json", before);
    EXPECT_EQ(DAAPI(CACommitOperations)(session.operation, nullptr), statusOk) << "the queue is still there";
    EXPECT_THAT(session.ids(), SizeIs(2));
}

TEST_F(Writing, AFullPhoneTakesNothingMore) {
    Json book = Json::parse(fileContent(folder.path / "one/contacts.json"));
    book["capacity"] = 3;
    folder.write("one/contacts.json", book.dump());
    ContentSession session;
    WrittenContact dora({{2, u"Dora"}});
    ItemIdRecord first = newId();
    ItemIdRecord second = newId();
    ASSERT_EQ(write(session, first, dora), statusOk);
    ASSERT_EQ(write(session, second, dora), statusOk);
    EXPECT_EQ(DAAPI(CACommitOperations)(session.operation, nullptr), 0x8010800C);
    EXPECT_THAT(session.ids(), SizeIs(2));
    EXPECT_EQ(DAAPI(CADeleteItem)(session.operation, &second, 0), statusOk) << "by its temporary id";
    EXPECT_EQ(DAAPI(CACommitOperations)(session.operation, nullptr), statusOk);
    EXPECT_THAT(session.ids(), SizeIs(3));
}

}  // namespace
}  // namespace simulator_tests
