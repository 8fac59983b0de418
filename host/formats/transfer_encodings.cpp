#include "host/formats/transfer_encodings.h"

#include <array>
#include <cstdint>

namespace ovno2::host {

namespace {

constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t noDigit = 0xFF;

// The value of each character as a digit of base64.
constexpr std::array<std::uint8_t, 256> base64Values = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(noDigit);
    for (std::size_t i = 0; i < digits.size(); ++i)
        values[static_cast<unsigned char>(digits[i])] = static_cast<std::uint8_t>(i);
    return values;
}();

int hexadecimalValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

}  // namespace

std::string fromBase64(std::string_view text, bool& whole) {
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    std::size_t count = 0;  // of digits
    bool ended = false;
    whole = true;
    for (const char c : text) {
        const std::uint8_t value = base64Values[static_cast<unsigned char>(c)];
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
        if (c == '=') {
            ended = true;
            continue;
        }
        if (value == noDigit || ended) {
            whole = false;
            continue;
        }
        bits = bits << 6 | value;
        if (++count % 4 == 0)
            for (const int shift : {16, 8, 0})
                bytes.push_back(static_cast<char>(bits >> shift & 0xFF));
    }
    const std::size_t left = count % 4;
    if (left == 1) whole = false;
    if (left >= 2) bytes.push_back(static_cast<char>(bits >> (left == 2 ? 4 : 10) & 0xFF));
    if (left == 3) bytes.push_back(static_cast<char>(bits >> 2 & 0xFF));
    return bytes;
}

std::string toBase64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto byte = [&](std::size_t place) {
            return place < bytes.size() ? static_cast<unsigned char>(bytes[place]) : 0u;
        };
        const std::uint32_t bits = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
        for (const int shift : {18, 12, 6, 0})
            text.push_back(digits[bits >> shift & 0x3F]);
        for (std::size_t missing = i + 3; missing > bytes.size(); --missing)
            text[text.size() - (missing - bytes.size())] = '=';
    }
    return text;
}

std::string fromQuotedPrintable(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '=' && i + 2 < text.size()) {
            const int high = hexadecimalValue(text[i + 1]), low = hexadecimalValue(text[i + 2]);
            if (high >= 0 && low >= 0) {
                bytes.push_back(static_cast<char>(high << 4 | low));
                i += 2;
                continue;
            }
        }
        bytes.push_back(text[i]);
    }
    return bytes;
}

}  // namespace ovno2::host
