// Contacts as a caller writes them, and a phone with an image to write to.
#pragma once

#include "simulator/library.h"

namespace simulator_tests {

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
        folder.write("one/contacts.json", "\xEF\xBB\xBF" + control
                                                               .phoneBook(Json::parse(R"([
            {"uid": "00000005", "fields": [{"id": 2, "text": "Anna 海边😀"}, {"id": 600, "number": 7},
                {"id": 10, "picture": {"format": "JPEG", "file": "pictures/old.jpg"}}]},
            {"uid": "0B", "position": 9, "fields": [{"id": 2, "text": "Ben"}]}])"))
                                                               .dump());
        EXPECT_THAT(control.load(folder.path), IsEmpty());
    }

    Json book() {
        const std::string text = fileContent(folder.path / "one/contacts.json");
        return Json::parse(text.substr(text.find('{')));
    }

    TemporaryFolder folder;
};

}  // namespace simulator_tests
