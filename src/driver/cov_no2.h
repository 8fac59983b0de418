// The public class: the only way in.
//
// A host creates one instance on its thread, sets what it needs and calls the operations; an object is used
// only on the thread that created it, and every thread has module state of its own. No member throws: each
// reports its outcome in its result, and a step that fails for want of memory fails like any other.
//
// Results: 0 is success where nothing else is said, small negative numbers name the step that failed, any
// other value is a status of the connectivity library passed through unchanged (32 bits, top bit set).
//
// Arguments: the host owns them all, the module keeps no reference to them once a member has returned. Those
// by reference are written where a member's comment says so and keep their value otherwise, after a failure
// too. Arrays may come without elements or with any lower bound. `Progressbar` is an object with a property
// `value`, which is only ever raised, or null. `pCallBack` is the address of a host's function with four
// 32-bit arguments (request, text number, style, text), or 0.
//
// The phone: `PhoneId` is its serial number and `model` a model as GetConnectedDevices lists them. Without a
// `model` the first phone of that list is meant; a `PhoneId` that is not attached leaves the choice to the
// model. Only GetDirContents writes one of them.
//
// Sessions stay open from one call to the next, after a failure too: the one with the devices until
// DMApiTerminate_, the one with a phone's files until EndFS. CleanUp closes all that is open.
#pragma once

#include "base/host_array.h"
#include "calendar/cal_item.h"
#include "contacts/adr_item.h"
#include "devices/devices.h"
#include "phonefs/dir_item.h"
#include "platform/automation.h"

namespace ovno2 {

using platform::ObjectPointer;
using platform::Variant;

class covNo2 {
  public:
    covNo2() noexcept;  // runs Init and passes over its result
    ~covNo2();          // runs CleanUp
    covNo2(const covNo2&) = delete;
    covNo2& operator=(const covNo2&) = delete;

    // Reads the log's and the date settings and starts the connectivity library unless it runs on this
    // thread: 0, else the library's status, or -1 when it cannot be called. The next Init tries again.
    // Members that need the library call it themselves.
    Long Init() noexcept;
    // Closes all sessions and stops the library. Always 0; may be called again, and Init after it.
    Long CleanUp() noexcept;

    // The settings, one set per thread; each stores a copy of what it is given, unchecked. SetStatuses_ gives
    // an empty Variant.
    //   SetPriorities_, SetStatuses_  the host's words for levels of priority and states of tasks
    //   Meeting_ to Task_, Note_      its words for kinds of calendar entries
    //   Minute_, Hour_, Day_          its words for units of time; all words are for writing the calendar
    //   GetAllFields_                 not 0: reading contacts drops no value; one that finds its row taken
    //                                 goes behind the other, one without a row to that of code 70
    //   AddTimeOffset_                0 and more (as it is at first): times that a phone gives in UTC become
    //                                 local
    //   PhoneModel_                   the model, with the platform that "defaults.ini" gives for it, which
    //                                 decides where the lines of an address go
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

    // The phone software: true when version 6 or newer is found; without `startit` an older library counts,
    // too. With `startit` its tray program is started when none of its programs runs; whether that succeeded
    // does not change the result.
    bool CheckIfNokiaSDKIsThere(bool startit = true) noexcept;
    // Starts the software's synchronisation program unless it runs, and dismisses its dialog; takes about
    // four seconds then, in which the host's messages are processed. 1 = it runs or was started, -2 = not
    // found, -1 = not found and the host's function answered 2 (Cancel).
    Long LaunchPCSuite2IfRequired(Long pCallBack) noexcept;

