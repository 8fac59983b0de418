// What the calendar remembers on the thread: its connection, the folders read last, the platform of the phone
// read last, and the items of the write session.
#pragma once

#include <vector>

#include "content/connection.h"
#include "content/folders.h"
#include "content/session_items.h"
#include "library/low_words.h"

namespace ovno2::Calendar {

// Folders beyond these are not looked at.
inline constexpr std::size_t mostFolders = 100;

struct State {
    static constexpr StateSlot slot = StateSlot::calendar;

    Content::Connection connection;

    std::vector<Content::FolderEntry> CalendarFolders;  // entry 0 is the root
    Text foldersSerial;                                 // the phone they are from
    Long FolderRecordSize = 0;                          // bytes, as the library wrote them last

    Text platformModel, platformSerial;  // the phone that was asked for its platform last
    Long platform = 0;                   // a tNokiaPhoneType; 0 = not known

    Content::SessionItems CalendarSessionIds;
    library::LowWords WriteSpare;
};

inline State& state() {
    return stateOf<State>();
}

}  // namespace ovno2::Calendar
