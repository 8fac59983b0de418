// What writing contacts remembers on the thread from one contact of a session to the next.
#pragma once

#include "contacts/reverse_fields.h"
#include "content/session_items.h"
#include "library/low_words.h"
#include "platform/thread_state.h"

namespace ovno2::Contacts {

struct WritingState {
    static constexpr StateSlot slot = StateSlot::contactsWriting;

    Content::SessionItems ContactsSessionIds;
    Long ContactsWritten = 0;
    ReverseFields fields;
    library::LowWords WriteSpare;
};

inline WritingState& writingState() {
    return stateOf<WritingState>();
}

}  // namespace ovno2::Contacts
