// Contacts as a caller writes them, and a phone with an image to write to.
#pragma once

#include "simulator/library.h"

namespace simulator_tests {

using ::testing::IsEmpty;

// A contact record in the library's memory, as a caller builds it: texts of pair a by field id.
class WrittenContact {
  public:
    explicit WrittenContact(const std::vector<std::pair<Word, std::u16string>>& texts) {
        record.size = sizeof record;
        record.a.count = static_cast<Word>(texts.size());
        if (texts.empty()) return;
        record.a.items = block(texts.size() * sizeof(DataItemRecord));
        for (std::size_t i = 0; i < texts.size(); ++i) {
            char16_t* const text = CONNAPI(CONAAllocString)(texts[i].second.c_str());
            strings.push_back(text);
            put(i, texts[i].first, low(text));
        }
    }
    ~WrittenContact() {
        for (char16_t* const text : strings)
            CONNAPI(CONAFreeString)(text);
        for (void* const one : blocks)
            CONNAPI(CONAFreeMemory)(one);
    }
    WrittenContact(const WrittenContact&) = delete;
    WrittenContact& operator=(const WrittenContact&) = delete;

    void put(std::size_t index, Word id, Word value) {
        const DataItemRecord item{sizeof item, 0, 1, id, value};
        std::memcpy(at(record.a.items) + index * sizeof item, &item, sizeof item);
    }
    Word block(std::size_t bytes) {
        blocks.push_back(CONNAPI(CONAAllocMemory)(static_cast<Word>(bytes)));
        return low(blocks.back());
    }
    template <typename T>
    Word copy(const T& value) {
        const Word place = block(sizeof value);
        std::memcpy(at(place), &value, sizeof value);
        return place;
    }
    static Word low(const void* pointer) {
        return static_cast<Word>(reinterpret_cast<std::uintptr_t>(pointer));
    }
    static char* at(Word address) { return reinterpret_cast<char*>(static_cast<std::uintptr_t>(address)); }

    ContactRecord record{};

  private:
    std::vector<char16_t*> strings;
    std::vector<void*> blocks;
};

inline ItemIdRecord newId() {
    return {sizeof(ItemIdRecord), 1, 0, 0, 0, 0};
}

inline Status write(const ContentSession& session, ItemIdRecord& id, WrittenContact& contact) {
    return DAAPI(CAWriteItem)(session.operation, &id, 0, 1, &contact.record);
}

class Writing : public World {
  protected:
    Writing() {
        folder.write("one/phone.json", control.plainPhone(annasSerial).dump());
        folder.write("one/pictures/old.jpg", "old picture");
        folder.write("one/contacts.json", control
                                              .phoneBook(Json::parse(R"([
            {"uid": "00000005", "fields": [{"id": 2, "text": "Anna"}, {"id": 600, "number": 7},
                {"id": 10, "picture": {"format": "JPEG", "file": "pictures/old.jpg"}}]},
            {"uid": "0B", "position": 9, "fields": [{"id": 2, "text": "Ben"}]}])"))
                                              .dump());
        EXPECT_THAT(control.load(folder.path), IsEmpty());
    }
    // The phone book as another process would find it.
    std::vector<std::u16string> onDisk() {
        control.reset();
        EXPECT_THAT(control.load(folder.path), IsEmpty());
        ContentSession session;
        std::vector<std::u16string> all;
        for (const ItemIdRecord& id : session.ids()) {
            std::u16string line = uidText(id);
            for (const std::u16string& text : session.texts(id))
                line += u" " + text;
            all.push_back(line);
        }
        return all;
    }

    TemporaryFolder folder;
};

}  // namespace simulator_tests
