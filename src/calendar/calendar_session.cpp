#include "calendar/calendar_session.h"

#include <algorithm>

#include "calendar/calendar_connection.h"
#include "calendar/calendar_folders.h"
#include "calendar/calendar_state.h"
#include "content/sessions.h"
#include "devices/devices.h"

namespace ovno2::Calendar {

namespace {

using Content::FolderEntry;
using Content::ItemId;
using library::ItemIdListRecord;

constexpr Long libraryNotStarted = -1;
constexpr Long phoneNotFound = -2;
constexpr Long notConnected = -3;
constexpr Long operationNotBegun = -4;
constexpr Long notListed = -5;

// Takes the identifiers of all folders. False with the last status when not all could be had: an entry that
// is not known would be written as a new one.
bool listEntries(const std::vector<FolderEntry>& folders, Long& status) {
    State& calendar = state();
    calendar.CalendarSessionIds.clear();
    for (std::size_t i = 0; i < std::min(folders.size(), mostFolders); ++i) {
        ItemIdListRecord list{.size = sizeof list, .count = 0, .items = 0};
        status = library::CAGetIDList
                     .tried(calendar.connection.handle, static_cast<library::Word>(folders[i].FolderId),
                            /*zero=*/0, &list)
                     .status;
        if (status < 0 || !calendar.CalendarSessionIds.takeListed(list)) return false;
    }
    return !folders.empty();
}

Long CalendarInitWriteSession(const Text& model, const Text& phoneId) {
    const RoutineLog log(u"CalendarInitWriteSession");
    State& calendar = state();
    for (bool second = false;; second = true) {
        const Long started = Content::PIMApiInit();
        if (started < 0) {
            DebugLine(u"-1", hex{started});
            return libraryNotStarted;
        }
        Text serial;
        attempt([&] { serial = Devices::GetSerialNumber(model, phoneId, /*force=*/true); });
        if (serial.empty()) return phoneNotFound;

        const Long connected = CheckCalendarConnection(serial);
        if (connected < 0) {
            DebugLine(u"-3", hex{connected});
            return notConnected;
        }
        std::vector<FolderEntry> folders;
        GetCalendarFolder(model, serial, folders);
        Content::Connection::WriteSession& session = calendar.connection.writeSession;
        session.operation = 0;
        const Long begun =
            library::CABeginOperation.tried(calendar.connection.handle, /*zero=*/0, &session.operation)
                .status;
        if (begun < 0) {
            DebugLine(u"-4", hex{begun});
            return operationNotBegun;
        }
        Long listed = library::notCalled;
        if (listEntries(folders, listed)) {
            session.open = true;
            return 0;
        }
        TextArray none;
        CalendarEndWriteSession(none, none, /*writeit=*/false);
        if (second) {
            DebugLine(u"-5", hex{listed});
            return notListed;
        }
        Content::PIMApiTerminate();
    }
}

// The first entry with that UID or number.
const ItemId* entryNamed(const Text& id) {
    constexpr std::size_t longestNumber = 7;
    Content::SessionItems& items = state().CalendarSessionIds;
    const ItemId* entry = items.findUid(id);
    if (!entry && id.size() <= longestNumber) entry = items.findPosition(numericLong(id));
    return entry;
}

}  // namespace

Long beginWriting(const Text& model, const Text& phoneId) {
    const Content::Connection::WriteSession& session = connection().writeSession;
    if (session.open && session.operation != 0) return 0;
    const Long begun = CalendarInitWriteSession(model, phoneId);
    if (begun != notConnected) return begun;
    Content::waitToReconnect();
    return CalendarInitWriteSession(model, phoneId);
}

Long CalendarEndWriteSession(TextArray& tempids, TextArray& uids, bool writeit) {
    const RoutineLog log(u"CalendarEndWriteSession");
    const library::Handle operation = connection().writeSession.operation;
    Long status = 0;
    if (writeit) {
        ItemIdListRecord list{.size = sizeof list, .count = 0, .items = 0};
        status = library::CACommitOperations.tried(operation, &list).status;
        DebugLine(u"e0:", hex{status});
        Content::tellWritten(list, /*extra=*/1, tempids, uids);
    }
    DebugLine(u" e1:", hex{library::CAEndOperation.tried(operation).status});
    DebugLine(u" e2:", hex{CloseCalendarConnection()});
    return status;
}

Long DeleteCalItem(const Text& model, const Text& phoneId, const Text& Id) {
    const RoutineLog log(u"DeleteCalItem");
    const Long begun = beginWriting(model, phoneId);
    if (begun < 0) return begun;
    const ItemId* const entry = entryNamed(Id);
    if (!entry) return 0;
    Long status = library::notCalled;
    attempt([&] {
        Content::LibraryItemId id(*entry);
        status =
            library::CADeleteItem.tried(connection().writeSession.operation, &id.get(), /*zero=*/0).status;
    });
    return status;
}

}  // namespace ovno2::Calendar
