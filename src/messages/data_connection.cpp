#include "messages/data_connection.h"

#include "devices/current_phone.h"
#include "devices/devices.h"
#include "library/library_memory.h"
#include "messages/data_state.h"

namespace ovno2::Data {

namespace {

using Content::Connection;
using Content::FolderEntry;
using library::Word;

constexpr Long notRead = -1;

Word targetOf(Long what) {
    using namespace library::signature;
    constexpr Word noTarget = 0;
    switch (what) {
        case messages:
            return targetMessages;
        case otherMessages:
            return targetOtherMessages;
        case notes:
            return targetNotes;
        case countedItems:
            return targetCountedItems;
        default:
            return noTarget;
    }
}

}  // namespace

Connection& connection() {
    return state().connection;
}

Long CheckDatasConnection(const Text& serial, Long what) {
    const RoutineLog log(u"CheckDatasConnection");
    Connection& data = connection();
    if (serial != data.serial || what != state().DataKind) {
        CloseDatasConnection();
        attempt([&] { data.serial = serial; });
    }
    Long result = 0;
    if (data.handle == 0) {
        state().DataKind = what;
        const library::LibraryString text(serial);
        const library::Answer opened = data.openOver(Content::anyMedium, targetOf(what), text.get());
        if (!opened.succeeded()) {
            DebugLine(u"e:", hex{opened.status});
            result = notRead;
        }
    }
    DebugLine(decimal{result});
    return result;
}

Long CloseDatasConnection() {
    const RoutineLog log(u"CloseDatasConnection");
    if (State* const state = existingStateOf<State>()) DebugLine(hex{state->connection.close()});
    return 0;
}

Long GetDataFolders(const Text& model, const Text& serial, Long what, std::vector<FolderEntry>& list) {
    const RoutineLog log(u"GetDataFolders");
    Text phone;
    attempt(
        [&] { phone = serial.empty() ? Devices::GetSerialNumber(model, serial, /*force=*/false) : serial; });
    const Devices::CurrentPhone& current = Devices::currentPhone();
    if (phone == current.serial && model == current.model && !areMessages(what))
        return state().DataRootFolderId;
    if (CheckDatasConnection(phone, what) != 0) return notRead;
    library::FolderInfoRecord root{};
    const Long size = Content::GetNokiaFolder(connection().handle, root);
    if (size < 0) {
        DebugLine(u"e1:", hex{size});
        return notRead;
    }
    attempt([&] {
        list.assign(1, Content::entryOf(root));
        Content::GetSubfolders(root.subfolderCount, root.subfolders, list, /*recordSize=*/0, /*connection=*/0,
                               /*oldName=*/{}, /*newName=*/{});
    });
    state().DataRootFolderId = static_cast<Long>(root.folderId);
    Devices::setCurrentPhone(phone, model);
    return state().DataRootFolderId;
}

Long outboxOf(const std::vector<FolderEntry>& folders) {
    Long found = 0;
    for (const FolderEntry& folder : folders)
        attempt([&] {
            if (lowerCase(folder.Path) == u"outbox" || lowerCase(folder.Name) == u"predefoutbox")
                found = folder.FolderId;
        });
    return found;
}

}  // namespace ovno2::Data
