#include "contacts/write_session.h"

#include <utility>

#include "contacts/contacts_connection.h"
#include "contacts/writing_state.h"
#include "content/sessions.h"
#include "core/pending_messages.h"
#include "devices/devices.h"

namespace ovno2::Contacts {

namespace {

using Content::ItemId;
using library::ItemIdListRecord;

constexpr Long libraryNotStarted = -1;
constexpr Long phoneNotFound = -2;
constexpr Long notConnected = -3;
constexpr Long operationNotBegun = -4;
constexpr Long notListed = -5;
constexpr Long noSuchContact = -1;

// False when not all of them could be taken.
bool takeIds(const ItemIdListRecord& list) {
    Content::SessionItems& items = writingState().ContactsSessionIds;
    items.clear();
    return items.takeListed(list);
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
    processPendingMessages();
    if (writeit) {
        DebugWrite(u"1");
        ItemIdListRecord list{.size = sizeof list, .count = 0, .items = 0};
        status = library::CACommitOperations.tried(operation, &list).valueOr(status);
        if (status != 0) DebugLine(u"e0:", hex{status});
        DebugWrite(u"2");
        DebugLine(u" 2a", decimal{static_cast<Long>(list.count)});
        if (list.count > 0) {
            DebugWrite(u"3");
            DebugWrite(u"4");
            Content::tellWritten(list, /*extra=*/0, tempids, uids);
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
    attempt([&] {
        const Content::SessionItems& items = writingState().ContactsSessionIds;
        std::vector<Text> listed;
        listed.reserve(items.listed());
        for (std::size_t i = 0; i < items.listed(); ++i)
            listed.push_back(decimalText(items.all()[i].Position) + u";" + items.all()[i].Uid);
        uids = TextArray(std::move(listed));
    });
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
