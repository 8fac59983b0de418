#include "com/late_argument.h"

#include "com/records.h"
#include "com/script_arrays.h"
#include "com/type_libraries.h"

namespace ovno2::com {

namespace {

void require(HRESULT result) {
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    if (FAILED(result)) throw LateBindingError{result};
}

bool isNumber(VARTYPE type) {
    return type == VT_I4 || type == VT_INT || type == VT_UI4 || type == VT_UINT;
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
    require(VariantChangeTypeEx(converted_.get(), value_, locale, VARIANT_ALPHABOOL, type));
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
    platform::win32::OleVariant direct;
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
    GUID type = {};
    if ((V_VT(value_) & ~VT_BYREF) != VT_RECORD || !V_RECORDINFO(value_) ||
        FAILED(V_RECORDINFO(value_)->GetGuid(&type)) || !IsEqualGUID(type, guidOfCalItem))
        throw LateBindingError{DISP_E_TYPEMISMATCH};
    pointTo(V_RECORD(value_));
}

// Where the script keeps the array itself.
SAFEARRAY** LateArgument::scriptArray() const {
    return (V_VT(value_) & VT_BYREF) != 0 ? V_ARRAYREF(value_) : &V_ARRAY(value_);
}

void LateArgument::takeArray(const Parameter& parameter, LCID locale) {
    const VARTYPE wanted = elementTypeOf(parameter.kind);
    const bool translatable = parameter.kind != ParameterKind::records;
    const VARTYPE type = V_VT(value_);
    if ((type & VT_ARRAY) != 0) {
        const auto element = static_cast<VARTYPE>(type & VT_TYPEMASK);
        const bool reference = writable_ || (type & VT_BYREF) != 0;
        if (element == wanted || (wanted == VT_I4 && isNumber(element))) {
            takeTyped(scriptArray(), reference);
            return;
        }
        if (element == VT_VARIANT && translatable) {
            takeTranslated(typedFromVariants(*scriptArray(), wanted, locale));
            if (reference) return_ = Return::array;
            return;
        }
    } else if (type == VT_EMPTY) {
        pointTo(array_.address());
        if (writable_) return_ = translatable ? Return::array : Return::records;
        return;
    } else if (type == VT_DISPATCH && V_DISPATCH(value_) && translatable) {
        takeTranslated(typedFromObject(V_DISPATCH(value_), wanted, locale));
        return_ = Return::array;
        return;
    }
    throw LateBindingError{DISP_E_TYPEMISMATCH};
}

void LateArgument::takeTyped(SAFEARRAY** place, bool reference) {
    pointTo(place);
    if (reference || !*place) return;
    require(SafeArrayCopy(*place, array_.address()));
    pointTo(array_.address());
}

void LateArgument::takeTranslated(SAFEARRAY* translated) {
    array_.reset(translated);
    if (translated) require(SafeArrayCopy(translated, arrayBefore_.address()));
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
        case Return::array:
            if (sameElements(array_.get(), arrayBefore_.get()))
                return_ = Return::nothing;
            else if (V_VT(value_) != VT_DISPATCH)
                returned_.reset(variantsFromTyped(array_.get()));
            break;
        case Return::records:
            if (!array_) return_ = Return::nothing;
            break;
        case Return::nothing:
            break;
    }
}

void LateArgument::giveBack() noexcept {
    if (return_ == Return::nothing) return;
    try {
        if (return_ == Return::number || return_ == Return::text) {
            std::swap(*converted_.get(), *value_);
        } else if (return_ == Return::records) {
            V_VT(value_) = VT_ARRAY | VT_RECORD;
            V_ARRAY(value_) = array_.release();
        } else if (V_VT(value_) == VT_DISPATCH) {
            putTyped(array_.get(), V_DISPATCH(value_));
        } else if ((V_VT(value_) & VT_ARRAY) == 0) {
            V_VT(value_) = VT_ARRAY | VT_VARIANT;
            V_ARRAY(value_) = returned_.release();
        } else if (SAFEARRAY** const place = scriptArray(); mayBeReplaced(*place)) {
            SAFEARRAY* const old = std::exchange(*place, returned_.release());
            returned_.reset(old);
        } else {
            putTyped(array_.get(), *place);
        }
    } catch (...) {
        // Elements for which there is no memory, or which the script's object refuses, stay as they are.
    }
}

}  // namespace ovno2::com
