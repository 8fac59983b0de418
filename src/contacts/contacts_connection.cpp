#include "contacts/contacts_connection.h"

#include "content/folders.h"
#include "devices/current_phone.h"
#include "devices/devices.h"
#include "library/library_memory.h"

namespace ovno2::Contacts {

namespace {

using Content::Connection;
using library::signature::targetContacts;

struct State {
    static constexpr StateSlot slot = StateSlot::contacts;
    Connection connection;
};

Long openContacts(const Text& serial) {
    const library::LibraryString text(serial);
    DebugLine(u"medium:", decimal{Content::anyMedium}, u" target:", decimal{targetContacts});
    const library::Answer first = connection().openOver(Content::anyMedium, targetContacts, text.get());
    if (first.succeeded()) return 0;
    DebugLine(u"e1:", hex{first.status});
    const Long second =
        connection().openOver(Content::usbMedium, targetContacts, text.get()).valueOr(first.status);
    DebugLine(u"e2:", hex{second});
    return second;
}

}  // namespace

Connection& connection() {
    return stateOf<State>().connection;
}

Long CheckContactsConnection(const Text& serial) {
    const RoutineLog log(u"CheckContactsConnection");
    Connection& contacts = connection();
    if (contacts.isTrusted(serial)) return 0;
    if (serial != contacts.serial) {
        CloseContactsConnection();
        attempt([&] { contacts.serial = serial; });
    }
    const Long status = contacts.handle == 0 ? openContacts(serial) : 0;
    contacts.remember(status);
    DebugLine(hex{status});
    return status;
}

Long CloseContactsConnection() {
    const RoutineLog log(u"CloseContactsConnection");
    State* const state = existingStateOf<State>();
    return state ? state->connection.close() : 0;
}

Long GetContactsFolder(const Text& model, Text& serial) {
    const RoutineLog log(u"GetContactsFolder");
    if (serial.empty()) attempt([&] { serial = Devices::GetSerialNumber(model, serial, /*force=*/false); });
    Connection& contacts = connection();
    const Devices::CurrentPhone& current = Devices::currentPhone();
    if (serial == current.serial && model == current.model) return contacts.lastCheck.folderId;
    if (CheckContactsConnection(serial) != 0) return -1;
    library::FolderInfoRecord root{};
    Content::GetNokiaFolder(contacts.handle, root);
    contacts.lastCheck.folderId = static_cast<Long>(root.folderId);
    Devices::setCurrentPhone(serial, model);
    return contacts.lastCheck.folderId;
}

}  // namespace ovno2::Contacts
