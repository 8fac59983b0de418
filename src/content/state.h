// What the content-access core remembers on the thread.
//
// The content areas above read and set some of it (the time-zone biases, the API versions, the field tables),
// so it stands in a header; everything starts at zero or empty. Each area's connection is the area's own.
#pragma once

#include <optional>
#include <vector>

#include "content/field_tables.h"
#include "library/library_records.h"
#include "library/low_words.h"
#include "platform/thread_state.h"

namespace ovno2::Content {

struct State {
    static constexpr StateSlot slot = StateSlot::content;

    Long CaApiVersion = 0;  // content-access version, 0 = not yet asked
    Long DmApiVersion = 0;  // device-management version, 0 = not yet asked

    Long ItemRecordSize = 0;  // bytes of a data item, 0 = not yet known
    Long DateRecordSize = 0;  // bytes of the last date record read, 0 = none seen
    // The item size kept in the registry, as read or stored last in this library session.
    std::optional<Long> StoredItemSize;

    Long TimeBias = 0;          // minutes from local standard time to UTC
    Long DaylightTimeBias = 0;  // minutes that daylight saving adds to that

    FieldTables Fields;

    library::LowWords IdBuffer;              // UID bytes the library had no memory for
    std::vector<unsigned char> BlockBuffer;  // the data-item array being taken apart
};

inline State& state() {
    return stateOf<State>();
}

}  // namespace ovno2::Content
