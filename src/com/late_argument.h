// One late-bound argument: what the script passed as the word that the member's slot takes, and back.
//
// While the member runs it calls the script, in its progress control for instance, and the script may assign
// anything to the variables it has passed. So the slot never gets a place inside such a variable: it works on
// copies, and what it changed is put into the variable as that is after the call.
#pragma once

#include "com/member_table.h"
#include "com/safe_array.h"
#include "com/texts.h"
#include "platform/win32/dispatch_object.h"

namespace ovno2::com {

// A dispatch error on the way in.
struct LateBindingError {
    HRESULT result;
};

class LateArgument {
  public:
    LateArgument() = default;
    ~LateArgument() { wipeText(); }
    LateArgument(const LateArgument&) = delete;
    LateArgument& operator=(const LateArgument&) = delete;

    // Takes `passed`, which must outlive the call; null = left out. Throws LateBindingError and
    // std::bad_alloc.
    void take(const Parameter& parameter, VARIANT* passed, LCID locale);
    // What goes on the stack.
    std::uint32_t word() const { return word_; }
    // After the call, for all arguments: first what may still fail (throws std::bad_alloc), then what the
    // member changed goes where the script passed a reference.
    void prepareReturn();
    void giveBack() noexcept;

  private:
    enum class Return : std::uint8_t { nothing, number, text, record, variants, typed };

    void wipeText() noexcept;  // a passkey comes this way
    void leaveOut(const Parameter& parameter);
    void takeNumber(const Parameter& parameter, LCID locale);
    void takeText(const Parameter& parameter, LCID locale);
    void takeObject();
    void takeArray(const Parameter& parameter, LCID locale);
    void takeRecord();
    void takeOwn(SAFEARRAY* own);
    void convertTo(VARTYPE type, LCID locale);
    void pointTo(void* place) { word_ = reinterpret_cast<std::uint32_t>(place); }
    void giveBackRecord();
    void giveBackVariants();
    void giveBackTyped();
    void assign(OwnedSafeArray& array, VARTYPE type);
    SAFEARRAY* arrayInVariable() const;

    std::uint32_t word_ = 0;
    VARIANT* value_ = nullptr;     // what was passed, or the VARIANT that it refers to
    bool writable_ = false;        // `value_` is a variable of the script's, which may be given another value
    SAFEARRAY** place_ = nullptr;  // where an array that was passed by reference stands
    platform::win32::ComPointer<IDispatch> object_;  // that was passed in place of an array
    Return return_ = Return::nothing;
    platform::win32::OleVariant converted_;  // a number, a text, an object or a record as the slot takes it
    LONG numberBefore_ = 0;
    Bstr textBefore_;
    OwnedSafeArray array_;           // a copy or a translation of the script's array
    OwnedSafeArray arrayBefore_;     // the same as it was passed
    VARTYPE typeBefore_ = VT_EMPTY;  // of its elements
    OwnedSafeArray returned_;        // what the script's variable will hold
};

}  // namespace ovno2::com
