#include "host/log/log_switch.h"

#include <fstream>
#include <gtest/gtest.h>

#include "common/machine_test.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

class LogSwitch : public MachineTest {
  protected:
    void append(const std::string& bytes) { std::ofstream(log, std::ios::binary | std::ios::app) << bytes; }
    const fs::path log = folder.path() / "module.log";
};

TEST_F(LogSwitch, KeepsItsStateInTheRegistry) {
    LogState state = logState();
    EXPECT_FALSE(state.on);
    EXPECT_TRUE(state.file.empty());

    EXPECT_TRUE(setLogFile(log));
    EXPECT_TRUE(switchLogOn());
    EXPECT_TRUE(setLogLevel(5, /*timestamps=*/true));
    state = logState();
    EXPECT_TRUE(state.on);
    EXPECT_EQ(log, state.file);
    EXPECT_EQ(5, state.level);
    EXPECT_TRUE(state.timestamps);

    EXPECT_TRUE(switchLogOff());
    EXPECT_TRUE(switchLogOff());  // off already
    EXPECT_TRUE(setLogLevel(0, /*timestamps=*/false));
    state = logState();
    EXPECT_FALSE(state.on);
    EXPECT_EQ(0, state.level);
    EXPECT_FALSE(state.timestamps);
}

TEST_F(LogSwitch, ALevelSetForTheViewerDoesNotHideTheOneThatIsSet) {
    setRegistryText(platform::currentUser, u"Software\\Marrowind\\Orvanta\\Debug", u"Level", u"3");
    EXPECT_EQ(3, logState().level);
    EXPECT_TRUE(setLogLevel(7, /*timestamps=*/true));
    EXPECT_EQ(7, logState().level);
    EXPECT_TRUE(logState().timestamps);
}

TEST_F(LogSwitch, FollowsWholeLinesFromTheLastOnesOn) {
    append("one\r\ntwo\r\nthree\r\n");
    LogFollower follower(log, 2);
    EXPECT_EQ("two\nthree\n", follower.more());
    EXPECT_EQ("", follower.more());
    append("fo");
    EXPECT_EQ("", follower.more());
    append("ur\r\n");
    EXPECT_EQ("four\n", follower.more());

    fs::remove(log);
    EXPECT_EQ("", follower.more());
    append("anew\r\n");
    EXPECT_EQ("anew\n", follower.more());
}

TEST_F(LogSwitch, FollowsAFileThatComesLaterOrEndsInTheMiddleOfALine) {
    LogFollower later(log, 10);
    EXPECT_EQ("", later.more());
    append("first\r\nunfin");
    EXPECT_EQ("first\n", later.more());
    LogFollower follower(log, 1);
    append("ished\r\n");
    EXPECT_EQ("unfinished\n", follower.more());
}

}  // namespace

}  // namespace ovno2::host
