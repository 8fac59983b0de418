// What a client of the COM object needs: its values as COM values and back, and a progress control.
#pragma once

#include <atomic>
#include <functional>
#include <new>
#include <span>

#include "base/host_array.h"
#include "com/safe_array.h"
#include "com/texts.h"
#include "platform/win32/com_pointer.h"

namespace ovno2::host {

using com::Bstr;
using com::OwnedSafeArray;
using platform::win32::ComPointer;

inline Text textOf(BSTR text) {
    return Text(com::viewOf(text));
}

// A one-dimensional array of BSTR, of 32-bit numbers or of records in memory; null is one without elements.
template <class Slot>
std::span<Slot> slotsOf(const OwnedSafeArray& array) {
    if (!array) return {};
    return {static_cast<Slot*>(array.get()->pvData), array.get()->rgsabound[0].cElements};
}

// The table's rows in the first dimension, its columns in the second. Throws std::bad_alloc.
inline SAFEARRAY* newTable(const TextTable& table) {
    const auto columns = static_cast<ULONG>(table.lastColumn() - table.firstColumn() + 1);
    const auto rows = static_cast<ULONG>(table.rows());
    SAFEARRAYBOUND bounds[] = {{rows, 0}, {columns, table.firstColumn()}};
    OwnedSafeArray array(SafeArrayCreate(VT_BSTR, 2, bounds));
    if (!array) throw std::bad_alloc();
    auto* const cells = static_cast<BSTR*>(array.get()->pvData);
    for (std::size_t row = 0; row < rows; ++row)
        for (std::size_t column = 0; column < columns; ++column)
            cells[column * rows + row] =
                com::newBstr(table.at(row, table.firstColumn() + static_cast<Long>(column)));
    return array.release();
}

// A late-bound object of the host's with one property.
class OneProperty : public IDispatch {
  public:
    explicit OneProperty(const wchar_t* name) : name_(name) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        *object = nullptr;
        if (!IsEqualIID(id, __uuidof(IUnknown)) && !IsEqualIID(id, __uuidof(IDispatch))) return E_NOINTERFACE;
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        for (UINT i = 0; i < count; ++i)
            ids[i] = DISPID_UNKNOWN;
        if (count != 1 || lstrcmpiW(names[0], name_) != 0) return DISP_E_UNKNOWNNAME;
        ids[0] = DISPID_VALUE;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO*, UINT*) override {
        if (member != DISPID_VALUE) return DISP_E_MEMBERNOTFOUND;
        if ((kind & DISPATCH_PROPERTYGET) != 0) return get(*parameters, result);
        if ((kind & DISPATCH_PROPERTYPUT) == 0) return DISP_E_MEMBERNOTFOUND;
        return put(*parameters);
    }

  protected:
    virtual ~OneProperty() = default;

    // `result` may be null.
    virtual HRESULT get(const DISPPARAMS& parameters, VARIANT* result) = 0;
    virtual HRESULT put(const DISPPARAMS&) { return DISP_E_MEMBERNOTFOUND; }

    static HRESULT numberOf(VARIANT& argument, LONG& number) {
        VARIANT converted;
        VariantInit(&converted);
        if (FAILED(VariantChangeType(&converted, &argument, 0, VT_I4))) return DISP_E_TYPEMISMATCH;
        number = V_I4(&converted);
        return S_OK;
    }

  private:
    const wchar_t* name_;
    std::atomic<ULONG> references_ = 1;
};

// The progress control: the module raises its property "value".
class ProgressControl final : public OneProperty {
  public:
    explicit ProgressControl(std::function<void(Long)> changed)
        : OneProperty(L"value"), changed_(std::move(changed)) {}

  private:
    HRESULT get(const DISPPARAMS&, VARIANT* result) override {
        if (!result) return S_OK;
        V_VT(result) = VT_I4;
        V_I4(result) = value_;
        return S_OK;
    }
    HRESULT put(const DISPPARAMS& parameters) override {
        if (parameters.cArgs != 1) return DISP_E_BADPARAMCOUNT;
        if (const HRESULT failed = numberOf(parameters.rgvarg[0], value_); FAILED(failed)) return failed;
        changed_(static_cast<Long>(value_));
        return S_OK;
    }

    std::function<void(Long)> changed_;
    LONG value_ = 0;
};

// The calendar grid: its property "textmatrix"(row, column) gives a cell's text.
class Grid final : public OneProperty {
  public:
    explicit Grid(std::function<Text(Long row, Long column)> cell)
        : OneProperty(L"textmatrix"), cell_(std::move(cell)) {}

  private:
    HRESULT get(const DISPPARAMS& parameters, VARIANT* result) override {
        if (parameters.cArgs != 2) return DISP_E_BADPARAMCOUNT;
        if (!result) return S_OK;
        LONG row = 0, column = 0;  // the last argument comes first
        if (FAILED(numberOf(parameters.rgvarg[1], row)) || FAILED(numberOf(parameters.rgvarg[0], column)))
            return DISP_E_TYPEMISMATCH;
        try {
            V_BSTR(result) = com::newBstr(cell_(static_cast<Long>(row), static_cast<Long>(column)));
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
        V_VT(result) = VT_BSTR;
        return S_OK;
    }

    std::function<Text(Long row, Long column)> cell_;
};

}  // namespace ovno2::host
