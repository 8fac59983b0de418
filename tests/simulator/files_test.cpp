// The phone's files in an image: what leads to them, what a change leaves on disk, whatever interrupts it,
// and limits.
#include <sys/stat.h>

#include "simulator/changer.h"

namespace simulator_tests {
namespace {

constexpr Status noSuchFolder = 0x80108008;
constexpr Status noSuchFile = 0x80108009;
constexpr Status nameTaken = 0x8010800A;
constexpr Status badName = 0x8010800B;
constexpr Status full = 0x8010800C;
constexpr Status isReadOnly = 0x8010800D;

// A phone with files on two drives, and an open session with it.
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

TEST_F(Files, WhatThePhoneDoesNotHaveOrAllowIsRefusedAndChangesNothing) {
    for (const char16_t* const path :
         {u"\\\\D:", u"\\\\C:\\none", u"\\\\C:\\..", u"\\\\C:\\Images\\..\\..", u"..", u"\\\\C:\\\\Images",
          u"\\\\C:\\note.txt", u"\\\\C:\\Images/..", u"C", u"\\", u"\\\\C:\\."}) {
        EXPECT_EQ(go(path), noSuchFolder) << std::string(path, path + std::u16string(path).size());
    }
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    EXPECT_EQ(go(u"System"), statusOk) << "from the current folder";
    EXPECT_EQ(write(u"big.bin", std::string(3000, 'x')), full);
    EXPECT_EQ(write(u"fixed.cfg", "x"), isReadOnly);
    EXPECT_EQ(CONNAPI(CONADeleteFile)(session, u"fixed.cfg", 0), isReadOnly);
    EXPECT_EQ(rename(u"fixed.cfg", u"other.cfg"), isReadOnly);
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    EXPECT_EQ(write(u"Images", "x"), nameTaken);
    EXPECT_EQ(CONNAPI(CONACreateFolder)(session, u"IMAGES", 0), nameTaken);
    EXPECT_EQ(rename(u"note.txt", u"images"), nameTaken);
    EXPECT_EQ(CONNAPI(CONADeleteFile)(session, u"none", 0), noSuchFile);
    EXPECT_EQ(CONNAPI(CONADeleteFolder)(session, u"Images", 0), 0x8010800E) << "not empty";
    for (const char16_t* const name :
         {u"", u".", u"..", u"a/b", u"a\\b", u"a:b", u"a\tb", u"a name too long for it"}) {
        EXPECT_EQ(write(name, "x"), badName);
        EXPECT_EQ(CONNAPI(CONACreateFolder)(session, name, 0), badName);
        EXPECT_EQ(rename(u"note.txt", name), badName);
    }
    ASSERT_EQ(go(u"\\\\"), statusOk);
    EXPECT_EQ(write(u"x", "x"), isReadOnly);
    EXPECT_EQ(CONNAPI(CONADeleteFolder)(session, u"E:", 0), isReadOnly);
    EXPECT_THAT(list("files/C"), ElementsAre("Games", "Images", "System", "note.txt"));
}

TEST_F(Files, WhatIsSaidAboutAnEntryFollowsItUntilItGoes) {
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    ASSERT_EQ(renameFolder(u"Images", u"Bilder"), statusOk);
    ASSERT_EQ(rename(u"note.txt", u"NOTE.txt"), statusOk);
    ASSERT_EQ(rename(u"note.txt", u"Memo.TXT"), statusOk);
    ASSERT_EQ(renameFolder(u"Games", u"Play"), statusOk);
    ASSERT_EQ(go(u"\\\\E:"), statusOk);
    ASSERT_EQ(CONNAPI(CONADeleteFolder)(session, u"Empty", 0), statusOk);
    EXPECT_EQ(settings()["times"], Json::parse(R"({"C/Bilder/beach.jpg": "2008-07-19T16:04:11Z",
                                                   "C/Memo.TXT": "1999-12-31T23:59:59Z"})"));
    EXPECT_EQ(settings()["emptyFolders"], Json::parse(R"(["C/Play/Old"])"));
    reopen();
    EXPECT_THAT(list("files/C"), ElementsAre("Bilder", "Memo.TXT", "Play", "System"));
    EXPECT_THAT(list("files/E"), ElementsAre("empty.bin"));
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    ASSERT_EQ(write(u"memo.txt", "written anew"), statusOk);
    EXPECT_EQ(settings()["times"].size(), 1U) << "it has a time of its own";
}

TEST_F(Files, EverySpellingFindsWhatIsThereAndWhatComes) {
    ASSERT_EQ(go(u"\\\\c:\\images"), statusOk);
    folder.write("one/files/C/Images/Later.jpg", "put there by hand");
    ASSERT_EQ(write(u"New.jpg", "1"), statusOk);
    ASSERT_EQ(write(u"NEW.JPG", "22"), statusOk);
    ASSERT_EQ(rename(u"new.jpg", u"Other.jpg"), statusOk);
    EXPECT_EQ(CONNAPI(CONADeleteFile)(session, u"new.jpg", 0), noSuchFile);
    ASSERT_EQ(CONNAPI(CONADeleteFile)(session, u"OTHER.jpg", 0), statusOk);
    ASSERT_EQ(CONNAPI(CONADeleteFile)(session, u"later.jpg", 0), statusOk);
    const std::string content("a\0b\r\n\xFF", 6);
    ASSERT_EQ(write(u"ŁÓdź 海.PNG", content), statusOk);
    EXPECT_THAT(list("files/C/Images"), ElementsAre("beach.jpg", "ŁÓdź 海.PNG", "Łódź 海.png"))
        << "only ASCII letters have no case";
    EXPECT_EQ(fileContent(folder.path / "one/files/C/Images/ŁÓdź 海.PNG"), content);
}

// What both write is described in files.json, so that each change of the one touches what the other has said.
TEST_F(Files, TwoWritersKilledAtAnyMomentLoseNothingOfEachOther) {
    const std::size_t described = settings()["times"].size();
    const std::string content(100000, 'x');
    for (int round = 0; round < 8; ++round) {
        const Changer files([&](int n) {
            return go(u"\\\\C:") == statusOk &&
                   rename(n % 2 ? u"note.txt" : u"memo.txt", n % 2 ? u"memo.txt" : u"note.txt") == statusOk &&
                   go(u"\\\\E:") == statusOk && write(u"file", content) == statusOk;
        });
        const Changer folders([&](int n) {
            return go(u"\\\\C:") == statusOk &&
                   renameFolder(n % 2 ? u"Images" : u"Bilder", n % 2 ? u"Bilder" : u"Images") == statusOk;
        });
        files.killAfter(std::chrono::microseconds(7000 + 1100 * round));
        folders.killAfter(std::chrono::microseconds(310 * round));
        reopen();
        ASSERT_EQ(settings()["times"].size(), described);
        ASSERT_EQ(settings()["attributes"].size(), 1U);
        for (const auto& entry : std::filesystem::directory_iterator(folder.path / "one"))
            EXPECT_FALSE(entry.path().filename().string().starts_with(".")) << "left over: " << entry.path();
        EXPECT_EQ(fileContent(folder.path / "one/files/E/file"), content);
        ASSERT_EQ(go(u"\\\\C:"), statusOk);
        rename(u"memo.txt", u"note.txt");
        renameFolder(u"Bilder", u"Images");
    }
}

TEST_F(Files, AnInterruptedRenameIsSettledByTheNameOnDisk) {
    Json before = settings();
    before["renaming"] = {{"from", "C/Images"}, {"to", "C/Bilder"}};
    for (const bool moved : {false, true}) {
        folder.write("one/files.json", before.dump());
        folder.write("one/.incoming-7", "left over");
        if (moved)
            std::filesystem::rename(folder.path / "one/files/C/Images", folder.path / "one/files/C/Bilder");
        reopen();
        const std::string name = moved ? "C/Bilder" : "C/Images";
        EXPECT_EQ(settings()["times"][name + "/beach.jpg"], "2008-07-19T16:04:11Z");
        EXPECT_EQ(settings()["attributes"][name], "0x2000");
        EXPECT_FALSE(settings().contains("renaming"));
        EXPECT_FALSE(std::filesystem::exists(folder.path / "one/.incoming-7"));
    }
}

TEST_F(Files, APipeInPlaceOfAFileIsAnErrorAndNoHang) {
    ASSERT_EQ(::mkfifo((folder.path / "bluetooth.json").c_str(), 0600), 0);
    for (const char* const name : {"phone.json", "contacts.json", "files.json"}) {
        const std::filesystem::path file = folder.path / "one" / name;
        const std::string content = fileContent(file);
        std::filesystem::remove(file);
        ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
        control.reset();
        EXPECT_THAT(control.load(folder.path), SizeIs(2)) << name;
        std::filesystem::remove(file);
        if (!content.empty()) folder.write(std::string("one/") + name, content);
    }
}

}  // namespace
}  // namespace simulator_tests
