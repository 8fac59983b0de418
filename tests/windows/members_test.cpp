// What reaches the phone and the host through the slots: files, and the call of the host's function.
#include <fstream>

#include "common/machine_test.h"
#include "windows/component_test.h"

namespace ovno2::windows_tests {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;

std::vector<LONG> heard;
LONG WINAPI cancel(LONG request, LONG number, LONG style, LONG text) {
    heard = {request, number, style, text};
    constexpr LONG cancelled = 2;
    return cancelled;
}

using HostFunctionTest = ComponentTest;

TEST_F(HostFunctionTest, IsCalledAndItsAnswerCounts) {
    LONG procedure = reinterpret_cast<LONG>(&cancel);
    LONG result = 0;
    EXPECT_EQ(S_OK, create()->LaunchPCSuite2IfRequired(&procedure, &result));
    EXPECT_EQ(-1, result);
    EXPECT_THAT(heard, ElementsAre(0, 154, 48, 0));
}

class FilesTest : public ComponentTest {
  protected:
    FilesTest() {
        write(image / "phone.json",
              R"({"format": 1, "serialNumber": "356300010000017", "typeName": "Nokia N95",
                  "connections": [{"deviceNumber": 1, "medium": "usb", "deviceName": "Nokia N95"}]})");
        std::filesystem::create_directories(disk / "Data" / "Images");
        EXPECT_THAT(simulator.load(image.parent_path()), IsEmpty());
        write(folder.path() / "all.bin", bytes);
        EXPECT_EQ(0, list(u"").second);
    }

    static void write(const std::filesystem::path& path, const std::string& content) {
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }
    // The entries' names as they are shown, and the result.
    std::pair<std::vector<Text>, LONG> list(TextView path) {
        LONG result = -1;
        Bstr model(u"Nokia N95");
        OwnedSafeArray entries;
        EXPECT_EQ(S_OK,
                  object->GetDirContents(model.address(), entries.address(), Bstr(path).get(), &result));
        std::vector<Text> names;
        for (const tDirItem& entry : slotsOf<tDirItem>(entries))
            names.push_back(textOf(entry.DisplayName) + decimalText(Long{entry.Size}));
        return {names, result};
    }
    // A member with one or two texts.
    LONG call(HRESULT (STDMETHODCALLTYPE _covNo2::*member)(BSTR*, LONG*), TextView path) {
        LONG result = -100;
        Bstr first(path);
        EXPECT_EQ(S_OK, (object.get()->*member)(first.address(), &result));
        return result;
    }
    LONG call(HRESULT (STDMETHODCALLTYPE _covNo2::*member)(BSTR*, BSTR*, LONG*), TextView path, TextView to,
              TextView toAfter = {}) {
        LONG result = -100;
        Bstr first(path), second(to);
        EXPECT_EQ(S_OK, (object.get()->*member)(first.address(), second.address(), &result));
        EXPECT_EQ(toAfter.empty() ? to : toAfter, second.text());
        return result;
    }

    TemporaryFolder folder;
    const std::filesystem::path image = folder.path() / "phones" / "n95";
    const std::filesystem::path disk = image / "files" / "C";
    const std::string bytes = std::string("\0\x01\xFF", 3) + std::string(5000, '\x80');
    const ComPointer<_covNo2> object = create();
};

TEST_F(FilesTest, FilesAndFoldersGoThereAndBackThroughEveryMember) {
    EXPECT_EQ(0,
              call(&_covNo2::PutFile, (folder.path() / "all.bin").u16string(), u"root/C:/Data", u"C:/Data"));
    EXPECT_EQ(0, call(&_covNo2::RenameFile, u"C:/Data/all.bin", u"ä.bin"));
    EXPECT_THAT(list(u"C:/Data").first, ElementsAre(u"[Images]0", u"ä.bin5003"));
    EXPECT_EQ(0, call(&_covNo2::GetFile, u"C:/Data/ä.bin", (folder.path() / "back-").u16string()));
    std::ifstream back(folder.path() / u"back-ä.bin", std::ios::binary);
    EXPECT_EQ(bytes, std::string(std::istreambuf_iterator<char>(back), {}));
    EXPECT_EQ(1, call(&_covNo2::DeleteFile, u"C:/Data/ä.bin"));
    EXPECT_EQ(0, call(&_covNo2::CreateFolder, u"C:/Data/New"));
    EXPECT_EQ(0, call(&_covNo2::RenameFolder, u"C:/Data/New", u"Newer"));
    EXPECT_THAT(list(u"C:/Data").first, ElementsAre(u"[Images]0", u"[Newer]0"));
    EXPECT_EQ(1, call(&_covNo2::DeleteFolder, u"C:/Data/Newer"));
    EXPECT_EQ(-2, call(&_covNo2::DeleteFolder, u"C:/Data/Newer"));
    EXPECT_THAT(list(u"C:/Data").first, ElementsAre(u"[Images]0"));
}

TEST_F(FilesTest, ALibraryThatTakesFourArgumentsForTheDeletionIsFoundOutAndAskedAgain) {
    simulator.shape({{"deleteFolderArguments", 4}});
    simulator.journal(true);
    EXPECT_EQ(1, call(&_covNo2::DeleteFolder, u"C:/Data/Images"));
    std::vector<std::string> calls = simulator.readJournal();
    std::erase_if(calls, [](const std::string& line) { return !line.starts_with("CONADeleteFolder("); });
    EXPECT_THAT(
        calls, ElementsAre(EndsWith("flag 0) = 80108002"), EndsWith("flag 1) = 0"), EndsWith("flag 0) = 0")));
    // The arguments that the library removed tell as much, whatever else it reports.
    std::filesystem::create_directory(disk / "Data" / "Images");
    simulator.fail("CONADeleteFolder", 0x80100002);
    EXPECT_EQ(1, call(&_covNo2::DeleteFolder, u"C:/Data/Images"));
    EXPECT_FALSE(std::filesystem::exists(disk / "Data" / "Images"));
}

}  // namespace
}  // namespace ovno2::windows_tests
