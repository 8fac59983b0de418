#include "platform/code_page_table.h"

namespace ovno2::platform {

namespace {

constexpr std::size_t characterCount = 0x10000;

// The plain letters behind U+00C0 to U+017F; a blank where there is none.
constexpr TextView baseLetters =
    u"AAAAAAACEEEEIIIIDNOOOOO OUUUUY  aaaaaaaceeeeiiiidnooooo ouuuuy y"
    u"AaAaAaCcCcCcCcDdDdEeEeEeEeEeGgGgGgGgHhHhIiIiIiIiIi  JjKk LlLlLlLlLlNnNnNn   OoOoOoOoRrRrRrSsSsSsSs"
    u"TtTtTtUuUuUuUuUuUuWwYyYZzZzZz ";
static_assert(baseLetters.size() == 0x180 - 0xC0);

char16_t closestPlainCharacter(char16_t c) {
    if (c >= 0xC0 && c < 0x180) return baseLetters[c - 0xC0] == u' ' ? u'\0' : baseLetters[c - 0xC0];
    if (c >= 0xFF01 && c <= 0xFF5E) return static_cast<char16_t>(c - 0xFF01 + u'!');  // full-width forms
    if (c == 0xA0 || (c >= 0x2000 && c <= 0x200A) || c == 0x3000) return u' ';
    if ((c >= 0x2010 && c <= 0x2015) || c == 0x2212) return u'-';
    if ((c >= 0x2018 && c <= 0x201B) || c == 0x2032) return u'\'';
    if (c >= 0x201C && c <= 0x201F) return u'"';
    if (c == 0x2044 || c == 0x2215) return u'/';
    if (c == 0x2039) return u'<';
    if (c == 0x203A) return u'>';
    return u'\0';
}

}  // namespace

CodePageTable::CodePageTable() : codes_(characterCount, noCode) {
    for (std::size_t code = 0; code < singles_.size(); ++code) {
        singles_[code] = static_cast<char16_t>(code);
        codes_[code] = static_cast<std::uint16_t>(code);
    }
}

void CodePageTable::define(std::uint16_t code, char16_t character) {
    if (code < singles_.size()) {
        // The character that stood there for want of a better one has no code of its own any more.
        if (codes_[singles_[code]] == code) codes_[singles_[code]] = noCode;
        singles_[code] = character;
        codes_[character] = code;
    } else {
        pairs_[code] = character;
        if (!holds(character)) codes_[character] = code;
    }
}

void CodePageTable::defineLeadByte(std::uint8_t lead) {
    if (pairs_.empty()) pairs_.resize(characterCount);
    if (codes_[singles_[lead]] == lead) codes_[singles_[lead]] = noCode;
    leads_[lead] = true;
}

void CodePageTable::addBestFits() {
    for (std::size_t c = 0x80; c < characterCount; ++c) {
        if (holds(static_cast<char16_t>(c))) continue;
        if (const char16_t plain = closestPlainCharacter(static_cast<char16_t>(c))) codes_[c] = codes_[plain];
    }
}

Text CodePageTable::fromAnsi(std::string_view bytes) const {
    Text text(bytes.size(), u'\0');
    if (!isDoubleByte()) {
        for (std::size_t i = 0; i < bytes.size(); ++i)
            text[i] = singles_[static_cast<unsigned char>(bytes[i])];
        return text;
    }
    std::size_t length = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        if (!leads_[first]) {
            text[length++] = singles_[first];
        } else if (i + 1 == bytes.size()) {
            text[length++] = u'?';  // half a character
        } else {
            const auto second = static_cast<unsigned char>(bytes[++i]);
            const char16_t c = pairs_[static_cast<std::size_t>(first) << 8 | second];
            text[length++] = c ? c : u'?';
        }
    }
    text.resize(length);
    return text;
}

std::string CodePageTable::toAnsi(TextView text) const {
    std::string bytes(text.size(), '\0');
    if (!isDoubleByte()) {
        for (std::size_t i = 0; i < text.size(); ++i)
            bytes[i] = static_cast<char>(codes_[text[i]]);
        return bytes;
    }
    bytes.clear();
    for (char16_t c : text) {
        const std::uint16_t code = codes_[c];
        if (code > 0xFF) bytes.push_back(static_cast<char>(code >> 8));
        bytes.push_back(static_cast<char>(code & 0xFF));
    }
    return bytes;
}

}  // namespace ovno2::platform
