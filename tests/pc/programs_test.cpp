// Programs of the PC: listed, started by the shell, and run for their output.
#include <chrono>
#include <gmock/gmock.h>

#include "base/utf8.h"
#include "common/machine_test.h"
#include "common/recording_log.h"
#include "common/soon.h"
#include "pc/capture_dos.h"
#include "pc/process.h"
#include "pc/shell_execute.h"
#include "platform/portable/processes.h"

namespace ovno2 {
namespace {

using CaptureDos::ExecuteCommand;
using Process::CheckIfRunning;
using Process::Record;
using ::testing::ElementsAre;
using namespace std::string_literals;
using Pieces = std::vector<std::string>;

// Writes given pieces and ends.
class ScriptedCommand : public platform::CapturedCommand {
  public:
    explicit ScriptedCommand(Pieces pieces) : pieces_(std::move(pieces)) {}
    Outcome read(std::string& bytes, std::size_t, std::uint32_t) override {
        bytes = next_ == pieces_.size() ? "" : pieces_[next_++];
        return bytes.empty() ? Outcome::end : Outcome::data;
    }

  private:
    Pieces pieces_;
    std::size_t next_ = 0;
};

class CaptureDosTest : public MachineTest {
  protected:
    Text outputOf(const Pieces& pieces, TextView command = u"program", bool doNotWait = false) {
        processes().onStartCaptured = [this, pieces](TextView commandLine) {
            started.emplace_back(commandLine);
            return std::make_unique<ScriptedCommand>(pieces);
        };
        return ExecuteCommand(command, doNotWait, /*timeoutSeconds=*/30);
    }

    std::vector<Text> started;
};

TEST_F(CaptureDosTest, ConsoleLettersAreRepairedAndUtf16IsPacked) {
    EXPECT_EQ(u"äöüÄÖÜß", outputOf({"\x84\x94\x81\x8E\x99\x9A\xE1"}));
    EXPECT_EQ(u"Grün\r\n€", outputOf({"Gr\x81n\r\n", "\x80"}));
    EXPECT_EQ(u"hi ä", outputOf({"h\0i\0 \0\x1E\x20"s}));
    EXPECT_EQ(u"hi", outputOf({"h\0i"s, "\0x"s}));  // a unit in two pieces, an odd byte at the end
    EXPECT_EQ(u"\u0761", outputOf({"\x61\x07"}));
    EXPECT_EQ(u"a\b", outputOf({"a\b"}));
    EXPECT_EQ(u"", outputOf({}));
    RecordingLog log;
    EXPECT_EQ(u"x", outputOf({"x"}));
    EXPECT_THAT(log.lines, ElementsAre("<CaptureDos.ExecuteCommand", "ExecuteCommand 3", "ExecuteCommand 4",
                                       "ExecuteCommand 5", "ExecuteCommand 6", "ExecuteCommand 7",
                                       "ExecuteCommand 8", "CaptureDos.ExecuteCommand>"));
}

TEST_F(CaptureDosTest, AnEmptyCommandRepeatsTheLastOne) {
    EXPECT_EQ(u"", outputOf({"x"}, u""));
    EXPECT_THAT(started, ElementsAre());
    EXPECT_EQ(u"x", outputOf({"x"}, u"first"));
    EXPECT_EQ(u"x", outputOf({"x"}, u""));
    EXPECT_EQ(u"", outputOf({"x"}, u"second", /*doNotWait=*/true));
    EXPECT_EQ(u"x", outputOf({"x"}, u""));
    EXPECT_THAT(started, ElementsAre(u"first", u"first", u"second", u"second"));
}

TEST_F(CaptureDosTest, RealCommandsAreReadToTheirEndOrTheTimeOut) {
    using namespace std::chrono;
    const Text megabytes = ExecuteCommand(u"cmd /c head -c 3000000 /dev/zero | tr '\\0' x", false, 30);
    EXPECT_TRUE(megabytes == Text(3000000, u'x')) << megabytes.size();
    const auto start = steady_clock::now();
    EXPECT_EQ(u"begun\n", ExecuteCommand(u"cmd /c echo begun; sleep 20", false, 1));
    EXPECT_EQ(u"", ExecuteCommand(u"sleep 20", false, 0));
    EXPECT_EQ(u"", ExecuteCommand(u"sleep 20", false, -5));
    EXPECT_EQ(u"begun\n", ExecuteCommand(u"cmd /c sleep 0.1; echo begun; sleep 20", false, 0));
    const Text endless = ExecuteCommand(u"yes", false, 1);
    EXPECT_TRUE(endless.starts_with(u"y\ny\n"));
    EXPECT_LE(endless.size(), std::size_t{17} << 20);
    EXPECT_GE(steady_clock::now() - start, seconds(1));
    EXPECT_LT(steady_clock::now() - start, seconds(12));
    EXPECT_EQ(u"", ExecuteCommand(u"ovno2-no-such-program", false, 30));

    const std::filesystem::path mark = folder.path() / "mark";
    EXPECT_EQ(u"", ExecuteCommand(u"touch " + mark.u16string(), /*doNotWait=*/true, 30));
    EXPECT_TRUE(soon([&] { return std::filesystem::exists(mark); }));
}

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
    EXPECT_THAT(log.lines,
                ElementsAre("<CheckIfRunning", "<GetProcList", "GetProcList>", "4", "CheckIfRunning>"));
}

class ShellExecuteTest : public MachineTest {
  protected:
    ShellExecuteTest() {
        processes().running.emplace();
        processes().onShellExecute = [this](TextView verb, TextView file, TextView parameters, Long show) {
            calls.push_back(toUtf8(verb) + "|" + toUtf8(file) + "|" + toUtf8(parameters) + "|" +
                            std::to_string(show));
            if (startsOnCall)
                processes().running->push_back({.id = 7, .path = u"C:\\Tools\\a.exe", .handle = 0});
            return answer;
        };
    }
    // The outcome as it is judged when the shell answers this.
    Long judged(Long shellsAnswer, TextView file, TextView verb = u"") {
        calls.clear();
        answer = shellsAnswer;
        return ShellExecute::ShellEx(file, u"", 1, verb, ShellExecute::judgeOutcome);
    }

