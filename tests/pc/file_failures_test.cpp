#include <deque>
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
using platform::OpenFile;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What the files of a test do wrong.
struct Faults {
    int reads = 0, writes = 0;  // so many fail in the middle before they work
    std::uint64_t growth = 0;   // bytes said to be there and missing
};

class FailingFile : public OpenFile {
  public:
    FailingFile(std::unique_ptr<OpenFile> file, Faults& faults) : file_(std::move(file)), faults_(faults) {}
    FailureNumber size(std::uint64_t& bytes) override {
        const FailureNumber failure = file_->size(bytes);
        bytes += faults_.growth;
        return failure;
    }
    FailureNumber seek(std::uint64_t position) override { return file_->seek(position); }
    FailureNumber read(void* to, std::size_t bytes, std::size_t& got) override {
        const bool fails = faults_.reads > 0 && faults_.reads-- > 0;
        const FailureNumber failure = file_->read(to, fails ? std::min<std::size_t>(bytes, 2) : bytes, got);
        return fails ? deviceIoError : failure;
    }
    FailureNumber write(const void* from, std::size_t bytes) override {
        const bool fails = faults_.writes > 0 && faults_.writes-- > 0;
        const FailureNumber failure = file_->write(from, fails ? bytes / 2 : bytes);
        return fails ? diskFull : failure;
    }
    FailureNumber close() override { return file_->close(); }

  private:
    std::unique_ptr<OpenFile> file_;
    Faults& faults_;
};

class FileFailures : public MachineTest {
  protected:
    FileFailures() {
        for (const char* drive : {"drives/c", "drives/m"})
            std::filesystem::create_directories(folder.path() / drive);
        static_cast<platform::portable::PortableWindows&>(machine.windows()).answerMessageBox =
            [this](TextView text, Long style) {
                EXPECT_EQ(0, style);
                messages.emplace_back(text);
                return 1;
            };
        files().onOpen = [this](Long number, TextView, platform::FileAccess) {
            numbers.push_back(number);
            return refusals-- > 0 ? refusal : noFailure;
        };
        files().onOpened = [this](std::unique_ptr<OpenFile> file) {
            return std::make_unique<FailingFile>(std::move(file), faults);
        };
    }

    platform::portable::PortableFiles& files() {
        return static_cast<platform::portable::PortableFiles&>(machine.files());
    }
    Long write(Text path = u"C:\\a.txt", bool append = false, bool showError = true) {
        return WriteFileContents(path, u"new", append, 0, showError);
    }
    // The first `times` tries to open a file fail.
    void refuse(FailureNumber failure, int times) {
        refusal = failure;
        refusals = times;
        numbers.clear();
    }
    std::string content() const { return contentOf(target); }
    void put(std::string_view bytes) const { writeContent(target, bytes); }

    const std::filesystem::path target = folder.path() / "drives/c/a.txt";

    FailureNumber refusal = noFailure;
    int refusals = 0;
    std::vector<Long> numbers;
    std::vector<Text> messages;
    Faults faults;
};

TEST_F(FileFailures, EachReasonForWhichAFileDoesNotOpenHasItsTries) {
    constexpr int always = 100;
    using Row = std::tuple<FailureNumber, int, Long, std::size_t>;
    for (const auto& [failure, times, result, tries] :
         {Row{fileAlreadyOpen, 2, 0, 3u}, Row{fileAlreadyOpen, always, -1, 20u},
          Row{pathAccessError, 3, 0, 4u}, Row{pathAccessError, always, -1, 4u}, Row{pathNotFound, 1, 0, 2u},
          Row{pathNotFound, always, -1, 2u}, Row{invalidProcedureCall, 2, 0, 3u},
          Row{invalidProcedureCall, always, -1, 3u}, Row{permissionDenied, 1, -1, 1u}}) {
        std::filesystem::remove_all(folder.path() / "drives/c/x");
        refuse(failure, times);
        EXPECT_EQ(result, write(failure == pathNotFound ? u"C:\\x\\y\\a.txt" : u"C:\\a.txt")) << failure;
        EXPECT_EQ(tries, numbers.size()) << failure << " " << times;
        EXPECT_EQ(failure == pathNotFound, FolderExists(u"C:\\x\\y")) << "a missing folder is made";
    }
    EXPECT_EQ("new", content());
}

TEST_F(FileFailures, AWriteTakesTheNextNumberWhileOneIsInUse) {
    refuse(fileAlreadyOpen, 2);
    EXPECT_EQ(0, write());
    EXPECT_EQ(0, write());
    EXPECT_THAT(numbers, ElementsAre(17, 18, 19, 19));
    stateOf<State>().writeFileNumber = 255;
    refuse(fileAlreadyOpen, 1);
    EXPECT_EQ(0, write());
    EXPECT_THAT(numbers, ElementsAre(255, 1));
}

TEST_F(FileFailures, OnlyACallerThatAsksShowsAMessageAndNeverOnDriveM) {
    refuse(permissionDenied, 4);
    const auto writeQuietly = [&] { return write(u"C:\\a.txt", /*append=*/false, /*showError=*/false); };
    {
        RecordingLog log;
        EXPECT_EQ(-1, writeQuietly());
        EXPECT_THAT(log.lines, ElementsAre("<WriteFileContents", "C:\\a.txt err:", "WriteFileContents>"));
    }
    EXPECT_EQ(-1, writeQuietly());
    EXPECT_EQ(permissionDenied, pendingFailure().number);
    EXPECT_EQ(-1, write(u"M:\\a.txt"));
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_EQ(-1, write(u"C:\\m:"));
    EXPECT_THAT(messages, ElementsAre(u"Error writing file: \r70, Permission denied\rC:\\m:"));
}

