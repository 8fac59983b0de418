// Changes to a store that wait for their commit, and the store they lead to.
//
// No state: `afterChanges` builds the next store beside the current one, which stays as it is whatever
// happens.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulator/world/content_store.h"

namespace ovno2::simulator {

struct ContentChange {
    enum class Kind { write, remove, createFolder, renameFolder, deleteFolder };
    Kind kind = Kind::write;
    std::string uid;                    // write, remove: empty for an item that is new
    Word temporaryId = 0;               // write of a new item: what the caller knows it by until the commit
    std::shared_ptr<ContentItem> item;  // write
    Word folderId = 0;                  // folders: the one to rename or delete, or the new one's parent
    std::u16string name;                // folders
};

// An item that a commit has created.
struct CreatedItem {
    Word temporaryId = 0;
    std::string uid;
    Word folderId = 0;
};

// Throws Refused when a change no longer fits the store.
std::shared_ptr<ContentStore> afterChanges(const ContentStore& store,
                                           const std::vector<ContentChange>& changes,
                                           std::vector<CreatedItem>& created);

}  // namespace ovno2::simulator
