#include "common/platform_test.h"

namespace ovno2::platform {
namespace {

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
