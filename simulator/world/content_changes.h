// Changes to a phone book that wait for their commit, and the phone book they lead to.
//
// No state: `afterChanges` builds the next store beside the current one, which stays as it is whatever
// happens.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulator/world/contact_store.h"

namespace ovno2::simulator {

struct ContentChange {
    enum class Kind { write, remove, createFolder, renameFolder, deleteFolder };
    Kind kind = Kind::write;
    std::string uid;                   // write, remove: empty for a contact that is new
    Word temporaryId = 0;              // write of a new contact: what the caller knows it by until the commit
    std::shared_ptr<Contact> contact;  // write
    Word folderId = 0;                 // folders: the one to rename or delete, or the new one's parent
    std::u16string name;               // folders
};

// A contact that a commit has created.
struct CreatedContact {
    Word temporaryId = 0;
    std::string uid;
    Word folderId = 0;
};

// Throws Refused when a change no longer fits the store.
std::shared_ptr<ContactStore> afterChanges(const ContactStore& store,
                                           const std::vector<ContentChange>& changes,
                                           std::vector<CreatedContact>& created);

}  // namespace ovno2::simulator
