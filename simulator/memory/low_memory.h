// The memory that the simulated library hands out: every address fits in a 32-bit record word, also in a
// 64-bit process.
//
// Blocks of like size share spans; a table over all page units leads from any address inside a block back to
// it, so that a free call may name the first text of a structure just as well as its beginning. A freed block
// is filled with 0xDD (and poisoned for an address checker). The World owns the one instance and its lock
// guards it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "library/library_records.h"

namespace ovno2::simulator {

// What a block was handed out as. `held` blocks belong to a session and never count as handed out.
enum class BlockKind : std::uint8_t {
    none,
    string,
    memory,
    device,
    deviceInfo,
    foundDevices,
    media,
    item,
    held
};
inline constexpr std::size_t blockKinds = 9;
const char* nameOf(BlockKind kind);

inline Address addressOf(const void* memory) {
    return static_cast<Address>(reinterpret_cast<std::uintptr_t>(memory));
}

template <typename T>
T* atAddress(Address address) {
    return reinterpret_cast<T*>(static_cast<std::uintptr_t>(address));
}

class LowMemory {
  public:
    struct Block {
        char* start = nullptr;  // null = no live block
        std::uint32_t bytes = 0;
        BlockKind kind = BlockKind::none;
        explicit operator bool() const { return start != nullptr; }
    };

    LowMemory();  // lives as long as the process
    LowMemory(const LowMemory&) = delete;
    LowMemory& operator=(const LowMemory&) = delete;

    // A block of at least one byte, aligned to 16; its content is undefined. Null when memory is used up.
    char* allocate(std::size_t bytes, BlockKind kind);

    // The live block that `inside` points into.
    Block find(const void* inside) const;

    // `start` must be the beginning of a live block.
    void release(char* start);

    // Releases every live block, of whatever kind.
    void releaseAll();

    // Blocks of this kind that are handed out now.
    std::uint64_t live(BlockKind kind) const { return counts[static_cast<std::size_t>(kind)]; }

  private:
    struct Span;
    Span* spanOf(const void* address) const;
    Span* newSpan(std::size_t slotBytes, std::size_t slots);

    std::vector<Span*> units;                       // by page unit of the 32-bit address space
    std::vector<std::vector<Span*>> spansWithRoom;  // by size class
    std::array<std::uint64_t, blockKinds> counts{};
};

}  // namespace ovno2::simulator