TEST_F(FileFailures, AWriteThatBreaksOffLeavesTheOldContentAndTheNextOneWorks) {
    put("old content");
    for (const bool append : {false, true}) {
        faults.writes = 1;
        EXPECT_EQ(-1, write(u"C:\\a.txt", append));
        EXPECT_EQ(0u, content().find("old content"));
    }
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_EQ(0, write());
    EXPECT_EQ("new", content());
    EXPECT_THAT(numbers, ElementsAre(17, 17, 17));
}

TEST_F(FileFailures, WhatCannotBeReadOrHeldGivesAnEmptyTextAndWhatShrinksItsRest) {
    constexpr TextView path = u"C:\\a.txt";
    put("content");
    faults.reads = 1;
    EXPECT_EQ(u"content", GetFileContents(path, /*decode=*/false));
    faults.reads = 2;
    Long encoding = 77;
    EXPECT_EQ(u"", GetFileContents(path, /*decode=*/false, encoding));
    EXPECT_EQ(0, encoding);
    faults.reads = 1;
    EXPECT_EQ(u"", GetFileContentsW(path, /*decode=*/false));
    EXPECT_EQ(u"content", GetFileContentsW(path, /*decode=*/true));
    FileBytes bytes;
    for (const int failures : {1, 2}) {
        faults.reads = failures;
        EXPECT_EQ(failures == 1, GetFileBytes(path, bytes));
    }
    EXPECT_EQ(7u, bytes.size);

    faults.growth = 1000;
    EXPECT_EQ(u"content", GetFileContents(path, /*decode=*/false));
    EXPECT_EQ(u"content", GetFileContentsW(path, /*decode=*/false));
    // Too large for the byte reader; the wide one gives the chunks that are asked for.
    faults.growth = std::uint64_t{1} << 62;
    EXPECT_EQ(u"", GetFileContents(path, /*decode=*/false));
    encoding = 77;
    EXPECT_EQ(u"content", GetFileContents(path, /*decode=*/false, encoding, u"tent"));
    EXPECT_EQ(77, encoding);
    EXPECT_EQ(u"", GetFileContents(path, /*decode=*/false, encoding, u"tent", noWideReader));
}

TEST_F(FileFailures, APathTooLongForTheByteReaderGoesToTheWideOne) {
    Text file = u"C:";
    for (int i = 0; i < 3; ++i)
        file += u'\\' + Text(100, u'd');
    file += u"\\a.txt";
    EXPECT_EQ(0, write(file));
    EXPECT_EQ(u"new", GetFileContents(file, /*decode=*/false));
    EXPECT_FALSE(FileExistsW_(file));
    OpenFile* opened = nullptr;
    EXPECT_EQ(fileNotFound, files().open(99, file, platform::FileAccess::read, opened));
}

TEST_F(FileFailures, AFolderIsMadeByTheShellWhenThePlatformsCallFailsAndALongOneBelowShortNames) {
    const auto stepsOf = [](TextView path) {
        RecordingLog log;
        EXPECT_EQ(0, MkDir_(path));
        std::vector<std::string> steps;
        for (const std::string& line : log.lines)
            if (line.starts_with("MkDir_ ")) steps.push_back(line.substr(7));
        return log.lines.back() == "MkDir_>" ? steps : std::vector<std::string>{"not left"};
    };
    int calls = 0;
    files().onMakeFolder = [&](TextView) { return ++calls == 1 ? pathAccessError : noFailure; };
    EXPECT_THAT(stepsOf(u"C:\\a"), ElementsAre("2", "3", "3a", "3b", "3c"));
    EXPECT_TRUE(FolderExists(u"C:\\a"));

    const Text above = u"C:\\" + Text(150, u'a'), deep = above + u'\\' + Text(150, u'b');
    EXPECT_EQ(0, MkDirRecourse(deep, u"sub"));
    EXPECT_TRUE(FolderExists(deep));
    files().onMakeFolder = [](TextView) { return pathNotFound; };
    EXPECT_THAT(stepsOf(above + u'\\' + Text(150, u'c')), ElementsAre("2a", "3", "3a", "3b", "3c", "5"));
    EXPECT_FALSE(FolderExists(above + u'\\' + Text(150, u'c')));
}

TEST_F(FileFailures, WithoutTheAutomationObjectsTheRestStillWorks) {
    auto& objects = static_cast<platform::portable::PortableAutomation&>(machine.automation()).objects;
    objects = {{u"scripting.filesystemobject", nullptr}, {u"shell.application", nullptr}};
    put("12345");
    EXPECT_EQ(0, FileSize(u"C:\\a.txt"));
    EXPECT_EQ(0, MkDir_(u"C:\\folder"));
    EXPECT_TRUE(FolderExists(u"C:\\folder"));
    EXPECT_EQ(0, MkDir_(u"C:\\no\\where"));
    EXPECT_FALSE(FolderExists(u"C:\\no"));
    EXPECT_EQ(cannotCreateObject, pendingFailure().number);
    objects.clear();
    EXPECT_EQ(5, FileSize(u"C:\\a.txt"));
    objects[u"scripting.filesystemobject"] = nullptr;
    EXPECT_EQ(5, FileSize(u"C:\\a.txt")) << "the object is kept until it is released";
    releaseFileSystemObject();
    EXPECT_EQ(0, FileSize(u"C:\\a.txt"));
}

}  // namespace
}  // namespace ovno2
