#include "simulator/world/content_changes.h"

#include <algorithm>

#include "simulator/base/refused.h"

namespace ovno2::simulator {
namespace {

constexpr std::size_t uidBytes = 4;

std::string uidOf(std::uint32_t number) {
    std::string uid;
    for (int shift = 24; shift >= 0; shift -= 8)
        uid += static_cast<char>(number >> shift & 0xFF);
    return uid;
}

// The next number whose uid nobody has, so that a uid is never used twice.
std::string takeUid(ContactStore& store) {
    if (store.nextUid == 0) {
        for (const auto& contact : store.contacts) {
            if (contact->uid.size() > uidBytes) continue;
            std::uint32_t number = 0;
            for (const char byte : contact->uid)
                number = number << 8 | static_cast<unsigned char>(byte);
            store.nextUid = std::max(store.nextUid, number);
        }
        ++store.nextUid;
    }
    while (store.byUid.contains(uidOf(store.nextUid)))
        ++store.nextUid;
    return uidOf(store.nextUid++);
}

Word lastPosition(const ContactStore& store) {
    Word last = 0;
    for (const auto& contact : store.contacts)
        last = std::max(last, contact->position);
    return last;
}

void rebuildIndex(ContactStore& store) {
    store.byUid.clear();
    for (std::size_t i = 0; i < store.contacts.size(); ++i)
        store.byUid.emplace(store.contacts[i]->uid, i);
}

// Removes every contact that `gone` names; the others keep their order.
template <typename Predicate>
void removeContacts(ContactStore& store, Predicate gone) {
    std::erase_if(store.contacts, [&](const auto& contact) { return gone(*contact); });
    rebuildIndex(store);
}

Word largestFolderId(const ContentFolder& folder) {
    Word largest = folder.id;
    for (const ContentFolder& subfolder : folder.subfolders)
        largest = std::max(largest, largestFolderId(subfolder));
    return largest;
}

ContentFolder* parentOf(ContentFolder& folder, Word child) {
    for (ContentFolder& subfolder : folder.subfolders) {
        if (subfolder.id == child) return &folder;
        if (ContentFolder* const found = parentOf(subfolder, child)) return found;
    }
    return nullptr;
}

void requireFreeName(const ContentFolder& parent, const std::u16string& name) {
    const bool taken = std::any_of(parent.subfolders.begin(), parent.subfolders.end(),
                                   [&](const ContentFolder& one) { return one.name == name; });
    if (taken) throw Refused{status::alreadyExists};
}

void changeFolder(ContactStore& store, const ContentChange& change) {
    if (change.kind == ContentChange::Kind::createFolder) {
        ContentFolder* const parent = change.folderId == 0 ? &store.root : store.root.find(change.folderId);
        if (parent == nullptr) throw Refused{status::folderNotFound};
        requireFreeName(*parent, change.name);
        parent->subfolders.push_back(
            {largestFolderId(store.root) + 1, change.name, parent->path + u"\\" + change.name, {}});
        return;
    }
    ContentFolder* const parent = parentOf(store.root, change.folderId);
    if (parent == nullptr) throw Refused{status::folderNotFound};
    const auto folder = std::find_if(parent->subfolders.begin(), parent->subfolders.end(),
                                     [&](const ContentFolder& one) { return one.id == change.folderId; });
    if (change.kind == ContentChange::Kind::renameFolder) {
        if (folder->name != change.name) requireFreeName(*parent, change.name);
        folder->name = change.name;
        folder->path = parent->path + u"\\" + change.name;
        return;
    }
    const ContentFolder gone = std::move(*folder);
    parent->subfolders.erase(folder);
    removeContacts(store, [&](const Contact& contact) { return gone.find(contact.folderId) != nullptr; });
}

void rewriteContact(ContactStore& store, const ContentChange& change) {
    const auto found = store.byUid.find(change.uid);
    if (found == store.byUid.end()) throw Refused{status::itemNotFound};
    auto& place = store.contacts[found->second];
    auto contact = std::make_shared<Contact>(*change.contact);
    contact->uid = place->uid;
    contact->position = place->position;
    contact->folderId = place->folderId;
    place = std::move(contact);
}

}  // namespace

std::shared_ptr<ContactStore> afterChanges(const ContactStore& store,
                                           const std::vector<ContentChange>& changes,
                                           std::vector<CreatedContact>& created) {
    auto next = std::make_shared<ContactStore>(store);
    std::vector<std::string> removed;
    Word position = lastPosition(store);
    for (const ContentChange& change : changes) {
        switch (change.kind) {
            case ContentChange::Kind::remove:
                if (!next->byUid.contains(change.uid)) throw Refused{status::itemNotFound};
                removed.push_back(change.uid);
                break;
            case ContentChange::Kind::write:
                if (!change.uid.empty()) {
                    rewriteContact(*next, change);
                } else {
                    auto contact = std::make_shared<Contact>(*change.contact);
                    contact->uid = takeUid(*next);
                    contact->position = ++position;
                    if (next->root.find(contact->folderId) == nullptr) contact->folderId = next->root.id;
                    created.push_back({change.temporaryId, contact->uid, contact->folderId});
                    next->add(std::move(contact));
                }
                break;
            default:
                changeFolder(*next, change);
                break;
        }
    }
    if (!removed.empty()) {
        std::sort(removed.begin(), removed.end());
        removeContacts(*next, [&](const Contact& contact) {
            return std::binary_search(removed.begin(), removed.end(), contact.uid);
        });
    }
    if (next->capacity != 0 && next->contacts.size() > next->capacity &&
        next->contacts.size() > store.contacts.size()) {
        throw Refused{status::storeFull};
    }
    return next;
}

}  // namespace ovno2::simulator
