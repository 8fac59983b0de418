// Calls into a library: the platform's own convention, and on 32-bit Windows libraries that expect another
// number of arguments than they get.
#include "platform_native/call.h"

#include <vector>

#include "common/platform_test.h"
#include "platform_native/last_error.h"

#ifdef _WIN32
#include <windows.h>
#define LIBRARY_CALL __stdcall
#else
#define LIBRARY_CALL
#endif

namespace ovno2::platform {
namespace {

std::vector<std::uint32_t> heard;

std::uint32_t LIBRARY_CALL takeNothing() {
    heard = {};
    return 0xFFFFFFFE;
}
std::uint32_t LIBRARY_CALL takeFive(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d,
                                    std::uint32_t e) {
    heard = {a, b, c, d, e};
    return 5;
}
const char16_t* LIBRARY_CALL nextUnit(const char16_t* text, std::uint32_t* times) {
    ++*times;
    return text + 1;
}

template <class Function>
void* addressOf(Function* function) {
    return reinterpret_cast<void*>(function);
}
using Word = std::uint32_t;

TEST(LibraryCall, ArgumentsAndResultsArriveAsTheyAre) {
    ArgumentMismatch mismatch = 99;
    EXPECT_EQ(0xFFFFFFFE, NativeCall<Word()>::call(addressOf(takeNothing), mismatch));
    EXPECT_EQ(0, mismatch);
    EXPECT_EQ(5u, (NativeCall<Word(Word, Word, Word, Word, Word)>::call(addressOf(takeFive), mismatch, 1,
                                                                        0xFFFFFFFF, 3, 0, 5)));
    EXPECT_EQ(0, mismatch);
    EXPECT_EQ((std::vector<Word>{1, 0xFFFFFFFF, 3, 0, 5}), heard);
    const char16_t text[] = u"ab";
    Word times = 0;
    EXPECT_EQ(text + 1, (NativeCall<const char16_t*(const char16_t*, Word*)>::call(addressOf(nextUnit),
                                                                                   mismatch, text, &times)));
    EXPECT_EQ(1u, times);
}

TEST(LibraryCall, TheErrorValueIsThatOfTheThread) {
    clearLastError();
    EXPECT_EQ(0, lastError());
#ifdef _WIN32
    SetLastError(ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ERROR_INVALID_PARAMETER, lastError());
#else
    errno = EINVAL;
    EXPECT_EQ(EINVAL, lastError());
#endif
    clearLastError();
    EXPECT_EQ(0, lastError());
}

#ifdef _WIN32

// Calls `function` with as many words as `Words` has elements; their mismatch is what it returns.
template <class... Words>
ArgumentMismatch mismatchOf(void* function, Words... words) {
    ArgumentMismatch mismatch = 99;
    NativeCall<std::uint32_t(Words...)>::call(function, mismatch, words...);
    return mismatch;
}

Word __stdcall takeOne(Word a) {
    heard = {a};
    return 1;
}
Word __cdecl takeTwoAndLeaveThem(Word a, Word b) {
    heard = {a, b};
    return 2;
}

TEST(LibraryCall, ACalleeThatExpectsMoreFindsZerosAndOneThatExpectsLessIsReportedToo) {
    EXPECT_EQ(16, mismatchOf(addressOf(takeFive), Word{7}));
    EXPECT_EQ((std::vector<Word>{7, 0, 0, 0, 0}), heard);
    EXPECT_EQ(4, mismatchOf(addressOf(takeFive), Word{7}, Word{8}, Word{9}, Word{10}));
    EXPECT_EQ((std::vector<Word>{7, 8, 9, 10, 0}), heard);
    EXPECT_EQ(20, mismatchOf(addressOf(takeFive)));
    EXPECT_EQ(-4, mismatchOf(addressOf(takeOne), Word{7}, Word{8}));
    EXPECT_EQ((std::vector<Word>{7}), heard);
    EXPECT_EQ(-12, mismatchOf(addressOf(takeOne), Word{1}, Word{2}, Word{3}, Word{4}));
}

TEST(LibraryCall, ACalleeThatLeavesTheArgumentsToItsCallerIsNone) {
    EXPECT_EQ(0, mismatchOf(addressOf(takeTwoAndLeaveThem), Word{1}, Word{2}));
    EXPECT_EQ((std::vector<Word>{1, 2}), heard);
    EXPECT_EQ(0, mismatchOf(addressOf(takeTwoAndLeaveThem), Word{1}));
    EXPECT_EQ((std::vector<Word>{1, 0}), heard);
}

// What the callee removed must not stay missing: a frame that lost words would return into nothing.
TEST(LibraryCall, AnyNumberOfUnequalCallsLeavesTheStackAsItWas) {
    volatile Word before = 0x0BADF00D;
    for (int i = 0; i < 100000; ++i) {
        mismatchOf(addressOf(takeNothing), Word{1}, Word{2}, Word{3});
        mismatchOf(addressOf(takeFive));
    }
    EXPECT_EQ(0x0BADF00D, before);
}

extern "C" {
std::uintptr_t ovno2StackAtEntry = 0;
__attribute__((naked)) void ovno2NoteStack() {
    asm("movl %esp, _ovno2StackAtEntry\n"
        "ret\n");
}
}

TEST(LibraryCall, TheStackIsAlignedAsCompilersExpectIt) {
    for (const std::size_t count : {0u, 1u, 2u, 3u, 7u}) {
        const std::vector<Word> words(count + 1);
        ArgumentMismatch mismatch = 0;
        callWithWords(addressOf(ovno2NoteStack), words.data(), count, mismatch);
        EXPECT_EQ(0u, (ovno2StackAtEntry + sizeof(Word)) % 16) << count;
    }
}

#endif

}  // namespace
}  // namespace ovno2::platform
