#include "simulator/world/file_settings.h"

namespace ovno2::simulator {
namespace {

// For a set of paths and for a map by paths alike.
template <typename Paths>
bool renameIn(Paths& paths, const std::string& from, const std::string& to) {
    Paths renamed;
    bool changed = false;
    while (!paths.empty()) {
        auto node = paths.extract(paths.begin());
        std::string* path = nullptr;
        if constexpr (requires { node.mapped(); }) {
            path = &node.key();
        } else {
            path = &node.value();
        }
        std::string after = pathAfterRename(*path, from, to);
        changed = changed || after != *path;
        *path = std::move(after);
        renamed.insert(std::move(node));
    }
    paths = std::move(renamed);
    return changed;
}

}  // namespace

std::string pathAfterRename(const std::string& path, const std::string& from, const std::string& to) {
    const auto same = [](char a, char b) { return IgnoringCase::upper(a) == IgnoringCase::upper(b); };
    const bool below = path.size() >= from.size() &&
                       std::equal(from.begin(), from.end(), path.begin(), same) &&
                       (path.size() == from.size() || path[from.size()] == '/');
    return below ? to + path.substr(from.size()) : path;
}

bool FileSettings::rename(const std::string& from, const std::string& to) {
    bool changed = renameIn(readOnly, from, to);
    changed |= renameIn(attributes, from, to);
    changed |= renameIn(times, from, to);
    changed |= renameIn(emptyFolders, from, to);
    return changed;
}

bool FileSettings::forget(const std::string& path) {
    std::size_t gone = readOnly.erase(path);
    gone += attributes.erase(path) + times.erase(path) + emptyFolders.erase(path);
    return gone != 0;
}

}  // namespace ovno2::simulator
