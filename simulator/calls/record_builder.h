// Builds one block of library memory out of records and texts that point at each other. No state beyond its
// own.
#pragma once

#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/calls/serve.h"

namespace ovno2::simulator {

class RecordBuilder {
  public:
    RecordBuilder() {
        bytes.reserve(usualBytes);
        pointers.reserve(usualPointers);
    }

    // Room for `count` words, all 0; the offset of the first.
    std::size_t addWords(std::size_t count) {
        bytes.resize((bytes.size() + 3) / 4 * 4);
        const std::size_t at = bytes.size();
        bytes.resize(at + count * sizeof(Word));
        return at;
    }
    std::size_t addText(std::u16string_view text) {
        bytes.resize((bytes.size() + 1) / 2 * 2);
        const std::size_t at = bytes.size();
        bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
        bytes.append(sizeof(char16_t), '\0');
        return at;
    }
    std::size_t addBytes(std::string_view some) {
        const std::size_t at = bytes.size();
        bytes.append(some);
        return at;
    }

    void setWord(std::size_t record, std::size_t word, Word value) {
        std::memcpy(bytes.data() + record + word * sizeof(Word), &value, sizeof value);
    }
    // The word is to hold the address of what stands at offset `target`.
    void setPointer(std::size_t record, std::size_t word, std::size_t target) {
        pointers.push_back({record + word * sizeof(Word), target});
    }
    // A text and the word that points to it; without a text the word stays 0.
    void setText(std::size_t record, std::size_t word, const std::optional<std::u16string>& text) {
        if (text) setPointer(record, word, addText(*text));
    }

    // The finished block.
    char* finish(World& world, BlockKind kind) const {
        char* const block = takeMemory(world, bytes.size(), kind);
        std::memcpy(block, bytes.data(), bytes.size());
        for (const auto& [place, target] : pointers) {
            const Address address = addressOf(block + target);
            std::memcpy(block + place, &address, sizeof address);
        }
        return block;
    }

  private:
    static constexpr std::size_t usualBytes = 512;
    static constexpr std::size_t usualPointers = 8;

    std::string bytes;
    std::vector<std::pair<std::size_t, std::size_t>> pointers;
};

// Applies the plan's pokes that name `record` to records of `words` words each, which lie `stride` bytes
// apart.
inline void pokeRecords(World& world, const std::vector<const Poke*>& pokes, std::string_view record,
                        void* first, std::size_t count, std::size_t words, std::size_t stride) {
    for (const Poke* const poke : pokes) {
        if (poke->record != record || poke->index >= count) continue;
        world.plan.apply(*poke, static_cast<char*>(first) + poke->index * stride, words);
    }
}

}  // namespace ovno2::simulator
