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

// What `ovphone log` shows is asked of the program; here what another one has left in the registry.
TEST_F(LogSwitch, ALevelSetForTheViewerDoesNotHideTheOneThatIsSet) {
    setRegistryText(platform::currentUser, u"Software\\Marrowind\\Orvanta\\Debug", u"Level", u"3");
    EXPECT_EQ(3, logState().level);
    EXPECT_TRUE(setLogLevel(7, /*timestamps=*/true));
    EXPECT_EQ(7, logState().level);
    EXPECT_TRUE(logState().timestamps);
    EXPECT_TRUE(setLogLevel(0, /*timestamps=*/false));
    EXPECT_EQ(0, logState().level);
    EXPECT_FALSE(logState().timestamps);
    EXPECT_TRUE(switchLogOff());  // off already
}

TEST_F(LogSwitch, FollowsWholeLinesFromTheLastOnesOn) {
    LogFollower later(log, 10);
    EXPECT_EQ("", later.more());
    append("one\r\ntwo\r\nthree\r\nfo");
    EXPECT_EQ("one\ntwo\nthree\n", later.more());
    LogFollower follower(log, 2);
    EXPECT_EQ("three\n", follower.more());  // the other one is not complete
    EXPECT_EQ("", follower.more());
    append("ur\a\n\x1B[2J\r\n");  // a phone's name is no line of its own and no command to the terminal
    EXPECT_EQ("four␇ ␛[2J\n", follower.more());

    fs::remove(log);
    EXPECT_EQ("", follower.more());
    append("anew\r\n");
    EXPECT_EQ("anew\n", follower.more());
}

}  // namespace

}  // namespace ovno2::host
