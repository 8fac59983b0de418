#include "contacts/write_session.h"

#include <utility>

#include "contacts/contacts_connection.h"
#include "contacts/writing_state.h"
#include "content/progress.h"
#include "content/sessions.h"
#include "devices/devices.h"
#include "library/library_memory.h"

namespace ovno2::Contacts {

namespace {

using Content::ItemId;
using library::ItemIdListRecord;
using library::ItemIdRecord;

constexpr Long libraryNotStarted = -1;
constexpr Long phoneNotFound = -2;
constexpr Long notConnected = -3;
constexpr Long operationNotBegun = -4;
constexpr Long notListed = -5;
constexpr Long noSuchContact = -1;

std::vector<ItemIdRecord> copyRecords(const ItemIdListRecord& list) {
    return library::copyBlock<ItemIdRecord>(list.items, list.count);
}

Text positionOf(const ItemIdRecord& record) {
    return decimalText(static_cast<Long>(record.position));
}

// A UID that is there and could not be copied: its contact would be written as a new one.
bool isIncomplete(const ItemIdRecord& record, const Text& uid) {
    return uid.empty() && record.uidLength != 0 && library::isAddress(record.uid) &&
           currentPlatform().memory().readable(library::pointerTo(record.uid), record.uidLength);
}

// False when there was no memory for all of them.
bool takeIds(const ItemIdListRecord& list) {
    WritingState& state = writingState();
    state.ContactsSessionIds.clear();
    state.listed.clear();
    if (list.count == 0) return true;
    return noFailure == attempt([&] {
               const std::vector<ItemIdRecord> records = copyRecords(list);
               state.ContactsSessionIds.reserve(records.size());
               state.listed.reserve(records.size());
               for (const ItemIdRecord& record : records) {
                   ItemId id;
                   id.Size = static_cast<Long>(record.size);
                   id.FolderId = static_cast<Long>(record.folderId);
                   id.Position = static_cast<Long>(record.position);
                   id.UidLength = static_cast<Long>(record.uidLength);
                   id.Uid = Content::GetUIDAsString(record);
                   if (isIncomplete(record, id.Uid)) throw RuntimeFailure(outOfMemory);
                   id.Word5 = static_cast<Long>(record.word5);
                   state.listed.push_back(positionOf(record) + u";" + id.Uid);
                   state.ContactsSessionIds.add(std::move(id));
               }
           });
}

void tellNewUids(const ItemIdListRecord& list, TextArray& tempids, TextArray& uids) {
    attempt([&] {
        const Long last = static_cast<Long>(list.count) - 1;
        const std::vector<ItemIdRecord> records = copyRecords(list);
        tempids.resize(last);
        uids.resize(last);
        DebugWrite(u"4");
        for (std::size_t i = 0; i < records.size(); ++i) {
            attempt([&] { tempids.at(static_cast<Long>(i)) = positionOf(records[i]); });
            attempt([&] { uids.at(static_cast<Long>(i)) = Content::GetUIDAsString(records[i]); });
        }
    });
}

// Gives up what has been begun, so that the session can begin anew.
void startOver() {
    TextArray none;
    ContactsEndWriteSession(none, none, /*writeit=*/false);
    Content::PIMApiTerminate();
}

}  // namespace

bool isWriting() {
    const Content::Connection::WriteSession& session = connection().writeSession;
    return session.open && session.operation != 0;
}

Long ContactsInitWriteSession(const Text& model, Text& serial) {
    const RoutineLog log(u"ContactsInitWriteSession");
    bool beganTwice = false, listedTwice = false;
    for (;;) {
        const Long started = Content::PIMApiInit();
        if (started < 0) {
            DebugLine(u"-1", spacedDecimal{started});
            return libraryNotStarted;
        }
        attempt([&] { serial = Devices::GetSerialNumber(model, serial, /*force=*/true); });
        if (serial.empty()) return phoneNotFound;

        const Long connected = CheckContactsConnection(serial);
        if (connected < 0) {
            DebugLine(u"-3", spacedDecimal{connected});
            return notConnected;
        }
        const Long folder = GetContactsFolder(model, serial);
        Content::Connection& contacts = connection();
        contacts.writeSession.operation = 0;
        const library::Answer begun =
            library::CABeginOperation.tried(contacts.handle, /*zero=*/0, &contacts.writeSession.operation);
        if (begun.status < 0) {
            if (!std::exchange(beganTwice, true)) {
                startOver();
                continue;
            }
            DebugLine(u"-4", spacedDecimal{begun.status});
            return operationNotBegun;
        }
        ItemIdListRecord list{.size = sizeof list, .count = 0, .items = 0};
        const library::Answer listed = library::CAGetIDList.tried(
            contacts.handle, static_cast<library::Word>(folder), /*zero=*/0, &list);
        const bool complete = listed.status >= 0 && takeIds(list);
        if (!complete) {
            if (!std::exchange(listedTwice, true)) {
                startOver();
                continue;
            }
            DebugLine(u"-5", spacedDecimal{listed.status});
            return notListed;
        }
        contacts.writeSession.open = true;
        return 0;
    }
}

Long ContactsEndWriteSession(TextArray& tempids, TextArray& uids, bool writeit) {
    const RoutineLog log(u"ContactsEndWriteSession");
    const library::Handle operation = connection().writeSession.operation;
    Long status = 0;
    Content::processPendingMessages();
    if (writeit) {
        DebugWrite(u"1");
        ItemIdListRecord list{.size = sizeof list, .count = 0, .items = 0};
        status = library::CACommitOperations.tried(operation, &list).valueOr(status);
        if (status != 0) DebugLine(u"e0:", hex{status});
        DebugWrite(u"2");
        DebugLine(u" 2a", decimal{static_cast<Long>(list.count)});
        if (list.count > 0) {
            DebugWrite(u"3");
            tellNewUids(list, tempids, uids);
        }
    }
    DebugWrite(u"5");
    writingState().ContactsWritten = 0;
    if (status == 0) {
        DebugWrite(u"6");
        status = library::CAEndOperation.tried(operation).valueOr(status);
        DebugWrite(u"7");
        if (status != 0) DebugLine(u" e1:", hex{status});
        const Long closed = CloseContactsConnection();
        if (closed != 0) DebugLine(u" e2:", hex{closed});
        DebugWrite(u"8");
    }
    DebugWrite(u"9");
    DebugLine(u" i:", decimal{Content::PIMApiTerminate()});
    return status;
}

void GetAllUids(TextArray& uids) {
    uids.clear();
    if (!isWriting()) return;
    attempt([&] { uids = TextArray(writingState().listed); });
}

Long DeleteContact(const Text& model, Text& serial, const Text& uid) {
    const RoutineLog log(u"DeleteContact");
    if (!isWriting())
        if (const Long begun = ContactsInitWriteSession(model, serial); begun < 0) return begun;
    const ItemId* const id = writingState().ContactsSessionIds.findUid(uid);
    if (!id) return noSuchContact;
    Long status = library::notCalled;
    attempt([&] {
        Content::LibraryItemId record(*id);
        status = library::CADeleteItem.tried(connection().writeSession.operation, &record.get(), /*zero=*/0)
                     .status;
    });
    return status;
}

}  // namespace ovno2::Contacts
