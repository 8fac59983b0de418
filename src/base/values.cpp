#include "base/values.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "base/failure.h"
#include "base/unit_blocks.h"

namespace ovno2 {

namespace {

template <class Number, class... Format>
Text digitsOf(Number value, Format... format) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, format...);
    return Text(buffer, result.ptr);
}

// Letters with simple one-to-one case pairs: Latin, Greek and Cyrillic as phones and hosts use them.
char16_t toLower(char16_t c) {
    if (c < 0x80) return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return static_cast<char16_t>(c + 32);
    if ((c >= 0x100 && c <= 0x137 && c != 0x130) || (c >= 0x14A && c <= 0x177)) return c | 1;
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E))
        return (c & 1) != 0 ? static_cast<char16_t>(c + 1) : c;
    if (c == 0x178) return 0xFF;
    if (c >= 0x391 && c <= 0x3AB && c != 0x3A2) return static_cast<char16_t>(c + 32);
    if (c >= 0x410 && c <= 0x42F) return static_cast<char16_t>(c + 32);
    if (c >= 0x400 && c <= 0x40F) return static_cast<char16_t>(c + 80);
    return c;
}

char16_t toUpper(char16_t c) {
    if (c < 0x80) return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
    if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return static_cast<char16_t>(c - 32);
    if (c == 0xFF) return 0x178;
    if ((c >= 0x100 && c <= 0x137 && c != 0x131) || (c >= 0x14A && c <= 0x177))
        return static_cast<char16_t>(c & ~1);
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E))
        return (c & 1) == 0 ? static_cast<char16_t>(c - 1) : c;
    if (c >= 0x3B1 && c <= 0x3CB && c != 0x3C2) return static_cast<char16_t>(c - 32);
    if (c >= 0x430 && c <= 0x44F) return static_cast<char16_t>(c - 32);
    if (c >= 0x450 && c <= 0x45F) return static_cast<char16_t>(c - 80);
    return c;
}

template <char16_t (*Map)(char16_t)>
Text mapped(TextView text) {
    Text result(text);
    for (char16_t& c : result)
        c = Map(c);
    return result;
}

}  // namespace

double numericValue(TextView text) {
    std::size_t i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t'))
        ++i;
    char digits[64];
    std::size_t count = 0;
    bool point = false;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) {
        if (text[i] == u'-') digits[count++] = '-';
        ++i;
    }
    for (; i < text.size() && count < sizeof digits; ++i) {
        const char16_t c = text[i];
        if (c == u'.' && !point)
            point = true;
        else if (c < u'0' || c > u'9')
            break;
        digits[count++] = static_cast<char>(c);
    }
    double value = 0;
    std::from_chars(digits, digits + count, value, std::chars_format::fixed);
    return value;
}

Long numericLong(TextView text) {
    const double value = std::nearbyint(numericValue(text));
    if (value >= std::numeric_limits<Long>::max()) return std::numeric_limits<Long>::max();
    if (value <= std::numeric_limits<Long>::min()) return std::numeric_limits<Long>::min();
    return static_cast<Long>(value);
}

Long roundHalfToEven(double value) {
    const double rounded = std::nearbyint(value);
    if (!(rounded >= std::numeric_limits<Long>::min() && rounded <= std::numeric_limits<Long>::max()))
        throw RuntimeFailure(overflowFailure);
    return static_cast<Long>(rounded);
}

Text decimalText(Long value) {
    return digitsOf(value);
}

Text decimalText(double value) {
    return value == 0 ? Text(u"0") : digitsOf(value, std::chars_format::general, 15);
}

Text decimalText(Single value) {
    return value == 0 ? Text(u"0") : digitsOf(value, std::chars_format::general, 7);
}

Text hexText(std::uint32_t value) {
    Text text = digitsOf(value, 16);
    for (char16_t& c : text)
        c = toUpper(c);
    return text;
}

Text lowerCase(TextView text) {
    return mapped<toLower>(text);
}
Text upperCase(TextView text) {
    return mapped<toUpper>(text);
}

bool equalsIgnoringCase(TextView a, TextView b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (toLower(a[i]) != toLower(b[i])) return false;
    return true;
}

bool containsIgnoringCase(TextView text, TextView part) {
    return lowerCase(text).find(lowerCase(part)) != Text::npos;
}

bool contains(TextView text, char16_t unit) {
    for (; text.size() >= unitsPerBlock; text.remove_prefix(unitsPerBlock)) {
        UnitBlock block;
        std::memcpy(&block, text.data(), sizeof block);
        if (hasUnit(block, unit)) return true;
    }
    for (const char16_t other : text)
        if (other == unit) return true;
    return false;
}

Text trimBlanks(TextView text) {
    const std::size_t first = text.find_first_not_of(u' ');
    if (first == TextView::npos) return {};
    return Text(text.substr(first, text.find_last_not_of(u' ') - first + 1));
}

Text replaceAll(TextView text, TextView from, TextView to) {
    std::size_t at = from.empty() ? TextView::npos : text.find(from);
    if (at == TextView::npos) return Text(text);
    Text result;
    result.reserve(text.size());
    std::size_t done = 0;
    for (; at != TextView::npos; at = text.find(from, done)) {
        result.append(text.substr(done, at - done)).append(to);
        done = at + from.size();
    }
    return result.append(text.substr(done));
}

Text removeAll(TextView text, char16_t unwanted) {
    Text result(text);
    std::erase(result, unwanted);
    return result;
}

std::vector<Text> split(TextView text, char16_t separator) {
    std::vector<Text> parts;
    if (text.empty()) return parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(separator, start);
        parts.emplace_back(text.substr(start, end == TextView::npos ? end : end - start));
        if (end == TextView::npos) return parts;
        start = end + 1;
    }
}

Text join(std::span<const Text> parts, char16_t separator) {
    std::size_t length = parts.empty() ? 0 : parts.size() - 1;
    for (const Text& part : parts)
        length += part.size();
    Text result(length, separator);
    std::size_t at = 0;
    for (const Text& part : parts) {
        part.copy(result.data() + at, part.size());
        at += part.size() + 1;
    }
    return result;
}

void appendPart(Text& line, decimal part) {
    line.append(decimalText(part.value));
}

void appendPart(Text& line, spacedDecimal part) {
    if (part.value >= 0) line.push_back(u' ');
    line.append(decimalText(part.value));
}

void appendPart(Text& line, hex part) {
    line.append(hexText(part.value));
}

}  // namespace ovno2
