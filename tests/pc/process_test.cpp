#include "pc/process.h"

#include <gmock/gmock.h>

#include "base/utf8.h"
#include "common/machine_test.h"
#include "common/recording_log.h"
#include "platform/portable/processes.h"

namespace ovno2 {
namespace {

using Process::CheckIfRunning;
using Process::Record;

class ProcessTest : public MachineTest {
  protected:
    void run(const std::vector<std::pair<Long, Text>>& entries) {
        processes().running.emplace();
        for (const auto& [id, path] : entries)
            processes().running->push_back({.id = id, .path = path, .handle = 0});
    }
    static Long idOf(TextView name, Long id = 0, bool refresh = false) {
        return CheckIfRunning(name, id, refresh).id;
    }
    static std::vector<Record> list(bool snapshot, bool fullNames = false) {
        std::vector<Record> records;
        EXPECT_TRUE(Process::GetProcList(records, snapshot, fullNames));
        return records;
    }
};

TEST_F(ProcessTest, AProgramIsFoundByNameInAnyCaseOrById) {
    run({{0, u""},
         {4, u"C:\\Nokia\\NclTray.exe"},
         {8, u""},
         {9, u"Z:\\bin\\sh"},
         {0, u""},
         {12, u"C:\\late.exe"}});
    EXPECT_EQ(4, idOf(u"NCLTRAY.EXE"));
    EXPECT_EQ(u"C:\\Nokia\\NclTray.exe", CheckIfRunning(u"ncltray.exe", 0, false).path);
    EXPECT_EQ(9, idOf(u"sh"));
    EXPECT_EQ(9, idOf(u"other", 9));
    EXPECT_EQ(8, idOf(u"", 8));
    EXPECT_EQ(0, idOf(u""));
    EXPECT_EQ(0, idOf(u"NclTray"));
    EXPECT_EQ(0, idOf(u"late.exe")) << "behind the filled part";
    EXPECT_EQ(0, idOf(u"late.exe", 12));
    run({{2, u"second.exe"}});
    EXPECT_EQ(9, idOf(u"sh")) << "the list is kept until it is refreshed or empty";
    EXPECT_EQ(0, idOf(u"sh", 0, /*refresh=*/true));
    EXPECT_EQ(2, idOf(u"second.exe"));
}

TEST_F(ProcessTest, ListsGrowInTheirStepsAndEndInUnusedRecords) {
    run(std::vector<std::pair<Long, Text>>(27, {7, u"C:\\a\\b.exe"}));
    const std::vector<Record> byStatus = list(/*snapshot=*/false),
                              bySnapshot = list(true, /*fullNames=*/true);
    ASSERT_EQ(201u, byStatus.size());
    EXPECT_EQ(u"b.exe", byStatus[26].name);
    EXPECT_EQ(0, byStatus[27].id);
    ASSERT_EQ(46u, bySnapshot.size());
    EXPECT_EQ(u"C:\\a\\b.exe", bySnapshot[26].name);
    run(std::vector<std::pair<Long, Text>>(300, {getpid(), u"x"}));
    EXPECT_EQ(300u, list(false).size());
    EXPECT_EQ(getpid(), list(true)[0].threadId) << "the first thread has the process's number";
}

TEST_F(ProcessTest, TheOldFamilyAndTheAskingCallerGetTheSnapshotMethodAndItsDrivePaths) {
    std::filesystem::create_directories(folder.path() / "drives" / "c");
    using Row = std::pair<Text, Text>;
    for (const auto& [found, path] :
         {Row{u"\\Device\\HostRoot\\usr\\bin\\x", u"Z:\\usr\\bin\\x"},
          Row{u"[System Process]", u"System Process"}, Row{Text(u"cut.exe\0rest", 12), u"cut.exe"},
          Row{u"System", u"System"}, Row{u"C:\\a.exe", u"C:\\a.exe"},
          Row{u"\\device\\hostdrivec\\Nokia\\a.exe", u"\\device\\hostdrivec\\Nokia\\a.exe"},
          Row{u"\\Device\\HostDriveC\\Nokia\\a.exe", u"C:\\Nokia\\a.exe"},
          Row{u"\\Device\\HostDriveX\\a.exe", u"\\Device\\HostDriveX\\a.exe"},
          Row{u"\\SystemRoot\\System32\\smss.exe", u"C:\\Windows\\System32\\smss.exe"},
          Row{u"\\??\\C:\\Windows\\csrss.exe", u"C:\\Windows\\csrss.exe"},
          Row{u"System32\\a.exe", u"C:\\Windows\\System32\\a.exe"}}) {
        run({{1, found}});
        EXPECT_EQ(path, list(/*snapshot=*/true)[0].path);
        EXPECT_EQ(found, list(false)[0].path);
        EXPECT_EQ(found, CheckIfRunning(u"", 1, /*refresh=*/true).path);
    }
    for (const Long family : {1, 2}) {  // read once
        if (family == 1) resetThreadState();
        usePlatform(machine);
        processes().family = family;
        EXPECT_EQ(u"C:\\Windows\\System32\\a.exe", list(false)[0].path);
    }
}

TEST_F(ProcessTest, ChecksAreLoggedOnlyWhileTheLogIsOn) {
    run({{4, u"a.exe"}});
    idOf(u"a.exe");
    const std::uint32_t counted = stateOf<LogFront>().callCounter;
    idOf(u"a.exe");
    EXPECT_EQ(counted, stateOf<LogFront>().callCounter);
    RecordingLog log;
    idOf(u"a.exe", 0, /*refresh=*/true);
    EXPECT_THAT(log.lines, testing::ElementsAre("<CheckIfRunning", "<GetProcList", "GetProcList>", "4",
                                                "CheckIfRunning>"));
}

}  // namespace
}  // namespace ovno2
