// The COM object around the public class.
//
// Every slot of _covNo2 hands its arguments to the member of the same name (com/boundary.h). IDispatch is our
// own (com/late_binding.h), because script hosts pass what the standard one does not take. The object belongs
// to the thread that made it; it stays alive for the length of a call even when the host releases its last
// reference inside it.
#pragma once

#include <atomic>

#include "com/interface.h"
#include "com/module.h"
#include "com/type_libraries.h"
#include "driver/cov_no2.h"

namespace ovno2::com {

class Component final : public _covNo2 {
  public:
    // Starts with one reference, the caller's. Throws std::bad_alloc.
    static Component* create();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** information) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID locale, WORD kind, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO*, UINT* wrongArgument) override;

#define OVNO2_SLOT(name, ...)                   \
    HRESULT STDMETHODCALLTYPE name(__VA_ARGS__) \
    override
    OVNO2_SLOT(Init, LONG* result);
    OVNO2_SLOT(CleanUp, LONG* result);
    OVNO2_SLOT(SetPriorities_, SAFEARRAY** newval);
    OVNO2_SLOT(SetStatuses_, SAFEARRAY** newval, VARIANT* result);
    OVNO2_SLOT(put_Meeting_, BSTR* value);
    OVNO2_SLOT(put_Bithday_, BSTR* value);
    OVNO2_SLOT(put_Call_, BSTR* value);
    OVNO2_SLOT(put_Reminder_, BSTR* value);
    OVNO2_SLOT(put_Task_, BSTR* value);
    OVNO2_SLOT(put_Minute_, BSTR* value);
    OVNO2_SLOT(put_Hour_, BSTR* value);
    OVNO2_SLOT(put_Day_, BSTR* value);
    OVNO2_SLOT(put_Note_, BSTR* value);
    OVNO2_SLOT(put_GetAllFields_, LONG* value);
    OVNO2_SLOT(put_AddTimeOffset_, LONG* value);
    OVNO2_SLOT(put_PhoneModel_, BSTR* value);
    OVNO2_SLOT(CheckIfNokiaSDKIsThere, VARIANT_BOOL startit, VARIANT_BOOL* result);
    OVNO2_SLOT(LaunchPCSuite2IfRequired, LONG* pCallBack, LONG* result);
    OVNO2_SLOT(GetConnections, LONG* result);
    OVNO2_SLOT(Connect, LONG medium, LONG Medium2, BSTR Phone, BSTR Id, VARIANT_BOOL Dicsonnect,
               LONG* result);
    OVNO2_SLOT(GetConnectedDevices, SAFEARRAY** models, SAFEARRAY** Media, SAFEARRAY** deviceID,
               SAFEARRAY** BdAddr, SAFEARRAY** Names, SAFEARRAY** Types, LONG medium, LONG* result);
    OVNO2_SLOT(NokiaGetAddressBookItems, BSTR* model, BSTR* PhoneId, BSTR* Phonebook, SAFEARRAY** AdrItems,
               SAFEARRAY** Mobilefields, SAFEARRAY** Groups, BSTR FolderForPics, IDispatch** Progressbar,
               LONG* pCallBack, LONG* result);
    OVNO2_SLOT(DeleteAddressBookItem, BSTR* model, BSTR* PhoneId, BSTR Id, LONG* result);
    OVNO2_SLOT(WriteAddressBookItem, BSTR* model, BSTR* PhoneId, BSTR* Id, BSTR* elems,
               SAFEARRAY** Mobilefields, VARIANT_BOOL isnew, VARIANT_BOOL delete_, LONG isrewrite,
               LONG pCallBack, LONG* result);
    OVNO2_SLOT(EndWriteSession, LONG what, SAFEARRAY** tempids, SAFEARRAY** uids, VARIANT_BOOL writeit,
               LONG* result);
    OVNO2_SLOT(GetAllUids, LONG what, SAFEARRAY** uids, LONG* result);
    OVNO2_SLOT(GetApiVersion, float* result);
    OVNO2_SLOT(RenameCalender, BSTR* model, BSTR PhoneId, BSTR oldname, BSTR NewName, VARIANT* result);
    OVNO2_SLOT(CreateCalender, BSTR* model, BSTR PhoneId, BSTR NewName, VARIANT* result);
    OVNO2_SLOT(DeleteCalender, BSTR* model, BSTR PhoneId, BSTR Name, VARIANT* result);
    OVNO2_SLOT(GetCalendarFolders, BSTR* model, BSTR* PhoneId, SAFEARRAY** CalNames, SAFEARRAY** CalIds,
               LONG* result);
    OVNO2_SLOT(NokiaGetCalendarItems, BSTR* model, BSTR* PhoneId, SAFEARRAY** CalItems,
               SAFEARRAY** MobileCalFields, IDispatch** Progressbar, LONG* result);
    OVNO2_SLOT(DeleteCalendarItem, BSTR* model, BSTR* PhoneId, BSTR Id, LONG* result);
    OVNO2_SLOT(WriteCalendarItem, BSTR* model, BSTR* PhoneId, tCalItem* elemcal, IDispatch** CalGrid,
               LONG indexingrid, SAFEARRAY** MobileCalFields, LONG* result);
    OVNO2_SLOT(NokiaGetDataItems, BSTR* model, BSTR* PhoneId, LONG* what, SAFEARRAY** DataItems,
               IDispatch** Progressbar, LONG* pCallBack, LONG* result);
    OVNO2_SLOT(WriteDataItem, BSTR* model, BSTR* PhoneId, BSTR* Msg, LONG* result);
    OVNO2_SLOT(DeleteDataItem, BSTR* model, BSTR* PhoneId, BSTR Msg, LONG* result);
    OVNO2_SLOT(MediaSearchBT, SAFEARRAY** models, SAFEARRAY** BdAddr, SAFEARRAY** deviceID, SAFEARRAY** state,
               LONG timeout, LONG* result);
    OVNO2_SLOT(ChangeDeviceTrustedState, BSTR* BdAddr, LONG dowhat, BSTR pw, LONG* result);
    OVNO2_SLOT(DMApiTerminate_);
    OVNO2_SLOT(GetDirContents, BSTR* model, SAFEARRAY** List, BSTR folder, LONG* result);
    OVNO2_SLOT(EndFS, LONG* result);
    OVNO2_SLOT(GetFile, BSTR* Filename, BSTR* destdir, LONG* result);
    OVNO2_SLOT(PutFile, BSTR* Filename, BSTR* destdir, LONG* result);
    OVNO2_SLOT(RenameFile, BSTR* OrgFilenameWithPath, BSTR* NewName, LONG* result);
    OVNO2_SLOT(DeleteFile, BSTR* FilenameWithPath, LONG* result);
    OVNO2_SLOT(RenameFolder, BSTR* OrgNameWithPath, BSTR* NewName, LONG* result);
    OVNO2_SLOT(CreateFolder, BSTR* FullFolderName, LONG* result);
    OVNO2_SLOT(DeleteFolder, BSTR* FullFolderName, LONG* result);
    OVNO2_SLOT(GetPCSuiteVersion, float* result);
#undef OVNO2_SLOT

  private:
    Component() = default;
    ~Component() = default;

    // Runs a member for the host; `result` may be null.
    template <class Result, class HostResult, class... Parameters, class... Given>
    requires(!std::is_void_v<Result>) HRESULT
        call(Result (covNo2::*member)(Parameters...) noexcept, HostResult* result, Given... given)
    noexcept;
    template <class... Parameters, class... Given>
    HRESULT call(void (covNo2::*member)(Parameters...) noexcept, Given... given) noexcept;

    ModuleLock lock_;
    std::atomic<ULONG> references_ = 1;
    covNo2 module_;
};

}  // namespace ovno2::com
