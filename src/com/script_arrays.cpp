#include "com/script_arrays.h"

#include <algorithm>
#include <dispex.h>
#include <memory>
#include <vector>

#include "base/values.h"
#include "com/late_argument.h"
#include "com/type_libraries.h"

namespace ovno2::com {

namespace {

using platform::win32::OleVariant;

// A typed array with the bounds of `like`.
SAFEARRAY* createLike(SAFEARRAY* like, VARTYPE type) {
    std::vector<SAFEARRAYBOUND> bounds(SafeArrayGetDim(like));
    std::reverse_copy(like->rgsabound, like->rgsabound + bounds.size(), bounds.begin());
    SAFEARRAY* const array = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
    if (!array) throw std::bad_alloc();
    return array;
}

void convertElement(VARIANT& from, VARTYPE type, LCID locale, void* slots, std::size_t index) {
    OleVariant value;
    const HRESULT result = VariantChangeTypeEx(value.get(), &from, locale, VARIANT_ALPHABOOL, type);
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    if (FAILED(result)) throw LateBindingError{result};
    if (type == VT_BSTR) {
        static_cast<BSTR*>(slots)[index] = std::exchange(V_BSTR(value.get()), nullptr);
    } else {
        static_cast<LONG*>(slots)[index] = V_I4(value.get());
    }
}

// `to` must be empty.
void copyElement(SAFEARRAY* typed, std::size_t index, VARIANT& to) {
    if (elementType(typed) == VT_BSTR) {
        const BSTR text = static_cast<const BSTR*>(typed->pvData)[index];
        V_BSTR(&to) = SysAllocStringLen(text, SysStringLen(text));
        if (!V_BSTR(&to)) throw std::bad_alloc();
        V_VT(&to) = VT_BSTR;
    } else {
        V_I4(&to) = static_cast<const LONG*>(typed->pvData)[index];
        V_VT(&to) = VT_I4;
    }
}

// --- Objects with numbered properties
// --------------------------------------------------------------------------------

DISPID propertyId(IDispatch* object, const Text& name, bool create) {
    DISPID id = DISPID_UNKNOWN;
    ComPointer<IDispatchEx> extensible;
    if (SUCCEEDED(object->QueryInterface(__uuidof(IDispatchEx), extensible.outAny()))) {
        const Bstr text(name);
        extensible->GetDispID(text.get(), create ? fdexNameEnsure : fdexNameCaseSensitive, &id);
    } else {
        LPOLESTR text = const_cast<LPOLESTR>(platform::win32::wide(name));
        object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id);
    }
    return id;
}

bool getProperty(IDispatch* object, const Text& name, VARIANT* value) {
    const DISPID id = propertyId(object, name, /*create=*/false);
    DISPPARAMS none = {};
    return id != DISPID_UNKNOWN &&
           SUCCEEDED(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, value,
                                    nullptr, nullptr));
}

void putProperty(IDispatch* object, const Text& name, VARIANT* value) {
    const DISPID id = propertyId(object, name, /*create=*/true);
    DISPID newValue = DISPID_PROPERTYPUT;
    DISPPARAMS parameters = {value, &newValue, 1, 1};
    if (id != DISPID_UNKNOWN)
        object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &parameters, nullptr, nullptr,
                       nullptr);
}

Text indexName(std::size_t index) {
    return decimalText(static_cast<Long>(index));
}

// Throws LateBindingError for an object that is no array.
std::size_t lengthOf(IDispatch* object) {
    OleVariant length;
    constexpr LONG most = 0x01000000;
    if (!getProperty(object, u"length", length.get()) ||
        FAILED(VariantChangeType(length.get(), length.get(), 0, VT_I4)) || V_I4(length.get()) < 0 ||
        V_I4(length.get()) > most)
        throw LateBindingError{DISP_E_TYPEMISMATCH};
    return static_cast<std::size_t>(V_I4(length.get()));
}

bool isObject(const VARIANT& value) {
    return V_VT(&value) == VT_DISPATCH && V_DISPATCH(&value);
}

// Element `index` of the object, converted to `slots[place]`; one that is missing stays as new.
void takeElement(IDispatch* object, std::size_t index, VARTYPE type, LCID locale, void* slots,
                 std::size_t place) {
    OleVariant element;
    if (getProperty(object, indexName(index), element.get()))
        convertElement(*element.get(), type, locale, slots, place);
}

