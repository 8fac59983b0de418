#include "com/component.h"

#include "com/boundary.h"
#include "com/late_binding.h"

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

}  // namespace

Component* Component::create() {
    if (!threadIsReady()) throw std::bad_alloc();
    return new Component();
}

HRESULT Component::QueryInterface(REFIID id, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(id, __uuidof(IUnknown)) && !IsEqualIID(id, __uuidof(IDispatch)) &&
        !IsEqualIID(id, __uuidof(_covNo2)))
        return E_NOINTERFACE;
    *object = static_cast<_covNo2*>(this);
    AddRef();
    return S_OK;
}

ULONG Component::AddRef() {
    return ++references_;
}

ULONG Component::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        references_ = 1;  // cleaning up calls the host, which may take and release references
        delete this;
    }
    return left;
}

HRESULT Component::GetTypeInfoCount(UINT* count) {
    if (!count) return E_POINTER;
    *count = 1;
    return S_OK;
}

HRESULT Component::GetTypeInfo(UINT index, LCID, ITypeInfo** information) {
    if (!information) return E_POINTER;
    *information = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    const ComPointer<ITypeInfo> own = typeInformation(ownLibrary, __uuidof(_covNo2));
    if (!own) return TYPE_E_CANTLOADLIBRARY;
    *information = own.get();
    (*information)->AddRef();
    return S_OK;
}

