// What programs on one machine share: windows and named memory.
#include <optional>

#include "common/platform_test.h"
#include "common/test_window.h"

namespace ovno2::platform {
namespace {

class WindowsSeam : public PlatformTest {
  protected:
    Windows& windows = currentPlatform().windows();
};

TEST_F(WindowsSeam, AWindowOfAnotherThreadAnswersUntilItIsGone) {
    std::optional<TestWindow> window;
    window.emplace(u"ovNo2 conformance: window",
                   [](std::uint32_t message, std::uint32_t first, std::uint32_t second) {
                       return static_cast<Long>(message == 29799 ? first ^ second : 815);
                   });
    const Long number = window->number();
    Long answer = 0;
    EXPECT_TRUE(windows.isVisible(number));
    EXPECT_EQ(noFailure, windows.send(number, 29798, 0, 0, answer));
    EXPECT_EQ(815, answer);
    EXPECT_EQ(noFailure, windows.send(number, 29799, 0xFFFFFFFF, 0x0A0D6564, answer));
    EXPECT_EQ(static_cast<Long>(0xF5F29A9B), answer) << "all 32 bits of both parameters and of the answer";
    EXPECT_EQ(noFailure, windows.activate(u"OVNO2 Conformance"));
    window->hide();
    EXPECT_FALSE(windows.isVisible(number));
    EXPECT_EQ(invalidProcedureCall, windows.activate(u"ovNo2 conformance: window"));
    window.reset();
    EXPECT_EQ(invalidWindowHandle, windows.send(number, 29798, 0, 0, answer));
    EXPECT_EQ(0, answer);
}

TEST_F(WindowsSeam, AWindowOrProcedureThatIsNotThereIsReportedAndAnswersNothing) {
    Long answer = 99;
    for (const Long procedure : {0, 1, 0x10000 - 1})
        EXPECT_EQ(invalidProcedureCall, windows.callProcedure(procedure, 1, 2, 3, 4, answer));
    EXPECT_EQ(99, answer);
    for (const Long window : {0x7FFFFFF0, 4711, -2}) {
        answer = 99;
        EXPECT_FALSE(windows.isVisible(window));
        EXPECT_EQ(invalidWindowHandle, windows.send(window, 29798, 0, 0, answer));
        EXPECT_EQ(0, answer);
    }
    EXPECT_FALSE(windows.isVisible(0));
    EXPECT_EQ(invalidProcedureCall, windows.activate(u"ovNo2: no window has this title"));
    windows.processPendingMessages();  // returns at once
}

constexpr std::size_t areaSize = 0x10000;

class SharedMemorySeam : public PlatformTest {
  protected:
    SharedMemory& memory = currentPlatform().sharedMemory();
};

TEST_F(SharedMemorySeam, AnAreaIsTheSameBytesForEverybodyWhoKnowsItsNameAsLongAsSomebodyHoldsIt) {
    constexpr TextView name = u"OvTest shared";
    EXPECT_FALSE(memory.open(name, /*forWriting=*/true));
    auto writer = memory.create(name, areaSize);
    ASSERT_TRUE(writer);
    std::byte* const written = writer->map(areaSize);
    ASSERT_TRUE(written);
    EXPECT_EQ(std::byte{0}, written[areaSize - 1]);
    written[areaSize - 1] = std::byte{42};
    auto reader = memory.open(name, /*forWriting=*/false), again = memory.create(name, areaSize);
    for (const auto* other : {&reader, &again}) {
        ASSERT_TRUE(*other);
        const std::byte* const read = (*other)->map(areaSize);
        ASSERT_TRUE(read);
        EXPECT_EQ(std::byte{42}, read[areaSize - 1]);
    }
    EXPECT_FALSE(memory.open(u"ovtest other", /*forWriting=*/false));
    writer.reset();
    again.reset();
    EXPECT_TRUE(memory.open(name, /*forWriting=*/true));
    reader.reset();
    EXPECT_FALSE(memory.open(name, /*forWriting=*/true));
}

}  // namespace
}  // namespace ovno2::platform
