#include "driver/cov_no2.h"

#include "calendar/calendar_connection.h"
#include "calendar/calendar_folders.h"
#include "calendar/calendar_reading.h"
#include "calendar/calendar_session.h"
#include "calendar/calendar_writing.h"
#include "contacts/contact_writing.h"
#include "contacts/contacts.h"
#include "contacts/contacts_connection.h"
#include "contacts/write_session.h"
#include "content/sessions.h"
#include "core/attempt.h"
#include "core/current_platform.h"
#include "core/settings.h"
#include "dates/iso_date.h"
#include "devices/bluetooth.h"
#include "devices/discovery.h"
#include "devices/media.h"
#include "devices/session.h"
#include "library/library_start.h"
#include "log/debug_log.h"
#include "messages/data_connection.h"
#include "messages/data_reading.h"
#include "messages/data_writing.h"
#include "pc/files.h"
#include "phonefs/file_operations.h"
#include "phonefs/nokia_files.h"

namespace ovno2 {

namespace {

// What a member reports that works on a library which is not there: the library could not be started.
constexpr Long libraryNotStarted = -1;

// Runs a member's body. Steps that fail inside are handled where they stand; what still comes up here ends
// the member with the result it has so far.
template <class Result, class Body>
Result member(Result result, Body&& body) noexcept {
    attempt([&] { body(result); });
    return result;
}

// A member of a content area: entry line, body, the result as a plain line, exit line.
template <class Body>
Long loggedMember(TextView name, Body&& body) noexcept {
    return member(libraryNotStarted, [&](Long& result) {
        const RoutineLog log(name);
        body(result);
        DebugLine(decimal{result});
    });
}

}  // namespace

covNo2::covNo2() noexcept {
    attempt([] { DebugLog::connect(); });
    Init();
}

covNo2::~covNo2() {
    CleanUp();
}

Long covNo2::Init() noexcept {
    return member(Long{0}, [&](Long& result) {
        DebugLog::DebugInit();
        ISODate::DateTimeInit();
        attempt([&] {
            const Text folder =
                replaceAll(currentPlatform().libraries().moduleFolder(), u"\\q Projects\\NokiaConApi", u"");
            settings().profilePath = folder + u"\\defaults.ini";
        });
        if (library::startCount() == 0) {
            const Long version = library::CONAGetConnAPIVersion.tried().valueOr(0);
            result = library::start(static_cast<library::Word>(version)).status;
            DebugLine(u"ConApiVersion:", spacedDecimal{version}, hex{result});
        }
        attempt([&] { library::recordContentVersion(roundHalfToEven(GetApiVersion())); });
        DebugLine(u"CaApiVersion:", spacedDecimal{library::recordedContentVersion()});
        initDone_ = true;
    });
}

template <class Operation>
Long covNo2::phoneFilesMember(Operation&& operation) noexcept {
    return member(libraryNotStarted, [&](Long& result) {
        if (!initDone_) Init();
        result = operation();
    });
}

Long covNo2::CleanUp() noexcept {
    return member(Long{0}, [&](Long&) {
        EndFS();
        attempt([] { MediaControl::MediaApiTerminate(); });
        attempt([] { Calendar::CloseCalendarConnection(); });
        attempt([] { Contacts::CloseContactsConnection(); });
        attempt([] { Data::CloseDatasConnection(); });
        attempt([] { Session::DMApiTerminate(); });
        attempt([] { Content::forgetDateRecordSize(); });
        attempt([] { DebugLog::releaseWhatIsOpen(); });
        attempt([] { Files::releaseFileSystemObject(); });
        library::undoStarts();
    });
}

void covNo2::SetPriorities_(const TextArray& newval) noexcept {
    attempt([&] { settings().priorities = newval; });
}
Variant covNo2::SetStatuses_(const TextArray& newval) noexcept {
    attempt([&] { settings().statuses = newval; });
    return {};
}
void covNo2::Meeting_(const Text& value) noexcept {
    attempt([&] { settings().meeting = value; });
}
void covNo2::Bithday_(const Text& value) noexcept {
    attempt([&] { settings().birthday = value; });
}
void covNo2::Call_(const Text& value) noexcept {
    attempt([&] { settings().call = value; });
}
void covNo2::Reminder_(const Text& value) noexcept {
    attempt([&] { settings().reminder = value; });
}
void covNo2::Task_(const Text& value) noexcept {
    attempt([&] { settings().task = value; });
}
void covNo2::Minute_(const Text& value) noexcept {
    attempt([&] { settings().minute = value; });
}
void covNo2::Hour_(const Text& value) noexcept {
    attempt([&] { settings().hour = value; });
}
void covNo2::Day_(const Text& value) noexcept {
    attempt([&] { settings().day = value; });
}
void covNo2::Note_(const Text& value) noexcept {
    attempt([&] { settings().note = value; });
}
void covNo2::GetAllFields_(Long value) noexcept {
    attempt([&] { settings().getAllFields = value; });
}
void covNo2::AddTimeOffset_(Long value) noexcept {
    attempt([&] { settings().addTimeOffset = value; });
}
void covNo2::PhoneModel_(const Text& value) noexcept {
    attempt([&] { Devices::PhoneModel_(value); });
}

bool covNo2::CheckIfNokiaSDKIsThere(bool startit) noexcept {
    return member(false, [&](bool& result) {
        Init();
        result = Discovery::CheckIfNokiaSDKIsThere(startit, suiteVersion_);
    });
}

Long covNo2::LaunchPCSuite2IfRequired(Long pCallBack) noexcept {
    return member(Long{1}, [&](Long& result) { result = Discovery::LaunchPCSuite2IfRequired(pCallBack); });
}

Long covNo2::GetConnections() noexcept {
    return member(libraryNotStarted, [&](Long& result) {
        Init();
        result = MediaControl::MediaGetConnections();
    });
}

Long covNo2::Connect(Long medium, Long Medium2, const Text&, const Text&, bool Dicsonnect) noexcept {
    return member(libraryNotStarted, [&](Long& result) {
        Init();
        result = MediaControl::MediaConnect(medium, Medium2, Dicsonnect);
    });
}

Long covNo2::GetConnectedDevices(TextArray& models, LongArray& Media, TextArray& deviceID, TextArray& BdAddr,
                                 TextArray& Names, LongArray& Types, Long medium) noexcept {
    return member(libraryNotStarted, [&](Long& result) {
        Init();
        const RoutineLog log(u"GetDevices");
        if (medium >= 0) {
            result = Connect(medium, /*Medium2=*/-1);
            if (result == MediaControl::libraryNotFound) return;
        }
        Devices::PhoneList list;
        const auto exchange = [&] {
            std::swap(list.models, models);
            std::swap(list.media, Media);
            std::swap(list.deviceIds, deviceID);
            std::swap(list.addresses, BdAddr);
            std::swap(list.names, Names);
            std::swap(list.types, Types);
        };
        exchange();
        attempt([&] { result = Devices::GetPhoneList(list); });
        exchange();
    });
}

Long covNo2::NokiaGetAddressBookItems(Text& model, Text& PhoneId, Text&, HostArray<AdrItem>& AdrItems,
                                      const TextTable& Mobilefields, TextArray&, const Text& FolderForPics,
                                      const ObjectPointer& Progressbar, Long) noexcept {
    return loggedMember(u"NokiaGetAddressBookItems", [&](Long& result) {
        result = Contacts::NokiaGetAddressBookItems(model, PhoneId, AdrItems, Mobilefields, FolderForPics,
                                                    Progressbar);
    });
}

Long covNo2::DeleteAddressBookItem(Text& model, Text& PhoneId, const Text& Id) noexcept {
    return loggedMember(u"DeleteAddressBookItem",
                        [&](Long& result) { result = Contacts::DeleteContact(model, PhoneId, Id); });
}

Long covNo2::WriteAddressBookItem(Text& model, Text& PhoneId, Text& Id, Text& elems,
                                  const TextTable& Mobilefields, bool isnew, bool, Long isrewrite,
                                  Long pCallBack) noexcept {
    return loggedMember(u"WriteAddressBookItem", [&](Long& result) {
        result = Contacts::WriteContact(model, PhoneId, Id, elems, Mobilefields, isnew, isrewrite, pCallBack);
    });
}

// `what`
constexpr Long contacts = 1;
constexpr Long calendar = 2;
constexpr Long messages = 3;
constexpr Long messagesAndNotes = 4;

Long covNo2::EndWriteSession(Long what, TextArray& tempids, TextArray& uids, bool writeit) noexcept {
    return member(Long{0}, [&](Long& result) {
        if (what == contacts) result = Contacts::ContactsEndWriteSession(tempids, uids, writeit);
        if (what == calendar) result = Calendar::CalendarEndWriteSession(tempids, uids, writeit);
        if (what == messages || what == messagesAndNotes)
            result = Data::DataEndWriteSession(tempids, uids, writeit);
    });
}

Long covNo2::GetAllUids(Long what, TextArray& uids) noexcept {
    return member(Long{0}, [&](Long&) {
        if (what == contacts) Contacts::GetAllUids(uids);
    });
}

Single covNo2::GetApiVersion() noexcept {
    return member(Single{0}, [](Single& result) {
        const RoutineLog log(u"GetApiVersion");
        result = Content::GetApiVersion();
    });
}

Variant covNo2::RenameCalender(Text& model, const Text& PhoneId, const Text& oldname,
                               const Text& NewName) noexcept {
    return loggedMember(u"RenameCalender", [&](Long& result) {
        result = Calendar::RenameCalender(model, PhoneId, oldname, NewName);
    });
}
Variant covNo2::CreateCalender(Text& model, const Text& PhoneId, const Text& NewName) noexcept {
    return loggedMember(u"CreateCalender",
                        [&](Long& result) { result = Calendar::CreateCalender(model, PhoneId, NewName); });
}
Variant covNo2::DeleteCalender(Text& model, const Text& PhoneId, const Text& Name) noexcept {
    return loggedMember(u"DeleteCalender",
                        [&](Long& result) { result = Calendar::DeleteCalender(model, PhoneId, Name); });
}
Long covNo2::GetCalendarFolders(Text& model, Text& PhoneId, TextArray& CalNames, TextArray& CalIds) noexcept {
    return loggedMember(u"GetCalendarFolders", [&](Long& result) {
        result = Calendar::GetCalendarFolders(model, PhoneId, CalNames, CalIds);
    });
}
Long covNo2::NokiaGetCalendarItems(Text& model, Text& PhoneId, HostArray<CalItem>& CalItems, const TextTable&,
                                   const ObjectPointer& Progressbar) noexcept {
    return loggedMember(u"NokiaGetCalendarItems", [&](Long& result) {
        result = Calendar::NokiaGetCalendarItems(model, PhoneId, CalItems, Progressbar);
    });
}
Long covNo2::DeleteCalendarItem(Text& model, Text& PhoneId, const Text& Id) noexcept {
    return loggedMember(u"DeleteCalendarItem",
                        [&](Long& result) { result = Calendar::DeleteCalItem(model, PhoneId, Id); });
}
Long covNo2::WriteCalendarItem(Text& model, Text& PhoneId, CalItem& elemcal, const ObjectPointer& CalGrid,
                               Long indexingrid, const TextTable& MobileCalFields) noexcept {
    return loggedMember(u"WriteCalendarItem", [&](Long& result) {
        result = Calendar::WriteCalItem(model, PhoneId, elemcal, CalGrid, indexingrid, MobileCalFields);
    });
}
Long covNo2::NokiaGetDataItems(Text& model, Text& PhoneId, Long what, TextArray& DataItems,
                               const ObjectPointer& Progressbar, Long) noexcept {
    return loggedMember(u"NokiaGetDataItems", [&](Long& result) {
        result = Data::NokiaGetDataItems(model, PhoneId, what, DataItems, Progressbar);
    });
}
Long covNo2::WriteDataItem(Text& model, Text& PhoneId, Text& Msg) noexcept {
    return loggedMember(u"WriteDataItem",
                        [&](Long& result) { result = Data::WriteDataItem(model, PhoneId, Msg); });
}
Long covNo2::DeleteDataItem(Text& model, Text& PhoneId, const Text& Msg) noexcept {
    return loggedMember(u"DeleteDataItem",
                        [&](Long& result) { result = Data::DeleteDataItem(model, PhoneId, Msg); });
}

Long covNo2::MediaSearchBT(TextArray& models, TextArray& BdAddr, TextArray& deviceID, LongArray& state,
                           Long timeout) noexcept {
    return member(libraryNotStarted, [&](Long& result) {
        Init();
        result = Bluetooth::MediaSearchBT(models, BdAddr, deviceID, state, timeout);
    });
}
Long covNo2::ChangeDeviceTrustedState(Text& BdAddr, Long dowhat, const Text& pw) noexcept {
    return member(libraryNotStarted, [&](Long& result) {
        Init();
        result = Bluetooth::ChangeDeviceTrustedStateSub(BdAddr, dowhat, pw);
    });
}
void covNo2::DMApiTerminate_() noexcept {
    attempt([] { Session::DMApiTerminate(); });
}

Long covNo2::GetDirContents(Text& model, HostArray<DirItem>& List, const Text& folder) noexcept {
    return phoneFilesMember([&] { return NokiaFiles::GetDirContents(model, List, folder); });
}
Long covNo2::EndFS() noexcept {
    return member(Long{0}, [&](Long& result) {
        if (initDone_) result = NokiaFiles::CloseFS();
    });
}
Long covNo2::GetFile(Text& Filename, Text& destdir) noexcept {
    return phoneFilesMember([&] { return NokiaFiles::GetFile(Filename, destdir); });
}
Long covNo2::PutFile(Text& Filename, Text& destdir) noexcept {
    return phoneFilesMember([&] { return NokiaFiles::PutFile(Filename, destdir); });
}
Long covNo2::RenameFile(Text& OrgFilenameWithPath, Text& NewName) noexcept {
    return phoneFilesMember([&] { return NokiaFiles::RenameFile(OrgFilenameWithPath, NewName); });
}
Long covNo2::DeleteFile(Text& FilenameWithPath) noexcept {
    return phoneFilesMember([&] { return NokiaFiles::DeleteFile(FilenameWithPath); });
}
Long covNo2::RenameFolder(Text& OrgNameWithPath, Text& NewName) noexcept {
    return phoneFilesMember([&] { return NokiaFiles::RenameFolder(OrgNameWithPath, NewName); });
}
Long covNo2::CreateFolder(Text& FullFolderName) noexcept {
    return phoneFilesMember([&] { return NokiaFiles::CreateFolder(FullFolderName); });
}
Long covNo2::DeleteFolder(Text& FullFolderName) noexcept {
    return phoneFilesMember([&] { return NokiaFiles::DeleteFolder(FullFolderName); });
}

Single covNo2::GetPCSuiteVersion() noexcept {
    return member(Single{0}, [&](Single& result) {
        Init();
        result = Discovery::GetPCSuiteVersion();
    });
}

}  // namespace ovno2
