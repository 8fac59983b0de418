// COM strings and the module's texts. A null BSTR is the empty text; a BSTR may hold NUL.
#pragma once

#include <cstring>
#include <new>
#include <utility>

#include "base/types.h"
#include "com/interface.h"
#include "platform/win32/wide.h"

namespace ovno2::com {

inline TextView viewOf(BSTR text) noexcept {
    return {reinterpret_cast<const char16_t*>(text), SysStringLen(text)};
}

// The caller owns the string, which is null for an empty text. Throws std::bad_alloc.
inline BSTR newBstr(TextView text) {
    if (text.empty()) return nullptr;
    BSTR copy =
        SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()), static_cast<UINT>(text.size()));
    if (!copy) throw std::bad_alloc();
    return copy;
}

// A string that frees itself: one that is handed over, or a host's variable for a by-reference text.
class Bstr {
  public:
    Bstr() = default;
    explicit Bstr(TextView text) : text_(newBstr(text)) {}
    ~Bstr() { SysFreeString(text_); }
    Bstr(Bstr&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
    Bstr& operator=(Bstr&& other) noexcept {
        std::swap(text_, other.text_);
        return *this;
    }
    BSTR get() const { return text_; }
    BSTR* address() { return &text_; }  // who puts another string there frees this one
    Text text() const { return Text(viewOf(text_)); }
    BSTR release() { return std::exchange(text_, nullptr); }

  private:
    BSTR text_ = nullptr;
};

}  // namespace ovno2::com
