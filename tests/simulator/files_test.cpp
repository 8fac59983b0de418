// The phone's files: listings, transfers, changes, and limits.

#include "simulator/files_fixture.h"

namespace simulator_tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr Status noSuchFolder = 0x80108008;
constexpr Status noSuchFile = 0x80108009;
constexpr Status nameTaken = 0x8010800A;
constexpr Status badName = 0x8010800B;
constexpr Status full = 0x8010800C;
constexpr Status isReadOnly = 0x8010800D;

TEST_F(Files, TheRootShowsTheDrivesAndAFolderItsEntries) {
    EXPECT_THAT(list(u"\\\\"), ElementsAre(u"[C:]", u"[E:]"));
    EXPECT_THAT(list(u"\\\\C:\\"), ElementsAre(u"[Images]", u"[System]", u"note.txt 4"));
    EXPECT_THAT(list(u"\\\\c:\\images"), ElementsAre(u"beach.jpg 5", u"Łódź 海.png 4"));
    EXPECT_THAT(list(u"\\\\E:"), ElementsAre(u"empty.bin 0"));
}

TEST_F(Files, AnEntryCarriesLabelAttributesAndTime) {
    Handle search = 0;
    FolderRecord drive{};
    FileRecord file{};
    ASSERT_EQ(CONNAPI(CONAFindBegin)(session, 0, &search, u"\\\\"), statusOk);
    ASSERT_EQ(CONNAPI(CONAFindNextFolder)(search, &drive), statusOk);
    EXPECT_EQ(textAt(drive.label), u"Phone memory");
    EXPECT_EQ(textAt(drive.memoryType), u"internal");
    CONNAPI(CONAFindEnd)(search);
    ASSERT_EQ(CONNAPI(CONAFindBegin)(session, 0, &search, u"\\\\C:"), statusOk);
    ASSERT_EQ(CONNAPI(CONAFindNextFolder)(search, &drive), statusOk);
    EXPECT_EQ(drive.attributes, 0x2000U);
    ASSERT_EQ(CONNAPI(CONAFindNextFile)(search, &file), statusOk);
    // 31 December 1999, 23:59:59 in units of 100 ns since 1601
    EXPECT_EQ(std::uint64_t{file.timeHigh} << 32 | file.timeLow, 125911583990000000U);
    CONNAPI(CONAFindEnd)(search);
}

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
    EXPECT_EQ(read(u"BEACH.jpg", content), statusOk);
    EXPECT_EQ(content, "beach");
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
                ElementsAre(u"[Images]", u"[System]", u"empty 0", u"note.txt 7", u"Ünï.bin 6"));
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
    FileRecord file{};
    EXPECT_EQ(CONNAPI(CONAWriteFile)(session, &file, nullptr, 0), 0x80108002);
    EXPECT_THAT(list(u"\\\\C:"), ElementsAre(u"[Images]", u"[System]", u"note.txt 4"));
}

TEST_F(Files, ARenamedFolderTakesItsFilesAndWhatIsSaidAboutThemAlong) {
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFolder)(session, u"Images", u"Bilder", 0), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFile)(session, u"note.txt", u"NOTE.txt", 0), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFile)(session, u"note.txt", u"Memo.TXT", 0), statusOk);
    ASSERT_EQ(CONNAPI(CONACreateFolder)(session, u"New", 0), statusOk);
    ASSERT_EQ(CONNAPI(CONADeleteFolder)(session, u"new", 0), statusOk);
    EXPECT_EQ(settings()["times"], Json::parse(R"({"C/Bilder/beach.jpg": "2008-07-19T16:04:11Z",
                                                   "C/Memo.TXT": "1999-12-31T23:59:59Z"})"));
    reopen();
    EXPECT_THAT(list(u"\\\\C:"), ElementsAre(u"[Bilder]", u"[System]", u"Memo.TXT 4"));
    ASSERT_EQ(go(u"\\\\C:\\Bilder"), statusOk);
    ASSERT_EQ(CONNAPI(CONADeleteFile)(session, u"beach.jpg", 0), statusOk);
    reopen();
    EXPECT_THAT(list(u"\\\\C:\\Bilder"), SizeIs(1));
}

TEST_F(Files, FolderDeletionWithFourArgumentsAsksFirst) {
    control.runText(R"({"command": "shape", "deleteFolderArguments": 4})");
    auto& withFour = *bound<signature::CONADeleteFolderFourArguments>("ConnAPI", "CONADeleteFolder");
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    ASSERT_EQ(CONNAPI(CONACreateFolder)(session, u"New", 0), statusOk);
    clearLastError();
    EXPECT_NE(CONNAPI(CONADeleteFolder)(session, u"New", 0), statusOk);
    EXPECT_NE(lastError(), 0U);
    EXPECT_THAT(list(u"\\\\C:"), SizeIs(4));
    clearLastError();
    EXPECT_EQ(withFour(session, u"New", 1, 0), statusOk);
    EXPECT_EQ(withFour(session, u"New", 0, 0), statusOk);
    EXPECT_EQ(lastError(), 0U);
    EXPECT_THAT(list(u"\\\\C:"), SizeIs(3));
    EXPECT_EQ(withFour(session, u"Images", 1, 0), 0x8010800E);
}

