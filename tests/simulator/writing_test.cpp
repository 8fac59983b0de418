// Writing contacts: what a commit does to the phone book, in memory and on disk.
#include "simulator/writing_fixture.h"

namespace simulator_tests {
namespace {

TEST_F(Writing, WhatIsCommittedIsWhatAnotherProcessFinds) {
    {
        ContentSession session;
        WrittenContact dora({{2, u"Dora \"x\"\n"}, {4, u"Ö"}});
        WrittenContact emil({{2, u"Emil"}});
        ItemIdRecord first = newId();
        ItemIdRecord second = newId();
        ASSERT_EQ(dora.write(session, first), statusOk);
        ASSERT_EQ(emil.write(session, second), statusOk);
        EXPECT_NE(first.position, second.position);
        ItemIdRecord ben = session.ids()[1];
        ASSERT_EQ(DAAPI(CADeleteItem)(session.operation, &ben, 0), statusOk);
        EXPECT_THAT(session.ids(), SizeIs(2)) << "nothing changes before the commit";
        ItemIdListRecord written{sizeof written, 0, 0};
        ASSERT_EQ(session.commit(&written), statusOk);
        ASSERT_EQ(written.count, 2U);
        EXPECT_EQ(recordAt<ItemIdRecord>(written.items).position, first.position);
    }
    control.reset();
    EXPECT_THAT(control.load(folder.path), IsEmpty());
    const Json contacts = book()["contacts"];
    EXPECT_EQ(contacts[0]["fields"][0]["text"], "Anna 海边😀");
    EXPECT_EQ(contacts[1], Json::parse(R"({"uid": "0000000C", "position": 10, "fields": [
        {"id": 2, "text": "Dora \"x\"\n"}, {"id": 4, "text": "Ö"}]})"))
        << "a uid never used before";
    EXPECT_THAT(contacts, SizeIs(3));
}

TEST_F(Writing, ARewrittenContactKeepsUidPlaceAndTheKindsOfItsFields) {
    {
        ContentSession session;
        WrittenContact changed({{2, u"Anna-Maria"}, {600, u""}, {9, u""}, {10, u""}, {256, u""}});
        changed.put(1, 600, 8);
        DateRecord birthday{20, 1975, 2, 30, 0, 0, 0, 0, 60, 0};
        changed.put(2, 9, changed.copy(birthday));
        std::array<Word, 8> address{32, 0, 0x20, 0, 0, 0, 0, 0};
        changed.put(4, 256, changed.copy(address));
        const PictureRecord picture{sizeof picture, changed.text(u"PNG"), 3,
                                    changed.copy(std::array<char, 3>{'n', 'e', 'w'})};
        changed.put(3, 10, changed.copy(picture));
        ItemIdRecord anna = session.ids()[0];
        EXPECT_EQ(changed.write(session, anna), 0x80108002) << "no such day";
        birthday.day = 12;
        changed.put(2, 9, changed.copy(birthday));
        EXPECT_NE(changed.write(session, anna), statusOk) << "nothing can be read there";
        address[2] = picture.format;
        changed.put(4, 256, changed.copy(address));
        ASSERT_EQ(changed.write(session, anna), statusOk);
        ASSERT_EQ(session.commit(), statusOk);
    }
    EXPECT_EQ(book()["contacts"][0], Json::parse(R"({"uid": "00000005", "position": 1, "fields": [
        {"id": 2, "text": "Anna-Maria"}, {"id": 600, "number": 8, "pair": "a"},
        {"id": 9, "date": "1975-02-12", "offsets": [60, 0]},
        {"id": 10, "picture": {"format": "PNG", "file": "pictures/00000005.png"}},
        {"id": 256, "address": [null, "PNG"], "pair": "a"}]})"));
    EXPECT_EQ(fileContent(folder.path / "one/pictures/00000005.png"), "new");
    EXPECT_FALSE(std::filesystem::exists(folder.path / "one/pictures/old.jpg"));
    control.reset();
}

TEST_F(Writing, AChangeThatCannotBeMadeLeavesThePhoneBookAsItWas) {
    Json small = book();
    small["capacity"] = 3;
    ContentSession session;
    WrittenContact dora({{2, u"Dora"}});
    ItemIdRecord unknown = session.ids()[0];
    unknown.uidLength = 1;
    EXPECT_EQ(dora.write(session, unknown), 0x80108007);
    EXPECT_EQ(DAAPI(CADeleteItem)(session.operation, &unknown, 0), 0x80108007);
    dora.record.size = 35;
    ItemIdRecord first = newId();
    EXPECT_EQ(dora.write(session, first), 0x80108006);
    dora.record.size = 36;
    ItemIdRecord second = newId();
    ASSERT_EQ(dora.write(session, first), statusOk);
    ASSERT_EQ(dora.write(session, second), statusOk);
    ItemIdRecord ben = session.ids()[1];
    folder.write("one/contacts.json", small.dump());
    EXPECT_EQ(session.commit(), 0x8010800C) << "the phone is full";
    ASSERT_EQ(DAAPI(CADeleteItem)(session.operation, &ben, 0), statusOk);
    EXPECT_EQ(DAAPI(CADeleteItem)(session.operation, &second, 0), statusOk) << "by its temporary id";

    folder.write("one/contacts.json", R"({"format": 1, "folder": {"id": 1}, "contacts": []})");
    EXPECT_EQ(session.commit(), 0x80108007) << "Ben went by hand";
    EXPECT_THAT(session.ids(), IsEmpty());
    folder.write("one/contacts.json", "damaged");
    EXPECT_EQ(session.commit(), 0x8010800F);
    folder.write("one/contacts.json", small.dump());
    EXPECT_EQ(session.commit(), statusOk) << "the queue is still there";
    EXPECT_THAT(session.ids(), SizeIs(2));
}

}  // namespace
}  // namespace simulator_tests
