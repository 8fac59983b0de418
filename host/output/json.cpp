#include "host/output/json.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace ovno2::host {

namespace {

constexpr std::size_t pieceSize = 65536;

constexpr std::uint16_t asciiEnd = 0x80;
constexpr char16_t highControlsEnd = 0xA0;  // those of 8 bits: a terminal would obey them
constexpr char16_t threeBytes = 0x800;      // from here on a character takes three bytes of UTF-8 or more

constexpr char asItIs = 0;
constexpr char asNumber = 'u';

// By ASCII character: how it is written in quotes, as itself or with what behind a "\".
constexpr std::array<char, asciiEnd> escapes = [] {
    std::array<char, asciiEnd> table{};
    for (std::size_t control = 0; control < 0x20; ++control)
        table[control] = asNumber;
    table['\b'] = 'b';
    table['\t'] = 't';
    table['\n'] = 'n';
    table['\f'] = 'f';
    table['\r'] = 'r';
    table['"'] = '"';
    table['\\'] = '\\';
    return table;
}();

char* writeEscaped(char* to, char16_t unit, char escape) {
    constexpr const char* digits = "0123456789ABCDEF";
    *to++ = '\\';
    *to++ = escape;
    if (escape != asNumber) return to;
    for (const int digit : {0, 0, unit >> 4, unit & 0xF})
        *to++ = digits[digit];
    return to;
}

bool isPlain(char16_t unit) {
    return unit < asciiEnd && escapes[unit] == asItIs;
}

// Most text is ASCII without escapes. Four units are looked at and copied together: false when one of them
// is not plain.
constexpr std::ptrdiff_t blockSize = 4;

constexpr std::uint64_t inEachUnit(std::uint16_t value) {
    return value * std::uint64_t{0x0001000100010001};
}

constexpr bool hasUnit(std::uint64_t block, std::uint16_t unit) {
    const std::uint64_t difference = block ^ inEachUnit(unit);
    return ((difference - inEachUnit(1)) & ~difference & inEachUnit(0x8000)) != 0;
}

bool copyPlainBlock(char* to, const char16_t* units) {
    std::uint64_t block;
    std::memcpy(&block, units, sizeof block);
    if ((block & inEachUnit(0xFF80)) != 0) return false;  // not ASCII
    // Adding this sets the top bit of every unit but the control characters.
    if ((~(block + inEachUnit(0x8000 - 0x20)) & inEachUnit(0x8000)) != 0) return false;
    if (hasUnit(block, u'"') || hasUnit(block, u'\\')) return false;
    block = (block | block >> 8) & 0x0000FFFF0000FFFF;
    block |= block >> 16;
    std::memcpy(to, &block, blockSize);
    return true;
}

// Writes what is not plain: a character, or a run of characters that take three bytes and more.
char* writeSpecial(char* to, const char16_t*& unit, const char16_t* end) {
    if (*unit < asciiEnd) {
        to = writeEscaped(to, *unit, escapes[*unit]);
        ++unit;
    } else if (*unit < highControlsEnd) {
        to = writeEscaped(to, *unit, asNumber);
        ++unit;
    } else if (*unit < threeBytes) {
        *to++ = static_cast<char>(0xC0 | *unit >> 6);
        *to++ = static_cast<char>(0x80 | (*unit & 0x3F));
        ++unit;
    } else {
        const char16_t* const run = unit;
        while (unit != end && *unit >= threeBytes)
            ++unit;
        const std::string bytes = toUtf8({run, unit});
        to = std::copy(bytes.begin(), bytes.end(), to);
    }
    return to;
}

}  // namespace

char* writeQuoted(char* to, TextView text) {
    *to++ = '"';
    const char16_t* unit = text.data();
    const char16_t* const end = unit + text.size();
    while (unit != end) {
        for (; end - unit >= blockSize && copyPlainBlock(to, unit); unit += blockSize)
            to += blockSize;
        for (; unit != end && isPlain(*unit); ++unit)
            *to++ = static_cast<char>(*unit);
        if (unit != end) to = writeSpecial(to, unit, end);
    }
    *to++ = '"';
    return to;
}

JsonLine& JsonLines::next() {
    if (buffer_.GetSize() >= pieceSize) handOn();
    add(isEmpty_ ? "[\n" : ",\n");
    isEmpty_ = false;
    line_.Reset(buffer_);
    return line_;
}

void JsonLines::end() {
    add(isEmpty_ ? "[]\n" : "\n]\n");
    handOn();
}

void JsonLines::add(std::string_view text) {
    std::copy(text.begin(), text.end(), buffer_.Push(text.size()));
}

void JsonLines::handOn() {
    write_({buffer_.GetString(), buffer_.GetSize()});
    buffer_.Clear();
}

}  // namespace ovno2::host
