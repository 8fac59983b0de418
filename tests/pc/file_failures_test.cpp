#include <deque>
#include <fstream>
#include <gmock/gmock.h>

#include "common/machine_test.h"
#include "common/recording_log.h"
#include "pc/files.h"
#include "platform/portable/automation.h"
#include "platform/portable/files.h"
#include "platform/portable/windows.h"

namespace ovno2 {
namespace {

using namespace Files;
using platform::FileAccess;
using platform::OpenFile;
using ::testing::ElementsAre;

// A file whose reads or writes fail a number of times before they work.
class FailingFile : public OpenFile {
  public:
    FailingFile(std::unique_ptr<OpenFile> file, int& readFailures, int& writeFailures)
        : file_(std::move(file)), readFailures_(readFailures), writeFailures_(writeFailures) {}
    FailureNumber size(std::uint64_t& bytes) override {
        const FailureNumber failure = file_->size(bytes);
        if (failure == noFailure) bytes += grownBy;
        return failure;
    }
    FailureNumber seek(std::uint64_t position) override { return file_->seek(position); }
    FailureNumber read(void* to, std::size_t bytes, std::size_t& got) override {
        if (readFailures_ == 0) return file_->read(to, bytes, got);
        if (bytes > 2) file_->read(to, 2, got);
        --readFailures_;
        return deviceIoError;
    }
    FailureNumber write(const void* from, std::size_t bytes) override {
        if (writeFailures_ == 0) return file_->write(from, bytes);
        --writeFailures_;
        file_->write(from, bytes / 2);
        return diskFull;
    }
    FailureNumber close() override { return file_->close(); }

    static inline std::uint64_t grownBy = 0;  // the size said to be more than is there

  private:
    std::unique_ptr<OpenFile> file_;
    int& readFailures_;
    int& writeFailures_;
};

class FileFailures : public MachineTest {
  protected:
    FileFailures() {
        std::filesystem::create_directories(folder.path() / "drives/c");
        std::filesystem::create_directories(folder.path() / "drives/m");
        windows().answerMessageBox = [this](TextView text, Long style) {
            EXPECT_EQ(0, style);
            messages.emplace_back(text);
            return 1;
        };
        files().onOpen = [this](Long number, TextView path, FileAccess) {
            numbers.push_back(number);
            paths.emplace_back(path);
            if (openResults.empty()) return noFailure;
            const FailureNumber result = openResults.front();
            openResults.pop_front();
            return result;
        };
        files().onOpened = [this](std::unique_ptr<OpenFile> file) {
            return std::make_unique<FailingFile>(std::move(file), readFailures, writeFailures);
        };
    }
    ~FileFailures() override { FailingFile::grownBy = 0; }

