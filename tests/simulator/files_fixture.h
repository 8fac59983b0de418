// A phone with files on two drives, and an open session with it.
#pragma once

#include "simulator/library.h"

namespace simulator_tests {

class Files : public World {
  protected:
    Files() {
        folder.write("one/phone.json", control.plainPhone(annasSerial).dump());
        folder.write("one/files/C/Images/beach.jpg", "beach");
        folder.write("one/files/C/Images/Łódź 海.png", "lodz");
        folder.write("one/files/C/System/fixed.cfg", "fixed");
        folder.write("one/files/C/note.txt", "note");
        folder.write("one/files/E/empty.bin", "");
        folder.write("one/files.json", R"({"format": 1, "drives": {"C": {"capacity": 100}},
            "emptyFolders": ["C/Games/Old", "E/Empty"], "readOnly": ["C/System/fixed.cfg"],
            "attributes": {"C/Images": "0x2000"}, "nameLength": 20,
            "times": {"C/Images/beach.jpg": "2008-07-19T16:04:11Z", "C/note.txt": "1999-12-31T23:59:59Z"}})");
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
    Status go(const char16_t* path) { return CONNAPI(CONASetCurrentFolder)(session, path); }
    Status rename(const char16_t* name, const char16_t* newName) {
        return CONNAPI(CONARenameFile)(session, name, newName, 0);
    }
    Status renameFolder(const char16_t* name, const char16_t* newName) {
        return CONNAPI(CONARenameFolder)(session, name, newName, 0);
    }

    // A folder's names on disk, in their order.
    std::vector<std::string> list(const char* path) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path / "one" / path))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    Status write(const char16_t* name, const std::string& content) {
        char16_t* const text = CONNAPI(CONAAllocString)(name);
        FileRecord file{low(text), 0, 0, 0, static_cast<Word>(content.size()), 0};
        const Status status = CONNAPI(CONAWriteFile)(session, &file, content.data(), 0);
        CONNAPI(CONAFreeString)(text);
        return status;
    }
    Json settings() { return Json::parse(fileContent(folder.path / "one/files.json")); }

    TemporaryFolder folder;
    Handle session = 0;
};

}  // namespace simulator_tests