TEST_F(Files, ASearchCanBePlannedNeverToEndAndToReportHostileNames) {
    Handle search = 0;
    ASSERT_EQ(CONNAPI(CONAFindBegin)(session, 0, &search, u"\\\\C:"), statusOk);
    control.runText(
        R"({"command": "fault", "call": "CONAFindNextFile", "nth": 2, "onwards": true, "repeat": true})");
    control.runText(R"({"command": "poke", "call": "CONAFindNextFile", "record": "file", "word": 0,
                        "value": {"text": "..\\..\\evil\u0007"}})");
    FileRecord file{};
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(CONNAPI(CONAFindNextFile)(search, &file), statusOk);
        ASSERT_EQ(textAt(file.name), u"..\\..\\evil\u0007");
    }
    control.clearPlan();
    EXPECT_EQ(CONNAPI(CONAFindNextFile)(search, &file), noMoreEntries);
    CONNAPI(CONAFindEnd)(search);
}

TEST_F(Files, ALargeFileGoesThereAndBack) {
    std::string content(24 << 20, '\0');
    for (std::size_t i = 0; i < content.size(); i += 97)
        content[i] = static_cast<char>(i / 97);
    ASSERT_EQ(go(u"\\\\E:"), statusOk);
    ASSERT_EQ(write(u"large.bin", content), statusOk);
    std::string back;
    ASSERT_EQ(read(u"large.bin", back), statusOk);
    EXPECT_TRUE(back == content);
}

TEST_F(Files, ATransferThatIsCutOffLeavesNoHalfFile) {
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    control.runText(R"({"command": "drop", "after": 0})");
    EXPECT_EQ(write(u"note.txt", "half of it"), connectionLost);
    EXPECT_EQ(go(u"\\\\C:"), connectionLost);
    reopen();
    EXPECT_THAT(list(u"\\\\C:"), ElementsAre(u"[Images]", u"[System]", u"note.txt 4"));

    // In the middle of a file: what has arrived goes.
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    control.runText(R"({"command": "drop", "bytes": 7})");
    EXPECT_EQ(write(u"note.txt", "whole"), statusOk);
    EXPECT_EQ(write(u"note.txt", "half"), connectionLost);
    std::string content;
    EXPECT_EQ(read(u"note.txt", content), connectionLost);
    control.reset();
    open();
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    ASSERT_EQ(read(u"note.txt", content), statusOk);
    EXPECT_EQ(content, "whole");
    for (const auto& entry : std::filesystem::directory_iterator(folder.path / "one"))
        EXPECT_THAT(entry.path().filename().string(), ::testing::Not(::testing::StartsWith(".incoming")));
    control.runText(R"({"command": "drop", "bytes": 4})");
    EXPECT_EQ(read(u"note.txt", content), connectionLost);
    EXPECT_EQ(content, "whole") << "nothing was handed out";
}

TEST_F(Files, EmptyFoldersAreMadeAndFollowTheirFolder) {
    Json described = settings();
    described["emptyFolders"] = {"C/Games/Old", "E/Empty"};
    folder.write("one/files.json", described.dump());
    reopen();
    EXPECT_THAT(list(u"\\\\C:\\Games"), ElementsAre(u"[Old]"));
    ASSERT_EQ(go(u"\\\\C:"), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFolder)(session, u"Games", u"Play", 0), statusOk);
    ASSERT_EQ(go(u"\\\\E:"), statusOk);
    ASSERT_EQ(CONNAPI(CONADeleteFolder)(session, u"Empty", 0), statusOk);
    EXPECT_EQ(settings()["emptyFolders"], Json::parse(R"(["C/Play/Old"])"));
    reopen();
    EXPECT_THAT(list(u"\\\\E:"), ElementsAre(u"empty.bin 0"));
}

TEST_F(Files, AFolderOfTenThousandFilesIsFilledAndListedInOrder) {
    constexpr int count = 10000;
    char name[16];
    for (int i = 0; i < count; ++i) {
        std::snprintf(name, sizeof name, "f%05d.jpg", i);
        folder.write(std::string("one/files/E/many/") + name, name);
    }
    const std::vector<std::u16string> names = list(u"\\\\E:\\many");
    ASSERT_EQ(names.size(), std::size_t{count});
    EXPECT_EQ(names.front(), u"f00000.jpg 10");
    EXPECT_EQ(names.back(), u"f09999.jpg 10");
    ASSERT_EQ(go(u"\\\\E:\\many"), statusOk);
    std::string content;
    ASSERT_EQ(read(u"F05000.JPG", content), statusOk);
    EXPECT_EQ(content, "f05000.jpg");
    // What this phone writes itself is found under every spelling.
    ASSERT_EQ(write(u"New.jpg", "1"), statusOk);
    ASSERT_EQ(write(u"NEW.JPG", "22"), statusOk);
    ASSERT_EQ(CONNAPI(CONARenameFile)(session, u"new.jpg", u"Other.jpg", 0), statusOk);
    EXPECT_EQ(CONNAPI(CONADeleteFile)(session, u"new.jpg", 0), noSuchFile);
    ASSERT_EQ(CONNAPI(CONADeleteFile)(session, u"OTHER.jpg", 0), statusOk);
    EXPECT_THAT(list(u"\\\\E:\\many"), SizeIs(count));
}

}  // namespace
}  // namespace simulator_tests
