// Code pages by number, as the platform knows them.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/output/text.h"

namespace ovno2::host {

// `page` is a number that Windows has for a character set: 1252, 28592 (ISO-8859-2), 932 ... What stands for
// no character becomes U+FFFD or a control character. False when this machine does not have the page.
bool fromCodePage(std::string_view bytes, std::uint32_t page, Text& text);

}  // namespace ovno2::host