    std::vector<std::string> calls;
    Long answer = 42;
    bool startsOnCall = false;
};

TEST_F(ShellExecuteTest, TheShellsOwnValueComesBackUnlessItIsJudged) {
    for (const Long value : {42, 2, 0, -1}) {
        answer = value;
        EXPECT_EQ(value, ShellExecute::ShellEx(u"a.exe", u"-x", 7, u"", 0));
    }
    EXPECT_EQ("open|a.exe|-x|7", calls[0]);
    for (const Long value : {33, 42, -1})
        EXPECT_EQ(1, judged(value, u"a.exe", u"print"));
    EXPECT_EQ("print|a.exe||1", calls[0]);
}

TEST_F(ShellExecuteTest, AFileThatTheShellDoesNotOpenGoesThroughTheInterpreter) {
    using Row = std::pair<Text, std::string>;
    for (const auto& [file, interpreted] : {// the file, and the second try if there is one
                                            Row{u"C:\\a.exe", "open|cmd.exe|/c start C:\\a.exe|6"},
                                            Row{u"C:\\a b.exe", "open|cmd.exe|/k \"C:\\a b.exe\"|4"},
                                            Row{u"\"C:\\a b.exe\"", "open|cmd.exe|/k \"C:\\a b.exe\"|4"},
                                            Row{u"C:\\a & b.exe", "open|cmd.exe|/k C:\\a & b.exe|4"},
                                            Row{u"http://x/?a", ""}, Row{u"CMD.exe", ""}})
        for (const Long value : {0, 2, 32}) {
            EXPECT_EQ(-1, judged(value, file));
            ASSERT_EQ(interpreted.empty() ? 1u : 2u, calls.size()) << toUtf8(file);
            EXPECT_TRUE(interpreted.empty() || interpreted == calls[1]) << calls.back();
        }
}

TEST_F(ShellExecuteTest, ARefusedElevationIsToldApartFromOtherFailures) {
    EXPECT_EQ(-5, judged(5, u"a.exe", u"RunAs"));
    EXPECT_EQ(-1, judged(2, u"a.exe", u"runas"));
    EXPECT_EQ(1u, calls.size());
    EXPECT_EQ(-1, judged(5, u"cmd.exe", u"open"));
}

TEST_F(ShellExecuteTest, AProgramThatCameUpAllTheSameCountsAsStarted) {
    startsOnCall = true;
    EXPECT_EQ(1, judged(2, u"C:\\Tools\\A.EXE"));
    EXPECT_EQ(1u, calls.size());
    startsOnCall = false;  // it runs already: that proves nothing, as far as it can be told by the name given
    EXPECT_EQ(-1, judged(2, u"a.exe"));
    EXPECT_EQ(2u, calls.size());
    EXPECT_EQ(1, judged(2, u"C:\\Tools\\a.exe"));
}

TEST_F(ShellExecuteTest, TheLogNamesTheFileAndTheAnswer) {
    RecordingLog log;
    ShellExecute::ShellEx(u"a.exe", u"-x", 1, u"", 0);
    EXPECT_THAT(log.lines, ElementsAre("<ShellEx", "ShellEx: a.exe -x", "<CheckIfRunning", "<GetProcList",
                                       "GetProcList>", "0", "CheckIfRunning>", "lr:42", "ShellEx>"));
}

}  // namespace
}  // namespace ovno2
