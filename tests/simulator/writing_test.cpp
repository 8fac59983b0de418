// Writing contacts: what a commit does to the phone book, in memory and on disk.
#include "simulator/changer.h"

namespace simulator_tests {
namespace {

// A contact record in the library's memory, as a caller builds it: texts of pair a by field id.
class WrittenContact {
  public:
    explicit WrittenContact(const std::vector<std::pair<Word, std::u16string>>& texts) {
        record.size = sizeof record;
        record.a.count = static_cast<Word>(texts.size());
        record.a.items = block(texts.size() * sizeof(DataItemRecord));
        for (std::size_t i = 0; i < texts.size(); ++i)
            put(i, texts[i].first, text(texts[i].second));
    }
    ~WrittenContact() {
        for (char16_t* const one : strings)
            CONNAPI(CONAFreeString)(one);
        for (void* const one : blocks)
            CONNAPI(CONAFreeMemory)(one);
    }
    WrittenContact(const WrittenContact&) = delete;
    WrittenContact& operator=(const WrittenContact&) = delete;

    void put(std::size_t index, Word id, Word value) {
        const DataItemRecord item{sizeof item, 0, 1, id, value};
        std::memcpy(at(record.a.items) + index * sizeof item, &item, sizeof item);
    }
    Word text(const std::u16string& value) {
        return low(strings.emplace_back(CONNAPI(CONAAllocString)(value.c_str())));
    }
    Word block(std::size_t bytes) {
        return low(blocks.emplace_back(CONNAPI(CONAAllocMemory)(static_cast<Word>(bytes))));
    }
    template <typename T>
    Word copy(const T& value) {
        const Word place = block(sizeof value);
        std::memcpy(at(place), &value, sizeof value);
        return place;
    }
    Status write(const ContentSession& session, ItemIdRecord& id) {
        return DAAPI(CAWriteItem)(session.operation, &id, 0, 1, &record);
    }

    ContactRecord record{};

  private:
    std::vector<char16_t*> strings;
    std::vector<void*> blocks;
};

inline ItemIdRecord newId() {
    return {sizeof(ItemIdRecord), 1, 0, 0, 0, 0};
}

class Writing : public World {
  protected:
    Writing() {
        folder.write("one/phone.json", control.plainPhone(annasSerial).dump());
        folder.write("one/pictures/old.jpg", "old picture");
        const Json contacts = Json::parse(R"([
            {"uid": "00000005", "fields": [{"id": 2, "text": "Anna"}, {"id": 600, "number": 7},
                {"id": 10, "picture": {"format": "JPEG", "file": "pictures/old.jpg"}}]},
            {"uid": "0B", "position": 9, "fields": [{"id": 2, "text": "Ben"}]}])");
        folder.write("one/contacts.json", "\xEF\xBB\xBF" + control.phoneBook(contacts).dump());
        EXPECT_THAT(control.load(folder.path), IsEmpty());
    }

    Json book() {
        const std::string text = fileContent(folder.path / "one/contacts.json");
        return Json::parse(text.substr(text.find('{')));
    }

    TemporaryFolder folder;
};

TEST_F(Writing, WhatIsCommittedIsWhatAnotherProcessFinds) {
    {
        ContentSession session;
        WrittenContact dora({{2, u"Dora \"x\"\n"}, {4, u"Ö"}});
        WrittenContact anna({{2, u"Anna 海边😀"}, {600, u""}, {9, u""}, {10, u""}, {256, u""}});
        anna.put(1, 600, 8);
        DateRecord birthday{20, 1975, 2, 30, 0, 0, 0, 0, 60, 0};
        anna.put(2, 9, anna.copy(birthday));
        std::array<Word, 8> address{32, 0, 0x20, 0, 0, 0, 0, 0};
        anna.put(4, 256, anna.copy(address));
        const PictureRecord picture{sizeof picture, anna.text(u"PNG"), 3,
                                    anna.copy(std::array<char, 3>{'n', 'e', 'w'})};
        anna.put(3, 10, anna.copy(picture));
        std::vector<ItemIdRecord> ids = session.ids();
        EXPECT_EQ(anna.write(session, ids[0]), 0x80108002) << "no such day";
        birthday.day = 12;
        anna.put(2, 9, anna.copy(birthday));
        EXPECT_NE(anna.write(session, ids[0]), statusOk) << "nothing can be read there";
        address[2] = picture.format;
        anna.put(4, 256, anna.copy(address));
        ASSERT_EQ(anna.write(session, ids[0]), statusOk);
        ItemIdRecord created = newId();
        ASSERT_EQ(dora.write(session, created), statusOk);
        ASSERT_EQ(DAAPI(CADeleteItem)(session.operation, &ids[1], 0), statusOk);
        EXPECT_EQ(book()["contacts"][1]["uid"], "0B") << "nothing changes before the commit";
        ItemIdListRecord written{sizeof written, 0, 0};
        ASSERT_EQ(session.commit(&written), statusOk);
        ASSERT_EQ(written.count, 1U);
        EXPECT_EQ(recordAt<ItemIdRecord>(written.items).position, created.position);
    }
    EXPECT_EQ(book()["contacts"], Json::parse(R"([{"uid": "00000005", "position": 1, "fields": [
        {"id": 2, "text": "Anna 海边😀"}, {"id": 600, "number": 8, "pair": "a"},
        {"id": 9, "date": "1975-02-12", "offsets": [60, 0]},
        {"id": 10, "picture": {"format": "PNG", "file": "pictures/00000005.png"}},
        {"id": 256, "address": [null, "PNG"], "pair": "a"}]},
        {"uid": "0000000C", "position": 10, "fields": [
            {"id": 2, "text": "Dora \"x\"\n"}, {"id": 4, "text": "Ö"}]}])"));
    EXPECT_EQ(fileContent(folder.path / "one/pictures/00000005.png"), "new");
    EXPECT_FALSE(std::filesystem::exists(folder.path / "one/pictures/old.jpg"));
    control.reset();
    EXPECT_THAT(control.load(folder.path), IsEmpty());
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

// Contact n gets n as two texts and a picture of its own.
bool rewriteFirst(const ContentSession& session, int n) {
    const std::string digits = std::to_string(n);
    const std::u16string text(digits.begin(), digits.end());
    WrittenContact contact({{2, text}, {4, text}, {10, u""}});
    const Word picture = contact.block(static_cast<std::size_t>(n));
    contact.put(2, 10, contact.copy(PictureRecord{16, 0, static_cast<Word>(n), picture}));
    ItemIdRecord id = session.ids()[0];
    return contact.write(session, id) == statusOk && session.commit() == statusOk;
}

TEST_F(Writing, AKilledWriterLeavesTheOldOrTheNewPhoneBook) {
    for (int round = 0; round < 25; ++round) {
        {
            const ContentSession session;
            Changer([&](int n) {
                return rewriteFirst(session, n);
            }).killAfter(std::chrono::microseconds(1370 * round));
        }
        control.reset();
        ASSERT_THAT(control.load(folder.path), IsEmpty());
        const Json contacts = book()["contacts"];
        ASSERT_THAT(contacts, SizeIs(2));
        const Json& fields = contacts[0]["fields"];
        ASSERT_EQ(fields[0]["text"], fields[1]["text"]);
        const std::filesystem::path picture = fields[2]["picture"]["file"].get<std::string>();
        EXPECT_EQ(std::to_string(std::filesystem::file_size(folder.path / "one" / picture)),
                  fields[0]["text"]);
    }
}

}  // namespace
}  // namespace simulator_tests
