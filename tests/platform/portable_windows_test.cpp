#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/utf8.h"
#include "common/machine_test.h"
#include "common/soon.h"
#include "platform/portable/windows.h"

namespace ovno2::platform::portable {
namespace {

class MachineWindows : public MachineTest {
  protected:
    PortableWindows& windows() { return static_cast<PortableWindows&>(machine.windows()); }
};

TEST_F(MachineWindows, AnotherProcessMayOwnAWindowAndDieInTheMiddle) {
    const pid_t owner = fork();
    if (owner == 0) {
        int served = 0;
        const auto answer = [&](std::uint32_t, std::uint32_t, std::uint32_t) {
            if (++served == 3) _exit(0);
            return Long{815};
        };
        WindowEndpoint endpoint(folder.path(), u"Other", {.message = answer, .activated = {}, .keys = {}});
        for (;;)
            endpoint.serve(-1);
    }
    ASSERT_TRUE(soon([&] { return !endpointNumbers(folder.path()).empty(); }));
    const Long number = endpointNumbers(folder.path())[0];
    Long answer = 0;
    EXPECT_TRUE(soon([&] { return windows().isVisible(number); }));
    for (const Long expected : {815, 815, 0, 0}) {  // it dies over the third
        EXPECT_EQ(expected == 0 ? invalidWindowHandle : noFailure, windows().send(number, 1, 0, 0, answer));
        EXPECT_EQ(expected, answer);
    }
    EXPECT_FALSE(windows().isVisible(number));
    waitpid(owner, nullptr, 0);
}

TEST_F(MachineWindows, ActivationPrefersTheEqualTitleAndKeysGoToTheActiveWindow) {
    std::vector<std::string> events;
    const auto handlers = [&](const std::string& name) {
        const auto note = [&events, name](const std::string& what) { events.push_back(name + " " + what); };
        return WindowEndpoint::Handlers{.message = {},
                                        .activated = [note] { note("active"); },
                                        .keys = [note](TextView keys) { note(toUtf8(keys)); }};
    };
    EXPECT_EQ(invalidProcedureCall, windows().sendKeys(u"{Esc}")) << "nothing is active yet";
    WindowEndpoint beginning(folder.path(), u"Nokia PC Sync - Phone", handlers("beginning"));
    WindowEndpoint hidden(folder.path(), u"Nokia PC Sync", handlers("hidden"));
    hidden.setVisible(false);
    beginning.serveInBackground();
    hidden.serveInBackground();
    EXPECT_EQ(noFailure, windows().activate(u"nokia pc sync"));
    EXPECT_EQ(noFailure, windows().sendKeys(u"{Esc}"));
    WindowEndpoint equal(folder.path(), u"Nokia PC Sync", handlers("equal"));
    equal.serveInBackground();
    EXPECT_EQ(noFailure, windows().activate(u"Nokia PC Sync"));
    EXPECT_THAT(events, testing::ElementsAre("beginning active", "beginning {Esc}", "equal active"));
}

TEST_F(MachineWindows, HostFunctionsAndPendingMessagesRunOnTheCaller) {
    const Long procedure = windows().registerProcedure([](Long first, Long second, Long third, Long fourth) {
        return first * 1000 + second * 100 + third * 10 + fourth;
    });
    Long answer = 0;
    EXPECT_EQ(noFailure, windows().callProcedure(procedure, 1, 2, 3, 4, answer));
    EXPECT_EQ(1234, answer);
    windows().unregisterProcedure(procedure);
    EXPECT_EQ(invalidProcedureCall, windows().callProcedure(procedure, 1, 2, 3, 4, answer));

    int pending = 0;
    windows().whenMessagesArePending([&] { ++pending; });
    windows().processPendingMessages();
    windows().processPendingMessages();
    EXPECT_EQ(2, pending);
}

TEST_F(MachineWindows, ASocketFileLeftBehindIsNoWindowAndALongProfilePathHoldsWindowsToo) {
    const std::filesystem::path deep = folder.path() / std::string(120, 'd');
    Machine other(deep);
    const pid_t owner = fork();
    if (owner == 0) {
        new WindowEndpoint(deep, u"Left behind", {});
        _exit(0);
    }
    waitpid(owner, nullptr, 0);
    ASSERT_EQ(1u, endpointNumbers(deep).size());
    EXPECT_EQ(invalidProcedureCall, other.windows().activate(u"Left behind"));
    EXPECT_FALSE(other.windows().isVisible(endpointNumbers(deep)[0]));
    WindowEndpoint endpoint(deep, u"Deep", {});
    endpoint.serveInBackground();
    EXPECT_TRUE(other.windows().isVisible(endpoint.number()));
}

}  // namespace
}  // namespace ovno2::platform::portable
