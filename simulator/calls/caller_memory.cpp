#include "simulator/calls/caller_memory.h"

#include <algorithm>
#include <cstring>

#include "simulator/calls/memory_calls.h"
#include "simulator/images/date_text.h"

namespace ovno2::simulator {
namespace {

constexpr std::size_t longestText = 65536;  // UTF-16 units

}  // namespace

bool copyFrom(const World& world, Address from, std::size_t bytes, void* to) {
    const auto* const source = atAddress<const char>(from);
    const LowMemory::Block block = world.memory.find(source);
    const bool inside = block && source + bytes <= block.start + block.bytes;
    if (!inside && (block || !system::readable(source, bytes))) return false;
    std::memcpy(to, source, bytes);
    return true;
}

void CallerMemory::fail(const char* what, Address address) const {
    throw Refused{misused(world, "CAWriteItem", what, atAddress<void>(address))};
}

void CallerMemory::take(Address from, std::size_t bytes, void* to) const {
    const LowMemory::Block block = world.memory.find(atAddress<void>(from));
    const auto parts = block ? world.releasedParts.find(block.start) : world.releasedParts.end();
    const bool released = parts != world.releasedParts.end() &&
                          std::find(parts->second.begin(), parts->second.end(), from) != parts->second.end();
    if (released || !copyFrom(world, from, bytes, to)) fail("an address that cannot be read", from);
}

std::optional<std::u16string> CallerMemory::readText(Address from) const {
    if (from == 0) return std::nullopt;
    std::u16string text;
    char16_t unit = 0;
    take(from, sizeof unit, &unit);
    const LowMemory::Block block = world.memory.find(atAddress<void>(from));
    if (block && from % sizeof unit == 0) {
        // One of the simulator's own blocks: the text ends in it.
        const auto* const first = atAddress<const char16_t>(from);
        const auto place = static_cast<std::size_t>(atAddress<char>(from) - block.start);
        const std::size_t units = std::min((block.bytes - place) / sizeof unit, longestText);
        const char16_t* const end = std::char_traits<char16_t>::find(first, units, u'\0');
        if (end == nullptr) fail("a text without an end", from);
        return std::u16string(first, end);
    }
    for (take(from, sizeof unit, &unit); unit != 0; take(from, sizeof unit, &unit)) {
        text += unit;
        from += sizeof unit;
        if (text.size() == longestText) fail("a text without an end", from);
    }
    return text;
}

CallerMemory::Words CallerMemory::readDataItem(Address from, std::size_t itemBytes) const {
    Word words[5];
    take(from, itemBytes, words);
    const bool sized = itemBytes == sizeof(library::DataItemRecord);
    if (sized && words[0] != itemBytes) throw Refused{status::wrongRecordSize};
    const Word* const word = sized ? words + 1 : words;
    if (word[2] > 0xFFFF) throw Refused{status::invalidParameter};
    return {word[0], word[1], word[2], word[3]};
}

library::DateRecord CallerMemory::readDate(Address from) const {
    library::DateRecord date{};
    take(from, sizeof date, &date);
    requireDate(date);
    return date;
}

void requireDate(const library::DateRecord& date) {
    if (!isDate(date)) throw Refused{status::invalidParameter};
}

}  // namespace ovno2::simulator
