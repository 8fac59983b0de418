#include "com/late_argument.h"

#include <algorithm>

#include "base/secret.h"
#include "com/records.h"
#include "com/script_arrays.h"
#include "com/type_libraries.h"

namespace ovno2::com {

using platform::win32::OleVariant;

namespace {

void require(HRESULT result) {
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    if (FAILED(result)) throw LateBindingError{result};
}

bool isNumber(VARTYPE type) {
    return type == VT_I4 || type == VT_INT || type == VT_UI4 || type == VT_UINT;
}

bool isCalItem(const VARIANT& value) {
    GUID type = {};
    ULONG size = 0;
    return (V_VT(&value) & ~VT_BYREF) == VT_RECORD && V_RECORDINFO(&value) && V_RECORD(&value) &&
           SUCCEEDED(V_RECORDINFO(&value)->GetGuid(&type)) && IsEqualGUID(type, guidOfCalItem) &&
           SUCCEEDED(V_RECORDINFO(&value)->GetSize(&size)) && size == sizeof(tCalItem);
}

VARTYPE elementTypeOf(ParameterKind kind) {
    switch (kind) {
        case ParameterKind::texts:
            return VT_BSTR;
        case ParameterKind::numbers:
            return VT_I4;
        default:
            return VT_RECORD;
    }
}

}  // namespace

void LateArgument::take(const Parameter& parameter, VARIANT* passed, LCID locale) {
    value_ = passed;
    if (value_ && V_VT(value_) == (VT_BYREF | VT_VARIANT)) {
        value_ = V_VARIANTREF(value_);
        writable_ = (V_VT(value_) & VT_BYREF) == 0;
    }
    if (!value_ || (V_VT(value_) == VT_ERROR && V_ERROR(value_) == DISP_E_PARAMNOTFOUND)) {
        leaveOut(parameter);
        return;
    }
    switch (parameter.kind) {
        case ParameterKind::number:
        case ParameterKind::boolean:
            takeNumber(parameter, locale);
            break;
        case ParameterKind::text:
            takeText(parameter, locale);
            break;
        case ParameterKind::object:
            takeObject();
            break;
        case ParameterKind::record:
            takeRecord();
            break;
        case ParameterKind::numbers:
        case ParameterKind::texts:
        case ParameterKind::records:
            takeArray(parameter, locale);
            break;
    }
}

void LateArgument::wipeText() noexcept {
    if (V_VT(converted_.get()) != VT_BSTR) return;
    const BSTR text = V_BSTR(converted_.get());
    wipe(reinterpret_cast<char16_t*>(text), SysStringLen(text));
}

void LateArgument::leaveOut(const Parameter& parameter) {
    if (!parameter.optional) throw LateBindingError{DISP_E_PARAMNOTOPTIONAL};
    if (parameter.byReference) return;
    if (parameter.kind != ParameterKind::text) {
        word_ = static_cast<std::uint32_t>(parameter.defaultNumber);
    } else if (!parameter.defaultText.empty()) {
        V_BSTR(converted_.get()) = newBstr(parameter.defaultText);
        V_VT(converted_.get()) = VT_BSTR;
        pointTo(V_BSTR(converted_.get()));
    }
}

void LateArgument::convertTo(VARTYPE type, LCID locale) {
    OleVariant own;  // an object that tells its value is the script's code
    require(VariantCopyInd(own.get(), value_));
    require(VariantChangeTypeEx(converted_.get(), own.get(), locale, VARIANT_ALPHABOOL, type));
}

void LateArgument::takeNumber(const Parameter& parameter, LCID locale) {
    if (parameter.kind == ParameterKind::boolean) {
        convertTo(VT_BOOL, locale);
        word_ = static_cast<std::uint32_t>(V_BOOL(converted_.get()));
        return;
    }
    if (parameter.byReference && (V_VT(value_) & VT_BYREF) != 0 &&
        isNumber(static_cast<VARTYPE>(V_VT(value_) & VT_TYPEMASK)) && (V_VT(value_) & VT_ARRAY) == 0) {
        pointTo(V_I4REF(value_));
        return;
    }
    convertTo(VT_I4, locale);
    numberBefore_ = V_I4(converted_.get());
    word_ = static_cast<std::uint32_t>(numberBefore_);
    if (!parameter.byReference) return;
    pointTo(&V_I4(converted_.get()));
    if (writable_) return_ = Return::number;
}

void LateArgument::takeText(const Parameter& parameter, LCID locale) {
    if (parameter.byReference && V_VT(value_) == (VT_BYREF | VT_BSTR)) {
        pointTo(V_BSTRREF(value_));
        return;
    }
    convertTo(VT_BSTR, locale);
    pointTo(V_BSTR(converted_.get()));
    if (!parameter.byReference) return;
    pointTo(&V_BSTR(converted_.get()));
    if (!writable_) return;
    textBefore_ = Bstr(viewOf(V_BSTR(converted_.get())));
    return_ = Return::text;
}

// The module reads objects only.
void LateArgument::takeObject() {
    OleVariant direct;
    require(VariantCopyInd(direct.get(), value_));
    IDispatch* object = nullptr;
    switch (V_VT(direct.get())) {
        case VT_EMPTY:
        case VT_NULL:
            break;
        case VT_DISPATCH:
        case VT_UNKNOWN:
            if (V_UNKNOWN(direct.get()) &&
                FAILED(V_UNKNOWN(direct.get())
                           ->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&object))))
                throw LateBindingError{DISP_E_TYPEMISMATCH};
            break;
        default:
            throw LateBindingError{DISP_E_TYPEMISMATCH};
    }
    V_DISPATCH(converted_.get()) = object;
    V_VT(converted_.get()) = VT_DISPATCH;
    pointTo(&V_DISPATCH(converted_.get()));
}