HRESULT Component::GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
    if (!IsEqualIID(id, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    return idsOfNames(names, count, ids);
}

HRESULT Component::Invoke(DISPID member, REFIID id, LCID locale, WORD kind, DISPPARAMS* parameters,
                          VARIANT* result, EXCEPINFO*, UINT* wrongArgument) {
    if (!IsEqualIID(id, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    const Stay stay(*this);
    return invokeLateBound(*this, member, locale, kind, parameters, result, wrongArgument);
}

template <class Result, class HostResult, class... Parameters, class... Given>
requires(!std::is_void_v<Result>) HRESULT Component::call(Result (covNo2::*member)(Parameters...) noexcept,
                                                          HostResult* result, Given... given)
noexcept {
    const Stay stay(*this);
    Result outcome = failureResult<Result>();
    if (threadIsReady()) outcome = runMember(module_, member, given...);
    if (result) storeResult(result, outcome);
    return S_OK;
}

template <class... Parameters, class... Given>
HRESULT Component::call(void (covNo2::*member)(Parameters...) noexcept, Given... given) noexcept {
    const Stay stay(*this);
    if (threadIsReady()) runMember(module_, member, given...);
    return S_OK;
}

HRESULT Component::Init(LONG* result) {
    return call(&covNo2::Init, result);
}
HRESULT Component::CleanUp(LONG* result) {
    return call(&covNo2::CleanUp, result);
}

HRESULT Component::SetPriorities_(SAFEARRAY** newval) {
    return call(&covNo2::SetPriorities_, newval);
}
HRESULT Component::SetStatuses_(SAFEARRAY** newval, VARIANT* result) {
    call(&covNo2::SetStatuses_, static_cast<VARIANT*>(nullptr), newval);
    if (result) VariantInit(result);
    return S_OK;
}
HRESULT Component::put_Meeting_(BSTR* value) {
    return call(&covNo2::Meeting_, value);
}
HRESULT Component::put_Bithday_(BSTR* value) {
    return call(&covNo2::Bithday_, value);
}
HRESULT Component::put_Call_(BSTR* value) {
    return call(&covNo2::Call_, value);
}
HRESULT Component::put_Reminder_(BSTR* value) {
    return call(&covNo2::Reminder_, value);
}
HRESULT Component::put_Task_(BSTR* value) {
    return call(&covNo2::Task_, value);
}
HRESULT Component::put_Minute_(BSTR* value) {
    return call(&covNo2::Minute_, value);
}
HRESULT Component::put_Hour_(BSTR* value) {
    return call(&covNo2::Hour_, value);
}
HRESULT Component::put_Day_(BSTR* value) {
    return call(&covNo2::Day_, value);
}
HRESULT Component::put_Note_(BSTR* value) {
    return call(&covNo2::Note_, value);
}
HRESULT Component::put_GetAllFields_(LONG* value) {
    return call(&covNo2::GetAllFields_, value);
}
HRESULT Component::put_AddTimeOffset_(LONG* value) {
    return call(&covNo2::AddTimeOffset_, value);
}
HRESULT Component::put_PhoneModel_(BSTR* value) {
    return call(&covNo2::PhoneModel_, value);
}

HRESULT Component::CheckIfNokiaSDKIsThere(VARIANT_BOOL startit, VARIANT_BOOL* result) {
    return call(&covNo2::CheckIfNokiaSDKIsThere, result, startit);
}
HRESULT Component::LaunchPCSuite2IfRequired(LONG* pCallBack, LONG* result) {
    return call(&covNo2::LaunchPCSuite2IfRequired, result, pCallBack);
}
HRESULT Component::GetConnections(LONG* result) {
    return call(&covNo2::GetConnections, result);
}
HRESULT Component::Connect(LONG medium, LONG Medium2, BSTR Phone, BSTR Id, VARIANT_BOOL Dicsonnect,
                           LONG* result) {
    return call(&covNo2::Connect, result, medium, Medium2, Phone, Id, Dicsonnect);
}
HRESULT Component::GetConnectedDevices(SAFEARRAY** models, SAFEARRAY** Media, SAFEARRAY** deviceID,
                                       SAFEARRAY** BdAddr, SAFEARRAY** Names, SAFEARRAY** Types, LONG medium,
                                       LONG* result) {
    return call(&covNo2::GetConnectedDevices, result, models, Media, deviceID, BdAddr, Names, Types, medium);
}

HRESULT Component::NokiaGetAddressBookItems(BSTR* model, BSTR* PhoneId, BSTR* Phonebook, SAFEARRAY** AdrItems,
                                            SAFEARRAY** Mobilefields, SAFEARRAY** Groups, BSTR FolderForPics,
                                            IDispatch** Progressbar, LONG* pCallBack, LONG* result) {
    return call(&covNo2::NokiaGetAddressBookItems, result, model, PhoneId, Phonebook, AdrItems, Mobilefields,
                Groups, FolderForPics, Progressbar, pCallBack);
}
HRESULT Component::DeleteAddressBookItem(BSTR* model, BSTR* PhoneId, BSTR Id, LONG* result) {
    return call(&covNo2::DeleteAddressBookItem, result, model, PhoneId, Id);
}
HRESULT Component::WriteAddressBookItem(BSTR* model, BSTR* PhoneId, BSTR* Id, BSTR* elems,
                                        SAFEARRAY** Mobilefields, VARIANT_BOOL isnew, VARIANT_BOOL delete_,
                                        LONG isrewrite, LONG pCallBack, LONG* result) {
    return call(&covNo2::WriteAddressBookItem, result, model, PhoneId, Id, elems, Mobilefields, isnew,
                delete_, isrewrite, pCallBack);
}
HRESULT Component::EndWriteSession(LONG what, SAFEARRAY** tempids, SAFEARRAY** uids, VARIANT_BOOL writeit,
                                   LONG* result) {
    return call(&covNo2::EndWriteSession, result, what, tempids, uids, writeit);
}
HRESULT Component::GetAllUids(LONG what, SAFEARRAY** uids, LONG* result) {
    return call(&covNo2::GetAllUids, result, what, uids);
}
HRESULT Component::GetApiVersion(float* result) {
    return call(&covNo2::GetApiVersion, result);
}

HRESULT Component::RenameCalender(BSTR* model, BSTR PhoneId, BSTR oldname, BSTR NewName, VARIANT* result) {
    return call(&covNo2::RenameCalender, result, model, PhoneId, oldname, NewName);
}
HRESULT Component::CreateCalender(BSTR* model, BSTR PhoneId, BSTR NewName, VARIANT* result) {
    return call(&covNo2::CreateCalender, result, model, PhoneId, NewName);
}
HRESULT Component::DeleteCalender(BSTR* model, BSTR PhoneId, BSTR Name, VARIANT* result) {
    return call(&covNo2::DeleteCalender, result, model, PhoneId, Name);
}
HRESULT Component::GetCalendarFolders(BSTR* model, BSTR* PhoneId, SAFEARRAY** CalNames, SAFEARRAY** CalIds,
                                      LONG* result) {
    return call(&covNo2::GetCalendarFolders, result, model, PhoneId, CalNames, CalIds);
}
HRESULT Component::NokiaGetCalendarItems(BSTR* model, BSTR* PhoneId, SAFEARRAY** CalItems,
                                         SAFEARRAY** MobileCalFields, IDispatch** Progressbar, LONG* result) {
    return call(&covNo2::NokiaGetCalendarItems, result, model, PhoneId, CalItems, MobileCalFields,
                Progressbar);
}
HRESULT Component::DeleteCalendarItem(BSTR* model, BSTR* PhoneId, BSTR Id, LONG* result) {
    return call(&covNo2::DeleteCalendarItem, result, model, PhoneId, Id);
}
HRESULT Component::WriteCalendarItem(BSTR* model, BSTR* PhoneId, tCalItem* elemcal, IDispatch** CalGrid,
                                     LONG indexingrid, SAFEARRAY** MobileCalFields, LONG* result) {
    return call(&covNo2::WriteCalendarItem, result, model, PhoneId, elemcal, CalGrid, indexingrid,
                MobileCalFields);
}

HRESULT Component::NokiaGetDataItems(BSTR* model, BSTR* PhoneId, LONG* what, SAFEARRAY** DataItems,
                                     IDispatch** Progressbar, LONG* pCallBack, LONG* result) {
    return call(&covNo2::NokiaGetDataItems, result, model, PhoneId, what, DataItems, Progressbar, pCallBack);
}
HRESULT Component::WriteDataItem(BSTR* model, BSTR* PhoneId, BSTR* Msg, LONG* result) {
    return call(&covNo2::WriteDataItem, result, model, PhoneId, Msg);
}
HRESULT Component::DeleteDataItem(BSTR* model, BSTR* PhoneId, BSTR Msg, LONG* result) {
    return call(&covNo2::DeleteDataItem, result, model, PhoneId, Msg);
}

HRESULT Component::MediaSearchBT(SAFEARRAY** models, SAFEARRAY** BdAddr, SAFEARRAY** deviceID,
                                 SAFEARRAY** state, LONG timeout, LONG* result) {
    return call(&covNo2::MediaSearchBT, result, models, BdAddr, deviceID, state, timeout);
}
HRESULT Component::ChangeDeviceTrustedState(BSTR* BdAddr, LONG dowhat, BSTR pw, LONG* result) {
    return call(&covNo2::ChangeDeviceTrustedState, result, BdAddr, dowhat, pw);
}
HRESULT Component::DMApiTerminate_() {
    return call(&covNo2::DMApiTerminate_);
}

HRESULT Component::GetDirContents(BSTR* model, SAFEARRAY** List, BSTR folder, LONG* result) {
    return call(&covNo2::GetDirContents, result, model, List, folder);
}
HRESULT Component::EndFS(LONG* result) {
    return call(&covNo2::EndFS, result);
}
HRESULT Component::GetFile(BSTR* Filename, BSTR* destdir, LONG* result) {
    return call(&covNo2::GetFile, result, Filename, destdir);
}
HRESULT Component::PutFile(BSTR* Filename, BSTR* destdir, LONG* result) {
    return call(&covNo2::PutFile, result, Filename, destdir);
}
HRESULT Component::RenameFile(BSTR* OrgFilenameWithPath, BSTR* NewName, LONG* result) {
    return call(&covNo2::RenameFile, result, OrgFilenameWithPath, NewName);
}
HRESULT Component::DeleteFile(BSTR* FilenameWithPath, LONG* result) {
    return call(&covNo2::DeleteFile, result, FilenameWithPath);
}
HRESULT Component::RenameFolder(BSTR* OrgNameWithPath, BSTR* NewName, LONG* result) {
    return call(&covNo2::RenameFolder, result, OrgNameWithPath, NewName);
}
HRESULT Component::CreateFolder(BSTR* FullFolderName, LONG* result) {
    return call(&covNo2::CreateFolder, result, FullFolderName);
}
HRESULT Component::DeleteFolder(BSTR* FullFolderName, LONG* result) {
    return call(&covNo2::DeleteFolder, result, FullFolderName);
}

HRESULT Component::GetPCSuiteVersion(float* result) {
    return call(&covNo2::GetPCSuiteVersion, result);
}

}  // namespace ovno2::com
