#include "pc/capture_dos.h"

#include <chrono>
#include <gmock/gmock.h>
#include <thread>

#include "common/machine_test.h"
#include "common/recording_log.h"
#include "platform/portable/processes.h"

namespace ovno2 {
namespace {

using namespace std::chrono;
using ::testing::ElementsAre;

// Writes given pieces and ends.
class ScriptedCommand : public platform::CapturedCommand {
  public:
    explicit ScriptedCommand(std::vector<std::string> pieces) : pieces_(std::move(pieces)) {}
    Outcome read(std::string& bytes, std::size_t, std::uint32_t) override {
        bytes.clear();
        if (next_ == pieces_.size()) return Outcome::end;
        bytes = pieces_[next_++];
        return Outcome::data;
    }

  private:
    std::vector<std::string> pieces_;
    std::size_t next_ = 0;
};

class CaptureDosTest : public MachineTest {
  protected:
    void answerWith(std::vector<std::string> pieces) {
        static_cast<platform::portable::PortableProcesses&>(machine.processes()).onStartCaptured =
            [this, pieces](TextView commandLine) {
                started.emplace_back(commandLine);
                return std::make_unique<ScriptedCommand>(pieces);
            };
    }
    Text outputOf(std::vector<std::string> pieces) {
        answerWith(std::move(pieces));
        return CaptureDos::ExecuteCommand(u"program", /*doNotWait=*/false, /*timeoutSeconds=*/30);
    }

    std::vector<Text> started;
};

TEST_F(CaptureDosTest, ConsoleLettersAreRepairedAndUtf16IsPacked) {
    using namespace std::string_literals;
    EXPECT_EQ(u"äöüÄÖÜß", outputOf({"\x84\x94\x81\x8E\x99\x9A\xE1"}));
    EXPECT_EQ(u"Grün\r\n€", outputOf({"Gr\x81n\r\n", "\x80"}));
    EXPECT_EQ(u"hi ä", outputOf({"h\0i\0 \0\x1E\x20"s}));
    EXPECT_EQ(u"hi", outputOf({"h\0i"s, "\0x"s}));  // a unit in two pieces, an odd byte at the end
    EXPECT_EQ(u"\u0761", outputOf({"\x61\x07"}));
    EXPECT_EQ(u"a\b", outputOf({"a\b"}));
    EXPECT_EQ(u"x", outputOf({"x"}));
    EXPECT_EQ(u"", outputOf({}));
}

TEST_F(CaptureDosTest, AnEmptyCommandRepeatsTheLastOne) {
    answerWith({"x"});
    EXPECT_EQ(u"", CaptureDos::ExecuteCommand(u"", false, 30));
    EXPECT_THAT(started, ElementsAre());
    EXPECT_EQ(u"x", CaptureDos::ExecuteCommand(u"first", false, 30));
    EXPECT_EQ(u"x", CaptureDos::ExecuteCommand(u"", false, 30));
    EXPECT_EQ(u"", CaptureDos::ExecuteCommand(u"second", /*doNotWait=*/true, 30));
    EXPECT_EQ(u"x", CaptureDos::ExecuteCommand(u"", false, 30));
    EXPECT_THAT(started, ElementsAre(u"first", u"first", u"second", u"second"));
}

TEST_F(CaptureDosTest, RealCommandsAreReadToTheirEndOrTheTimeOut) {
    const Text megabytes =
        CaptureDos::ExecuteCommand(u"cmd /c head -c 3000000 /dev/zero | tr '\\0' x", false, 30);
    EXPECT_TRUE(megabytes == Text(3000000, u'x')) << megabytes.size();
    const auto start = steady_clock::now();
    EXPECT_EQ(u"begun\n", CaptureDos::ExecuteCommand(u"cmd /c echo begun; sleep 20", false, 1));
    EXPECT_EQ(u"", CaptureDos::ExecuteCommand(u"sleep 20", false, 0));
    EXPECT_EQ(u"", CaptureDos::ExecuteCommand(u"sleep 20", false, -5));
    const Text endless = CaptureDos::ExecuteCommand(u"yes", false, 1);
    EXPECT_TRUE(endless.starts_with(u"y\ny\n"));
    EXPECT_LE(endless.size(), std::size_t{17} << 20);
    const auto passed = steady_clock::now() - start;
    EXPECT_GE(passed, seconds(1));
    EXPECT_LT(passed, seconds(12));
    EXPECT_EQ(u"", CaptureDos::ExecuteCommand(u"ovno2-no-such-program", false, 30));
}

TEST_F(CaptureDosTest, ACommandThatIsNotWaitedForRuns) {
    const std::filesystem::path mark = folder.path() / "mark";
    const Text command = u"touch " + mark.u16string();
    EXPECT_EQ(u"", CaptureDos::ExecuteCommand(command, /*doNotWait=*/true, 30));
    for (int i = 0; i < 1000 && !std::filesystem::exists(mark); ++i)
        std::this_thread::sleep_for(milliseconds(10));
    EXPECT_TRUE(std::filesystem::exists(mark));
}

TEST_F(CaptureDosTest, TheLogFollowsTheSteps) {
    RecordingLog log;
    EXPECT_EQ(u"x", outputOf({"x"}));
    EXPECT_THAT(log.lines, ElementsAre("<CaptureDos.ExecuteCommand", "ExecuteCommand 3", "ExecuteCommand 4",
                                       "ExecuteCommand 5", "ExecuteCommand 6", "ExecuteCommand 7",
                                       "ExecuteCommand 8", "CaptureDos.ExecuteCommand>"));
}

}  // namespace
}  // namespace ovno2
