#include "pc/shell_execute.h"

#include <gmock/gmock.h>

#include "common/machine_test.h"
#include "common/recording_log.h"
#include "platform/portable/processes.h"

namespace ovno2 {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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
    platform::portable::PortableProcesses& processes() {
        return static_cast<platform::portable::PortableProcesses&>(machine.processes());
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
    EXPECT_THAT(calls[0], "open|a.exe|-x|7");
    for (const Long value : {33, 42, -1}) {
        answer = value;
        EXPECT_EQ(1, ShellExecute::ShellEx(u"a.exe", u"", 1, u"print", ShellExecute::judgeOutcome));
    }
    EXPECT_THAT(calls.back(), "print|a.exe||1");
}

TEST_F(ShellExecuteTest, AFileThatTheShellDoesNotOpenGoesThroughTheInterpreter) {
    struct Case {
        Text file;
        std::string interpreted;  // empty: no second try
    };
    const Case cases[] = {
        {u"C:\\a.exe", "open|cmd.exe|/c start C:\\a.exe|6"},
        {u"C:\\a b.exe", "open|cmd.exe|/k \"C:\\a b.exe\"|4"},
        {u"\"C:\\a b.exe\"", "open|cmd.exe|/k \"C:\\a b.exe\"|4"},
        {u"C:\\a & b.exe", "open|cmd.exe|/k C:\\a & b.exe|4"},
        {u"http://x/?a", ""},
        {u"CMD.exe", ""},
    };
    for (const Case& c : cases) {
        for (const Long value : {0, 2, 32}) {
            calls.clear();
            answer = value;
            EXPECT_EQ(-1, ShellExecute::ShellEx(c.file, u"", 1, u"", ShellExecute::judgeOutcome));
            ASSERT_EQ(c.interpreted.empty() ? 1u : 2u, calls.size()) << toUtf8(c.file);
            EXPECT_TRUE(c.interpreted.empty() || c.interpreted == calls[1]) << calls.back();
        }
    }
}

TEST_F(ShellExecuteTest, ARefusedElevationIsToldApartFromOtherFailures) {
    answer = 5;
    EXPECT_EQ(-5, ShellExecute::ShellEx(u"a.exe", u"", 1, u"RunAs", ShellExecute::judgeOutcome));
    answer = 2;
    EXPECT_EQ(-1, ShellExecute::ShellEx(u"a.exe", u"", 1, u"runas", ShellExecute::judgeOutcome));
    EXPECT_EQ(2u, calls.size());
    answer = 5;
    EXPECT_EQ(-1, ShellExecute::ShellEx(u"cmd.exe", u"", 1, u"open", ShellExecute::judgeOutcome));
}

TEST_F(ShellExecuteTest, AProgramThatCameUpAllTheSameCountsAsStarted) {
    answer = 2;
    startsOnCall = true;
    EXPECT_EQ(1, ShellExecute::ShellEx(u"C:\\Tools\\A.EXE", u"", 1, u"", ShellExecute::judgeOutcome));
    EXPECT_EQ(1u, calls.size());
    startsOnCall = false;  // it runs already: that proves nothing
    EXPECT_EQ(-1, ShellExecute::ShellEx(u"C:\\Tools\\a.exe", u"", 1, u"", ShellExecute::judgeOutcome));
    EXPECT_EQ(3u, calls.size());
}

TEST_F(ShellExecuteTest, TheLogNamesTheFileAndTheAnswer) {
    RecordingLog log;
    ShellExecute::ShellEx(u"a.exe", u"-x", 1, u"", 0);
    EXPECT_THAT(log.lines, ElementsAre("<ShellEx", "ShellEx: a.exe -x", "<CheckIfRunning", "<GetProcList",
                                       "GetProcList>", "0", "CheckIfRunning>", "lr:42", "ShellEx>"));
}

}  // namespace
}  // namespace ovno2
