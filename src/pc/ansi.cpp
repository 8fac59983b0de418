#include "pc/ansi.h"

#include <algorithm>

#include "core/current_platform.h"

namespace ovno2 {

namespace {

// The codes below 128 are the same characters on every ANSI code page.
constexpr char16_t firstPageCode = 0x80;

}  // namespace

std::string toAnsi(TextView text) {
    return currentPlatform().codePages().toAnsi(text);
}

Text fromAnsi(std::string_view bytes) {
    return currentPlatform().codePages().fromAnsi(bytes);
}

bool ansiCode(char16_t character, std::uint8_t& code) {
    if (character < firstPageCode) {
        code = static_cast<std::uint8_t>(character);
        return true;
    }
    platform::CodePages& pages = currentPlatform().codePages();
    const std::string bytes = pages.toAnsi(TextView(&character, 1));
    if (bytes.size() != 1) {
        code = '?';
        return false;
    }
    code = static_cast<std::uint8_t>(bytes[0]);
    return pages.fromAnsi(bytes) == TextView(&character, 1);
}

Text throughAnsi(TextView text) {
    if (std::ranges::all_of(text, [](char16_t c) { return c < firstPageCode; })) return Text(text);
    platform::CodePages& pages = currentPlatform().codePages();
    return pages.fromAnsi(pages.toAnsi(text));
}

}  // namespace ovno2
