#include "common/platform_test.h"

namespace ovno2::platform {
namespace {

constexpr std::size_t areaSize = 0x10000;

class SharedMemorySeam : public PlatformTest {
  protected:
    SharedMemory& memory() { return currentPlatform().sharedMemory(); }
};

TEST_F(SharedMemorySeam, AnAreaIsTheSameBytesForEverybodyWhoKnowsItsName) {
    EXPECT_FALSE(memory().open(u"OvTest shared", /*forWriting=*/true));
    const auto writer = memory().create(u"OvTest shared", areaSize);
    ASSERT_TRUE(writer);
    std::byte* const written = writer->map(areaSize);
    ASSERT_TRUE(written);
    EXPECT_EQ(std::byte{0}, written[areaSize - 1]);
    const auto reader = memory().open(u"OvTest shared", /*forWriting=*/false);
    ASSERT_TRUE(reader);
    const std::byte* const read = reader->map(areaSize);
    ASSERT_TRUE(read);
    written[areaSize - 1] = std::byte{42};
    EXPECT_EQ(std::byte{42}, read[areaSize - 1]);
    const auto again = memory().create(u"OvTest shared", areaSize);
    ASSERT_TRUE(again);
    const std::byte* const seen = again->map(areaSize);
    ASSERT_TRUE(seen);
    EXPECT_EQ(std::byte{42}, seen[areaSize - 1]);
    EXPECT_FALSE(memory().open(u"ovtest other", /*forWriting=*/false));
}

TEST_F(SharedMemorySeam, AnAreaLivesAsLongAsSomebodyHoldsIt) {
    auto first = memory().create(u"OvTest life", areaSize);
    ASSERT_TRUE(first);
    auto second = memory().open(u"OvTest life", /*forWriting=*/true);
    ASSERT_TRUE(second);
    first.reset();
    EXPECT_TRUE(memory().open(u"OvTest life", /*forWriting=*/true));
    second.reset();
    EXPECT_FALSE(memory().open(u"OvTest life", /*forWriting=*/true));
}

TEST_F(SharedMemorySeam, AViewThatTheAreaIsTooSmallForIsRefused) {
    const auto small = memory().create(u"OvTest small", 100);
    ASSERT_TRUE(small);
    const auto opened = memory().open(u"OvTest small", /*forWriting=*/true);
    ASSERT_TRUE(opened);
    EXPECT_FALSE(opened->map(areaSize));
    std::byte* const view = opened->map(100);
    ASSERT_TRUE(view);
    view[99] = std::byte{1};
    EXPECT_FALSE(opened->map(areaSize));
    opened->unmap();
    opened->unmap();
    EXPECT_FALSE(opened->map(0));
}

TEST_F(SharedMemorySeam, NoAreaHasNoNameOrNoSize) {
    EXPECT_FALSE(memory().create(u"", areaSize));
    EXPECT_FALSE(memory().create(u"OvTest empty", 0));
    EXPECT_FALSE(memory().open(u"", /*forWriting=*/true));
}

}  // namespace
}  // namespace ovno2::platform
