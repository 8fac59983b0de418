#include "contacts/writing_state.h"

namespace ovno2::Contacts {

using Content::ItemId;

void SessionIds::clear() {
    ids_.clear();
    byUid_.clear();
    byTemporaryId_.clear();
}

void SessionIds::reserve(std::size_t count) {
    ids_.reserve(count);
    byUid_.reserve(count);
}

ItemId& SessionIds::add(ItemId id) {
    ids_.push_back(std::move(id));
    ItemId& added = ids_.back();
    if (!added.Uid.empty()) byUid_.emplace(added.Uid, ids_.size() - 1);
    return added;
}

void SessionIds::nameLast(Long temporaryId) {
    byTemporaryId_[decimalText(temporaryId)] = ids_.size() - 1;
}

ItemId* SessionIds::findUid(const Text& uid) {
    const auto found = byUid_.find(uid);
    return found == byUid_.end() ? nullptr : &ids_[found->second];
}

ItemId* SessionIds::find(const Text& name) {
    if (ItemId* const known = findUid(name)) return known;
    const auto found = byTemporaryId_.find(name);
    return found == byTemporaryId_.end() ? nullptr : &ids_[found->second];
}

}  // namespace ovno2::Contacts
