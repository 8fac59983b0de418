#include "pc/convert_uml_file.h"

#include <array>

#include "base/values.h"
#include "core/attempt.h"
#include "pc/byte_table.h"

namespace ovno2::ConvertUmlFile {

namespace {

constexpr Long unchanged = -1;

// The first bytes of UTF-8 pairs: U+00C0 to U+00FF, U+0080 to U+00BF, U+0100 to U+013F, U+0140 to U+017F.
constexpr std::uint8_t upperLatinLead = 195;
constexpr std::uint8_t lowerLatinLead = 194;
constexpr std::uint8_t firstExtendedLead = 196;
constexpr std::uint8_t secondExtendedLead = 197;

constexpr std::size_t mostReplacedControls = 101;  // of each code
constexpr char16_t firstPrintable = u' ';

// The index of the first `unit` at or after `from`, the text's size when there is none.
std::size_t findUnit(TextView text, char16_t unit, std::size_t from = 0) {
    constexpr std::size_t block = 64;
    const char16_t* const units = text.data();
    for (; from + block <= text.size(); from += block) {
        std::uint16_t found = 0;  // as wide as a unit, so that the loop becomes vector code
        for (std::size_t i = 0; i < block; ++i)
            found = static_cast<std::uint16_t>(found | (units[from + i] == unit ? 1 : 0));
        if (found != 0) break;
    }
    while (from < text.size() && units[from] != unit)
        ++from;
    return from;
}

// Rewrites `text` in place from its first `lead` on. At each later `lead`, `step` is told its index, may
// write one unit to `to`, and returns the number of units it has dealt with, or 0 to leave the lead as it is.
template <class Step>
void rewrite(Text& text, char16_t lead, Step step) {
    std::size_t from = findUnit(text, lead);
    if (from == text.size()) return;
    std::size_t to = from;
    while (from < text.size()) {
        if (text[from] == lead) {
            char16_t unit = lead;
            if (const std::size_t dealtWith = step(from, unit)) {
                text[to++] = unit;
                from += dealtWith;
                continue;
            }
        }
        text[to++] = text[from++];
    }
    text.resize(to);
}

// One pass over the pairs that begin with the character of code `lead`; `convert` makes the pair's character
// out of the follower's code, or leaves the pair `unchanged`.
template <class Convert>
void convertPairs(Text& text, const ByteTable& table, std::uint8_t lead, Convert convert) {
    rewrite(text, table.character(lead), [&](std::size_t at, char16_t& unit) -> std::size_t {
        const Long code = at + 1 < text.size() ? table.code(text[at + 1]) : -1;
        const Long converted = code < 0 ? unchanged : convert(code);
        if (converted == unchanged) return 0;
        unit = static_cast<char16_t>(converted);
        return 2;
    });
}

void convertUtf8Pairs(Text& text, const ByteTable& table) {
    const auto character = [&](Long code) -> Long {
        return code >= 0 && code <= 255 ? Long{table.character(static_cast<std::uint8_t>(code))} : unchanged;
    };
    convertPairs(text, table, upperLatinLead, [&](Long code) {
        // The no-break space in "à" often arrives as a plain one.
        return character(code == u' ' ? 224 : code + 64);
    });
    convertPairs(text, table, lowerLatinLead, [&](Long code) {
        return character(code >= 160 && code != 164 && code != 187 ? code - 128 : code);
    });
    convertPairs(text, table, firstExtendedLead,
                 [](Long code) { return code >= 128 ? 0x100 + (code - 128) : unchanged; });
    convertPairs(text, table, secondExtendedLead,
                 [](Long code) { return code >= 128 ? 0x100 + (code - 64) : unchanged; });
}

// The number of a reference: that at the start of at most three characters.
Long referenceNumber(TextView digits) {
    Long number = 0;
    for (const char16_t c : digits) {
        if (c < u'0' || c > u'9') return numericLong(digits);
        number = number * 10 + (c - u'0');
    }
    return number;
}

void convertReferences(Text& text, const ByteTable& table) {
    constexpr std::size_t prefix = 2;  // "&#"
    constexpr std::size_t mostDigits = 3;
    bool ended = false;
    rewrite(text, u'&', [&](std::size_t at, char16_t& unit) -> std::size_t {
        if (ended || at + 1 >= text.size() || text[at + 1] != u'#') return 0;
        const TextView behind = TextView(text).substr(at + prefix, mostDigits + 1);
        const std::size_t end = behind.find(u';');
        if (end == TextView::npos) {
            ended = true;
            return 0;
        }
        const Long number = referenceNumber(behind.substr(0, end));
        if (number < 0 || number > 255) return 0;
        unit = table.character(static_cast<std::uint8_t>(number));
        return prefix + end + 1;
    });
}

void replaceControls(Text& text, TextView keepList) {
    std::array<std::size_t, firstPrintable> left;
    for (char16_t code = 0; code < firstPrintable; ++code)
        left[code] = keepList.find(code) == TextView::npos ? mostReplacedControls : 0;
    for (char16_t& c : text) {
        if (c >= firstPrintable || left[c] == 0) continue;
        --left[c];
        c = u' ';
    }
}

}  // namespace

void ConvertUmlauteFromFile(Text& text, TextView keepList) {
    attempt([&] {
        const ByteTable table;
        const bool hadNul = findUnit(text, u'\0') < text.size();
        convertUtf8Pairs(text, table);
        convertReferences(text, table);
        if (!keepList.empty()) replaceControls(text, keepList);
        if (!hadNul && findUnit(text, u'\0') < text.size()) std::erase(text, u'\0');
        rewrite(text, u'\u00E2', [&](std::size_t at, char16_t& unit) -> std::size_t {
            if (!TextView(text).substr(at).starts_with(u"\u00E2\u201A\u00AC")) return 0;
            unit = u'\u20AC';
            return 3;
        });
        // What escapes a "," never escapes a ";", so one pass does for both.
        rewrite(text, u'\\', [&](std::size_t at, char16_t& unit) -> std::size_t {
            if (at + 1 >= text.size() || (text[at + 1] != u',' && text[at + 1] != u';')) return 0;
            unit = text[at + 1];
            return 2;
        });
    });
}

}  // namespace ovno2::ConvertUmlFile
