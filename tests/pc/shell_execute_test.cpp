#include "pc/shell_execute.h"

#include <gmock/gmock.h>

#include "common/machine_test.h"
#include "common/recording_log.h"
#include "platform/portable/processes.h"

namespace ovno2 {
namespace {

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
    startsOnCall = false;  // it runs already: that proves nothing
    EXPECT_EQ(-1, judged(2, u"C:\\Tools\\a.exe"));
    EXPECT_EQ(2u, calls.size());
}

TEST_F(ShellExecuteTest, TheLogNamesTheFileAndTheAnswer) {
    RecordingLog log;
    ShellExecute::ShellEx(u"a.exe", u"-x", 1, u"", 0);
    EXPECT_THAT(log.lines,
                testing::ElementsAre("<ShellEx", "ShellEx: a.exe -x", "<CheckIfRunning", "<GetProcList",
                                     "GetProcList>", "0", "CheckIfRunning>", "lr:42", "ShellEx>"));
}

}  // namespace
}  // namespace ovno2
