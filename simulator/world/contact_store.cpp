#include "simulator/world/contact_store.h"

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

bool ContactStore::add(std::shared_ptr<const Contact> contact) {
    if (!byUid.emplace(contact->uid, contacts.size()).second) return false;
    contacts.push_back(std::move(contact));
    return true;
}

const Contact* ContactStore::find(const std::string& uid) const {
    const auto found = byUid.find(uid);
    return found == byUid.end() ? nullptr : contacts[found->second].get();
}

const Contact* ContactStore::find(const std::string& uid, std::size_t& expected) const {
    if (expected >= contacts.size() || contacts[expected]->uid != uid) {
        const auto found = byUid.find(uid);
        if (found == byUid.end()) return nullptr;
        expected = found->second;
    }
    return contacts[expected++].get();
}

}  // namespace ovno2::simulator
