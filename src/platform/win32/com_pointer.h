// A counted reference to a COM object.
#pragma once

#include <utility>

namespace ovno2::platform::win32 {

template <class Interface>
class ComPointer {
  public:
    ComPointer() = default;
    // Takes a reference of its own.
    explicit ComPointer(Interface* object) : object_(object) {
        if (object_) object_->AddRef();
    }
    ~ComPointer() { reset(); }
    ComPointer(const ComPointer& other) : ComPointer(other.object_) {}
    ComPointer(ComPointer&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ComPointer& operator=(ComPointer other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    void reset() {
        if (object_) std::exchange(object_, nullptr)->Release();
    }
    Interface* get() const { return object_; }
    Interface* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

    // Where a call puts a new reference; the pointer must be empty.
    Interface** out() { return &object_; }
    void** outAny() { return reinterpret_cast<void**>(&object_); }

  private:
    Interface* object_ = nullptr;
};

}  // namespace ovno2::platform::win32