    platform::portable::PortableFiles& files() {
        return static_cast<platform::portable::PortableFiles&>(machine.files());
    }
    platform::portable::PortableWindows& windows() {
        return static_cast<platform::portable::PortableWindows&>(machine.windows());
    }
    platform::portable::PortableAutomation& automation() {
        return static_cast<platform::portable::PortableAutomation&>(machine.automation());
    }
    Long write(Text path = u"C:\\a.txt", bool append = false) {
        return WriteFileContents(path, u"new", append, 0, /*showError=*/true);
    }
    std::string content(const std::string& name) const {
        std::ifstream stream(folder.path() / "drives" / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void put(const std::string& name, std::string_view bytes) const {
        std::ofstream(folder.path() / "drives" / name, std::ios::binary) << bytes;
    }

    std::deque<FailureNumber> openResults;
    std::vector<Long> numbers;
    std::vector<Text> paths;
    std::vector<Text> messages;
    int readFailures = 0;
    int writeFailures = 0;
};

TEST_F(FileFailures, AWriteTakesTheNextNumberWhileOneIsInUse) {
    openResults = {fileAlreadyOpen, fileAlreadyOpen};
    EXPECT_EQ(0, write());
    EXPECT_EQ(0, write());
    EXPECT_THAT(numbers, ElementsAre(17, 18, 19, 19));
    stateOf<State>().writeFileNumber = 255;
    numbers.clear();
    openResults = {fileAlreadyOpen};
    EXPECT_EQ(0, write());
    EXPECT_THAT(numbers, ElementsAre(255, 1));
    numbers.clear();
    openResults.assign(100, fileAlreadyOpen);
    EXPECT_EQ(-1, write());
    EXPECT_EQ(20u, numbers.size());
    ASSERT_EQ(1u, messages.size());
    EXPECT_EQ(u"Error writing file: \r55, File already open\rC:\\a.txt", messages[0]);
    EXPECT_EQ("new", content("c/a.txt"));
}

TEST_F(FileFailures, ARefusedFileIsTriedThreeTimesMore) {
    openResults = {pathAccessError, pathAccessError, pathAccessError};
    EXPECT_EQ(0, write());
    EXPECT_EQ(4u, numbers.size());
    numbers.clear();
    openResults.assign(100, pathAccessError);
    EXPECT_EQ(-1, write());
    EXPECT_EQ(4u, numbers.size());
}

TEST_F(FileFailures, AMissingFolderIsMadeOnceAndAnInvalidCallRepeatsEverythingTwice) {
    openResults = {pathNotFound};
    EXPECT_EQ(0, write(u"C:\\x\\y\\a.txt"));
    EXPECT_EQ(2u, numbers.size());
    EXPECT_TRUE(FolderExists(u"C:\\x\\y"));
    numbers.clear();
    openResults.assign(100, pathNotFound);
    EXPECT_EQ(-1, write());
    EXPECT_EQ(2u, numbers.size());
    numbers.clear();
    openResults = {invalidProcedureCall, invalidProcedureCall};
    EXPECT_EQ(0, write());
    EXPECT_EQ(3u, numbers.size());
    numbers.clear();
    openResults.assign(100, invalidProcedureCall);
    EXPECT_EQ(-1, write());
    EXPECT_EQ(3u, numbers.size());
    numbers.clear();
    openResults = {permissionDenied};
    EXPECT_EQ(-1, write());
    EXPECT_EQ(1u, numbers.size());
}

TEST_F(FileFailures, OnlyACallerThatAsksShowsAMessageAndNeverOnDriveM) {
    openResults.assign(3, permissionDenied);
    Text path = u"C:\\a.txt";
    RecordingLog log;
    EXPECT_EQ(-1, WriteFileContents(path, u"new", /*append=*/false, 0, /*showError=*/false));
    EXPECT_THAT(log.lines, ElementsAre("<WriteFileContents", "C:\\a.txt err:", "WriteFileContents>"));
    EXPECT_EQ(permissionDenied, pendingFailure().number);
    EXPECT_EQ(-1, write(u"M:\\a.txt"));
    EXPECT_THAT(messages, ElementsAre());
    EXPECT_EQ(-1, write(u"C:\\m:"));
    EXPECT_THAT(messages, ElementsAre(u"Error writing file: \r70, Permission denied\rC:\\m:"));
}

TEST_F(FileFailures, AWriteThatBreaksOffLeavesTheOldContentAndTheNextOneWorks) {
    put("c/a.txt", "old content");
    for (const bool append : {false, true}) {
        writeFailures = 1;
        EXPECT_EQ(-1, write(u"C:\\a.txt", append));
        EXPECT_EQ(0u, content("c/a.txt").find("old content"));
    }
    EXPECT_THAT(messages, ElementsAre());
    EXPECT_EQ(0, write());
    EXPECT_EQ("new", content("c/a.txt"));
    EXPECT_THAT(numbers, ElementsAre(17, 17, 17));
}

TEST_F(FileFailures, BytesThatCannotBeReadTwiceGiveAnEmptyText) {
    put("c/a.txt", "content");
    readFailures = 1;
    EXPECT_EQ(u"content", GetFileContents(u"C:\\a.txt", /*decode=*/false));
    readFailures = 2;
    Long encoding = 77;
    EXPECT_EQ(u"", GetFileContents(u"C:\\a.txt", /*decode=*/false, encoding));
    EXPECT_EQ(0, encoding);
    readFailures = 1;
    EXPECT_EQ(u"", GetFileContentsW(u"C:\\a.txt", /*decode=*/false));
    EXPECT_EQ(u"content", GetFileContentsW(u"C:\\a.txt", /*decode=*/true));
}

TEST_F(FileFailures, AFileThatShrinksOrIsTooLargeForMemoryIsReadAsFarAsItGoes) {
    put("c/a.txt", "content");
    FailingFile::grownBy = 1000;
    EXPECT_EQ(u"content", GetFileContents(u"C:\\a.txt", /*decode=*/false));
    EXPECT_EQ(u"content", GetFileContentsW(u"C:\\a.txt", /*decode=*/false));
    FailingFile::grownBy = std::uint64_t{1} << 62;
    // Too large for the byte reader; the wide one gives the chunks that are asked for.
    EXPECT_EQ(u"", GetFileContents(u"C:\\a.txt", /*decode=*/false));
    Long encoding = 77;
    EXPECT_EQ(u"content", GetFileContents(u"C:\\a.txt", /*decode=*/false, encoding, u"tent"));
    EXPECT_EQ(77, encoding);
    EXPECT_EQ(u"", GetFileContents(u"C:\\a.txt", /*decode=*/false, encoding, u"tent", noWideReader));
}

TEST_F(FileFailures, APathTooLongForTheByteReaderGoesToTheWideOne) {
    Text path = u"C:";
    for (int i = 0; i < 3; ++i)
        path += u'\\' + Text(100, u'd');
    const Text file = path + u"\\a.txt";
    EXPECT_EQ(0, write(file));
    EXPECT_EQ(u"new", GetFileContents(file, /*decode=*/false));
    EXPECT_FALSE(FileExistsW_(file));
}

TEST_F(FileFailures, AFolderIsMadeByTheShellWhenThePlatformsCallFails) {
    int calls = 0;
    files().onMakeFolder = [&](TextView) { return ++calls == 1 ? pathAccessError : noFailure; };
    RecordingLog log;
    EXPECT_EQ(0, MkDir_(u"C:\\a"));
    EXPECT_TRUE(FolderExists(u"C:\\a"));
    EXPECT_THAT(log.lines, ElementsAre("<MkDir_", "C:\\a", "MkDir_ 2", "MkDir_ 3", "MkDir_ 3a", "MkDir_ 3b",
                                       "MkDir_ 3c", "MkDir_>"));
}

TEST_F(FileFailures, ALongFolderIsMadeBelowShortNamesElseByTheShell) {
    const Text above = u"C:\\" + Text(150, u'a');
    const Text deep = above + u'\\' + Text(150, u'b');
    EXPECT_EQ(0, MkDirRecourse(deep, u"sub"));
    EXPECT_TRUE(FolderExists(deep));

    std::vector<std::string> steps;
    files().onMakeFolder = [&](TextView) { return pathNotFound; };
    RecordingLog log;
    EXPECT_EQ(0, MkDir_(above + u'\\' + Text(150, u'c')));
    for (const std::string& line : log.lines)
        if (line.starts_with("MkDir_ ")) steps.push_back(line);
    EXPECT_THAT(steps,
                ElementsAre("MkDir_ 2a", "MkDir_ 3", "MkDir_ 3a", "MkDir_ 3b", "MkDir_ 3c", "MkDir_ 5"));
    EXPECT_EQ("MkDir_>", log.lines.back());
    EXPECT_EQ("False", log.lines[log.lines.size() - 2]);
}

TEST_F(FileFailures, WithoutTheAutomationObjectsTheRestStillWorks) {
    automation().objects = {{u"scripting.filesystemobject", nullptr}, {u"shell.application", nullptr}};
    put("c/a.txt", "12345");
    EXPECT_EQ(0, FileSize(u"C:\\a.txt"));
    EXPECT_EQ(0, MkDir_(u"C:\\folder"));
    EXPECT_TRUE(FolderExists(u"C:\\folder"));
    EXPECT_EQ(0, MkDir_(u"C:\\no\\where"));
    EXPECT_FALSE(FolderExists(u"C:\\no"));
    EXPECT_EQ(cannotCreateObject, pendingFailure().number);
    automation().objects.clear();
    EXPECT_EQ(5, FileSize(u"C:\\a.txt"));
    // The object is kept until it is released.
    automation().objects[u"scripting.filesystemobject"] = nullptr;
    EXPECT_EQ(5, FileSize(u"C:\\a.txt"));
    releaseFileSystemObject();
    EXPECT_EQ(0, FileSize(u"C:\\a.txt"));
}

}  // namespace
}  // namespace ovno2
