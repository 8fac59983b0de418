#include "content/sessions.h"

#include <cmath>

#include "content/data_items.h"
#include "content/folders.h"
#include "content/state.h"
#include "devices/devices.h"
#include "devices/session.h"
#include "library/library_memory.h"
#include "pc/registry_access.h"

namespace ovno2::Content {

namespace {

using library::Word;

constexpr std::uint16_t lowestVersion = 30;
constexpr Single secondsOfTrust = 1;
// Media under which a connection is asked for, in this order.
constexpr Word anyMedium = 1;
constexpr Word usbMedium = 16;

Single secondsSinceMidnight() {
    return currentPlatform().clock().secondsSinceMidnight();
}

void logStatus(Long status) {
    DebugLine(hex{static_cast<std::uint32_t>(status)});
}

// Opens the connection over one medium; `status` keeps its value when the call cannot be made.
void openOver(Word medium, const char16_t* serial, Long& status) {
    if (!serial) return;
    library::Handle connection = 0;
    attempt([&] {
        status = static_cast<Long>(
            library::DAOpenCA(serial, &medium, library::signature::targetContacts, &connection));
    });
    if (status == 0) state().ContactsHandle = connection;
}

Long openContacts(const Text& serial) {
    const library::LibraryString text(serial);
    Long status = noStatus;
    DebugLine(u"medium:", decimal{anyMedium}, u" target:", decimal{library::signature::targetContacts});
    openOver(anyMedium, text.get(), status);
    if (status == 0) return status;
    DebugLine(u"e1:", hex{static_cast<std::uint32_t>(status)});
    openOver(usbMedium, text.get(), status);
    DebugLine(u"e2:", hex{static_cast<std::uint32_t>(status)});
    return status;
}

bool isTrusted(const State& content, const Text& serial) {
    const ConnectionCheck& check = content.ContactsCheck;
    return check.LastStatus == 0 && serial == content.ContactsSerial &&
           std::fabs(secondsSinceMidnight() - check.CheckedAt) < secondsOfTrust;
}

Long timeZoneMinutes(TextView name) {
    return numericLong(Registry::GetRegValue(
        platform::localMachine, u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation", name));
}

}  // namespace

Long PIMApiInit() {
    const RoutineLog log(u"PIMApiInit");
    PIMApiTerminate();
    forgetStoredItemSize();
    std::uint16_t version = 0;
    attempt([&] { version = static_cast<std::uint16_t>(library::CAGetAPIVersion()); });
    DebugLine(u"CAAPI_VERSION:", decimal{version});
    if (version < lowestVersion) version = lowestVersion;
    Long status = noStatus;
    const auto initialize = [&] { status = static_cast<Long>(library::CAAPI_Initialize(version, 0)); };
    if (attempt(initialize) == fileNotFound) {
        Session::NokReg();
        clearPendingFailure();
        attempt(initialize);
    }
    currentPhone().clear();
    logStatus(status);
    return status;
}

Long PIMApiTerminate() {
    const RoutineLog log(u"PIMApiTerminate");
    Long status = noStatus;
    attempt([&] { status = static_cast<Long>(library::CAAPI_Terminate(0)); });
    currentPhone().clear();
    logStatus(status);
    return status;
}

Single GetApiVersion() {
    Long& version = state().CaApiVersion;
    if (version == 0) attempt([&] { version = static_cast<Long>(library::CAGetAPIVersion()); });
    return static_cast<Single>(version);
}

Long CheckContactsConnection(const Text& serial) {
    const RoutineLog log(u"CheckContactsConnection");
    State& content = state();
    if (isTrusted(content, serial)) return 0;
    Long status = noStatus;
    if (serial != content.ContactsSerial) {
        CloseContactsConnection();
        attempt([&] { content.ContactsSerial = serial; });
    }
    status = content.ContactsHandle == 0 ? openContacts(serial) : 0;
    content.ContactsCheck.CheckedAt = secondsSinceMidnight();
    content.ContactsCheck.LastStatus = status;
    logStatus(status);
    return status;
}

Long CloseContactsConnection() {
    const RoutineLog log(u"CloseContactsConnection");
    State& content = state();
    Long status = 0;
    if (content.ContactsHandle != 0) {
        status = noStatus;
        attempt([&] { status = static_cast<Long>(library::DACloseCA(content.ContactsHandle)); });
    }
    content.ContactsHandle = 0;
    content.ContactsCheck.LastStatus = noStatus;
    content.ContactsOperation = 0;
    content.ContactsSessionOpen = false;
    return status;
}

Long GetContactsFolder(const Text& model, Text& serial) {
    const RoutineLog log(u"GetContactsFolder");
    if (serial.empty()) attempt([&] { serial = Devices::GetSerialNumber(model, serial, /*force=*/false); });
    State& content = state();
    CurrentPhone& current = currentPhone();
    if (serial == current.serial && model == current.model) return content.ContactsCheck.FolderId;
    if (CheckContactsConnection(serial) != 0) return -1;
    library::FolderInfoRecord root{};
    GetNokiaFolder(content.ContactsHandle, root);
    content.ContactsCheck.FolderId = static_cast<Long>(root.folderId);
    attempt([&] {
        current.serial = serial;
        current.model = model;
    });
    return content.ContactsCheck.FolderId;
}

void refreshTimeBiases() {
    State& content = state();
    attempt([&] { content.TimeBias = timeZoneMinutes(u"Bias"); });
    attempt([&] { content.DaylightTimeBias = timeZoneMinutes(u"DaylightBias"); });
}

void forgetDateRecordSize() {
    state().DateRecordSize = 0;
}

}  // namespace ovno2::Content
