// A phone with files on two drives, and an open session with it.
#pragma once

#include "simulator/library.h"

namespace simulator_tests {

using ::testing::IsEmpty;

class Files : public World {
  protected:
    Files() {
        folder.write("one/phone.json", control.plainPhone(annasSerial).dump());
        folder.write("one/files/C/Images/beach.jpg", "beach");
        folder.write("one/files/C/Images/Łódź 海.png", "lodz");
        folder.write("one/files/C/System/fixed.cfg", "fixed");
        folder.write("one/files/C/note.txt", "note");
        folder.write("one/files/E/empty.bin", "");
        folder.write("one/files.json", R"({"format": 1,
            "drives": {"C": {"capacity": 100}},
            "emptyFolders": ["C/Games/Old", "E/Empty"], "readOnly": ["C/System/fixed.cfg"], "attributes": {"C/Images": "0x2000"},
            "times": {"C/Images/beach.jpg": "2008-07-19T16:04:11Z", "C/note.txt": "1999-12-31T23:59:59Z"},
            "nameLength": 20})");
        open();
    }
    ~Files() override { close(); }

    void open() {
        EXPECT_THAT(control.load(folder.path), IsEmpty());
        CONNAPI(FSAPI_Initialize)(30, 0);
        Word medium = 1;
        Word device = 0;
        EXPECT_EQ(CONNAPI(CONAOpenFS)(u"356300010000017", &medium, &session, &device), statusOk);
    }
    void close() {
        CONNAPI(CONACloseFS)(session);
        CONNAPI(FSAPI_Terminate)(0);
    }
    // As another process would find it.
    void reopen() {
        close();
        control.reset();
        open();
    }
    Status go(const std::u16string& path) { return CONNAPI(CONASetCurrentFolder)(session, path.c_str()); }

    // Names of a folder's folders, then of its files with their sizes.
    std::vector<std::u16string> list(const std::u16string& path) {
        std::vector<std::u16string> names;
        Handle search = 0;
        if (CONNAPI(CONAFindBegin)(session, 0, &search, path.c_str()) != statusOk) return {u"(refused)"};
        FolderRecord found{};
        while (CONNAPI(CONAFindNextFolder)(search, &found) == statusOk) {
            names.push_back(u"[" + textAt(found.name) + u"]");
        }
        FileRecord file{};
        while (CONNAPI(CONAFindNextFile)(search, &file) == statusOk) {
            const std::string size = std::to_string(file.size);
            names.push_back(textAt(file.name) + u" " + std::u16string(size.begin(), size.end()));
        }
        EXPECT_EQ(CONNAPI(CONAFindEnd)(search), statusOk);
        return names;
    }

    Status read(const char16_t* name, std::string& content) {
        char16_t* const text = CONNAPI(CONAAllocString)(name);
        FileRecord file{};
        file.name = static_cast<Word>(reinterpret_cast<std::uintptr_t>(text));
        ovno2::Address data = 0;
        const Status status = CONNAPI(CONAReadFile)(session, &file, &data, 0, 0);
        const auto* const bytes = reinterpret_cast<const char*>(static_cast<std::uintptr_t>(data));
        if (status == statusOk) content = std::string(bytes, file.size);
        CONNAPI(CONAFreeString)(text);
        return status;
    }
    Status write(const std::u16string& name, const std::string& content) {
        char16_t* const text = CONNAPI(CONAAllocString)(name.c_str());
        FileRecord file{};
        file.name = static_cast<Word>(reinterpret_cast<std::uintptr_t>(text));
        file.size = static_cast<Word>(content.size());
        const Status status = CONNAPI(CONAWriteFile)(session, &file, content.data(), 0);
        CONNAPI(CONAFreeString)(text);
        return status;
    }
    Json settings() { return Json::parse(fileContent(folder.path / "one/files.json")); }

    TemporaryFolder folder;
    Handle session = 0;
};

}  // namespace simulator_tests
