// What programs on one machine share: windows and named memory.
#include <csignal>
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

TEST_F(MachineWindows, HostFunctionsEndAndPendingMessagesRunOnTheCaller) {
    const Long procedure = windows().registerProcedure([](Long, Long, Long, Long) { return 1; });
    windows().unregisterProcedure(procedure);
    Long answer = 0;
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

constexpr std::size_t areaSize = 0x10000;

using MachineSharedMemory = MachineTest;

TEST_F(MachineSharedMemory, AnotherProcessSeesTheAreaAndProfilesDoNot) {
    const auto area = machine.sharedMemory().create(u"OvTest", areaSize);
    ASSERT_TRUE(area);
    std::byte* const view = area->map(areaSize);
    ASSERT_TRUE(view);
    const pid_t child = fork();
    if (child == 0) {
        Machine other(folder.path());
        const auto opened = other.sharedMemory().open(u"OvTest", /*forWriting=*/true);
        std::byte* const its = opened ? opened->map(areaSize) : nullptr;
        if (its) its[1] = std::byte{7};
        _exit(its ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ(std::byte{7}, view[1]);
    const TemporaryFolder elsewhere;
    Machine stranger(elsewhere.path());
    EXPECT_FALSE(stranger.sharedMemory().open(u"OvTest", /*forWriting=*/false));
}

TEST_F(MachineSharedMemory, WhatAKilledProgramLeftBehindIsGone) {
    const auto exists = [&] {
        return machine.sharedMemory().open(u"OvTest killed", /*forWriting=*/true) != nullptr;
    };
    const pid_t child = fork();
    if (child == 0) {
        const auto area = machine.sharedMemory().create(u"OvTest killed", areaSize);
        pause();
        _exit(1);
    }
    EXPECT_TRUE(soon(exists));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_FALSE(exists());
    const auto small = machine.sharedMemory().create(u"OvTest killed", 1);
    ASSERT_TRUE(small);
    EXPECT_FALSE(small->map(areaSize));
}

TEST_F(MachineSharedMemory, AnyNameThatFitsIsAName) {
    const auto area = machine.sharedMemory().create(u"a/b \u00E4%\\c", areaSize);
    ASSERT_TRUE(area);
    EXPECT_TRUE(machine.sharedMemory().open(u"a/b \u00E4%\\c", /*forWriting=*/true));
    EXPECT_FALSE(machine.sharedMemory().open(u"a/b \u00E4%\\C", /*forWriting=*/true));
    EXPECT_FALSE(machine.sharedMemory().create(Text(300, u'x'), areaSize));
    EXPECT_FALSE(machine.sharedMemory().create(u"too large", std::size_t{1} << 60));
    EXPECT_FALSE(machine.sharedMemory().open(u"too large", /*forWriting=*/true));
}

}  // namespace
}  // namespace ovno2::platform::portable
