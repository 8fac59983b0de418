#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/machine_test.h"
#include "platform/portable/windows.h"

namespace ovno2::platform::portable {
namespace {

class MachineWindows : public MachineTest {
  protected:
    PortableWindows& windows() { return static_cast<PortableWindows&>(machine.windows()); }
};

TEST_F(MachineWindows, TheOwnerAnswersMessagesAndSaysWhetherItIsVisible) {
    WindowEndpoint endpoint(
        folder.path(), u"Viewer",
        {.message = [](std::uint32_t message, std::uint32_t first,
                       std::uint32_t second) { return static_cast<Long>(message + first * 10 + second); },
         .activated = {},
         .keys = {}});
    endpoint.serveInBackground();
    Long answer = 0;
    EXPECT_EQ(noFailure, windows().send(endpoint.number(), 5, 0xFFFFFFFF, 7, answer));
    EXPECT_EQ(2, answer);
    EXPECT_TRUE(windows().isVisible(endpoint.number()));
    endpoint.setVisible(false);
    EXPECT_FALSE(windows().isVisible(endpoint.number()));
}

TEST_F(MachineWindows, AnotherProcessMayOwnAWindowAndDieInTheMiddle) {
    int ready[2];
    ASSERT_EQ(0, pipe(ready));
    const pid_t owner = fork();
    if (owner == 0) {
        int served = 0;
        WindowEndpoint endpoint(folder.path(), u"Other",
                                {.message =
                                     [&](std::uint32_t, std::uint32_t, std::uint32_t) {
                                         if (++served == 3) _exit(0);
                                         return Long{815};
                                     },
                                 .activated = {},
                                 .keys = {}});
        const Long number = endpoint.number();
        if (write(ready[1], &number, sizeof number) != sizeof number) _exit(1);
        for (;;)
            endpoint.serve(-1);
    }
    Long number = 0;
    ASSERT_EQ(static_cast<ssize_t>(sizeof number), read(ready[0], &number, sizeof number));
    Long answer = 0;
    EXPECT_EQ(noFailure, windows().send(number, 1, 0, 0, answer));
    EXPECT_EQ(noFailure, windows().send(number, 1, 0, 0, answer));
    EXPECT_EQ(815, answer);
    EXPECT_EQ(invalidWindowHandle, windows().send(number, 1, 0, 0, answer)) << "it died over this one";
    EXPECT_EQ(0, answer);
    EXPECT_EQ(invalidWindowHandle, windows().send(number, 1, 0, 0, answer));
    EXPECT_FALSE(windows().isVisible(number));
    waitpid(owner, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
}

TEST_F(MachineWindows, ActivationPrefersTheEqualTitleAndKeysGoToTheActiveWindow) {
    std::vector<std::string> events;
    const auto handlers = [&](const std::string& name) {
        return WindowEndpoint::Handlers{
            .message = {},
            .activated = [&events, name] { events.push_back(name + " active"); },
            .keys =
                [&events, name](TextView keys) {
                    events.push_back(name + " " + std::string(keys.begin(), keys.end()));
                }};
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

TEST_F(MachineWindows, ASocketFileLeftBehindIsNoWindow) {
    const pid_t owner = fork();
    if (owner == 0) {
        new WindowEndpoint(folder.path(), u"Left behind", {});
        _exit(0);
    }
    waitpid(owner, nullptr, 0);
    ASSERT_EQ(1u, endpointNumbers(folder.path()).size());
    EXPECT_EQ(invalidProcedureCall, windows().activate(u"Left behind"));
    EXPECT_FALSE(windows().isVisible(endpointNumbers(folder.path())[0]));
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

TEST_F(MachineWindows, AProfileFolderWithALongPathHoldsWindowsToo) {
    const std::filesystem::path deep = folder.path() / std::string(120, 'd');
    Machine other(deep);
    WindowEndpoint endpoint(deep, u"Deep", {});
    endpoint.serveInBackground();
    EXPECT_TRUE(other.windows().isVisible(endpoint.number()));
}

}  // namespace
}  // namespace ovno2::platform::portable
