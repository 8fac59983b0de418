#include "com/component.h"

#include <atomic>

#include "com/boundary.h"
#include "com/late_binding.h"
#include "com/module.h"
#include "com/type_libraries.h"

namespace ovno2::com {

namespace {

// A reference for the length of a call.
class Stay {
  public:
    explicit Stay(IUnknown& object) : object_(object) { object_.AddRef(); }
    ~Stay() { object_.Release(); }
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;

  private:
    IUnknown& object_;
};

// The place where failures of the calling thread are kept must be there before anything may fail.
bool threadIsReady() noexcept {
    try {
        pendingFailure();
        return true;
    } catch (...) {
        return false;
    }
}

// Every slot of _covNo2 hands its arguments to the member of the same name (com/boundary.h). IDispatch is our
// own (com/late_binding.h), because script hosts pass what the standard one does not take. It stays alive for
// the length of a call even when the host releases its last reference inside it.
class Component final : public _covNo2 {
  public:
    Component() = default;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(id, __uuidof(IUnknown)) && !IsEqualIID(id, __uuidof(IDispatch)) &&
            !IsEqualIID(id, __uuidof(_covNo2)))
            return E_NOINTERFACE;
        *object = static_cast<_covNo2*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            references_ = 1;  // cleaning up calls the host, which may take and release references
            delete this;
        }
        return left;
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** information) override {
        if (!information) return E_POINTER;
        *information = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        const ComPointer<ITypeInfo> own = typeInformation(ownLibrary, __uuidof(_covNo2));
        if (!own) return TYPE_E_CANTLOADLIBRARY;
        *information = own.get();
        (*information)->AddRef();
        return S_OK;
    }
    STDMETHODIMP GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        if (!IsEqualIID(id, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
        return idsOfNames(names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID member, REFIID id, LCID locale, WORD kind, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO*, UINT* wrongArgument) override {
        if (!IsEqualIID(id, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
        const Stay stay(*this);
        return invokeLateBound(*this, member, locale, kind, parameters, result, wrongArgument);
    }

    STDMETHODIMP Init(LONG* result) override { return call(&covNo2::Init, result); }
    STDMETHODIMP CleanUp(LONG* result) override { return call(&covNo2::CleanUp, result); }

    STDMETHODIMP SetPriorities_(SAFEARRAY** newval) override { return call(&covNo2::SetPriorities_, newval); }
    STDMETHODIMP SetStatuses_(SAFEARRAY** newval, VARIANT* result) override {
        call(&covNo2::SetStatuses_, static_cast<VARIANT*>(nullptr), newval);
        if (result) VariantInit(result);
        return S_OK;
    }
    STDMETHODIMP put_Meeting_(BSTR* value) override { return call(&covNo2::Meeting_, value); }
    STDMETHODIMP put_Bithday_(BSTR* value) override { return call(&covNo2::Bithday_, value); }
    STDMETHODIMP put_Call_(BSTR* value) override { return call(&covNo2::Call_, value); }
    STDMETHODIMP put_Reminder_(BSTR* value) override { return call(&covNo2::Reminder_, value); }
    STDMETHODIMP put_Task_(BSTR* value) override { return call(&covNo2::Task_, value); }
    STDMETHODIMP put_Minute_(BSTR* value) override { return call(&covNo2::Minute_, value); }
    STDMETHODIMP put_Hour_(BSTR* value) override { return call(&covNo2::Hour_, value); }
    STDMETHODIMP put_Day_(BSTR* value) override { return call(&covNo2::Day_, value); }
    STDMETHODIMP put_Note_(BSTR* value) override { return call(&covNo2::Note_, value); }
    STDMETHODIMP put_GetAllFields_(LONG* value) override { return call(&covNo2::GetAllFields_, value); }
    STDMETHODIMP put_AddTimeOffset_(LONG* value) override { return call(&covNo2::AddTimeOffset_, value); }
    STDMETHODIMP put_PhoneModel_(BSTR* value) override { return call(&covNo2::PhoneModel_, value); }

    STDMETHODIMP CheckIfNokiaSDKIsThere(VARIANT_BOOL startit, VARIANT_BOOL* result) override {
        return call(&covNo2::CheckIfNokiaSDKIsThere, result, startit);
    }
    STDMETHODIMP LaunchPCSuite2IfRequired(LONG* pCallBack, LONG* result) override {
        return call(&covNo2::LaunchPCSuite2IfRequired, result, pCallBack);
    }
    STDMETHODIMP GetConnections(LONG* result) override { return call(&covNo2::GetConnections, result); }
    STDMETHODIMP Connect(LONG medium, LONG Medium2, BSTR Phone, BSTR Id, VARIANT_BOOL Dicsonnect,
                         LONG* result) override {
        return call(&covNo2::Connect, result, medium, Medium2, Phone, Id, Dicsonnect);
    }
    STDMETHODIMP GetConnectedDevices(SAFEARRAY** models, SAFEARRAY** Media, SAFEARRAY** deviceID,
                                     SAFEARRAY** BdAddr, SAFEARRAY** Names, SAFEARRAY** Types, LONG medium,
                                     LONG* result) override {
        return call(&covNo2::GetConnectedDevices, result, models, Media, deviceID, BdAddr, Names, Types,
                    medium);
    }

    STDMETHODIMP NokiaGetAddressBookItems(BSTR* model, BSTR* PhoneId, BSTR* Phonebook, SAFEARRAY** AdrItems,
                                          SAFEARRAY** Mobilefields, SAFEARRAY** Groups, BSTR FolderForPics,
                                          IDispatch** Progressbar, LONG* pCallBack, LONG* result) override {
        return call(&covNo2::NokiaGetAddressBookItems, result, model, PhoneId, Phonebook, AdrItems,
                    Mobilefields, Groups, FolderForPics, Progressbar, pCallBack);
    }
    STDMETHODIMP DeleteAddressBookItem(BSTR* model, BSTR* PhoneId, BSTR Id, LONG* result) override {
        return call(&covNo2::DeleteAddressBookItem, result, model, PhoneId, Id);
    }
    STDMETHODIMP WriteAddressBookItem(BSTR* model, BSTR* PhoneId, BSTR* Id, BSTR* elems,
                                      SAFEARRAY** Mobilefields, VARIANT_BOOL isnew, VARIANT_BOOL delete_,
                                      LONG isrewrite, LONG pCallBack, LONG* result) override {
        return call(&covNo2::WriteAddressBookItem, result, model, PhoneId, Id, elems, Mobilefields, isnew,
                    delete_, isrewrite, pCallBack);
    }
    STDMETHODIMP EndWriteSession(LONG what, SAFEARRAY** tempids, SAFEARRAY** uids, VARIANT_BOOL writeit,
                                 LONG* result) override {
        return call(&covNo2::EndWriteSession, result, what, tempids, uids, writeit);
    }
    STDMETHODIMP GetAllUids(LONG what, SAFEARRAY** uids, LONG* result) override {
        return call(&covNo2::GetAllUids, result, what, uids);
    }
    STDMETHODIMP GetApiVersion(float* result) override { return call(&covNo2::GetApiVersion, result); }

    STDMETHODIMP RenameCalender(BSTR* model, BSTR PhoneId, BSTR oldname, BSTR NewName,
                                VARIANT* result) override {
        return call(&covNo2::RenameCalender, result, model, PhoneId, oldname, NewName);
    }
    STDMETHODIMP CreateCalender(BSTR* model, BSTR PhoneId, BSTR NewName, VARIANT* result) override {
        return call(&covNo2::CreateCalender, result, model, PhoneId, NewName);
    }
    STDMETHODIMP DeleteCalender(BSTR* model, BSTR PhoneId, BSTR Name, VARIANT* result) override {
        return call(&covNo2::DeleteCalender, result, model, PhoneId, Name);
    }
    STDMETHODIMP GetCalendarFolders(BSTR* model, BSTR* PhoneId, SAFEARRAY** CalNames, SAFEARRAY** CalIds,
                                    LONG* result) override {
        return call(&covNo2::GetCalendarFolders, result, model, PhoneId, CalNames, CalIds);
    }
    STDMETHODIMP NokiaGetCalendarItems(BSTR* model, BSTR* PhoneId, SAFEARRAY** CalItems,
                                       SAFEARRAY** MobileCalFields, IDispatch** Progressbar,
                                       LONG* result) override {
        return call(&covNo2::NokiaGetCalendarItems, result, model, PhoneId, CalItems, MobileCalFields,
                    Progressbar);
    }
    STDMETHODIMP DeleteCalendarItem(BSTR* model, BSTR* PhoneId, BSTR Id, LONG* result) override {
        return call(&covNo2::DeleteCalendarItem, result, model, PhoneId, Id);
    }
    STDMETHODIMP WriteCalendarItem(BSTR* model, BSTR* PhoneId, tCalItem* elemcal, IDispatch** CalGrid,
                                   LONG indexingrid, SAFEARRAY** MobileCalFields, LONG* result) override {
        return call(&covNo2::WriteCalendarItem, result, model, PhoneId, elemcal, CalGrid, indexingrid,
                    MobileCalFields);
    }

    STDMETHODIMP NokiaGetDataItems(BSTR* model, BSTR* PhoneId, LONG* what, SAFEARRAY** DataItems,
                                   IDispatch** Progressbar, LONG* pCallBack, LONG* result) override {
        return call(&covNo2::NokiaGetDataItems, result, model, PhoneId, what, DataItems, Progressbar,
                    pCallBack);
    }
    STDMETHODIMP WriteDataItem(BSTR* model, BSTR* PhoneId, BSTR* Msg, LONG* result) override {
        return call(&covNo2::WriteDataItem, result, model, PhoneId, Msg);
    }
    STDMETHODIMP DeleteDataItem(BSTR* model, BSTR* PhoneId, BSTR Msg, LONG* result) override {
        return call(&covNo2::DeleteDataItem, result, model, PhoneId, Msg);
    }

    STDMETHODIMP MediaSearchBT(SAFEARRAY** models, SAFEARRAY** BdAddr, SAFEARRAY** deviceID,
                               SAFEARRAY** state, LONG timeout, LONG* result) override {
        return call(&covNo2::MediaSearchBT, result, models, BdAddr, deviceID, state, timeout);
    }
    STDMETHODIMP ChangeDeviceTrustedState(BSTR* BdAddr, LONG dowhat, BSTR pw, LONG* result) override {
        return call(&covNo2::ChangeDeviceTrustedState, result, BdAddr, dowhat, pw);
    }
    STDMETHODIMP DMApiTerminate_() override { return call(&covNo2::DMApiTerminate_); }

    STDMETHODIMP GetDirContents(BSTR* model, SAFEARRAY** List, BSTR folder, LONG* result) override {
        return call(&covNo2::GetDirContents, result, model, List, folder);
    }
    STDMETHODIMP EndFS(LONG* result) override { return call(&covNo2::EndFS, result); }
    STDMETHODIMP GetFile(BSTR* Filename, BSTR* destdir, LONG* result) override {
        return call(&covNo2::GetFile, result, Filename, destdir);
    }
    STDMETHODIMP PutFile(BSTR* Filename, BSTR* destdir, LONG* result) override {
        return call(&covNo2::PutFile, result, Filename, destdir);
    }
    STDMETHODIMP RenameFile(BSTR* OrgFilenameWithPath, BSTR* NewName, LONG* result) override {
        return call(&covNo2::RenameFile, result, OrgFilenameWithPath, NewName);
    }
    STDMETHODIMP DeleteFile(BSTR* FilenameWithPath, LONG* result) override {
        return call(&covNo2::DeleteFile, result, FilenameWithPath);
    }
    STDMETHODIMP RenameFolder(BSTR* OrgNameWithPath, BSTR* NewName, LONG* result) override {
        return call(&covNo2::RenameFolder, result, OrgNameWithPath, NewName);
    }
    STDMETHODIMP CreateFolder(BSTR* FullFolderName, LONG* result) override {
        return call(&covNo2::CreateFolder, result, FullFolderName);
    }
    STDMETHODIMP DeleteFolder(BSTR* FullFolderName, LONG* result) override {
        return call(&covNo2::DeleteFolder, result, FullFolderName);
    }

    STDMETHODIMP GetPCSuiteVersion(float* result) override {
        return call(&covNo2::GetPCSuiteVersion, result);
    }

  private:
    ~Component() = default;

    // Runs a member for the host; `result` may be null.
    template <class Result, class HostResult, class... Parameters, class... Given>
    requires(!std::is_void_v<Result>) HRESULT
        call(Result (covNo2::*member)(Parameters...) noexcept, HostResult* result, Given... given)
    noexcept {
        const Stay stay(*this);
        Result outcome = failureResult<Result>();
        if (threadIsReady()) outcome = runMember(module_, member, given...);
        if (result) storeResult(result, outcome);
        return S_OK;
    }
    template <class... Parameters, class... Given>
    HRESULT call(void (covNo2::*member)(Parameters...) noexcept, Given... given) noexcept {
        const Stay stay(*this);
        if (threadIsReady()) runMember(module_, member, given...);
        return S_OK;
    }

    ModuleLock lock_;
    std::atomic<ULONG> references_ = 1;
    covNo2 module_;
};

}  // namespace

_covNo2* createComponent() {
    if (!threadIsReady()) throw std::bad_alloc();
    return new Component();
}

}  // namespace ovno2::com