    // Connection media. GetConnections: those that are on, a bit set in the library's numbering (2 infrared,
    // 4 cable, 8 Bluetooth, 16 USB); 0 also when they cannot be listed. Connect: switches `medium` and
    // `Medium2` (tMedia values, -1 = none) on, or off with `Dicsonnect`; 0 also when the library has no such
    // medium or refuses; `Phone` and `Id` have no effect. Both: -9 library file not found, -1 media not
    // started.
    Long GetConnections() noexcept;
    Long Connect(Long medium, Long Medium2, const Text& Phone = {}, const Text& Id = {},
                 bool Dicsonnect = false) noexcept;
    // The attached phones, one entry per phone and connection: model, medium (tMedia), serial number,
    // address, name and platform (tNokiaPhoneType) at the same index of the six arrays, which are made anew
    // from index 0. With `medium` 0 or above that medium is switched on first, as Connect does.
    // The number of devices that the library reports, which is not always that of the entries: some have
    // several connections, those of other makers are left out; -1 session not opened, -2 devices not counted,
    // -3 devices not listed, -7 or (with a medium) -9 library file not found. Where nothing is listed the
    // arrays keep their elements, but `models` and `Media` are emptied once the devices are counted.
    Long GetConnectedDevices(TextArray& models, LongArray& Media, TextArray& deviceID, TextArray& BdAddr,
                             TextArray& Names, LongArray& Types, Long medium = -1) noexcept;

    // Reads a phone book. `AdrItems` gets one record per contact behind its own; into an array without
    // elements the first goes to index 1 and index 0 stays empty. A value goes to the row of `Mobilefields`
    // that has its field code in column 4 (counted from 0), pictures to files named by the contact's
    // identifier directly behind `FolderForPics`, the temporary folder's "ovpic" where that is empty. A
    // contact that the phone refuses is left out. Raises `Progressbar` by 1 a step and a contact and 50 for
    // the list. `Phonebook`, `Groups` and `pCallBack` have no effect.
    // The highest index of `AdrItems` (0 = none); -1 library not started, -2 no such phone, or reading not
    // begun, -3 not connected (0x80100023 as it is), -4 no contacts folder, -5 the phone stayed busy, else
    // the status with which the list was refused, after as many as three attempts. `AdrItems` keeps its
    // elements then.
    Long NokiaGetAddressBookItems(Text& model, Text& PhoneId, Text& Phonebook, HostArray<AdrItem>& AdrItems,
                                  const TextTable& Mobilefields, TextArray& Groups,
                                  const Text& FolderForPics = {}, const ObjectPointer& Progressbar = nullptr,
                                  Long pCallBack = 0) noexcept;
    // Writing a phone book. The first contact written or deleted begins a session with the phone; nothing is
    // changed on it until EndWriteSession commits all at once. `Id` is the contact's UID (or, until the
    // session ends, the temporary id of one that it has written); `elems` has a value for each row of
    // `Mobilefields`, divided by tabs, with "\t" for a tab inside a value. `isnew`, an empty `Id` or one the
    // phone does not know write a new contact, whose temporary id comes back in `Id`. `isrewrite` not 0 keeps
    // first and last name only; `delete_` has no effect. `pCallBack` is asked about a contact whose notes and
    // categories an old library cannot write back. `PhoneId` becomes the phone's serial number. 0 written,
    // deleted, or left out by the answer "no"; -1 library not started, (deleting) no such contact or no
    // memory for a value, -2 no such phone, -3 not connected, -4 operation not begun, -5 contacts not listed,
    // -9 given up by the answer "cancel", else the library's status. A contact that is refused leaves the
    // session and its other contacts as they are.
    Long DeleteAddressBookItem(Text& model, Text& PhoneId, const Text& Id) noexcept;
    Long WriteAddressBookItem(Text& model, Text& PhoneId, Text& Id, Text& elems,
                              const TextTable& Mobilefields, bool isnew = false, bool delete_ = false,
                              Long isrewrite = 0, Long pCallBack = 0) noexcept;
    // Ends the session of `what` (1 contacts, 2 calendar): committed with `writeit`, else dropped. Where
    // contacts are new, `tempids` and `uids` get the temporary id and the UID of each; otherwise both are
    // left alone; the calendar adds an element "0" and an empty text in any case. 0, or the library's status;
    // a failed commit leaves the phone as it was.
    Long EndWriteSession(Long what, TextArray& tempids, TextArray& uids, bool writeit = false) noexcept;
    // For `what` 1: position, ";" and UID of every contact the phone listed when the session began; no
    // elements without a session. 0; any other `what` does nothing.
    Long GetAllUids(Long what, TextArray& uids) noexcept;
    // The library's content-access version, such as 50; 0 when it cannot be asked.
    Single GetApiVersion() noexcept;

