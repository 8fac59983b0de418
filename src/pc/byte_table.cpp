#include "pc/byte_table.h"

#include <algorithm>
#include <cstring>

#include "core/current_platform.h"
#include "pc/ansi.h"

namespace ovno2 {

namespace {

constexpr std::size_t blockSize = 32;

bool isPlain(const std::uint8_t* block) {
    constexpr std::uint64_t highBits = 0x8080808080808080u;
    std::uint64_t words[blockSize / sizeof(std::uint64_t)];
    std::memcpy(words, block, sizeof words);
    return ((words[0] | words[1] | words[2] | words[3]) & highBits) == 0;
}

}  // namespace

ByteTable::ByteTable() : characters_(currentPlatform().codePages().singleByteTable()) {
    singleByte_ = characters_ != nullptr;
    if (singleByte_) return;
    platform::CodePages& pages = currentPlatform().codePages();
    for (std::size_t code = 0; code < codeCount; ++code) {
        ownCharacters_[code] = static_cast<char16_t>(code);
        if (code < firstPageCode) continue;
        const char byte = static_cast<char>(code);
        const Text character = pages.fromAnsi({&byte, 1});
        if (character.size() == 1 && pages.toAnsi(character) == std::string_view(&byte, 1))
            ownCharacters_[code] = character[0];
    }
    characters_ = ownCharacters_.data();
}

void ByteTable::buildSlots() const {
    slots_.fill(0);
    for (std::size_t code = firstPageCode; code < codeCount; ++code) {
        std::size_t slot = slotOf(characters_[code]);
        while (slots_[slot] != 0)
            slot = (slot + 1) % slotCount;
        slots_[slot] = characters_[code];
        codes_[slot] = static_cast<std::uint8_t>(code);
    }
    slotsBuilt_ = true;
}

Long ByteTable::otherCode(char16_t character) const {
    if (!slotsBuilt_) buildSlots();
    for (std::size_t slot = slotOf(character); slots_[slot] != 0; slot = (slot + 1) % slotCount)
        if (slots_[slot] == character) return codes_[slot];
    return -1;
}

void ByteTable::append(Text& text, const std::uint8_t* bytes, std::size_t count) const {
    constexpr std::size_t pieceSize = 64 * blockSize;
    char16_t piece[pieceSize];
    const char16_t* const characters = characters_;
    while (count > 0) {
        const std::size_t length = std::min(count, pieceSize);
        std::size_t i = 0;
        for (; i + blockSize <= length; i += blockSize) {
            if (isPlain(bytes + i)) {
                for (std::size_t k = 0; k < blockSize; ++k)
                    piece[i + k] = bytes[i + k];
            } else {
                for (std::size_t k = 0; k < blockSize; ++k)
                    piece[i + k] = characters[bytes[i + k]];
            }
        }
        for (; i < length; ++i)
            piece[i] = characters[bytes[i]];
        text.append(piece, length);
        bytes += length;
        count -= length;
    }
}

std::string ByteTable::codesOf(TextView text) const {
    if (singleByte_) return toAnsi(text);
    std::string codes(text.size(), '\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (const Long own = code(text[i]); own >= 0) {
            codes[i] = static_cast<char>(own);
        } else if (const std::string fit = toAnsi(text.substr(i, 1)); fit.size() == 1) {
            codes[i] = fit[0];
        }
    }
    return codes;
}

std::string ByteTable::bytesOf(TextView text) const {
    if (singleByte_) return toAnsi(text);
    const bool isByteString = std::ranges::all_of(text, [this](char16_t c) { return code(c) >= 0; });
    return isByteString ? codesOf(text) : toAnsi(text);
}

}  // namespace ovno2
