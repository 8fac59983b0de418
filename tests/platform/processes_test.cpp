#include <algorithm>
#include <chrono>
#include <unistd.h>

#include "base/values.h"
#include "common/executable_file.h"
#include "common/platform_test.h"

namespace ovno2::platform {
namespace {

#ifdef _WIN32
constexpr TextView silentCommand = u"cmd /c ping -n 6 127.0.0.1 >nul";
#else
constexpr TextView silentCommand = u"cmd /c sleep 6";
#endif

class ProcessesSeam : public PlatformTest {
  protected:
    Processes& processes() { return currentPlatform().processes(); }

    // All that a command writes, line ends as the system writes them.
    std::string outputOf(TextView commandLine, std::size_t pieceSize = 32768) {
        const auto command = processes().startCaptured(commandLine);
        if (!command) return "not started";
        std::string output, piece;
        while (command->read(piece, pieceSize, 20000) == CapturedCommand::Outcome::data) {
            EXPECT_LE(piece.size(), pieceSize);
            output += piece;
        }
        EXPECT_EQ("", piece);
        std::erase(output, '\r');
        return output;
    }
};

TEST_F(ProcessesSeam, ACommandsOutputAndErrorsAreCapturedToTheirEnd) {
    EXPECT_EQ("hallo\n", outputOf(u"cmd /c echo hallo"));
    EXPECT_EQ("hallo\n", outputOf(u"CMD.EXE /c echo hallo"));
    EXPECT_EQ("wrong\n", outputOf(u"cmd /c echo wrong>&2"));
    EXPECT_EQ("0123456789\n", outputOf(u"cmd /c echo 0123456789", /*pieceSize=*/4));
    EXPECT_EQ("not started", outputOf(u"ovno2-no-such-program.exe -x"));
    EXPECT_EQ("not started", outputOf(u""));
}

TEST_F(ProcessesSeam, ACommandThatWritesNothingTimesOutAndIsLeftAlone) {
    const auto start = std::chrono::steady_clock::now();
    auto command = processes().startCaptured(silentCommand);
    ASSERT_TRUE(command);
    std::string piece = "old";
    EXPECT_EQ(CapturedCommand::Outcome::timedOut, command->read(piece, 100, 0));
    EXPECT_EQ(CapturedCommand::Outcome::timedOut, command->read(piece, 100, 200));
    EXPECT_EQ("", piece);
    command.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(ProcessesSeam, AProgramThatIsNotThereIsNotStarted) {
    EXPECT_EQ(fileNotFound, processes().start(u"ovno2-no-such-program.exe", /*show=*/2));
    EXPECT_EQ(fileNotFound, processes().start(pathOf("missing folder\\missing.exe") + u" /NoDialog", 2));
    EXPECT_EQ(2, processes().shellExecute(u"open", pathOf("missing.exe"), u"", 1));
    EXPECT_EQ(2, processes().shellExecute(u"open", pathOf("missing.exe"), u"with parameters", 1));
}

// Anybody may have put something into the folder that the host happens to be in.
TEST_F(ProcessesSeam, AProgramOfTheCurrentFolderIsNotFoundByItsName) {
    namespace fs = std::filesystem;
#ifdef _WIN32
    fs::copy_file(fs::path((processes().specialFolder(/*id=*/37) + u"\\cmd.exe")), folder() / "planted.exe");
#else
    writeFile("planted.exe", "#!/bin/sh\necho hallo\n");
    fs::permissions(folder() / "planted.exe", fs::perms::owner_all);
#endif
    const fs::path before = fs::current_path();
    fs::current_path(folder());
    EXPECT_EQ("hallo\n", outputOf(pathOf("planted.exe") + u" /c echo hallo"));
    for (const Text name : {u"planted.exe", u"planted"}) {
        EXPECT_EQ("not started", outputOf(name + u" /c echo hallo"));
        EXPECT_EQ("not started", outputOf(u'"' + name + u"\" /c echo hallo"));
        EXPECT_EQ(fileNotFound, processes().start(name + u" /c echo hallo", /*show=*/2));
        EXPECT_EQ(2, processes().shellExecute(u"open", name, u"", 1));
        EXPECT_EQ(2, processes().shellExecute(u"open", name, u"/c echo hallo", 1));
    }
    fs::current_path(before);
}

TEST_F(ProcessesSeam, BothListsHoldTheRunningProgram) {
    // Others of that name may run beside it, and end at any moment.
    const auto isThisProgram = [](const ProcessEntry& entry) {
        return entry.id == static_cast<Long>(getpid()) &&
               containsIgnoringCase(entry.path, u"\\test_platform");
    };
    std::vector<ProcessEntry> entries, snapshot;
    ASSERT_TRUE(processes().listByStatus(entries));
    const auto byStatus = std::ranges::find_if(entries, isThisProgram);
    ASSERT_NE(entries.end(), byStatus);
    EXPECT_EQ(u':', byStatus->path[1]);
    const Long id = byStatus->id;
    ASSERT_TRUE(processes().listBySnapshot(snapshot));
    const auto bySnapshot = std::ranges::find(snapshot, id, &ProcessEntry::id);
    ASSERT_NE(snapshot.end(), bySnapshot);
    EXPECT_TRUE(isThisProgram(*bySnapshot));
    bool found = false;
    processes().visitThreads([&](const ThreadEntry& thread) {
        EXPECT_NE(0, thread.id);
        found = thread.processId == id;
        return !found;
    });
    EXPECT_TRUE(found);
}

TEST_F(ProcessesSeam, VersionsAreReadFromExecutablesOfBothWidthsAndLeftAloneWithoutVersionData) {
    constexpr FileVersion written = {.file = {7, 1, 180, 94}, .product = {7, 0, 8, 65535}};
    FileVersion version;
    for (const bool wide : {false, true}) {
        version = {};
        writeFile("versioned.dll", makeExecutable(written, wide));
        ASSERT_TRUE(processes().fileVersion(pathOf("versioned.dll"), version)) << wide;
        EXPECT_TRUE(std::ranges::equal(written.file, version.file)) << wide;
        EXPECT_TRUE(std::ranges::equal(written.product, version.product)) << wide;
    }
    writeFile("text.exe", "MZ and nothing behind it");
    writeFile("empty.exe", "");
    for (const char* file : {"text.exe", "empty.exe", "missing.exe", "."})
        EXPECT_FALSE(processes().fileVersion(pathOf(file), version)) << file;
    EXPECT_TRUE(std::ranges::equal(written.file, version.file));
    EXPECT_TRUE(std::ranges::equal(written.product, version.product));
}

TEST_F(ProcessesSeam, FoldersAndTheEnvironmentAreKnownOrEmpty) {
    const Text temporary = processes().temporaryFolder();
    EXPECT_TRUE(temporary.ends_with(u'\\'));
    EXPECT_NE(0, currentPlatform().files().attributes(temporary) & attributeDirectory);
    EXPECT_NE(u"", processes().specialFolder(/*application data*/ 26));
    EXPECT_EQ(u"", processes().specialFolder(9999));
    EXPECT_NE(u"", processes().environment(u"PATH"));
    EXPECT_EQ(u"", processes().environment(u"OVNO2_NO_SUCH_VARIABLE"));
    EXPECT_EQ(u"", processes().environment(u""));
    EXPECT_EQ(u"", processes().deviceName(u"no drive"));
    EXPECT_EQ(2, processes().platformFamily());
}

}  // namespace
}  // namespace ovno2::platform