    // The calendars of a phone. GetCalendarFolders gives their names and, as decimal text, their ids from
    // index 0, the root before all others, and takes a leading "Nokia\" off `model`. In new names "/" and ":"
    // become blanks; what has been changed stands on the phone at once. 0; -1 library not started (changing:
    // also no calendar to change), -2 no such phone, -3 not connected (0x80100023 as it is), -7 no memory for
    // the name, -8 no calendar of that name, else the library's status, as a Long in the Variants.
    Variant RenameCalender(Text& model, const Text& PhoneId, const Text& oldname,
                           const Text& NewName) noexcept;
    Variant CreateCalender(Text& model, const Text& PhoneId, const Text& NewName) noexcept;
    Variant DeleteCalender(Text& model, const Text& PhoneId, const Text& Name) noexcept;
    Long GetCalendarFolders(Text& model, Text& PhoneId, TextArray& CalNames, TextArray& CalIds) noexcept;
    // Reads every entry of every calendar into `CalItems`, anew from index 0, as a VEVENT or VTODO block
    // whose times are local ISO texts and whose repeat rule is in the short style, "W2 MO TH 20081231". An
    // entry that the phone refuses is left out. Raises `Progressbar` by 1 a step and an entry and 50 for each
    // calendar's list. `MobileCalFields` has no effect. The highest index (0 also without entries); -1
    // library not started, -2 no such phone, or reading not begun, -3 not connected (0x80100023 as it is), -4
    // calendars not listed, else the status with which a list was refused, after as many as four attempts;
    // `CalItems` then has what was read.
    Long NokiaGetCalendarItems(Text& model, Text& PhoneId, HostArray<CalItem>& CalItems,
                               const TextTable& MobileCalFields, const ObjectPointer& Progressbar) noexcept;
    // Writing the calendar, in a session as with contacts. The row `indexingrid` of `CalGrid`, an object
    // whose textmatrix(row, column) gives a cell's text (driver/grid_object.h), becomes the entry that
    // `ItemUid` names by its UID or a number of up to three digits, or a new one, whose temporary id comes
    // back there. Row c, column 1 of `MobileCalFields` is the field code of grid column c + 1: 1 kind, 3
    // description, 4 start, 5 end, 6 status, 7 due, 8 repeat rule in either style, with " EX:" and days
    // behind it, 9 alarm (a date or a lead time), 11 location, 12 summary, 13 priority, 15 calendar. Dates
    // are texts in the user's form. A cell that cannot be read leaves its field alone, an entry that the row
    // does not change is not written, and one whose calendar is another is written anew there. What an entry
    // cannot hold: of a monthly rule the phone keeps the weekday of the start (from library version 36 on;
    // before, the day), of a yearly one in the short style every year; an endless series ends in 2100 on
    // platforms from 60 on; a to-do without a date is due in 2050; an empty summary is a blank.
    // 0 written, unchanged, deleted, or (deleting) not there; -1 library not started, no memory for a value,
    // or a rule with an interval or a number of exceptions beyond 255, -2 no such phone, -3 not connected, -4
    // operation not begun, -5 entries not listed, else the library's status.
    Long DeleteCalendarItem(Text& model, Text& PhoneId, const Text& Id) noexcept;
    Long WriteCalendarItem(Text& model, Text& PhoneId, CalItem& elemcal, const ObjectPointer& CalGrid,
                           Long indexingrid, const TextTable& MobileCalFields) noexcept;

    Long NokiaGetDataItems(Text& model, Text& PhoneId, Long what, TextArray& DataItems,
                           const ObjectPointer& Progressbar = nullptr, Long pCallBack = 0) noexcept;
    Long WriteDataItem(Text& model, Text& PhoneId, Text& Msg) noexcept;
    Long DeleteDataItem(Text& model, Text& PhoneId, const Text& Msg) noexcept;

