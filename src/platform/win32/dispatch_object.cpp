#include "platform/win32/dispatch_object.h"

#include <dispex.h>
#include <limits>

#include "base/failure.h"
#include "platform/win32/wide.h"

namespace ovno2::platform::win32 {

namespace {

constexpr FailureNumber wrongNumberOfArguments = 450;
// Results of this kind carry a classic run-time number in their low word.
constexpr std::uint32_t controlFacility = 0x800A0000u;

FailureNumber failureOf(HRESULT result) {
    if ((static_cast<std::uint32_t>(result) & 0xFFFF0000u) == controlFacility) return result & 0xFFFF;
    switch (result) {
        case DISP_E_UNKNOWNNAME:
        case DISP_E_MEMBERNOTFOUND:
            return memberNotSupported;
        case DISP_E_TYPEMISMATCH:
            return typeMismatch;
        case DISP_E_OVERFLOW:
            return overflowFailure;
        case DISP_E_BADINDEX:
            return subscriptOutOfRange;
        case DISP_E_BADPARAMCOUNT:
            return wrongNumberOfArguments;
        case E_OUTOFMEMORY:
            return outOfMemory;
        default:
            return result;
    }
}

// What an object tells about its failure; its texts belong to the caller.
class ExceptionInfo {
  public:
    ~ExceptionInfo() {
        SysFreeString(info_.bstrSource);
        SysFreeString(info_.bstrDescription);
        SysFreeString(info_.bstrHelpFile);
    }
    ExceptionInfo() = default;
    ExceptionInfo(const ExceptionInfo&) = delete;
    ExceptionInfo& operator=(const ExceptionInfo&) = delete;
    EXCEPINFO* get() { return &info_; }

    [[noreturn]] void raise() {
        if (info_.pfnDeferredFillIn) info_.pfnDeferredFillIn(&info_);
        const FailureNumber number = info_.wCode != 0 ? info_.wCode : failureOf(info_.scode);
        if (!info_.bstrDescription) throw RuntimeFailure(number);
        throw RuntimeFailure(number, fromWide(info_.bstrDescription, SysStringLen(info_.bstrDescription)));
    }

  private:
    EXCEPINFO info_ = {};
};

void requireSuccess(HRESULT result) {
    if (FAILED(result)) throw RuntimeFailure(failureOf(result));
}

Variant numberFrom(const VARIANT& ole) {
    OleVariant number;
    requireSuccess(VariantChangeType(number.get(), const_cast<VARIANT*>(&ole), 0, VT_R8));
    return V_R8(number.get());
}

Variant wholeNumber(std::uint32_t value) {
    if (value > static_cast<std::uint32_t>(std::numeric_limits<Long>::max()))
        return static_cast<double>(value);
    return static_cast<Long>(value);
}

}  // namespace

void toOleVariant(const Variant& value, VARIANT& ole) {
    if (const Long* const number = std::get_if<Long>(&value)) {
        V_VT(&ole) = VT_I4;
        V_I4(&ole) = *number;
    } else if (const double* const fraction = std::get_if<double>(&value)) {
        V_VT(&ole) = VT_R8;
        V_R8(&ole) = *fraction;
    } else if (const bool* const truth = std::get_if<bool>(&value)) {
        V_VT(&ole) = VT_BOOL;
        V_BOOL(&ole) = *truth ? VARIANT_TRUE : VARIANT_FALSE;
    } else if (const Text* const text = std::get_if<Text>(&value)) {
        V_BSTR(&ole) = SysAllocStringLen(wide(*text), static_cast<UINT>(text->size()));
        if (!V_BSTR(&ole)) throw RuntimeFailure(outOfMemory);
        V_VT(&ole) = VT_BSTR;
    } else if (const ObjectPointer* const object = std::get_if<ObjectPointer>(&value)) {
        IDispatch* dispatch = nullptr;
        if (*object) {
            const auto* const wrapped = dynamic_cast<const DispatchObject*>(object->get());
            if (!wrapped) throw RuntimeFailure(typeMismatch);
            dispatch = wrapped->object();
            if (dispatch) dispatch->AddRef();
        }
        V_VT(&ole) = VT_DISPATCH;
        V_DISPATCH(&ole) = dispatch;
    }
}

Variant fromOleVariant(const VARIANT& ole) {
    if ((V_VT(&ole) & VT_BYREF) != 0) {
        OleVariant direct;
        requireSuccess(VariantCopyInd(direct.get(), const_cast<VARIANT*>(&ole)));
        if ((V_VT(direct.get()) & VT_BYREF) != 0) throw RuntimeFailure(typeMismatch);
        return fromOleVariant(*direct.get());
    }
    switch (V_VT(&ole)) {
        case VT_EMPTY:
        case VT_NULL:
        case VT_ERROR:
            return {};  // an optional argument that was left out is an error value
        case VT_I1:
            return Long{V_I1(&ole)};
        case VT_I2:
            return Long{V_I2(&ole)};
        case VT_I4:
        case VT_INT:
            return static_cast<Long>(V_I4(&ole));
        case VT_UI1:
            return Long{V_UI1(&ole)};
        case VT_UI2:
            return Long{V_UI2(&ole)};
        case VT_UI4:
        case VT_UINT:
            return wholeNumber(V_UI4(&ole));
        case VT_BOOL:
            return V_BOOL(&ole) != VARIANT_FALSE;
        case VT_BSTR:
            return fromWide(V_BSTR(&ole), SysStringLen(V_BSTR(&ole)));
        case VT_R4:
        case VT_R8:
        case VT_DATE:
        case VT_CY:
        case VT_I8:
        case VT_UI8:
        case VT_DECIMAL:
            return numberFrom(ole);
        case VT_DISPATCH:
            return wrapDispatch(V_DISPATCH(&ole));
        case VT_UNKNOWN: {
            if (!V_UNKNOWN(&ole)) return ObjectPointer();
            ComPointer<IDispatch> object;
            if (FAILED(V_UNKNOWN(&ole)->QueryInterface(IID_IDispatch, object.outAny())))
                throw RuntimeFailure(typeMismatch);
            return wrapDispatch(object.get());
        }
        default:
            throw RuntimeFailure(typeMismatch);
    }
}

DISPID DispatchObject::memberId(TextView name) const {
    if (!object_) throw RuntimeFailure(objectNotSet);
    Text terminated(name);
    LPOLESTR text = wide(terminated);
    DISPID id = DISPID_UNKNOWN;
    if (SUCCEEDED(object_->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id))) return id;
    // Some script hosts' objects tell their members in this way only.
    ComPointer<IDispatchEx> extensible;
    if (SUCCEEDED(object_->QueryInterface(__uuidof(IDispatchEx), extensible.outAny()))) {
        OleVariant bstr;
        toOleVariant(Text(name), *bstr.get());
        if (SUCCEEDED(extensible->GetDispID(V_BSTR(bstr.get()), fdexNameCaseInsensitive, &id))) return id;
    }
    throw RuntimeFailure(memberNotSupported);
}

