#include "simulator/base/text.h"

#include <charconv>
#include <cstdint>
#include <cstring>

namespace ovno2::simulator {
namespace {

constexpr char32_t replacement = 0xFFFD;

bool continues(std::string_view text, std::size_t at) {
    return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
}

constexpr std::size_t blockBytes = sizeof(std::uint64_t);

// Widens a block of ASCII characters; false when it is not all ASCII.
bool widenBlock(const char* text, char16_t* out) {
    std::uint64_t block = 0;
    std::memcpy(&block, text, blockBytes);
    if ((block & 0x8080808080808080) != 0) return false;
    for (std::size_t i = 0; i < blockBytes; ++i)
        out[i] = static_cast<unsigned char>(text[i]);
    return true;
}

// Widens the ASCII characters at the front, by blocks while they last; returns how many. Nearly all text is
// ASCII.
std::size_t widenAscii(const char* text, std::size_t size, char16_t* out) {
    std::size_t done = 0;
    while (done + blockBytes <= size && widenBlock(text + done, out + done))
        done += blockBytes;
    // The last block may overlap the one before.
    const std::size_t last = size - blockBytes;
    if (size >= blockBytes && done > last && widenBlock(text + last, out + last)) return size;
    for (; done < size && static_cast<unsigned char>(text[done]) < 0x80; ++done)
        out[done] = static_cast<unsigned char>(text[done]);
    return done;
}

// The code point at `at`, which moves behind it.
char32_t nextFromUtf8(std::string_view text, std::size_t& at, bool& valid) {
    const auto lead = static_cast<unsigned char>(text[at++]);
    if (lead < 0x80) return lead;
    const auto broken = [&valid] {
        valid = false;
        return replacement;
    };
    const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4) return broken();
    char32_t point = lead & (0x3F >> more);
    for (int i = 0; i < more; ++i) {
        if (!continues(text, at)) return broken();
        point = point << 6 | (static_cast<unsigned char>(text[at++]) & 0x3F);
    }
    const bool tooShort = (more == 2 && point < 0x800) || (more == 3 && point < 0x10000);
    const bool surrogate = point >= 0xD800 && point < 0xE000;
    return tooShort || surrogate || point > 0x10FFFF ? broken() : point;
}

void appendUtf8(std::string& text, char32_t point) {
    if (point < 0x80) {
        text += static_cast<char>(point);
        return;
    }
    const int more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    static constexpr unsigned leads[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(leads[more] | point >> (6 * more));
    for (int i = more - 1; i >= 0; --i)
        text += static_cast<char>(0x80 | (point >> (6 * i) & 0x3F));
}

}  // namespace

char16_t* widenUtf8(std::string_view utf8, char16_t* out, bool& valid) {
    for (std::size_t at = 0;;) {
        const std::size_t plain = widenAscii(utf8.data() + at, utf8.size() - at, out);
        out += plain;
        at += plain;
        if (at == utf8.size()) return out;
        const char32_t point = nextFromUtf8(utf8, at, valid);
        if (point < 0x10000) {
            *out++ = static_cast<char16_t>(point);
        } else {
            *out++ = static_cast<char16_t>(0xD7C0 + (point >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + (point & 0x3FF));
        }
    }
}

bool appendUtf16(std::u16string& text, std::string_view utf8) {
    bool valid = true;
    const std::size_t start = text.size();
    text.resize(start + utf8.size());
    const char16_t* const end = widenUtf8(utf8, text.data() + start, valid);
    text.resize(static_cast<std::size_t>(end - text.data()));
    return valid;
}

std::u16string toUtf16(std::string_view utf8) {
    std::u16string text;
    appendUtf16(text, utf8);
    return text;
}

std::string toUtf8(std::u16string_view utf16) {
    std::string text;
    text.reserve(utf16.size());
    for (std::size_t at = 0; at < utf16.size(); ++at) {
        const char16_t unit = utf16[at];
        const bool lead = unit >= 0xD800 && unit < 0xDC00;
        const bool trail = unit >= 0xDC00 && unit < 0xE000;
        if (lead && at + 1 < utf16.size() && utf16[at + 1] >= 0xDC00 && utf16[at + 1] < 0xE000) {
            appendUtf8(text, 0x10000 + ((unit - 0xD800U) << 10) + (utf16[at + 1] - 0xDC00U));
            ++at;
        } else {
            appendUtf8(text, lead || trail ? replacement : unit);
        }
    }
    return text;
}

std::string toHex(std::string_view bytes) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char byte : bytes) {
        text += digits[static_cast<unsigned char>(byte) >> 4];
        text += digits[static_cast<unsigned char>(byte) & 15];
    }
    return text;
}

bool fromHex(std::string_view digits, std::string& bytes) {
    if (digits.size() % 2 != 0) return false;
    bytes.clear();
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        unsigned byte = 0;
        const char* const end = digits.data() + i + 2;
        if (std::from_chars(digits.data() + i, end, byte, 16).ptr != end) return false;
        bytes += static_cast<char>(byte);
    }
    return true;
}

std::string hexNumber(unsigned long number) {
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, number, 16).ptr;
    std::string text(digits, end);
    for (char& digit : text) {
        if (digit >= 'a') digit = static_cast<char>(digit - 'a' + 'A');
    }
    return text;
}

}  // namespace ovno2::simulator
