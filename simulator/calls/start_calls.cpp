// Starting and stopping the groups, and their versions.
#include "simulator/calls/exports.h"
#include "simulator/calls/serve.h"

using namespace ovno2::simulator;
using namespace ovno2::library;

namespace {

// The connectivity group counts its starts. The others are on or off: a second start changes nothing and one
// stop ends it.
Status start(const char* name, Group group, Word version) {
    return serve(
        {name}, [&](ArgumentText& text) { text.number("version", version); },
        [&](World& world) {
            unsigned& started = world.started(group);
            started = group == Group::connectivity ? started + 1 : 1;
            return statusOk;
        });
}

Status stop(const char* name, Group group) {
    const CallSite site{name, 0, /*releases=*/true};
    return serve(
        site, [](ArgumentText&) {},
        [&](World& world) -> Status {
            unsigned& started = world.started(group);
            if (started == 0) return status::notStarted;
            --started;
            return statusOk;
        });
}

Word version(const char* name, Word Versions::*which) {
    return serveValue<Word>(
        {name}, [](ArgumentText&) {}, [&](World& world) { return world.versions().*which; });
}

}  // namespace

SIMULATOR_EXPORT Word SIMULATOR_STDCALL CONAGetConnAPIVersion() {
    return version("CONAGetConnAPIVersion", &Versions::connectivity);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAInitialize(Word version, signature::WideText callerName) {
    return serve(
        {"CONAInitialize"}, [&](ArgumentText& text) { text.number("version", version).text(callerName); },
        [&](World& world) {
            requireGiven(callerName);
            ++world.started(Group::connectivity);
            return statusOk;
        });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAUninitialize(Word) {
    return stop("CONAUninitialize", Group::connectivity);
}

SIMULATOR_EXPORT Word SIMULATOR_STDCALL DMAPI_GetAPIVersion() {
    return version("DMAPI_GetAPIVersion", &Versions::deviceManagement);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL DMAPI_Initialize(Word version, Word) {
    return start("DMAPI_Initialize", Group::deviceManagement, version);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL DMAPI_Terminate(Word) {
    return stop("DMAPI_Terminate", Group::deviceManagement);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL MCAPI_Initialize(Word version, Word) {
    return start("MCAPI_Initialize", Group::media, version);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL MCAPI_Terminate(Word) {
    return stop("MCAPI_Terminate", Group::media);
}

SIMULATOR_EXPORT Word SIMULATOR_STDCALL FSAPI_GetAPIVersion() {
    return version("FSAPI_GetAPIVersion", &Versions::fileSystem);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL FSAPI_Initialize(Word version, Word) {
    return start("FSAPI_Initialize", Group::fileSystem, version);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL FSAPI_Terminate(Word) {
    return stop("FSAPI_Terminate", Group::fileSystem);
}

SIMULATOR_CHECK(CONAGetConnAPIVersion);
SIMULATOR_CHECK(CONAInitialize);
SIMULATOR_CHECK(CONAUninitialize);
SIMULATOR_CHECK(DMAPI_GetAPIVersion);
SIMULATOR_CHECK(DMAPI_Initialize);
SIMULATOR_CHECK(DMAPI_Terminate);
SIMULATOR_CHECK(MCAPI_Initialize);
SIMULATOR_CHECK(MCAPI_Terminate);
SIMULATOR_CHECK(FSAPI_GetAPIVersion);
SIMULATOR_CHECK(FSAPI_Initialize);
SIMULATOR_CHECK(FSAPI_Terminate);
