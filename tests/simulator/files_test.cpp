// The phone's files in an image: what leads to them, what a change leaves on disk, and limits.

#include "simulator/files_fixture.h"

namespace simulator_tests {
namespace {

constexpr Status noSuchFolder = 0x80108008;
constexpr Status noSuchFile = 0x80108009;
constexpr Status nameTaken = 0x8010800A;
constexpr Status badName = 0x8010800B;
constexpr Status full = 0x8010800C;
constexpr Status isReadOnly = 0x8010800D;

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

}  // namespace
}  // namespace simulator_tests
