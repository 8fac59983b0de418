#include "devices/session.h"

#include "core/attempt.h"
#include "core/current_platform.h"
#include "core/settings.h"
#include "library/library.h"
#include "pc/files.h"
#include "pc/registry_access.h"
#include "pc/shell_execute.h"

namespace ovno2 {

namespace {

constexpr Long defaultVersion = 30;
constexpr Long versionOfTooOldLibrary = 34;   // requested from a library that reports less than the default
constexpr Long lastVersionWithoutQuery = 36;  // content-access versions up to here get the default
constexpr Long noStatus = -1;                 // no call has been made yet
constexpr Long detailLevel = 4;

struct State {
    static constexpr StateSlot slot = StateSlot::session;
    library::Handle handle = 0;
    Long openCount = 0;
    bool fallbackStart = false;
    Long requestedVersion = defaultVersion;
    bool repairDone = false;
    CurrentPhone currentPhone;
};

void stopEarlierStart(State& state) {
    if (state.fallbackStart)
        attempt([] { library::CONAUninitialize(0); });
    else
        attempt([] { library::DMAPI_Terminate(0); });
    clearPendingFailure();
    state.fallbackStart = false;
}

void chooseVersion(State& state) {
    state.requestedVersion = defaultVersion;
    if (settings().contentAccessVersion <= lastVersionWithoutQuery) return;
    attempt([&] { state.requestedVersion = static_cast<Long>(library::DMAPI_GetAPIVersion()); });
    DebugLine(u"DMAPI_VERSION:", decimal{state.requestedVersion});
    if (state.requestedVersion < defaultVersion) state.requestedVersion = versionOfTooOldLibrary;
}

// Starts the library the way it was done before it had a device-management API of its own.
FailureNumber startTheOldWay(State& state, Long& status) {
    state.fallbackStart = true;
    const FailureNumber failure = attempt([&] {
        status = static_cast<Long>(library::CONAInitialize(library::CONAGetConnAPIVersion(), u"Nokia"));
    });
    if (failure == noFailure && status == 0) ++settings().libraryStartCount;
    return failure;
}

}  // namespace

CurrentPhone& currentPhone() {
    return stateOf<State>().currentPhone;
}

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

    Long status = noStatus;
    const auto initialize = [&] {
        status = static_cast<Long>(
            library::DMAPI_Initialize(static_cast<library::Word>(state.requestedVersion), 0));
    };
    open.failure = attempt(initialize);
    if (open.failure == fileNotFound) {
        NokReg();
        clearPendingFailure();
        open.failure = attempt(initialize);
    }
    Text description;
    attempt([&] { description = pendingFailure().description; });
    DebugWrite(u"DMApiInit 0a");
    if (open.failure != noFailure) {
        DebugWrite(u"DMApiInit", 1);
        DebugLine(decimal{open.failure}, description);
        clearPendingFailure();
        open.failure = startTheOldWay(state, status);
    }
    if (status == 0) {
        DebugWrite(u"DMApiInit", 2);
        open.result = -2;
        Long opened = noStatus;
        attempt([&] { opened = static_cast<Long>(library::CONAOpenDM(&state.handle)); });
        DebugWrite(u"DMApiInit", 3);
        if (opened == 0) {
            open.result = 0;
            state.openCount = 1;
        } else {
            DebugLine(hex{static_cast<std::uint32_t>(opened)});
        }
    } else {
        DebugLine(hex{static_cast<std::uint32_t>(status)});
    }
    DebugLine(decimal{open.result});
    return open;
}

Long DMApiTerminate() {
    const RoutineLog log(u"DMApiTerminate");
    State& state = stateOf<State>();
    state.currentPhone.clear();
    if (state.handle != 0) attempt([&] { library::CONACloseDM(state.handle); });
    DebugWrite(u"DMApiTerminate", 1, detailLevel);
    state.handle = 0;
    if (state.fallbackStart) {
        DebugWrite(u"DMApiTerminate", 2, detailLevel);
        attempt([] { library::CONAUninitialize(0); });
        DebugWrite(u"DMApiTerminate", 3, detailLevel);
        if (state.openCount > 0) {
            DebugWrite(u"DMApiTerminate", 4, detailLevel);
            attempt([] { library::DMAPI_Terminate(0); });
        }
    } else {
        DebugWrite(u"DMApiTerminate", 5, detailLevel);
        attempt([] { library::DMAPI_Terminate(0); });
    }
    DebugWrite(u"DMApiTerminate", 6, detailLevel);
    if (state.openCount > 0) --state.openCount;
    return 0;
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
