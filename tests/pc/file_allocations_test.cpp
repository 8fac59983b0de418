#include "common/failing_allocator.h"
#include "common/platform_test.h"
#include "log/mapped_file.h"
#include "pc/files.h"

namespace ovno2 {
namespace {

using namespace Files;

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

class FileAllocations : public PlatformTest {
  protected:
    FileAllocations() {
        FileExistsW_(pathOf("warm-up"));  // what the thread keeps is made
    }
    ~FileAllocations() override { EXPECT_GE(descriptors_, openDescriptors()); }

  private:
    std::size_t descriptors_ = openDescriptors();
};

TEST_F(FileAllocations, AWriteWritesEverythingOrNothing) {
    const Text path = pathOf("new") + u"/folder/file.txt";
    const Text text = Text(1000, u'x');
    Text used = path;
    Long result = 0;
    failEveryAllocation(
        [&] { result = WriteFileContents(used, text, /*append=*/false, 4, /*showError=*/true); },
        [&](long n) {
            const std::string content = readFile("new/folder/file.txt");
            EXPECT_EQ(result == 0 ? 2002u : 0u, content.size()) << n;
            std::filesystem::remove_all(folder() / "new");
            used = path;
        });
    EXPECT_EQ(0, result);
}

TEST_F(FileAllocations, AReadGivesTheFileOrNothing) {
    writeFile("file.txt", "\xFF\xFE" + std::string(1000, 'x'));
    const Text path = pathOf("file.txt");
    const Text whole(500, u'\u7878');
    Text text;
    failEveryAllocation(
        [&] { text = GetFileContents(path, /*decode=*/true); },
        [&](long n) { EXPECT_TRUE(text == whole || text.empty() || text.size() == 1002) << n; });
    EXPECT_EQ(whole, text);
    failEveryAllocation([&] { text = GetFileContentsW(path, /*decode=*/true); },
                        [&](long n) { EXPECT_TRUE(text == whole || text.empty()) << n; });
    EXPECT_EQ(whole, text);
}

TEST_F(FileAllocations, FoldersAndTestsEndWithoutAFailureOfTheirOwn) {
    const Text folderPath = pathOf("a") + u"\\b\\c";
    const Text longPath = pathOf("a") + u'\\' + Text(300, u'n');
    failEveryAllocation(
        [&] {
            MkDirRecourse(folderPath, u"sub");
            MkDirRecourse(longPath);
            FileExistsW_(folderPath);
            FileSize(folderPath, /*skipExistenceTest=*/true);
            GetShortFileName(longPath);
        },
        [&](long) {});
    EXPECT_TRUE(FolderExists(folderPath));
}

TEST_F(FileAllocations, TheRingBufferTriesAgain) {
    cMemMappedFile channel;
    channel.MemName = u"OvTest allocations";
    Long result = 0;
    failEveryAllocation(
        [&] { result = channel.MemWrite(u"line"); },
        [&](long) {
            EXPECT_TRUE(result == cMemMappedFile::done || result == cMemMappedFile::noMapping);
            channel.MemClose();
        });
    EXPECT_EQ(cMemMappedFile::done, result);
}

}  // namespace
}  // namespace ovno2
