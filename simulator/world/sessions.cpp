#include "simulator/world/sessions.h"

#include <algorithm>

namespace ovno2::simulator {

const char* nameOf(SessionKind kind) {
    static constexpr const char* names[sessionKinds] = {"deviceManagement", "media",   "fileSystem",
                                                        "search",           "content", "operation"};
    return names[static_cast<std::size_t>(kind)];
}

Handle Sessions::open(std::unique_ptr<Session> session) {
    open_.emplace(++last, std::move(session));
    return last;
}

Session* Sessions::findAny(Handle handle) const {
    const auto found = open_.find(handle);
    return found == open_.end() ? nullptr : found->second.get();
}

void Sessions::close(Handle handle) {
    const auto found = open_.find(handle);
    if (found == open_.end()) return;
    const std::unique_ptr<Session> session = std::move(found->second);
    open_.erase(found);
    for (char* const block : session->held)
        memory.release(block);
    const bool holdsOthers =
        session->kind == SessionKind::content || session->kind == SessionKind::fileSystem;
    if (!holdsOthers) return;
    std::vector<Handle> inside;
    for (const auto& [child, other] : open_) {
        if (other->parent == handle) inside.push_back(child);
    }
    closedInside_ += inside.size();
    for (const Handle child : inside)
        close(child);
}

void Sessions::closeAll() {
    while (!open_.empty())
        close(open_.begin()->first);
    last = 0;
    closedInside_ = 0;
}

std::uint64_t Sessions::count(SessionKind kind) const {
    return static_cast<std::uint64_t>(std::count_if(
        open_.begin(), open_.end(), [kind](const auto& entry) { return entry.second->kind == kind; }));
}

void Sessions::forEach(const std::function<void(Session&)>& visit) {
    for (const auto& [handle, session] : open_)
        visit(*session);
}

}  // namespace ovno2::simulator
