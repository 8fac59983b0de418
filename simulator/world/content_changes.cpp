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
std::string takeUid(ContentStore& store) {
    if (store.nextUid == 0) {
        for (const auto& item : store.items) {
            if (item->uid.size() > uidBytes) continue;
            std::uint32_t number = 0;
            for (const char byte : item->uid)
                number = number << 8 | static_cast<unsigned char>(byte);
            store.nextUid = std::max(store.nextUid, number);
        }
        ++store.nextUid;
    }
    while (store.byUid.contains(uidOf(store.nextUid)))
        ++store.nextUid;
    return uidOf(store.nextUid++);
}

void rebuildIndex(ContentStore& store) {
    store.byUid.clear();
    for (std::size_t i = 0; i < store.items.size(); ++i)
        store.byUid.emplace(store.items[i]->uid, i);
}

// Removes every item that `gone` names; the others keep their order.
template <typename Predicate>
void removeItems(ContentStore& store, Predicate gone) {
    std::erase_if(store.items, [&](const auto& item) { return gone(*item); });
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

std::u16string pathBelow(const ContentFolder& parent, const std::u16string& name) {
    return (parent.path.ends_with(u'\\') ? parent.path : parent.path + u'\\') + name;
}

void changeFolder(ContentStore& store, const ContentChange& change) {
    if (change.kind == ContentChange::Kind::createFolder) {
        ContentFolder* const parent = change.folderId == 0 ? &store.root : store.root.find(change.folderId);
        if (parent == nullptr) throw Refused{status::folderNotFound};
        requireFreeName(*parent, change.name);
        parent->subfolders.push_back(
            {largestFolderId(store.root) + 1, change.name, pathBelow(*parent, change.name), {}});
        return;
    }
    ContentFolder* const parent = parentOf(store.root, change.folderId);
    if (parent == nullptr) throw Refused{status::folderNotFound};
    const auto folder = std::find_if(parent->subfolders.begin(), parent->subfolders.end(),
                                     [&](const ContentFolder& one) { return one.id == change.folderId; });
    if (change.kind == ContentChange::Kind::renameFolder) {
        if (folder->name != change.name) requireFreeName(*parent, change.name);
        folder->name = change.name;
        folder->path = pathBelow(*parent, change.name);
        return;
    }
    const ContentFolder gone = std::move(*folder);
    parent->subfolders.erase(folder);
    removeItems(store, [&](const ContentItem& item) { return gone.find(item.folderId) != nullptr; });
}

void rewriteItem(ContentStore& store, const ContentChange& change) {
    const auto found = store.byUid.find(change.uid);
    if (found == store.byUid.end()) throw Refused{status::itemNotFound};
    auto& place = store.items[found->second];
    const std::shared_ptr<ContentItem> item = change.item->clone();
    item->uid = place->uid;
    item->position = place->position;
    item->folderId = place->folderId;
    place = item;
}

}  // namespace

std::shared_ptr<ContentStore> afterChanges(const ContentStore& store,
                                           const std::vector<ContentChange>& changes,
                                           std::vector<CreatedItem>& created) {
    auto next = std::make_shared<ContentStore>(store);
    std::vector<std::string> removed;
    Word position = store.lastPosition();
    for (const ContentChange& change : changes) {
        switch (change.kind) {
            case ContentChange::Kind::remove:
                if (!next->byUid.contains(change.uid)) throw Refused{status::itemNotFound};
                removed.push_back(change.uid);
                break;
            case ContentChange::Kind::write:
                if (!change.uid.empty()) {
                    rewriteItem(*next, change);
                } else {
                    const std::shared_ptr<ContentItem> item = change.item->clone();
                    item->uid = takeUid(*next);
                    if (next->numbered) item->position = ++position;
                    if (next->root.find(item->folderId) == nullptr) item->folderId = next->root.id;
                    created.push_back({change.temporaryId, item->uid, item->folderId});
                    next->add(item);
                }
                break;
            default:
                changeFolder(*next, change);
                break;
        }
    }
    if (!removed.empty()) {
        std::sort(removed.begin(), removed.end());
        removeItems(*next, [&](const ContentItem& item) {
            return std::binary_search(removed.begin(), removed.end(), item.uid);
        });
    }
    if (next->capacity != 0 && next->items.size() > next->capacity &&
        next->items.size() > store.items.size()) {
        throw Refused{status::storeFull};
    }
    return next;
}

}  // namespace ovno2::simulator