void DispatchObject::invoke(DISPID member, WORD kind, std::span<const Variant> arguments,
                            const Variant* newValue, VARIANT* result) const {
    if (!object_) throw RuntimeFailure(objectNotSet);
    // The last argument comes first; a new value stands before all of them.
    std::vector<OleVariant> values(arguments.size() + (newValue ? 1 : 0));
    std::size_t next = 0;
    if (newValue) toOleVariant(*newValue, *values[next++].get());
    for (std::size_t i = arguments.size(); i-- > 0;)
        toOleVariant(arguments[i], *values[next++].get());
    static_assert(sizeof(OleVariant) == sizeof(VARIANT));

    DISPPARAMS parameters = {};
    DISPID newValueId = DISPID_PROPERTYPUT;
    parameters.cArgs = static_cast<UINT>(values.size());
    parameters.rgvarg = values.empty() ? nullptr : values[0].get();
    if (newValue) {
        parameters.cNamedArgs = 1;
        parameters.rgdispidNamedArgs = &newValueId;
    }
    ExceptionInfo exception;
    const HRESULT outcome = object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, result,
                                            exception.get(), /*puArgErr=*/nullptr);
    if (outcome == DISP_E_EXCEPTION) exception.raise();
    requireSuccess(outcome);
}

Variant DispatchObject::valueOf(DISPID member, std::span<const Variant> arguments) const {
    // Late binding does not know which of both a member is.
    OleVariant result;
    invoke(member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments, /*newValue=*/nullptr, result.get());
    return fromOleVariant(*result.get());
}

Variant DispatchObject::get(TextView property, std::span<const Variant> arguments) {
    return valueOf(memberId(property), arguments);
}

Variant DispatchObject::call(TextView method, std::span<const Variant> arguments) {
    return valueOf(memberId(method), arguments);
}

void DispatchObject::put(TextView property, const Variant& value, std::span<const Variant> arguments) {
    const WORD kind = std::holds_alternative<ObjectPointer>(value)
                          ? DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF
                          : DISPATCH_PROPERTYPUT;
    invoke(memberId(property), kind, arguments, &value, /*result=*/nullptr);
}

std::vector<Variant> DispatchObject::elements() {
    OleVariant enumerator;
    invoke(DISPID_NEWENUM, DISPATCH_METHOD | DISPATCH_PROPERTYGET, /*arguments=*/{}, /*newValue=*/nullptr,
           enumerator.get());
    const VARTYPE type = V_VT(enumerator.get());
    ComPointer<IEnumVARIANT> next;
    if ((type != VT_UNKNOWN && type != VT_DISPATCH) || !V_UNKNOWN(enumerator.get()) ||
        FAILED(V_UNKNOWN(enumerator.get())->QueryInterface(IID_IEnumVARIANT, next.outAny())))
        throw RuntimeFailure(memberNotSupported);
    std::vector<Variant> elements;
    for (;;) {
        OleVariant element;
        if (next->Next(1, element.get(), nullptr) != S_OK) return elements;
        elements.push_back(fromOleVariant(*element.get()));
    }
}

}  // namespace ovno2::platform::win32
