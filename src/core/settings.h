// The module-wide settings: what the host's property members and `Init` store, one set per thread.
//
// The public class writes them; the content areas below read them. Nothing is validated or converted.
#pragma once

#include "base/host_array.h"
#include "platform/thread_state.h"

namespace ovno2 {

struct Settings {
    static constexpr StateSlot slot = StateSlot::settings;

    // The host's localized words for calendar writing.
    TextArray priorities;
    TextArray statuses;
    Text meeting, birthday, call, reminder, task, note;
    Text minute, hour, day;

    Long getAllFields = 0;   // non-zero: contact reading keeps every value
    Long addTimeOffset = 0;  // 0 or more: date marshalling shifts times the phone gave in UTC

    Text profilePath;  // "defaults.ini" beside the module; stored by `Init`
};

inline Settings& settings() {
    return stateOf<Settings>();
}

}  // namespace ovno2
