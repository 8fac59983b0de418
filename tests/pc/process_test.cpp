#include "pc/process.h"

#include <gmock/gmock.h>

#include "common/machine_test.h"
#include "common/recording_log.h"
#include "platform/portable/processes.h"

namespace ovno2 {
namespace {

using platform::ProcessEntry;
using Process::CheckIfRunning;
using Process::GetProcList;
using Process::Record;
using ::testing::ElementsAre;

class ProcessTest : public MachineTest {
  protected:
    platform::portable::PortableProcesses& processes() {
        return static_cast<platform::portable::PortableProcesses&>(machine.processes());
    }
    void run(std::vector<ProcessEntry> entries) { processes().running = std::move(entries); }
    static ProcessEntry entry(Long id, Text path) { return {.id = id, .path = std::move(path), .handle = 0}; }
};

TEST_F(ProcessTest, AProgramIsFoundByNameInAnyCaseOrById) {
    run({entry(0, u""), entry(4, u"C:\\Nokia\\NclTray.exe"), entry(8, u""), entry(9, u"Z:\\bin\\sh"),
         entry(0, u""), entry(12, u"C:\\late.exe")});
    EXPECT_EQ(4, CheckIfRunning(u"NCLTRAY.EXE", 0, false).id);
    EXPECT_EQ(u"C:\\Nokia\\NclTray.exe", CheckIfRunning(u"ncltray.exe", 0, false).path);
    EXPECT_EQ(9, CheckIfRunning(u"sh", 0, false).id);
    EXPECT_EQ(9, CheckIfRunning(u"other", 9, false).id);
    EXPECT_EQ(8, CheckIfRunning(u"", 8, false).id);
    EXPECT_EQ(0, CheckIfRunning(u"", 0, false).id);
    EXPECT_EQ(0, CheckIfRunning(u"NclTray", 0, false).id);
    EXPECT_EQ(0, CheckIfRunning(u"late.exe", 0, false).id);  // behind the filled part
    EXPECT_EQ(0, CheckIfRunning(u"late.exe", 12, false).id);
}

TEST_F(ProcessTest, TheListIsKeptUntilItIsRefreshedOrEmpty) {
    run({entry(1, u"first.exe")});
    EXPECT_EQ(1, CheckIfRunning(u"first.exe", 0, false).id);
    run({entry(2, u"second.exe")});
    EXPECT_EQ(1, CheckIfRunning(u"first.exe", 0, false).id);
    EXPECT_EQ(0, CheckIfRunning(u"first.exe", 0, true).id);
    EXPECT_EQ(2, CheckIfRunning(u"second.exe", 0, false).id);
}

TEST_F(ProcessTest, ListsGrowInTheirStepsAndEndInUnusedRecords) {
    std::vector<Record> list;
    std::vector<ProcessEntry> entries(27, entry(7, u"C:\\a\\b.exe"));
    run(entries);
    ASSERT_TRUE(GetProcList(list, /*snapshot=*/false, /*fullNames=*/false));
    EXPECT_EQ(201u, list.size());
    EXPECT_EQ(u"b.exe", list[26].name);
    EXPECT_EQ(0, list[27].id);
    ASSERT_TRUE(GetProcList(list, /*snapshot=*/true, /*fullNames=*/true));
    EXPECT_EQ(46u, list.size());
    EXPECT_EQ(u"C:\\a\\b.exe", list[26].name);
    run(std::vector<ProcessEntry>(300, entry(7, u"x")));
    ASSERT_TRUE(GetProcList(list, false, false));
    EXPECT_EQ(300u, list.size());
}

TEST_F(ProcessTest, TheOldFamilyAndTheAskingCallerGetTheSnapshotMethod) {
    run({entry(5, u"\\Device\\HostRoot\\usr\\bin\\x")});
    std::vector<Record> list;
    GetProcList(list, false, false);
    EXPECT_EQ(u"\\Device\\HostRoot\\usr\\bin\\x", list[0].path);
    GetProcList(list, true, false);
    EXPECT_EQ(u"Z:\\usr\\bin\\x", list[0].path);
    resetThreadState();
    usePlatform(machine);
    processes().family = 1;
    GetProcList(list, false, false);
    EXPECT_EQ(u"Z:\\usr\\bin\\x", list[0].path);
    processes().family = 2;  // read once
    GetProcList(list, false, false);
    EXPECT_EQ(u"Z:\\usr\\bin\\x", list[0].path);
}

TEST_F(ProcessTest, SnapshotPathsBecomeDrivePaths) {
    std::filesystem::create_directories(folder.path() / "drives" / "c");
    const std::pair<Text, Text> cases[] = {
        {u"[System Process]", u"System Process"},
        {Text(u"cut.exe\0rest", 12), u"cut.exe"},
        {u"System", u"System"},
        {u"C:\\a.exe", u"C:\\a.exe"},
        {u"\\device\\hostdrivec\\Nokia\\a.exe", u"\\device\\hostdrivec\\Nokia\\a.exe"},
        {u"\\Device\\HostDriveC\\Nokia\\a.exe", u"C:\\Nokia\\a.exe"},
        {u"\\Device\\HostDriveX\\a.exe", u"\\Device\\HostDriveX\\a.exe"},
        {u"\\SystemRoot\\System32\\smss.exe", u"C:\\Windows\\System32\\smss.exe"},
        {u"\\??\\C:\\Windows\\csrss.exe", u"C:\\Windows\\csrss.exe"},
        {u"System32\\a.exe", u"C:\\Windows\\System32\\a.exe"},
    };
    for (const auto& [found, path] : cases) {
        run({entry(1, found)});
        std::vector<Record> list;
        ASSERT_TRUE(GetProcList(list, true, false));
        EXPECT_EQ(path, list[0].path);
    }
}

TEST_F(ProcessTest, TheRealListsKnowThisProcessAndOneOfItsThreads) {
    const Long self = getpid();
    const Record found = CheckIfRunning(u"", self, true);
    EXPECT_TRUE(found.name.starts_with(u"test_pc"));
    EXPECT_TRUE(found.path.ends_with(u"\\" + found.name));
    const Record sameProgram =
        CheckIfRunning(found.name, 0, false);  // perhaps another of the tests' processes
    EXPECT_NE(0, sameProgram.id);
    EXPECT_EQ(found.name, sameProgram.name);
    run({entry(self, u"me")});
    std::vector<Record> list;
    ASSERT_TRUE(GetProcList(list, true, false));
    EXPECT_EQ(self, list[0].threadId);  // the first thread has the process's number
}

TEST_F(ProcessTest, ChecksAreLoggedOnlyWhileTheLogIsOn) {
    run({entry(4, u"a.exe")});
    CheckIfRunning(u"a.exe", 0, false);
    const std::uint32_t counted = stateOf<LogFront>().callCounter;
    CheckIfRunning(u"a.exe", 0, false);
    EXPECT_EQ(counted, stateOf<LogFront>().callCounter);
    RecordingLog log;
    CheckIfRunning(u"a.exe", 0, true);
    EXPECT_THAT(log.lines,
                ElementsAre("<CheckIfRunning", "<GetProcList", "GetProcList>", "4", "CheckIfRunning>"));
}

}  // namespace
}  // namespace ovno2
