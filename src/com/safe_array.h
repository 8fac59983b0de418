// Facts about safe arrays, and one that destroys itself.
#pragma once

#include <cstddef>
#include <utility>

#include "com/interface.h"

namespace ovno2::com {

// VT_BSTR, VT_VARIANT, VT_RECORD ...; VT_I4 for every kind of 32-bit number; VT_EMPTY when it cannot be told.
VARTYPE elementType(SAFEARRAY* array);

// Whether elements of `a` may take the place of elements of `b`; both have an element type that can be told.
bool sameElementType(SAFEARRAY* a, SAFEARRAY* b);

// In all dimensions together.
std::size_t elementCount(const SAFEARRAY* array);

// Whether the variable that holds `array` may be given another one: not while it is locked or of a fixed
// shape.
bool mayBeReplaced(const SAFEARRAY* array);

class OwnedSafeArray {
  public:
    OwnedSafeArray() = default;
    explicit OwnedSafeArray(SAFEARRAY* array) : array_(array) {}
    ~OwnedSafeArray() { reset(); }
    OwnedSafeArray(const OwnedSafeArray&) = delete;
    OwnedSafeArray& operator=(const OwnedSafeArray&) = delete;

    SAFEARRAY* get() const { return array_; }
    SAFEARRAY** address() { return &array_; }
    explicit operator bool() const { return array_ != nullptr; }
    SAFEARRAY* release() { return std::exchange(array_, nullptr); }
    void reset(SAFEARRAY* array = nullptr) {
        if (SAFEARRAY* const old = std::exchange(array_, array)) SafeArrayDestroy(old);
    }

  private:
    SAFEARRAY* array_ = nullptr;
};

}  // namespace ovno2::com
