// Memory that is not the module's own: what can be read is read, and nothing else faults.
#include <algorithm>
#include <string>
#include <vector>

#include "common/machine_test.h"
#include "common/platform_test.h"

namespace ovno2::platform {
namespace {

constexpr std::size_t page = 4096;

class MemorySeam : public PlatformTest {
  protected:
    Memory& memory() { return currentPlatform().memory(); }

    // A page of readable bytes with nothing readable behind it, for the rest of the program.
    static char* readablePage() {
        static void* const pages = pageBeforeNothing();
        return static_cast<char*>(pages);
    }
    // The last UTF-16 units in front of what cannot be read.
    static char16_t* lastUnits(TextView units) {
        auto* const text = reinterpret_cast<char16_t*>(readablePage() + page) - units.size();
        std::copy(units.begin(), units.end(), text);
        return text;
    }
};

TEST_F(MemorySeam, ReadsEndWhereMemoryEnds) {
    char* const last = readablePage() + page - 4;
    std::copy_n("abcd", 4, last);
    std::string copy(5, '-');
    EXPECT_TRUE(memory().read(last, 4, copy.data()));
    EXPECT_EQ("abcd-", copy);
    EXPECT_FALSE(memory().read(last, 5, copy.data()));
    EXPECT_FALSE(memory().read(readablePage() + page, 1, copy.data()));
    EXPECT_FALSE(memory().read(nullptr, 1, copy.data()));
    EXPECT_TRUE(memory().read(nullptr, 0, copy.data()));
    EXPECT_TRUE(memory().read(last + 1, 3, copy.data())) << "after a read that failed";
    EXPECT_EQ("bcd", copy.substr(0, 3));
}

TEST_F(MemorySeam, ABlockIsReadableWhenAllOfItIs) {
    const char* const pages = readablePage();
    EXPECT_TRUE(memory().readable(pages, page));
    EXPECT_TRUE(memory().readable(pages + page - 1, 1));
    EXPECT_FALSE(memory().readable(pages, page + 1));
    EXPECT_FALSE(memory().readable(pages + page - 1, 2));
    EXPECT_FALSE(memory().readable(nullptr, 1));
    EXPECT_TRUE(memory().readable(nullptr, 0));
    EXPECT_FALSE(memory().readable(pages, static_cast<std::size_t>(-1))) << "around the end of addresses";
    const std::vector<char> own(5 * page);
    EXPECT_TRUE(memory().readable(own.data(), own.size()));
}

TEST_F(MemorySeam, ATextEndsAtItsZeroAtTheLimitOrWhereMemoryEnds) {
    const auto textAt = [this](const char16_t* from, std::size_t limit) {
        Text text = u"old";
        if (memory().readText(from, limit, text)) return text;
        EXPECT_EQ(u"", text);
        return Text(u"cannot be read");
    };
    EXPECT_EQ(u"abc", textAt(lastUnits({u"abc", 4}), 100));
    EXPECT_EQ(u"", textAt(lastUnits({u"", 1}), 100));
    EXPECT_EQ(u"ab", textAt(lastUnits(u"abc"), 2));
    EXPECT_EQ(u"abc", textAt(lastUnits(u"abc"), 3));
    EXPECT_EQ(u"cannot be read", textAt(lastUnits(u"abc"), 4));
    EXPECT_EQ(u"", textAt(lastUnits(u"abc"), 0));
    EXPECT_EQ(u"cannot be read", textAt(nullptr, 1));
    for (std::size_t size = 0; size < 600; ++size)
        EXPECT_EQ(Text(size, u'x'), textAt((Text(size, u'x') + u'\0').c_str(), 1000)) << size;
    // Units need not lie at even addresses.
    auto* const odd = reinterpret_cast<char16_t*>(readablePage() + page - 7);
    std::copy_n("\x41\x01\x42\x01\0\0\x42", 7, readablePage() + page - 7);
    EXPECT_EQ(u"\u0141\u0142", textAt(odd, 100));
    EXPECT_EQ(u"cannot be read", textAt(odd + 3, 100)) << "half a unit";
}

TEST_F(MemorySeam, LowBlocksAreZeroedAndHaveAddressesOf32Bits) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{100}, page, 3 * page + 1}) {
        auto* const block = static_cast<unsigned char*>(memory().allocateLow(size));
        ASSERT_TRUE(block);
        EXPECT_LE(reinterpret_cast<std::uintptr_t>(block) + size - 1, 0xFFFFFFFFu);
        EXPECT_TRUE(std::all_of(block, block + size, [](unsigned char byte) { return byte == 0; }));
        std::fill_n(block, size, static_cast<unsigned char>(0xFF));
        memory().freeLow(block, size);
    }
    memory().freeLow(nullptr, 1);
}

}  // namespace
}  // namespace ovno2::platform
