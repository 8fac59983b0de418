#include "simulator/world/content_store.h"

#include <algorithm>
#include <utility>

namespace ovno2::simulator {

const ContentFolder* ContentFolder::find(Word wanted) const {
    if (id == wanted) return this;
    for (const ContentFolder& subfolder : subfolders) {
        if (const ContentFolder* const found = subfolder.find(wanted)) return found;
    }
    return nullptr;
}

ContentFolder* ContentFolder::find(Word wanted) {
    return const_cast<ContentFolder*>(std::as_const(*this).find(wanted));
}

bool ContentStore::add(std::shared_ptr<const ContentItem> item) {
    if (!byUid.emplace(item->uid, items.size()).second) return false;
    items.push_back(std::move(item));
    return true;
}

const ContentItem* ContentStore::find(const std::string& uid) const {
    const auto found = byUid.find(uid);
    return found == byUid.end() ? nullptr : items[found->second].get();
}

const ContentItem* ContentStore::find(const std::string& uid, std::size_t& expected) const {
    if (expected >= items.size() || items[expected]->uid != uid) {
        const auto found = byUid.find(uid);
        if (found == byUid.end()) return nullptr;
        expected = found->second;
    }
    return items[expected++].get();
}

Word ContentStore::lastPosition() const {
    Word last = 0;
    for (const auto& item : items)
        last = std::max(last, item->position);
    return last;
}

}  // namespace ovno2::simulator
