#include "host/output/harmless.h"

#include <array>

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

// Where the next control character stands, from `i` on.
std::size_t nextControl(std::string_view text, std::size_t i) {
    for (; i < text.size(); ++i)
        if (suspicious[byteAt(text, i)] && (byteAt(text, i) != leadOfLatin1 || isHighControl(text, i))) break;
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
