#include "content/sessions.h"

#include "content/data_items.h"
#include "content/state.h"
#include "devices/current_phone.h"
#include "devices/session.h"
#include "pc/registry_access.h"

namespace ovno2::Content {

namespace {

constexpr std::uint16_t lowestVersion = 30;

void logStatus(Long status) {
    DebugLine(hex{status});
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
    auto version = static_cast<std::uint16_t>(library::CAGetAPIVersion.tried().valueOr(0));
    DebugLine(u"CAAPI_VERSION:", decimal{version});
    if (version < lowestVersion) version = lowestVersion;
    const Long status = Session::startService(library::CAAPI_Initialize, version).status;
    Devices::forgetCurrentPhone();
    logStatus(status);
    return status;
}

Long PIMApiTerminate() {
    const RoutineLog log(u"PIMApiTerminate");
    const Long status = library::CAAPI_Terminate.tried(0).status;
    Devices::forgetCurrentPhone();
    logStatus(status);
    return status;
}

Single GetApiVersion() {
    Long& version = state().CaApiVersion;
    if (version == 0) version = library::CAGetAPIVersion.tried().valueOr(0);
    return static_cast<Single>(version);
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
