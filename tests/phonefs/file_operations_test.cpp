#include "phonefs/file_operations.h"

#include "phonefs/phone_files_test.h"

namespace ovno2::NokiaFiles {
namespace {

using FileOperationsTest = PhoneFilesTest;
using ::testing::ElementsAre;
using ::testing::EndsWith;

TEST_F(FileOperationsTest, AFileGoesThereAndBackByteForByte) {
    std::string bytes = everyByte();
    for (int i = 0; i < 4; ++i)
        bytes += bytes;
    writeContent(pc("all.bin"), bytes);
    open();
    Text destination = u"root/E:/empty";
    EXPECT_EQ(0, PutFile(pcText("all.bin"), destination));
    EXPECT_EQ(u"E:/empty", destination);
    EXPECT_EQ(bytes, contentOf(disk("E/empty/all.bin")));
    EXPECT_EQ(0, GetFile(u"E:/empty/all.bin", pcText("back-")));
    EXPECT_EQ(bytes, contentOf(pc("back-all.bin")));
}

TEST_F(FileOperationsTest, Utf16TextIsSentInTheCodePageAndAMarkIsDropped) {
    open();
    const std::string sent =
                          "\xE4"
                          "b",
                      utf8 = "\xC3\xA4", withNul("\0\1\2", 3);
    const std::pair<std::string, std::string> cases[] = {{std::string("\xFF\xFE\xE4\0b\0", 6), sent},
                                                         {std::string("\xFE\xFF\0\xE4\0b", 6), sent},
                                                         {"\xEF\xBB\xBF" + utf8, utf8},
                                                         {"", ""},
                                                         {withNul, withNul}};
    for (const auto& [local, arrived] : cases) {
        writeContent(pc("text.txt"), local);
        Text destination = u"C:/Data";
        EXPECT_EQ(0, PutFile(pcText("text.txt"), destination));
        EXPECT_EQ(arrived, contentOf(disk("C/Data/text.txt")));
    }
}

TEST_F(FileOperationsTest, NothingIsWrittenWithoutALocalFileARoomyDriveOrAFolder) {
    open();
    Text destination = u"C:/Data";
    EXPECT_EQ(-3, PutFile(pcText("missing"), destination));
    EXPECT_FALSE(std::filesystem::exists(disk("C/Data/missing")));
    writeContent(pc("large"), std::string(20000, 'x'));
    destination = u"E:/empty";
    EXPECT_EQ(-3, PutFile(pcText("large"), destination));
    EXPECT_FALSE(std::filesystem::exists(disk("E/empty/large")));
    destination = u"E:/none";
    EXPECT_EQ(-2, PutFile(pcText("large"), destination));
    EXPECT_EQ(-2, GetFile(u"C:/none/a.txt", pcText("")));
    EXPECT_EQ(-2, GetFile(u"C:/Data/none.txt", pcText("")));
}

TEST_F(FileOperationsTest, ALocalFileStaysAsItWasUntilAllIsThere) {
    open();
    writeContent(pc("a.txt"), "before");
    const Text target = pcText("");
    struct Case {
        std::string poke;
        Long result;
        std::string content;
    };
    for (const Case& c : {Case{R"("record": "data", "word": 0, "value": "unmapped")", -2, "before"},
                          Case{R"("record": "file", "word": 4, "value": "0x7FFFFFFF")", -2, "before"},
                          Case{R"("record": "file", "word": 4, "value": 3)", 0, "hel"},
                          Case{R"("record": "file", "word": 4, "value": "0x80000000")", 0, ""},
                          Case{R"("record": "data", "word": 0, "value": 0)", 0, ""}}) {
        simulator.clearPlan();
        simulator.runText(R"({"command": "poke", "call": "CONAReadFile", )" + c.poke + "}");
        EXPECT_EQ(c.result, GetFile(u"C:/Data/a.txt", target)) << c.poke;
        EXPECT_EQ(c.content, contentOf(pc("a.txt"))) << c.poke;
    }
}

TEST_F(FileOperationsTest, AFileThatIsCutOffLeavesTheOldOneOnThePhone) {
    open();
    writeContent(pc("a.txt"), std::string(1000, 'x'));
    simulator.runText(R"({"command": "drop", "bytes": 500})");
    Text destination = u"C:/Data";
    EXPECT_EQ(-3, PutFile(pcText("a.txt"), destination));
    EXPECT_EQ(-2, PutFile(pcText("a.txt"), destination));
    EXPECT_EQ("hello", contentOf(disk("C/Data/a.txt")));
    CloseFS();
    EXPECT_EQ(0, PutFile(pcText("a.txt"), destination));
    EXPECT_EQ(1000u, contentOf(disk("C/Data/a.txt")).size());
}

TEST_F(FileOperationsTest, OnlyTransfersAndRenamesOpenTheSession) {
    Text model = u"Nokia N95";
    OpenFS(model, {});
    CloseFS();
    EXPECT_EQ(-1, DeleteFile(u"C:/Data/a.txt"));
    EXPECT_EQ(-1, DeleteFolder(u"E:/empty"));
    EXPECT_EQ(-1, CreateFolder(u"C:/Data/new"));
    EXPECT_EQ(-1, RenameFolder(u"E:/empty", u"full"));
    EXPECT_TRUE(std::filesystem::exists(disk("C/Data/a.txt")));
    EXPECT_EQ(0, GetFile(u"C:/Data/a.txt", pcText("got-")));
    EXPECT_EQ("hello", contentOf(pc("got-a.txt")));
    CloseFS();
    EXPECT_EQ(0, RenameFile(u"C:/Data/a.txt", u"b.txt"));
    EXPECT_EQ("hello", contentOf(disk("C/Data/b.txt")));
}

TEST_F(FileOperationsTest, TheFileSystemIsChangedAndDeletionsReportOne) {
    open();
    EXPECT_EQ(0, CreateFolder(u"C:/Data/Music.new"));
    EXPECT_TRUE(std::filesystem::is_directory(disk("C/Data/Music")));
    EXPECT_EQ(0, RenameFolder(u"C:/Data/Music", u"Sounds"));
    EXPECT_TRUE(std::filesystem::is_directory(disk("C/Data/Sounds")));
    EXPECT_NE(0, RenameFolder(u"C:/Data/Music", u"Other"));
    EXPECT_EQ(1, DeleteFolder(u"C:/Data/Sounds"));
    EXPECT_FALSE(std::filesystem::exists(disk("C/Data/Sounds")));
    EXPECT_EQ(-2, DeleteFolder(u"C:/Data/Sounds"));
    EXPECT_EQ(1, DeleteFile(u"C:\\Data\\a.txt"));
    EXPECT_EQ(-2, DeleteFile(u"C:/Data/a.txt"));
    EXPECT_EQ(-2, DeleteFile(u"C:/Data/locked.txt"));
    EXPECT_EQ(-2, RenameFile(u"C:/Data/locked.txt", u"open.txt"));
    EXPECT_EQ(-2, CreateFolder(u"E:/empty"));
}

TEST_F(FileOperationsTest, AFolderIsDeletedByALibraryWithTheOtherForm) {
    simulator.shape({{"deleteFolderArguments", 4}});
    open();
    simulator.readJournal();
    EXPECT_EQ(1, DeleteFolder(u"E:/empty"));
    EXPECT_FALSE(std::filesystem::exists(disk("E/empty")));
    std::vector<std::string> made = simulator.readJournal();
    std::erase_if(made, [](const std::string& line) { return !line.starts_with("CONADeleteFolder("); });
    EXPECT_THAT(
        made, ElementsAre(EndsWith("flag 0) = 80108002"), EndsWith("flag 1) = 0"), EndsWith("flag 0) = 0")));
    EXPECT_EQ(-2, DeleteFolder(u"E:/empty"));
#ifdef _WIN32
    // The arguments that the library removed tell as much, whatever else it reports.
    std::filesystem::create_directory(disk("E/empty"));
    simulator.fail("CONADeleteFolder", 0x80100002);
    EXPECT_EQ(1, DeleteFolder(u"E:/empty"));
    EXPECT_FALSE(std::filesystem::exists(disk("E/empty")));
#endif
}

}  // namespace
}  // namespace ovno2::NokiaFiles
