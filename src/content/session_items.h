// The items of a write session: those the phone listed when it began, then one for each new item.
//
// Finding one costs the same however many there are.
#pragma once

#include <unordered_map>
#include <vector>

#include "base/host_array.h"
#include "content/item_ids.h"

namespace ovno2::Content {

class SessionItems {
  public:
    void clear();
    // Appends the identifiers of a list. False when one of them, or its UID, could not be copied: its item
    // would be written as a new one.
    bool takeListed(const library::ItemIdListRecord& list);
    // The new item of a session, before it is written.
    ItemId& add(ItemId id);
    // The item just added has been given a temporary id.
    void nameLast(Long temporaryId);

    // The first with that UID; null when there is none or `uid` is empty.
    ItemId* findUid(const Text& uid);
    // The new item with that temporary id, written as decimal text.
    ItemId* findNew(const Text& temporaryId);
    // The first with that position or temporary id; null for 0.
    ItemId* findPosition(Long position);

    const std::vector<ItemId>& all() const { return items_; }
    // How many of them the phone listed.
    std::size_t listed() const { return listed_; }

  private:
    using Places = std::unordered_map<Long, std::size_t>;

    std::vector<ItemId> items_;
    std::size_t listed_ = 0;
    std::unordered_map<Text, std::size_t> byUid_;
    std::unordered_map<Text, std::size_t> newByTemporaryId_;
    Places byPosition_;
};

// The temporary ids and UIDs of what a commit wrote: element i of both arrays for record i of the list, "0"
// and an empty text for one that cannot be read. The arrays get `extra` such elements more. Both stay as they
// are when the library claims more than it has.
void tellWritten(const library::ItemIdListRecord& list, Long extra, TextArray& tempids, TextArray& uids);

}  // namespace ovno2::Content