void LateArgument::takeRecord() {
    if (!isCalItem(*value_)) throw LateBindingError{DISP_E_TYPEMISMATCH};
    require(VariantCopyInd(converted_.get(), value_));
    pointTo(V_RECORD(converted_.get()));
    return_ = Return::record;
}

void LateArgument::takeArray(const Parameter& parameter, LCID locale) {
    const VARTYPE wanted = elementTypeOf(parameter.kind);
    const bool translatable = parameter.kind != ParameterKind::records;
    const VARTYPE type = V_VT(value_);
    if (type == VT_EMPTY) {
        pointTo(array_.address());
        if (writable_) return_ = translatable ? Return::variants : Return::typed;
        return;
    }
    if (type == VT_DISPATCH && V_DISPATCH(value_) && translatable) {
        object_ = ComPointer<IDispatch>(V_DISPATCH(value_));
        takeOwn(typedFromObject(object_.get(), wanted, locale));
        return_ = Return::variants;
        return;
    }
    const auto element = static_cast<VARTYPE>(type & VT_TYPEMASK);
    typeBefore_ = element;
    const bool typed = element == wanted || (wanted == VT_I4 && isNumber(element));
    if ((type & VT_ARRAY) == 0 || (!typed && (element != VT_VARIANT || !translatable)))
        throw LateBindingError{DISP_E_TYPEMISMATCH};
    if ((type & VT_BYREF) != 0) place_ = V_ARRAYREF(value_);
    if (typed && place_) {
        pointTo(place_);
        return;
    }
    OwnedSafeArray own;
    if (SAFEARRAY* const given = place_ ? *place_ : V_ARRAY(value_))
        require(SafeArrayCopy(given, own.address()));
    takeOwn(typed ? own.release() : typedFromVariants(own.get(), wanted, locale));
    if (writable_ || place_) return_ = typed ? Return::typed : Return::variants;
}

void LateArgument::takeOwn(SAFEARRAY* own) {
    array_.reset(own);
    // Records have members that only the host can compare.
    if (own && elementType(own) != VT_RECORD) require(SafeArrayCopy(own, arrayBefore_.address()));
    pointTo(array_.address());
}

void LateArgument::prepareReturn() {
    switch (return_) {
        case Return::number:
            if (V_I4(converted_.get()) == numberBefore_) return_ = Return::nothing;
            break;
        case Return::text:
            if (viewOf(V_BSTR(converted_.get())) == viewOf(textBefore_.get())) return_ = Return::nothing;
            break;
        case Return::variants:
            if (sameElements(array_.get(), arrayBefore_.get()))
                return_ = Return::nothing;
            else if (!object_)
                returned_.reset(variantsFromTyped(array_.get()));
            break;
        case Return::typed:
            if (sameElements(array_.get(), arrayBefore_.get())) return_ = Return::nothing;
            break;
        case Return::record:
        case Return::nothing:
            break;
    }
}

// The array that the script's variable holds now.
SAFEARRAY* LateArgument::arrayInVariable() const {
    return (V_VT(value_) & VT_ARRAY) != 0 ? V_ARRAY(value_) : nullptr;
}

// Makes `array` the variable's value; what that was until now ends last, because that may run the script.
void LateArgument::assign(OwnedSafeArray& array, VARTYPE type) {
    OleVariant value;
    V_ARRAY(value.get()) = array.release();
    V_VT(value.get()) = static_cast<VARTYPE>(VT_ARRAY | type);
    std::swap(*value.get(), *value_);
}

// The members that the module knows; the others stay as the script has them by now.
void LateArgument::giveBackRecord() {
    if (!isCalItem(*value_)) return;
    auto& own = *static_cast<tCalItem*>(V_RECORD(converted_.get()));
    auto& scripts = *static_cast<tCalItem*>(V_RECORD(value_));
    eachMember(static_cast<CalItem*>(nullptr),
               [&](auto member, auto) { std::swap(own.*member, scripts.*member); });
}

void LateArgument::giveBackVariants() {
    if (object_) return putTyped(array_.get(), object_.get());
    SAFEARRAY* const current = place_ ? *place_ : arrayInVariable();
    if (!mayBeReplaced(current)) {
        if (elementType(current) == VT_VARIANT) putTyped(array_.get(), current);
    } else if (place_) {
        *place_ = returned_.release();
        returned_.reset(current);
    } else {
        assign(returned_, VT_VARIANT);
    }
}

void LateArgument::giveBackTyped() {
    SAFEARRAY* const current = arrayInVariable();
    if (mayBeReplaced(current)) {
        VARTYPE type = typeBefore_;  // of an array without elements
        if (array_) SafeArrayGetVartype(array_.get(), &type);
        assign(array_, type);
    } else if (array_ && sameElementType(array_.get(), current)) {
        const std::size_t count = std::min(elementCount(array_.get()), elementCount(current));
        auto* const own = static_cast<std::byte*>(array_.get()->pvData);
        std::swap_ranges(own, own + count * current->cbElements, static_cast<std::byte*>(current->pvData));
    }
}

void LateArgument::giveBack() noexcept {
    if (return_ == Return::nothing) return;
    try {
        switch (return_) {
            case Return::number:
            case Return::text:
                std::swap(*converted_.get(), *value_);
                break;
            case Return::record:
                giveBackRecord();
                break;
            case Return::variants:
                giveBackVariants();
                break;
            case Return::typed:
                giveBackTyped();
                break;
            case Return::nothing:
                break;
        }
    } catch (...) {
        // Elements for which there is no memory, or which the script's object refuses, stay as they are.
    }
}

}  // namespace ovno2::com
