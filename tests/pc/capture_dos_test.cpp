#include "pc/capture_dos.h"

#include <chrono>
#include <gmock/gmock.h>

#include "common/machine_test.h"
#include "common/recording_log.h"
#include "common/soon.h"
#include "platform/portable/processes.h"

namespace ovno2 {
namespace {

using CaptureDos::ExecuteCommand;
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

}  // namespace
}  // namespace ovno2
