// What writing contacts remembers on the thread from one contact of a session to the next.
#pragma once

#include <unordered_map>
#include <vector>

#include "contacts/reverse_fields.h"
#include "content/item_ids.h"
#include "library/low_words.h"
#include "platform/thread_state.h"

namespace ovno2::Contacts {

// The identifiers of a write session: those the phone listed when it began, then one for each new contact.
// Finding one costs the same however many there are.
class SessionIds {
  public:
    void clear();
    // Throws std::bad_alloc and keeps what it had.
    void reserve(std::size_t count);
    Content::ItemId& add(Content::ItemId id);
    // The contact just added has been given a temporary id.
    void nameLast(Long temporaryId);
    // The first with that UID, or the one with that temporary id; null when there is none or `name` is empty.
    Content::ItemId* find(const Text& name);
    Content::ItemId* findUid(const Text& uid);

    const std::vector<Content::ItemId>& all() const { return ids_; }

  private:
    std::vector<Content::ItemId> ids_;
    std::unordered_map<Text, std::size_t> byUid_;
    std::unordered_map<Text, std::size_t> byTemporaryId_;
};

struct WritingState {
    static constexpr StateSlot slot = StateSlot::contactsWriting;

    SessionIds ContactsSessionIds;
    std::vector<Text> listed;  // the phone's identifiers as `GetAllUids` tells them
    Long ContactsWritten = 0;
    ReverseFields fields;
    library::LowWords WriteSpare;
};

inline WritingState& writingState() {
    return stateOf<WritingState>();
}

}  // namespace ovno2::Contacts
