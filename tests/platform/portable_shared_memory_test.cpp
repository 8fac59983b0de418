#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include "common/machine_test.h"
#include "common/soon.h"

namespace ovno2::platform::portable {
namespace {

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
