#include "com/class_factory.h"

#include "com/component.h"
#include "com/module.h"

namespace ovno2::com {

namespace {

class ClassFactory final : public IClassFactory {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(id, __uuidof(IUnknown)) && !IsEqualIID(id, __uuidof(IClassFactory)))
            return E_NOINTERFACE;
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    // It lives as long as the DLL; only that counts.
    ULONG STDMETHODCALLTYPE AddRef() override {
        lockModule();
        return 2;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        unlockModule();
        return 1;
    }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        try {
            _covNo2* const component = createComponent();
            const HRESULT result = component->QueryInterface(id, object);
            component->Release();
            return result;
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }

    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock)
            lockModule();
        else
            unlockModule();
        return S_OK;
    }
};

}  // namespace

IClassFactory& classFactory() {
    static ClassFactory factory;
    return factory;
}

}  // namespace ovno2::com