    // Searches for Bluetooth phones, which may take as long as `timeout` makes the library search; the host's
    // windows live on meanwhile. 0 done, -1 no session with the devices, -2 the search failed. The arrays get
    // an entry a phone, from index 0: name, address, device number as decimal text, the library's state; they
    // stay as they are when none is found.
    Long MediaSearchBT(TextArray& models, TextArray& BdAddr, TextArray& deviceID, LongArray& state,
                       Long timeout = 200) noexcept;
    // Pairs with the Bluetooth phone at that address, 17 characters such as "00:11:22:33:44:55" (bit value 1
    // of `dowhat`), and marks it as trusted (bit value 2). A number behind the address takes the place of
    // `dowhat`: bit value 1 = pair, 4 = do not trust. Without passkey the default only marks as trusted. 0
    // done, -1 nothing was attempted, -2 the phone refused to pair, -9 the address asks for pairing and there
    // is no passkey, else the library's last status. The passkey is kept for the length of the call, in
    // memory only. `BdAddr` stays as it is.
    Long ChangeDeviceTrustedState(Text& BdAddr, Long dowhat = 3, const Text& pw = {}) noexcept;
    // Closes the session with the devices; the next listing opens it again.
    void DMApiTerminate_() noexcept;

    // The phone's files. Paths may have "/" or "\" between their parts and begin with the drive, "C:/Data";
    // an empty path is the root, whose folders are the drives. The session belongs to one phone at a time.
    //
    // Lists a folder, opening the session with `model` when it is closed; an empty `model` becomes that of
    // the last session. `List` gets one record per entry from index 0, over those that are there, folders
    // first, and ends with the last entry; an empty folder leaves it alone. A drive may also be named by the
    // label it was listed with. 0, or -1; the records listed before the failure stay.
    Long GetDirContents(Text& model, HostArray<DirItem>& List, const Text& folder = u"/") noexcept;
    // Closes the session. Always 0.
    Long EndFS() noexcept;
    // Copies a file to the PC, to `destdir` with the file's name directly behind it, over an existing one.
    // 0 also when the local file could not be written: a message box says so, the host looks for itself.
    // -1 session not opened, -2 no such folder or file.
    Long GetFile(Text& Filename, Text& destdir) noexcept;
    // Copies the PC's file `Filename` to the phone's folder `destdir`, byte for byte; only a text in UTF-16
    // or with a UTF-8 mark goes in the PC's code page. Takes a leading "root/" off `destdir`. 0; -1 session
    // not opened, -2 no such folder, -3 the local file cannot be read or the phone refuses.
    Long PutFile(Text& Filename, Text& destdir) noexcept;
    // Changes on the phone; nothing is written to the arguments, a new name is a bare one. RenameFile opens
    // the session with the last model, the others need it open. All give -1 when the folder around their
    // target cannot be entered (RenameFile also when the session cannot be opened). When the phone refuses,
    // -2, and RenameFolder its status. Done: 1 from DeleteFile and DeleteFolder, 0 from the others.
    // CreateFolder drops what follows the last "." of the name.
    Long RenameFile(Text& OrgFilenameWithPath, Text& NewName) noexcept;
    Long DeleteFile(Text& FilenameWithPath) noexcept;
    Long RenameFolder(Text& OrgNameWithPath, Text& NewName) noexcept;
    Long CreateFolder(Text& FullFolderName) noexcept;
    Long DeleteFolder(Text& FullFolderName) noexcept;

    // The version of the phone software by rules of its own, such as 7.1; 0 when there is none.
    Single GetPCSuiteVersion() noexcept;

  private:
    // Runs Init while it has not been run, then the operation.
    template <class Operation>
    Long phoneFilesMember(Operation&& operation) noexcept;

    bool initDone_ = false;
    Single suiteVersion_ = 0;
};

}  // namespace ovno2
