// Late-bound COM objects as the seam's AutomationObject, and the conversion of their values.
//
// Used for objects created by name and for those that the host hands in. Everything happens on the thread of
// the caller, whose apartment the object belongs to.
#pragma once

// clang-format off
#include <windows.h>
#include <oleauto.h>
// clang-format on

#include "platform/automation.h"
#include "platform/win32/com_pointer.h"

namespace ovno2::platform::win32 {

// A VARIANT that clears itself.
class OleVariant {
  public:
    OleVariant() { VariantInit(&value_); }
    ~OleVariant() { VariantClear(&value_); }
    OleVariant(const OleVariant&) = delete;
    OleVariant& operator=(const OleVariant&) = delete;
    VARIANT* get() { return &value_; }

  private:
    VARIANT value_;
};

// `value` must be empty before; it owns what it then holds. Throws RuntimeFailure: 7 out of memory, 13 an
// object that is not a COM object.
void toOleVariant(const Variant& value, VARIANT& ole);
// Takes nothing over. Throws RuntimeFailure 13 for arrays, records and other types without a counterpart.
Variant fromOleVariant(const VARIANT& ole);

class DispatchObject : public AutomationObject {
  public:
    // Takes a reference of its own.
    explicit DispatchObject(IDispatch* object) : object_(object) {}

    Variant get(TextView property, std::span<const Variant> arguments) override;
    void put(TextView property, const Variant& value, std::span<const Variant> arguments) override;
    Variant call(TextView method, std::span<const Variant> arguments) override;
    std::vector<Variant> elements() override;

    IDispatch* object() const { return object_.get(); }

  private:
    DISPID memberId(TextView name) const;
    void invoke(DISPID member, WORD kind, std::span<const Variant> arguments, const Variant* newValue,
                VARIANT* result) const;
    Variant valueOf(DISPID member, std::span<const Variant> arguments) const;

    ComPointer<IDispatch> object_;
};

// Null for a null `object`.
inline ObjectPointer wrapDispatch(IDispatch* object) {
    return object ? std::make_shared<DispatchObject>(object) : ObjectPointer();
}

}  // namespace ovno2::platform::win32
