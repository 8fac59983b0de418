// The phone's files through the component.
#include <fstream>
#include <iterator>

#include "common/machine_test.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class FilesTest : public ComponentTest {
  protected:
    FilesTest() {
        write(image / "phone.json",
              R"({"format": 1, "serialNumber": "356300010000017", "typeName": "Nokia N95",
                  "connections": [{"deviceNumber": 1, "medium": "usb", "deviceName": "Nokia N95"}]})");
        write(image / "files.json", R"({"format": 1, "drives": {"C": {"label": "Phone memory"}}})");
        write(disk(u8"C/Data/ä.txt"), "hello");
        write(disk("C/Data/Images/p.jpg"), "jpeg");
        EXPECT_THAT(simulator.load(image.parent_path()), IsEmpty());
        simulator.journal(true);
        LONG result = -1;
        OwnedSafeArray list;
        TextVariable model(u"Nokia N95");
        EXPECT_EQ(S_OK, object->GetDirContents(model.address(), list.address(), nullptr, &result));
        EXPECT_EQ(0, result);
    }

    std::filesystem::path disk(const std::u8string& path) const { return image / u8"files" / path; }
    std::filesystem::path disk(const char* path) const { return image / "files" / path; }
    static void write(const std::filesystem::path& path, const std::string& bytes) {
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
    }
    static std::string contentOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::vector<std::string> deletions() {
        std::vector<std::string> lines = simulator.readJournal();
        std::erase_if(lines, [](const std::string& line) { return !line.starts_with("CONADeleteFolder("); });
        return lines;
    }
    LONG deleteFolder(TextView path) {
        LONG result = -100;
        TextVariable deleted(path);
        EXPECT_EQ(S_OK, object->DeleteFolder(deleted.address(), &result));
        return result;
    }

    TemporaryFolder folder;
    const std::filesystem::path image = folder.path() / "phones" / "n95";
    const ComPointer<_covNo2> object = create();
};

TEST_F(FilesTest, AFolderIsListedInRecords) {
    TextVariable model(u"Nokia N95");
    OwnedSafeArray list;
    LONG result = -1;
    const Bstr data(u"C:/Data");
    EXPECT_EQ(S_OK, object->GetDirContents(model.address(), list.address(), data.get(), &result));
    EXPECT_EQ(0, result);
    const std::span<const tDirItem> items = slotsOf<tDirItem>(list);
    ASSERT_EQ(2u, items.size());
    EXPECT_EQ(u"[Images]", textOf(items[0].DisplayName));
    EXPECT_EQ(u"ä.txt", textOf(items[1].Name));
    EXPECT_EQ(u"C:\\Data\\ä.txt", textOf(items[1].FullName));
    EXPECT_EQ(5, items[1].Size);
    EXPECT_EQ(0, items[1].Host7);
}

TEST_F(FilesTest, AFileGoesThereAndBackByteForByteAndIsRenamedAndDeleted) {
    std::string bytes;
    for (int i = 0; i < 5000; ++i)
        bytes.push_back(static_cast<char>(i * 7));
    write(folder.path() / "all.bin", bytes);
    TextVariable local((folder.path() / "all.bin").u16string()), destination(u"root/C:/Data");
    LONG result = -1;
    EXPECT_EQ(S_OK, object->PutFile(local.address(), destination.address(), &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(u"C:/Data", destination.text());
    EXPECT_EQ(bytes, contentOf(disk("C/Data/all.bin")));

    TextVariable source(u"C:/Data/all.bin"), newName(u"other.bin"), renamed(u"C:/Data/other.bin");
    EXPECT_EQ(S_OK, object->RenameFile(source.address(), newName.address(), &result));
    EXPECT_EQ(0, result);
    TextVariable back((folder.path() / "back-").u16string());
    EXPECT_EQ(S_OK, object->GetFile(renamed.address(), back.address(), &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(bytes, contentOf(folder.path() / "back-other.bin"));
    EXPECT_EQ(S_OK, object->DeleteFile(renamed.address(), &result));
    EXPECT_EQ(1, result);
    EXPECT_FALSE(std::filesystem::exists(disk("C/Data/other.bin")));
}

TEST_F(FilesTest, FoldersAreMadeRenamedAndDeleted) {
    TextVariable made(u"C:/Data/New"), newName(u"Newer");
    LONG result = -1;
    EXPECT_EQ(S_OK, object->CreateFolder(made.address(), &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(S_OK, object->RenameFolder(made.address(), newName.address(), &result));
    EXPECT_EQ(0, result);
    EXPECT_TRUE(std::filesystem::is_directory(disk("C/Data/Newer")));
    EXPECT_EQ(1, deleteFolder(u"C:/Data/Newer"));
    EXPECT_FALSE(std::filesystem::exists(disk("C/Data/Newer")));
    EXPECT_THAT(deletions(), ElementsAre(StartsWith("CONADeleteFolder(handle ")));
    EXPECT_EQ(-2, deleteFolder(u"C:/Data/Newer"));
}

TEST_F(FilesTest, ALibraryThatTakesFourArgumentsForTheDeletionIsFoundOutAndAskedAgain) {
    simulator.shape({{"deleteFolderArguments", 4}});
    std::filesystem::create_directory(disk("C/Data/Empty"));
    EXPECT_EQ(1, deleteFolder(u"C:/Data/Empty"));
    EXPECT_FALSE(std::filesystem::exists(disk("C/Data/Empty")));
    EXPECT_THAT(deletions(), ElementsAre(EndsWith("flag 0) = 80108002"), EndsWith("flag 1) = 0"),
                                         EndsWith("flag 0) = 0")));

    // The arguments that the library removed tell as much, whatever else it reports.
    std::filesystem::create_directory(disk("C/Data/Empty"));
    simulator.fail("CONADeleteFolder", 0x80100002);
    EXPECT_EQ(1, deleteFolder(u"C:/Data/Empty"));
    EXPECT_FALSE(std::filesystem::exists(disk("C/Data/Empty")));
}

}  // namespace
}  // namespace ovno2::windows_tests
