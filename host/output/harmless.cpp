#include "host/output/harmless.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace ovno2::host {

namespace {

constexpr unsigned char leadOfLatin1 = 0xC2;  // U+0080 to U+00BF

// Bytes that a control character may begin with.
constexpr std::array<bool, 256> suspicious = [] {
    std::array<bool, 256> table{};
    for (std::size_t control = 0; control < 0x20; ++control)
        table[control] = true;
    table['\n'] = table['\t'] = false;
    table[leadOfLatin1] = true;
    return table;
}();

unsigned char byteAt(std::string_view text, std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}

bool isHighControl(std::string_view text, std::size_t i) {
    return byteAt(text, i) == leadOfLatin1 && byteAt(text, i + 1) >= 0x80 && byteAt(text, i + 1) < 0xA0;
}

constexpr std::uint64_t inEachByte(std::uint8_t value) {
    return value * std::uint64_t{0x0101010101010101};
}

// Nearly no text has any; eight bytes are looked at together. True also for a line's end and some letters.
bool mayHoldControls(const char* bytes) {
    std::uint64_t block;
    std::memcpy(&block, bytes, sizeof block);
    const std::uint64_t lead = block ^ inEachByte(leadOfLatin1);
    const std::uint64_t low = (block - inEachByte(0x20)) & ~block;
    return ((low | ((lead - inEachByte(1)) & ~lead)) & inEachByte(0x80)) != 0;
}

// Where the next control character stands, from `i` on.
std::size_t nextControl(std::string_view text, std::size_t i) {
    constexpr std::size_t blockSize = sizeof(std::uint64_t);
    while (i < text.size()) {
        const std::size_t left = text.size() - i;
        if (left >= blockSize && !mayHoldControls(text.data() + i)) {
            i += blockSize;
            continue;
        }
        for (const std::size_t end = i + std::min(left, blockSize); i < end; ++i)
            if (suspicious[byteAt(text, i)] && (byteAt(text, i) != leadOfLatin1 || isHighControl(text, i)))
                return i;
    }
    return i;
}

}  // namespace

bool isHarmless(std::string_view text) {
    return nextControl(text, 0) == text.size();
}

std::string harmless(std::string_view text) {
    std::string safe;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t control = nextControl(text, i);
        safe.append(text.substr(i, control - i));
        if (control == text.size()) break;
        const unsigned char byte = byteAt(text, control);
        i = control + (byte == leadOfLatin1 ? 2 : 1);
        if (byte == leadOfLatin1)
            safe += "\uFFFD";
        else  // U+2400 and on
            safe.append("\xE2\x90").push_back(static_cast<char>(0x80 + byte));
    }
    return safe;
}

}  // namespace ovno2::host