SAFEARRAY* tableFromRows(IDispatch* object, std::size_t rows, VARTYPE type, LCID locale) {
    std::vector<OleVariant> lines(rows);
    std::size_t columns = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        if (!getProperty(object, indexName(row), lines[row].get()) || !isObject(*lines[row].get()))
            throw LateBindingError{DISP_E_TYPEMISMATCH};
        columns = std::max(columns, lengthOf(V_DISPATCH(lines[row].get())));
    }
    SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(rows), 0}, {static_cast<ULONG>(columns), 0}};
    OwnedSafeArray table(SafeArrayCreate(type, 2, bounds));
    if (!table) throw std::bad_alloc();
    for (std::size_t row = 0; row < rows; ++row) {
        IDispatch* const line = V_DISPATCH(lines[row].get());
        // The object may tell another length each time it is asked.
        for (std::size_t column = 0; column < std::min(columns, lengthOf(line)); ++column)
            takeElement(line, column, type, locale, table.get()->pvData, column * rows + row);
    }
    return table.release();
}

}  // namespace

SAFEARRAY* typedFromVariants(SAFEARRAY* variants, VARTYPE type, LCID locale) {
    if (!variants || elementCount(variants) == 0) return nullptr;
    OwnedSafeArray typed(createLike(variants, type));
    auto* const from = static_cast<VARIANT*>(variants->pvData);
    for (std::size_t i = 0; i < elementCount(variants); ++i)
        convertElement(from[i], type, locale, typed.get()->pvData, i);
    return typed.release();
}

SAFEARRAY* variantsFromTyped(SAFEARRAY* typed) {
    if (!typed) {
        SAFEARRAY* const none = SafeArrayCreateVector(VT_VARIANT, /*lLbound=*/0, /*cElements=*/0);
        if (!none) throw std::bad_alloc();
        return none;
    }
    OwnedSafeArray variants(createLike(typed, VT_VARIANT));
    for (std::size_t i = 0; i < elementCount(typed); ++i)
        copyElement(typed, i, static_cast<VARIANT*>(variants.get()->pvData)[i]);
    return variants.release();
}

void putTyped(SAFEARRAY* typed, SAFEARRAY* variants) {
    if (!typed || SafeArrayGetDim(typed) != 1 || SafeArrayGetDim(variants) != 1) return;
    const std::size_t count = std::min(elementCount(typed), elementCount(variants));
    // What an element held may run the script when it ends; the array must not go meanwhile.
    if (FAILED(SafeArrayLock(variants))) return;
    const std::unique_ptr<SAFEARRAY, decltype(&SafeArrayUnlock)> locked(variants, &SafeArrayUnlock);
    for (std::size_t i = 0; i < count; ++i) {
        OleVariant value;
        copyElement(typed, i, *value.get());
        std::swap(*value.get(), static_cast<VARIANT*>(variants->pvData)[i]);
    }
}

SAFEARRAY* typedFromObject(IDispatch* object, VARTYPE type, LCID locale) {
    const std::size_t count = lengthOf(object);
    if (count == 0) return nullptr;
    OleVariant first;
    if (getProperty(object, indexName(0), first.get()) && isObject(*first.get()))
        return tableFromRows(object, count, type, locale);
    OwnedSafeArray typed(SafeArrayCreateVector(type, /*lLbound=*/0, static_cast<ULONG>(count)));
    if (!typed) throw std::bad_alloc();
    for (std::size_t i = 0; i < count; ++i)
        takeElement(object, i, type, locale, typed.get()->pvData, i);
    return typed.release();
}

void putTyped(SAFEARRAY* typed, IDispatch* object) {
    if (typed && SafeArrayGetDim(typed) != 1) return;
    const std::size_t count = typed ? elementCount(typed) : 0;
    for (std::size_t i = 0; i < count; ++i) {
        OleVariant value;
        copyElement(typed, i, *value.get());
        putProperty(object, indexName(i), value.get());
    }
    OleVariant length;
    V_VT(length.get()) = VT_I4;
    V_I4(length.get()) = static_cast<LONG>(count);
    putProperty(object, u"length", length.get());
}

bool sameElements(SAFEARRAY* a, SAFEARRAY* b) {
    if (!a || !b) return a == b;
    if (elementType(a) != elementType(b) || elementType(a) == VT_RECORD || a->cDims != b->cDims ||
        std::memcmp(a->rgsabound, b->rgsabound, a->cDims * sizeof(SAFEARRAYBOUND)) != 0)
        return false;
    if (elementType(a) != VT_BSTR)
        return std::memcmp(a->pvData, b->pvData, elementCount(a) * sizeof(LONG)) == 0;
    const auto* const first = static_cast<const BSTR*>(a->pvData);
    const auto* const second = static_cast<const BSTR*>(b->pvData);
    return std::equal(first, first + elementCount(a), second,
                      [](BSTR one, BSTR other) { return viewOf(one) == viewOf(other); });
}

}  // namespace ovno2::com
