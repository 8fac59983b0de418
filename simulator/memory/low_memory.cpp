#include "simulator/memory/low_memory.h"

#include <algorithm>
#include <cstring>

#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

constexpr std::size_t addressUnits = (std::uint64_t{1} << 32) / system::pageUnit;
constexpr int freedFill = 0xDD;

// Sizes of blocks that share a span; larger ones get pages of their own.
constexpr std::size_t classSizes[] = {16,  32,   48,   64,   96,   128,  192,  256,  384,  512,
                                      768, 1024, 1536, 2048, 3072, 4096, 6144, 8192, 16384};
constexpr std::size_t classes = std::size(classSizes);
constexpr std::size_t largestShared = classSizes[classes - 1];

std::size_t classOf(std::size_t bytes) {
    return static_cast<std::size_t>(std::lower_bound(classSizes, classSizes + classes, bytes) - classSizes);
}

std::size_t roundedToUnits(std::size_t bytes) {
    return (bytes + system::pageUnit - 1) / system::pageUnit * system::pageUnit;
}

}  // namespace

const char* nameOf(BlockKind kind) {
    static constexpr const char* names[blockKinds] = {
        "none", "strings", "blocks", "devices", "deviceInfos", "foundDevices", "media", "items", "held"};
    return names[static_cast<std::size_t>(kind)];
}

struct LowMemory::Span {
    struct Slot {
        std::uint32_t bytes = 0;
        BlockKind kind = BlockKind::none;
    };

    char* base;
    std::size_t pageBytes;
    std::size_t slotBytes;
    std::vector<Slot> slots;
    std::vector<std::uint32_t> freeSlots;

    std::size_t slotAt(const void* address) const {
        return static_cast<std::size_t>(static_cast<const char*>(address) - base) / slotBytes;
    }
};

LowMemory::LowMemory() : units(addressUnits), spansWithRoom(classes) {}

LowMemory::Span* LowMemory::spanOf(const void* address) const {
    const auto number = reinterpret_cast<std::uintptr_t>(address);
    const std::uintptr_t unit = number / system::pageUnit;
    return unit < addressUnits ? units[unit] : nullptr;
}

LowMemory::Span* LowMemory::newSpan(std::size_t slotBytes, std::size_t slots) {
    const std::size_t pageBytes = roundedToUnits(slotBytes * slots);
    auto span = std::make_unique<Span>();
    span->slotBytes = slotBytes;
    span->pageBytes = pageBytes;
    span->slots.resize(slots);
    span->freeSlots.resize(slots);
    for (std::size_t i = 0; i < slots; ++i)
        span->freeSlots[i] = static_cast<std::uint32_t>(slots - 1 - i);
    span->base = static_cast<char*>(system::takePages(pageBytes));
    if (span->base == nullptr) return nullptr;
    system::poison(span->base, pageBytes);
    const std::size_t first = reinterpret_cast<std::uintptr_t>(span->base) / system::pageUnit;
    for (std::size_t i = 0; i < pageBytes / system::pageUnit; ++i)
        units[first + i] = span.get();
    return span.release();
}

char* LowMemory::allocate(std::size_t bytes, BlockKind kind) {
    if (bytes == 0) bytes = 1;
    if (bytes > 0x7FFFFFFF) return nullptr;
    Span* span = nullptr;
    if (bytes > largestShared) {
        span = newSpan(roundedToUnits(bytes), 1);
        if (span == nullptr) return nullptr;
    } else {
        const std::size_t sizeClass = classOf(bytes);
        std::vector<Span*>& withRoom = spansWithRoom[sizeClass];
        if (withRoom.empty()) {
            const std::size_t slotBytes = classSizes[sizeClass];
            span = newSpan(slotBytes, system::pageUnit / slotBytes);
            if (span == nullptr) return nullptr;
            withRoom.push_back(span);
        }
        span = withRoom.back();
        if (span->freeSlots.size() == 1) withRoom.pop_back();
    }
    const std::uint32_t slot = span->freeSlots.back();
    span->freeSlots.pop_back();
    span->slots[slot] = {static_cast<std::uint32_t>(bytes), kind};
    ++counts[static_cast<std::size_t>(kind)];
    char* const start = span->base + slot * span->slotBytes;
    system::unpoison(start, bytes);
    return start;
}

LowMemory::Block LowMemory::find(const void* inside) const {
    const Span* const span = spanOf(inside);
    if (span == nullptr) return {};
    const std::size_t slot = span->slotAt(inside);
    if (slot >= span->slots.size() || span->slots[slot].kind == BlockKind::none) return {};
    char* const start = span->base + slot * span->slotBytes;
    if (static_cast<std::size_t>(static_cast<const char*>(inside) - start) >= span->slots[slot].bytes)
        return {};
    return {start, span->slots[slot].bytes, span->slots[slot].kind};
}

void LowMemory::release(char* start) {
    Span* const span = spanOf(start);
    const std::size_t slot = span->slotAt(start);
    Span::Slot& entry = span->slots[slot];
    --counts[static_cast<std::size_t>(entry.kind)];
    if (span->slotBytes > largestShared) {
        const std::size_t first = reinterpret_cast<std::uintptr_t>(span->base) / system::pageUnit;
        for (std::size_t i = 0; i < span->pageBytes / system::pageUnit; ++i)
            units[first + i] = nullptr;
        system::unpoison(span->base, span->pageBytes);
        system::givePages(span->base, span->pageBytes);
        delete span;
        return;
    }
    std::memset(start, freedFill, entry.bytes);
    system::poison(start, span->slotBytes);
    entry = {};
    if (span->freeSlots.empty()) spansWithRoom[classOf(span->slotBytes)].push_back(span);
    span->freeSlots.push_back(static_cast<std::uint32_t>(slot));
}

void LowMemory::releaseAll() {
    for (std::size_t unit = 0; unit < addressUnits; ++unit) {
        Span* const span = units[unit];
        if (span == nullptr) continue;
        unit += span->pageBytes / system::pageUnit - 1;
        const bool own = span->slotBytes > largestShared;
        char* const base = span->base;
        const std::size_t slots = span->slots.size();
        for (std::size_t slot = 0; slot < slots; ++slot) {
            if (own || span->slots[slot].kind != BlockKind::none)
                release(base + slot * (own ? 0 : span->slotBytes));
        }
    }
}

}  // namespace ovno2::simulator
