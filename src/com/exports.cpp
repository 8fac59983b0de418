// What the DLL exports: the entry points of a COM in-process server.
#include "com/class_factory.h"
#include "com/module.h"
#include "com/registration.h"

extern "C" {

HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID classId, REFIID id, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (!IsEqualCLSID(classId, __uuidof(covNo2))) return CLASS_E_CLASSNOTAVAILABLE;
    return ovno2::com::classFactory().QueryInterface(id, object);
}

HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    return ovno2::com::moduleIsLocked() ? S_FALSE : S_OK;
}

HRESULT STDAPICALLTYPE DllRegisterServer() {
    return ovno2::com::registerModule();
}

HRESULT STDAPICALLTYPE DllUnregisterServer() {
    return ovno2::com::unregisterModule();
}

// `regsvr32 /n /i:user` registers for the user alone.
HRESULT STDAPICALLTYPE DllInstall(BOOL install, LPCWSTR commandLine) {
    if (!install) return ovno2::com::unregisterModule();
    if (commandLine && lstrcmpiW(commandLine, L"user") == 0) return ovno2::com::registerModuleForUser();
    return ovno2::com::registerModule();
}
}
