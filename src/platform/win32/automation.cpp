#include "platform/automation.h"

#include "platform/win32/dispatch_object.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

class ComAutomation : public Automation {
  public:
    ObjectPointer create(TextView name) override {
        CLSID classId;
        if (FAILED(CLSIDFromProgID(wide(Text(name)), &classId))) return nullptr;
        ComPointer<IDispatch> object;
        HRESULT result = createInstance(classId, object);
        if (result == CO_E_NOTINITIALIZED) {
            // A host that is no COM program itself; the thread keeps the apartment as long as it lives.
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            result = createInstance(classId, object);
        }
        return SUCCEEDED(result) ? wrapDispatch(object.get()) : nullptr;
    }

  private:
    static HRESULT createInstance(const CLSID& classId, ComPointer<IDispatch>& object) {
        return CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IDispatch,
                                object.outAny());
    }
};

}  // namespace

std::unique_ptr<Automation> makeAutomation() {
    return std::make_unique<ComAutomation>();
}

}  // namespace ovno2::platform::win32
