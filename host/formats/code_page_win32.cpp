#include <windows.h>

#include "host/formats/code_page.h"

namespace ovno2::host {

bool fromCodePage(std::string_view bytes, std::uint32_t page, Text& text) {
    text.clear();
    if (bytes.empty()) return IsValidCodePage(page) != 0;
    const int size = static_cast<int>(bytes.size());
    const int units = MultiByteToWideChar(page, 0, bytes.data(), size, nullptr, 0);
    if (units <= 0) return false;
    text.resize(static_cast<std::size_t>(units));
    return MultiByteToWideChar(page, 0, bytes.data(), size, reinterpret_cast<wchar_t*>(text.data()), units) ==
           units;
}

}  // namespace ovno2::host
