// The module's side of the library's memory: what it hands over, and guarded copies of what it gets.
//
// Nothing the library fills in is read in place. `copyRecord` and `copyBlock` copy a block whole or fail with
// RuntimeFailure 5, so that a wild pointer or size costs one skipped step and nothing else.
#pragma once

#include <type_traits>
#include <vector>

#include "core/attempt.h"
#include "core/current_platform.h"
#include "library/library.h"

namespace ovno2::library {

// 0 and -1 stand for "nothing there" throughout the library.
inline bool isAddress(Address address) {
    return address != 0 && address != 0xFFFFFFFFu;
}

inline void* pointerTo(Address address) {
    return reinterpret_cast<void*>(
        static_cast<std::uintptr_t>(address));  // NOLINT: the library's words are addresses
}

// The word under which the library knows a block below 4 GiB.
inline Address addressOf(const void* pointer) {
    return static_cast<Address>(reinterpret_cast<std::uintptr_t>(pointer));
}

template <class Record>
void copyRecord(Address from, Record& to) {
    static_assert(std::is_trivially_copyable_v<Record>);
    Record copy;
    if (!isAddress(from) || !currentPlatform().memory().read(pointerTo(from), sizeof copy, &copy))
        throw RuntimeFailure(invalidProcedureCall);
    to = copy;
}

// No phone has a list or a picture of more bytes; a library that claims one is not believed.
inline constexpr std::size_t largestBlock = std::size_t{64} << 20;

// `count` elements that lie `stride` bytes apart are count * stride bytes; a size that cannot be read, or is
// beyond `largestBlock`, fails before more than a page is allocated. The form with a vector of the caller's
// keeps that one's room; what it holds after a failure is unspecified.
template <class Element>
void copyBlock(Address from, std::size_t count, std::vector<Element>& block) {
    static_assert(std::is_trivially_copyable_v<Element>);
    constexpr std::size_t harmlessSize = 4096;  // bytes
    const std::size_t size = count * sizeof(Element);
    platform::Memory& memory = currentPlatform().memory();
    if (count != 0 && (!isAddress(from) || count > largestBlock / sizeof(Element) ||
                       (size > harmlessSize && !memory.readable(pointerTo(from), size))))
        throw RuntimeFailure(invalidProcedureCall);
    block.resize(count);
    if (count != 0 && !memory.read(pointerTo(from), size, block.data()))
        throw RuntimeFailure(invalidProcedureCall);
}
template <class Element>
std::vector<Element> copyBlock(Address from, std::size_t count) {
    std::vector<Element> block;
    copyBlock(from, count, block);
    return block;
}

// A device's text as the host sees it: through the system's code page, cut to `limit` bytes of it. Empty when
// it is not there or cannot be read.
Text codePageText(Address address, std::size_t limit = 255);

// A text copied into the library's memory for the length of a call; null when the library has no room for it.
class LibraryString {
  public:
    explicit LibraryString(const Text& text) : text_(CONAAllocString.tried(text.c_str())) {}
    ~LibraryString() {
        if (text_) CONAFreeString.tried(text_);
    }
    LibraryString(const LibraryString&) = delete;
    LibraryString& operator=(const LibraryString&) = delete;
    char16_t* get() const { return text_; }

  private:
    char16_t* text_;
};

// A raw block of the library's memory for the length of a call; null when there is no room.
class LibraryBlock {
  public:
    explicit LibraryBlock(std::size_t bytes) : block_(CONAAllocMemory.tried(static_cast<Word>(bytes))) {}
    ~LibraryBlock() {
        if (block_) CONAFreeMemory.tried(block_);
    }
    LibraryBlock(const LibraryBlock&) = delete;
    LibraryBlock& operator=(const LibraryBlock&) = delete;
    void* get() const { return block_; }

  private:
    void* block_;
};

}  // namespace ovno2::library
