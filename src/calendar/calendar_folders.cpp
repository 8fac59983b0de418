#include "calendar/calendar_folders.h"

#include <algorithm>

#include "calendar/calendar_connection.h"
#include "calendar/calendar_state.h"
#include "content/sessions.h"
#include "devices/current_phone.h"
#include "devices/devices.h"
#include "library/library_memory.h"

namespace ovno2::Calendar {

namespace {

using Content::FolderEntry;
using library::FolderInfoRecord;

constexpr Long libraryNotStarted = -1;
constexpr Long phoneNotFound = -2;
constexpr Long notConnected = -3;
constexpr Long nothingChanged = -1;
constexpr Long noSuchCalendar = -8;

constexpr Long shortestRecord = 32;  // bytes

Text serialOf(const Text& model, const Text& phoneId) {
    Text serial;
    attempt([&] { serial = Devices::GetSerialNumber(model, phoneId, /*force=*/false); });
    return serial;
}

// Reads the root record, after a failure once more over a fresh connection; `beforeRead` runs before each.
// False when it cannot be read.
template <class BeforeRead>
bool readRoot(const Text& serial, FolderInfoRecord& root, BeforeRead&& beforeRead) {
    State& calendar = state();
    for (int attempts = 1; attempts <= 2; ++attempts) {
        const Long status = CheckCalendarConnection(serial);
        DebugLine(u"iret:", hex{status});
        if (status != 0) return false;
        root = {};
        beforeRead();
        const Long size = Content::GetNokiaFolder(calendar.connection.handle, root);
        if (size >= shortestRecord) {
            calendar.FolderRecordSize = size;
            return true;
        }
        if (attempts == 1) CloseCalendarConnection();
    }
    return false;
}

// The root and, below it, all other folders. Throws RuntimeFailure 7 when one would be missing.
std::vector<FolderEntry> foldersFrom(const FolderInfoRecord& root) {
    const MemoryWatch memory;
    std::vector<FolderEntry> list{Content::entryOf(root)};
    if (root.subfolderCount > 0)
        Content::GetSubfolders(root.subfolderCount, root.subfolders, list, state().FolderRecordSize,
                               /*connection=*/0, /*oldName=*/{}, /*newName=*/{});
    memory.check();
    return list;
}

bool cacheAnswers(const Text& model, const Text& serial) {
    const State& calendar = state();
    const Devices::CurrentPhone& current = Devices::currentPhone();
    const bool isCurrent = serial.empty() ? model == current.model && calendar.foldersSerial == current.serial
                                          : serial == current.serial && calendar.foldersSerial == serial;
    return isCurrent && !calendar.CalendarFolders.empty() && !calendar.CalendarFolders[0].Name.empty();
}

Text cleanName(const Text& name) {
    Text clean = name;
    std::ranges::replace(clean, u'/', u' ');
    std::ranges::replace(clean, u':', u' ');
    return trimBlanks(clean);
}

Long RenameCalenderSub(const Text& model, const Text& serial, const Text& oldName, const Text& newName) {
    static constexpr TextView tag = u"RenameCalenderSub";
    const RoutineLog log(tag);
    Long result = nothingChanged;
    attempt([&] {
        FolderInfoRecord root{};
        if (!readRoot(serial, root, [] { DebugWrite(tag, 1); })) return;
        std::vector<FolderEntry> list = foldersFrom(root);
        const Text from = cleanName(oldName), to = cleanName(newName);
        const library::Handle handle = connection().handle;
        if (!to.empty() && from.empty())
            result = Content::CreateSubfolder(handle, to, tag);
        else if (from.empty())
            result = noSuchCalendar;
        else if (root.subfolderCount > 0)
            result = Content::GetSubfolders(root.subfolderCount, root.subfolders, list,
                                            state().FolderRecordSize, handle, from, to);
        // The next read sees the calendars as they are now.
        state().CalendarFolders.clear();
        Devices::setCurrentPhone(serial, model);
    });
    DebugLine(hex{result});
    return result;
}

// Begins an operation on the calendars: 0 with the phone's serial number, or the result to give back.
Long beginFolders(const Text& model, const Text& phoneId, Text& serial) {
    if (Content::PIMApiInit() < 0) return libraryNotStarted;
    serial = serialOf(model, phoneId);
    if (serial.empty()) return phoneNotFound;
    const Long status = CheckCalendarConnectionTwice(serial);
    if (status == 0 || library::is(status, library::contentAccessDenied)) return status;
    return notConnected;
}

Long changeCalendars(const Text& model, const Text& phoneId, const Text& oldName, const Text& newName) {
    Text serial;
    const Long begun = beginFolders(model, phoneId, serial);
    return begun != 0 ? begun : RenameCalenderSub(model, serial, oldName, newName);
}

}  // namespace

void GetCalendarFolder(const Text& model, Text serial, std::vector<FolderEntry>& list) {
    const RoutineLog log(u"GetCalendarFolder");
    attempt([&] {
        if (serial.empty()) serial = serialOf(model, /*phoneId=*/{});
        State& calendar = state();
        if (cacheAnswers(model, serial)) {
            list = calendar.CalendarFolders;
            return;
        }
        FolderInfoRecord root{};
        if (!readRoot(serial, root, [] {})) return;
        list = foldersFrom(root);
        calendar.CalendarFolders = list;
        calendar.foldersSerial = serial;
        Devices::setCurrentPhone(serial, model);
    });
}

Long GetCalendarFolders(Text& model, const Text& PhoneId, TextArray& CalNames, TextArray& CalIds) {
    static constexpr TextView makersPrefix = u"Nokia\\";
    if (model.starts_with(makersPrefix)) model.erase(0, makersPrefix.size());
    Text serial;
    const Long begun = beginFolders(model, PhoneId, serial);
    if (begun != 0) return begun;
    std::vector<FolderEntry> list;
    GetCalendarFolder(model, serial, list);
    if (list.empty()) return notConnected;
    TextArray names, ids;
    const FailureNumber failed = attempt([&] {
        const Long last = static_cast<Long>(list.size()) - 1;
        names.resize(last);
        ids.resize(last);
        for (Long i = 0; i <= last; ++i) {
            const FolderEntry& folder = list[static_cast<std::size_t>(i)];
            names.at(i) = folder.Name;
            ids.at(i) = decimalText(folder.FolderId);
        }
    });
    if (failed != noFailure) return libraryNotStarted;
    std::swap(CalNames, names);
    std::swap(CalIds, ids);
    return 0;
}

Long CreateCalender(const Text& model, const Text& PhoneId, const Text& NewName) {
    return changeCalendars(model, PhoneId, /*oldName=*/{}, NewName);
}

Long RenameCalender(const Text& model, const Text& PhoneId, const Text& oldname, const Text& NewName) {
    return changeCalendars(model, PhoneId, oldname, NewName);
}

Long DeleteCalender(const Text& model, const Text& PhoneId, const Text& Name) {
    return changeCalendars(model, PhoneId, Name, /*newName=*/{});
}

}  // namespace ovno2::Calendar
