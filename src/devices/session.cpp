#include "devices/session.h"

#include "core/attempt.h"
#include "core/current_platform.h"
#include "devices/current_phone.h"
#include "library/library_start.h"
#include "pc/files.h"
#include "pc/registry_access.h"
#include "pc/shell_execute.h"

namespace ovno2 {

namespace {

constexpr Long defaultVersion = 30;
constexpr Long versionOfTooOldLibrary = 34;   // requested from a library that reports less than the default
constexpr Long lastVersionWithoutQuery = 36;  // content-access versions up to here get the default
constexpr Long detailLevel = 4;

struct State {
    static constexpr StateSlot slot = StateSlot::session;
    library::Handle handle = 0;
    Long openCount = 0;
    bool fallbackStart = false;
    Long requestedVersion = defaultVersion;
    bool repairDone = false;
};

void stopEarlierStart(State& state) {
    if (state.fallbackStart)
        library::CONAUninitialize.tried(0);
    else
        library::DMAPI_Terminate.tried(0);
    clearPendingFailure();
    state.fallbackStart = false;
}

void chooseVersion(State& state) {
    state.requestedVersion = defaultVersion;
    if (library::recordedContentVersion() <= lastVersionWithoutQuery) return;
    state.requestedVersion = library::DMAPI_GetAPIVersion.tried().valueOr(state.requestedVersion);
    DebugLine(u"DMAPI_VERSION:", decimal{state.requestedVersion});
    if (state.requestedVersion < defaultVersion) state.requestedVersion = versionOfTooOldLibrary;
}

// Starts the library the way it was done before it had a device-management API of its own.
library::Answer startTheOldWay(State& state) {
    state.fallbackStart = true;
    const library::Answer version = library::CONAGetConnAPIVersion.tried();
    if (version.failure != noFailure) return {.failure = version.failure};
    return library::start(static_cast<library::Word>(version.status));
}

}  // namespace

namespace Session {

OpenResult DMApiInit() {
    const RoutineLog log(u"DMApiInit");
    State& state = stateOf<State>();
    OpenResult open;
    if (state.openCount > 0) {
        DebugWrite(u"DMApiInit", 1);
        open.result = 0;
        return open;
    }
    stopEarlierStart(state);
    chooseVersion(state);

    library::Answer started =
        startService(library::DMAPI_Initialize, static_cast<library::Word>(state.requestedVersion));
    Text description;
    attempt([&] { description = pendingFailure().description; });
    DebugWrite(u"DMApiInit 0a");
    if (started.failure != noFailure) {
        DebugWrite(u"DMApiInit", 1);
        DebugLine(decimal{started.failure}, description);
        clearPendingFailure();
        started = startTheOldWay(state);
    }
    open.failure = started.failure;
    if (started.succeeded()) {
        DebugWrite(u"DMApiInit", 2);
        open.result = -2;
        const library::Answer opened = library::CONAOpenDM.tried(&state.handle);
        DebugWrite(u"DMApiInit", 3);
        if (opened.succeeded()) {
            open.result = 0;
            state.openCount = 1;
        } else {
            DebugLine(hex{opened.status});
        }
    } else {
        DebugLine(hex{started.status});
    }
    DebugLine(decimal{open.result});
    return open;
}

Long DMApiTerminate() {
    const RoutineLog log(u"DMApiTerminate");
    State& state = stateOf<State>();
    Devices::forgetCurrentPhone();
    if (state.handle != 0) library::CONACloseDM.tried(state.handle);
    DebugWrite(u"DMApiTerminate", 1, detailLevel);
    state.handle = 0;
    if (state.fallbackStart) {
        DebugWrite(u"DMApiTerminate", 2, detailLevel);
        library::CONAUninitialize.tried(0);
        DebugWrite(u"DMApiTerminate", 3, detailLevel);
        if (state.openCount > 0) {
            DebugWrite(u"DMApiTerminate", 4, detailLevel);
            library::DMAPI_Terminate.tried(0);
        }
    } else {
        DebugWrite(u"DMApiTerminate", 5, detailLevel);
        library::DMAPI_Terminate.tried(0);
    }
    DebugWrite(u"DMApiTerminate", 6, detailLevel);
    if (state.openCount > 0) --state.openCount;
    return 0;
}

library::Answer startService(
    const library::Function<library::Status(library::Word, library::Word)>& initialize,
    library::Word version) {
    const library::Answer answer = initialize.tried(version, 0);
    if (answer.failure != fileNotFound) return answer;
    NokReg();
    clearPendingFailure();
    return initialize.tried(version, 0);
}

bool isOpen() {
    return stateOf<State>().openCount > 0;
}

library::Handle handle() {
    return stateOf<State>().handle;
}

void NokReg() {
    constexpr TextView settingsKey = u"Software\\Marrowind\\Orvanta\\Settings";
    State& state = stateOf<State>();
    if (state.repairDone) return;
    state.repairDone = true;
    if (numericValue(Registry::GetRegValue(platform::currentUser, settingsKey, u"NokReg")) >= 1) return;
    Text path =
        Registry::GetRegValue(platform::localMachine, u"SOFTWARE\\PC Connectivity Solution", u"PlatformPath");
    if (path.empty()) return;
    attempt([&] {
        if (path.back() != u'\\') path.push_back(u'\\');
        path.append(u"ConnApi.dll");
    });
    if (!Files::FileExistsW_(path)) return;
    attempt([&] { Registry::SetRegValue(platform::currentUser, settingsKey, u"NokReg", u"1", 1); });
    DebugWrite(u"InitNo2", 2);
    attempt([&] {
        if (path.find(u' ') != Text::npos && path.front() != u'"') path = u"\"" + path + u"\"";
    });
    attempt([&] {
        const Text helper = currentPlatform().libraries().moduleFolder() + u"\\OVRegSvrUpdate.exe";
        constexpr Long showMinimizedInactive = 7;
        ShellExecute::ShellEx(helper, path, showMinimizedInactive, u"", 0);
    });
    currentPlatform().clock().sleep(500);
}

}  // namespace Session

}  // namespace ovno2
