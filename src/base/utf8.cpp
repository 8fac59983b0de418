#include "base/utf8.h"

namespace ovno2 {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool isHighSurrogate(char16_t c) {
    return (c & 0xFC00) == 0xD800;
}
bool isLowSurrogate(char16_t c) {
    return (c & 0xFC00) == 0xDC00;
}

// The number of bytes a sequence has and the smallest character it may stand for; 0 for a byte that starts
// none.
struct Sequence {
    int length;
    char32_t smallest;
};

Sequence sequenceOf(unsigned char lead) {
    if (lead < 0x80) return {1, 0};
    if (lead >= 0xC2 && lead < 0xE0) return {2, 0x80};
    if (lead >= 0xE0 && lead < 0xF0) return {3, 0x800};
    if (lead >= 0xF0 && lead < 0xF5) return {4, 0x10000};
    return {0, 0};
}

// Reads the character at `at` and moves past it; a broken sequence counts as its first byte alone.
char32_t nextCharacter(std::string_view bytes, std::size_t& at, bool& valid) {
    const auto lead = static_cast<unsigned char>(bytes[at++]);
    const Sequence sequence = sequenceOf(lead);
    if (sequence.length == 1) return lead;
    char32_t c = sequence.length == 0 ? 0 : lead & (0x7Fu >> sequence.length);
    std::size_t i = at;
    for (int left = sequence.length - 1; left > 0 && i < bytes.size(); --left, ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xC0) != 0x80) break;
        c = c << 6 | (byte & 0x3Fu);
    }
    const bool complete = sequence.length > 0 && i == at + static_cast<std::size_t>(sequence.length) - 1;
    if (!complete || c < sequence.smallest || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) {
        valid = false;
        return replacement;
    }
    at = i;
    return c;
}

}  // namespace

bool readUtf8(std::string_view bytes, Text& text) {
    bool valid = true;
    Text result;
    result.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();) {
        const char32_t c = nextCharacter(bytes, at, valid);
        if (c >= 0x10000) {
            result.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
            result.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        } else {
            result.push_back(static_cast<char16_t>(c));
        }
    }
    text = std::move(result);
    return valid;
}

Text fromUtf8(std::string_view bytes) {
    Text text;
    readUtf8(bytes, text);
    return text;
}

void appendUtf8(std::string& bytes, TextView text) {
    constexpr std::size_t longest = 3;  // bytes a unit
    const std::size_t start = bytes.size();
    bytes.resize(start + longest * text.size());
    char* out = bytes.data() + start;
    const auto put = [&](char32_t byte) { *out++ = static_cast<char>(byte); };
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (c < 0x80) {
            put(c);
            continue;
        }
        if (isHighSurrogate(text[i]) && i + 1 < text.size() && isLowSurrogate(text[i + 1]))
            c = (c - 0xD7C0) << 10 | (text[++i] & 0x3FFu);
        else if (isHighSurrogate(text[i]) || isLowSurrogate(text[i]))
            c = replacement;
        if (c < 0x800) {
            put(0xC0 | c >> 6);
        } else if (c < 0x10000) {
            put(0xE0 | c >> 12);
            put(0x80 | (c >> 6 & 0x3F));
        } else {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
            put(0x80 | (c >> 6 & 0x3F));
        }
        put(0x80 | (c & 0x3F));
    }
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
}

std::string toUtf8(TextView text) {
    std::string bytes;
    appendUtf8(bytes, text);
    return bytes;
}

Text fromUtf16Bytes(std::string_view bytes) {
    Text text(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                        static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    return text;
}

std::string toUtf16Bytes(TextView text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (char16_t c : text) {
        bytes.push_back(static_cast<char>(c & 0xFF));
        bytes.push_back(static_cast<char>(c >> 8));
    }
    return bytes;
}

bool isWellFormed(TextView text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isLowSurrogate(text[i])) return false;
        if (isHighSurrogate(text[i]) && (++i == text.size() || !isLowSurrogate(text[i]))) return false;
    }
    return true;
}

}  // namespace ovno2
