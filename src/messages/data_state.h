// What the access to messages and notes remembers on the thread.
#pragma once

#include "content/connection.h"
#include "content/session_items.h"
#include "platform/thread_state.h"

namespace ovno2::Data {

struct State {
    static constexpr StateSlot slot = StateSlot::messages;

    Content::Connection connection;          // its write session is that of messages and notes
    Long DataKind = 0;                       // the kind it was opened for
    Long DataRootFolderId = 0;               // of the store whose folders were read last
    Content::SessionItems DataSessionItems;  // of the write session
};

inline State& state() {
    return stateOf<State>();
}

}  // namespace ovno2::Data
