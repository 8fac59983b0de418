// The public class: the only way in.
//
// A host creates one instance on its thread, sets what it needs and calls the operations; an object is used
// only on the thread that created it, and every thread has module state of its own. No member throws: each
// reports its outcome in its result. 0 is success, small negative numbers name the step that failed, any
// other value is a status of the connectivity library passed through unchanged (32-bit, top bit set).
//
// By-reference texts and arrays belong to the host and may be written; the module keeps nothing of them.
#pragma once

#include "base/host_array.h"
#include "contacts/adr_item.h"
#include "devices/devices.h"
#include "phonefs/dir_item.h"
#include "platform/automation.h"

namespace ovno2 {

using platform::ObjectPointer;
using platform::Variant;

// The host record of a calendar entry; the members the module touches.
struct CalItem {
    Long ItemNumber = 0;  // the phone's number of the entry
    Text VCalText;
    Text VCalTextRead;
    Long ItemKind = 0;  // 1 = event, 2 = to-do
    Text ItemUid;
};

class covNo2 {
  public:
    covNo2() noexcept;  // runs Init
    ~covNo2();          // runs CleanUp
    covNo2(const covNo2&) = delete;
    covNo2& operator=(const covNo2&) = delete;

    Long Init() noexcept;
    Long CleanUp() noexcept;

    void SetPriorities_(const TextArray& newval) noexcept;
    Variant SetStatuses_(const TextArray& newval) noexcept;
    void Meeting_(const Text& value) noexcept;
    void Bithday_(const Text& value) noexcept;
    void Call_(const Text& value) noexcept;
    void Reminder_(const Text& value) noexcept;
    void Task_(const Text& value) noexcept;
    void Minute_(const Text& value) noexcept;
    void Hour_(const Text& value) noexcept;
    void Day_(const Text& value) noexcept;
    void Note_(const Text& value) noexcept;
    void GetAllFields_(Long value) noexcept;
    void AddTimeOffset_(Long value) noexcept;
    void PhoneModel_(const Text& value) noexcept;

    bool CheckIfNokiaSDKIsThere(bool startit = true) noexcept;
    Long LaunchPCSuite2IfRequired(Long pCallBack) noexcept;
    Long GetConnections() noexcept;
    Long Connect(Long medium, Long Medium2, const Text& Phone = {}, const Text& Id = {},
                 bool Dicsonnect = false) noexcept;
    // With `medium` below 0 the phones are listed as they are; else that medium is switched on first.
    Long GetConnectedDevices(TextArray& models, LongArray& Media, TextArray& deviceID, TextArray& BdAddr,
                             TextArray& Names, LongArray& Types, Long medium = -1) noexcept;

    Long NokiaGetAddressBookItems(Text& model, Text& PhoneId, Text& Phonebook, HostArray<AdrItem>& AdrItems,
                                  const TextTable& Mobilefields, TextArray& Groups,
                                  const Text& FolderForPics = {}, const ObjectPointer& Progressbar = nullptr,
                                  Long pCallBack = 0) noexcept;
    Long DeleteAddressBookItem(Text& model, Text& PhoneId, const Text& Id) noexcept;
    Long WriteAddressBookItem(Text& model, Text& PhoneId, Text& Id, Text& elems,
                              const TextTable& Mobilefields, bool isnew = false, bool delete_ = false,
                              Long isrewrite = 0, Long pCallBack = 0) noexcept;
    Long EndWriteSession(Long what, TextArray& tempids, TextArray& uids, bool writeit = false) noexcept;
    Long GetAllUids(Long what, TextArray& uids) noexcept;
    Single GetApiVersion() noexcept;

    Variant RenameCalender(Text& model, const Text& PhoneId, const Text& oldname,
                           const Text& NewName) noexcept;
    Variant CreateCalender(Text& model, const Text& PhoneId, const Text& NewName) noexcept;
    Variant DeleteCalender(Text& model, const Text& PhoneId, const Text& Name) noexcept;
    Long GetCalendarFolders(Text& model, Text& PhoneId, TextArray& CalNames, TextArray& CalIds) noexcept;
    Long NokiaGetCalendarItems(Text& model, Text& PhoneId, HostArray<CalItem>& CalItems,
                               const TextTable& MobileCalFields, const ObjectPointer& Progressbar) noexcept;
    Long DeleteCalendarItem(Text& model, Text& PhoneId, const Text& Id) noexcept;
    Long WriteCalendarItem(Text& model, Text& PhoneId, CalItem& elemcal, const ObjectPointer& CalGrid,
                           Long indexingrid, const TextTable& MobileCalFields) noexcept;

    Long NokiaGetDataItems(Text& model, Text& PhoneId, Long what, TextArray& DataItems,
                           const ObjectPointer& Progressbar = nullptr, Long pCallBack = 0) noexcept;
    Long WriteDataItem(Text& model, Text& PhoneId, Text& Msg) noexcept;
    Long DeleteDataItem(Text& model, Text& PhoneId, const Text& Msg) noexcept;

    Long MediaSearchBT(TextArray& models, TextArray& BdAddr, TextArray& deviceID, LongArray& state,
                       Long timeout = 200) noexcept;
    Long ChangeDeviceTrustedState(Text& BdAddr, Long dowhat = 3, const Text& pw = {}) noexcept;
    void DMApiTerminate_() noexcept;

    Long GetDirContents(Text& model, HostArray<DirItem>& List, const Text& folder = u"/") noexcept;
    Long EndFS() noexcept;
    Long GetFile(Text& Filename, Text& destdir) noexcept;
    Long PutFile(Text& Filename, Text& destdir) noexcept;
    Long RenameFile(Text& OrgFilenameWithPath, Text& NewName) noexcept;
    Long DeleteFile(Text& FilenameWithPath) noexcept;
    Long RenameFolder(Text& OrgNameWithPath, Text& NewName) noexcept;
    Long CreateFolder(Text& FullFolderName) noexcept;
    Long DeleteFolder(Text& FullFolderName) noexcept;

    Single GetPCSuiteVersion() noexcept;

  private:
    // Runs Init while it has not been run, then the operation.
    template <class Operation>
    Long phoneFilesMember(Operation&& operation) noexcept;

    bool initDone_ = false;
    Single suiteVersion_ = 0;
};

}  // namespace ovno2
