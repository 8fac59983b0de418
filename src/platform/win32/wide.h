// Texts between the seam and the wide-character calls: the same units under another type.
#pragma once

#include "base/types.h"

namespace ovno2::platform::win32 {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* wide(const Text& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}
inline wchar_t* wide(Text& text) {
    return reinterpret_cast<wchar_t*>(text.data());
}
inline wchar_t* wide(char16_t* text) {
    return reinterpret_cast<wchar_t*>(text);
}
inline Text fromWide(const wchar_t* text, std::size_t length) {
    return Text(reinterpret_cast<const char16_t*>(text), length);
}
inline Text fromWide(const wchar_t* text) {  // null gives the empty text
    return text ? Text(reinterpret_cast<const char16_t*>(text)) : Text();
}

}  // namespace ovno2::platform::win32
