// What the content-access core remembers on the thread.
//
// The calendar, message and write routines above read and set some of it (the time-zone biases, the API
// versions, the contacts write session), so it stands in a header; everything starts at zero or empty.
#pragma once

#include <optional>
#include <vector>

#include "content/field_tables.h"
#include "library/library_records.h"
#include "library/low_words.h"
#include "platform/thread_state.h"

namespace ovno2::Content {

// A status before any call was made; not success.
inline constexpr Long noStatus = -1;

// The answer of the last contacts connection check, trusted for a second, and the folder found behind it.
struct ConnectionCheck {
    Single CheckedAt = 0;        // seconds since midnight
    Long LastStatus = noStatus;  // 0 only while the connection of that check is open
    Long FolderId = 0;
};

struct State {
    static constexpr StateSlot slot = StateSlot::content;

    library::Handle ContactsHandle = 0;  // 0 = no connection
    Text ContactsSerial;                 // the phone the contacts connection belongs to
    ConnectionCheck ContactsCheck;

    // The contacts write session; closing the connection ends it.
    library::Handle ContactsOperation = 0;
    bool ContactsSessionOpen = false;

    Long CaApiVersion = 0;  // content-access version, 0 = not yet asked
    Long DmApiVersion = 0;  // device-management version, 0 = not yet asked

    Long ItemRecordSize = 0;  // bytes of a data item, 0 = not yet known
    Long DateRecordSize = 0;  // bytes of the last date record read, 0 = none seen
    // The item size kept in the registry, as read or stored last in this library session.
    std::optional<Long> StoredItemSize;

    Long TimeBias = 0;          // minutes from local standard time to UTC
    Long DaylightTimeBias = 0;  // minutes that daylight saving adds to that

    FieldTables Fields;

    library::LowWords IdBuffer;                       // UID bytes the library had no memory for
    std::vector<unsigned char> BlockBuffer;  // the data-item array being taken apart
};

inline State& state() {
    return stateOf<State>();
}

}  // namespace ovno2::Content
