// The phone's files in an image: what leads to them, what a change leaves on disk, and limits.

#include "simulator/files_fixture.h"

namespace simulator_tests {
namespace {

using ::testing::ElementsAre;

constexpr Status noSuchFolder = 0x80108008;
constexpr Status noSuchFile = 0x80108009;
constexpr Status nameTaken = 0x8010800A;
constexpr Status badName = 0x8010800B;
constexpr Status full = 0x8010800C;
constexpr Status isReadOnly = 0x8010800D;

TEST_F(Files, PathsThatLeadNowhereOrOutsideAreRefused) {
    for (const char16_t* const path :
         {u"\\\\D:", u"\\\\C:\\none", u"\\\\C:\\..", u"\\\\C:\\Images\\..\\..", u"..", u"\\\\C:\\\\Images",
          u"\\\\C:\\note.txt", u"\\\\C:\\Images/..", u"C", u"\\", u"\\\\C:\\."}) {
        EXPECT_EQ(go(path), noSuchFolder) << std::string(path, path + std::u16string(path).size());
    }
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    EXPECT_EQ(go(u"Images"), statusOk) << "from the current folder";
    std::string content;
    for (const char16_t* const name : {u"", u"..", u"../note.txt", u"none.jpg", u"\\\\C:\\note.txt"}) {
        EXPECT_EQ(read(name, content), noSuchFile);
    }
}

TEST_F(Files, AWrittenFileIsThereForTheNextProcessAndHasATimeOfItsOwn) {
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    std::string content(3000, 'x');
    EXPECT_EQ(write(u"big.bin", content), full);
    content.assign("a\0b\r\n\xFF", 6);
    ASSERT_EQ(write(u"Ünï.bin", content), statusOk);
    ASSERT_EQ(write(u"NOTE.txt", "changed"), statusOk);
    ASSERT_EQ(write(u"empty", ""), statusOk);
    reopen();
    EXPECT_THAT(list(u"\\\\C:"),
                ElementsAre(u"[Games]", u"[Images]", u"[System]", u"empty 0", u"note.txt 7", u"Ünï.bin 6"));
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    std::string back;
    ASSERT_EQ(read(u"Ünï.bin", back), statusOk);
    EXPECT_EQ(back, content);
    EXPECT_FALSE(settings()["times"].contains("C/note.txt"));
    EXPECT_TRUE(settings()["times"].contains("C/Images/beach.jpg"));
}

TEST_F(Files, WhatThePhoneDoesNotAllowIsRefusedAndChangesNothing) {
    ASSERT_EQ(go(u"\\\\C:\\System"), statusOk);
    EXPECT_EQ(write(u"fixed.cfg", "x"), isReadOnly);
    EXPECT_EQ(CONNAPI(CONADeleteFile)(session, u"fixed.cfg", 0), isReadOnly);
    EXPECT_EQ(CONNAPI(CONARenameFile)(session, u"fixed.cfg", u"other.cfg", 0), isReadOnly);
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    EXPECT_EQ(write(u"Images", "x"), nameTaken);
    EXPECT_EQ(CONNAPI(CONACreateFolder)(session, u"IMAGES", 0), nameTaken);
    EXPECT_EQ(CONNAPI(CONARenameFile)(session, u"note.txt", u"images", 0), nameTaken);
    EXPECT_EQ(CONNAPI(CONADeleteFile)(session, u"none", 0), noSuchFile);
    EXPECT_EQ(CONNAPI(CONADeleteFolder)(session, u"Images", 0), 0x8010800E) << "not empty";
    for (const std::u16string name :
         {u"", u".", u"..", u"a/b", u"a\\b", u"a:b", u"a\tb", u"a name too long for it"}) {
        EXPECT_EQ(write(name, "x"), badName);
        EXPECT_EQ(CONNAPI(CONACreateFolder)(session, name.c_str(), 0), badName);
        EXPECT_EQ(CONNAPI(CONARenameFile)(session, u"note.txt", name.c_str(), 0), badName);
    }
    ASSERT_EQ(go(u"\\\\"), statusOk);
    EXPECT_EQ(write(u"x", "x"), isReadOnly);
    EXPECT_EQ(CONNAPI(CONADeleteFolder)(session, u"E:", 0), isReadOnly);
    EXPECT_THAT(list(u"\\\\C:"), ElementsAre(u"[Games]", u"[Images]", u"[System]", u"note.txt 4"));
}

TEST_F(Files, WhatIsSaidAboutAnEntryFollowsItUntilItGoes) {
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFolder)(session, u"Images", u"Bilder", 0), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFile)(session, u"note.txt", u"NOTE.txt", 0), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFile)(session, u"note.txt", u"Memo.TXT", 0), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFolder)(session, u"Games", u"Play", 0), statusOk);
    ASSERT_EQ(go(u"\\\\E:"), statusOk);
    ASSERT_EQ(CONNAPI(CONADeleteFolder)(session, u"Empty", 0), statusOk);
    EXPECT_EQ(settings()["times"], Json::parse(R"({"C/Bilder/beach.jpg": "2008-07-19T16:04:11Z",
                                                   "C/Memo.TXT": "1999-12-31T23:59:59Z"})"));
    EXPECT_EQ(settings()["emptyFolders"], Json::parse(R"(["C/Play/Old"])"));
    reopen();
    EXPECT_THAT(list(u"\\\\C:"), ElementsAre(u"[Bilder]", u"[Play]", u"[System]", u"Memo.TXT 4"));
    EXPECT_THAT(list(u"\\\\E:"), ElementsAre(u"empty.bin 0"));
}

TEST_F(Files, EverySpellingFindsWhatIsThereAndWhatComes) {
    ASSERT_EQ(go(u"\\\\c:\\images"), statusOk);
    std::string content;
    ASSERT_EQ(read(u"BEACH.JPG", content), statusOk);
    folder.write("one/files/C/Images/Later.jpg", "put there by hand");
    ASSERT_EQ(write(u"New.jpg", "1"), statusOk);
    ASSERT_EQ(write(u"NEW.JPG", "22"), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFile)(session, u"new.jpg", u"Other.jpg", 0), statusOk);
    EXPECT_EQ(CONNAPI(CONADeleteFile)(session, u"new.jpg", 0), noSuchFile);
    ASSERT_EQ(CONNAPI(CONADeleteFile)(session, u"OTHER.jpg", 0), statusOk);
    ASSERT_EQ(CONNAPI(CONADeleteFile)(session, u"later.jpg", 0), statusOk);
    EXPECT_THAT(list(u"\\\\C:\\Images"), ElementsAre(u"beach.jpg 5", u"Łódź 海.png 4"));
}

}  // namespace
}  // namespace simulator_tests
