// One kind of a phone's content: the folder tree and the items in the order the phone lists them.
//
// A store is immutable; a commit builds the next one from it and puts it in its place when it is safely on
// disk. Items are shared between the two.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "simulator/world/content_item.h"

namespace ovno2::simulator {

struct ContentFolder {
    Word id = 0;
    std::u16string name;
    std::u16string path;
    std::vector<ContentFolder> subfolders;

    // The folder with this id in the tree, or null.
    const ContentFolder* find(Word wanted) const;
    ContentFolder* find(Word wanted);
};

struct ContentStore {
    ContentFolder root;
    bool numbered = false;      // new items are given a position
    std::size_t capacity = 0;   // 0 = no limit
    std::uint32_t nextUid = 0;  // 0 = derived from the uids
    std::vector<std::shared_ptr<const ContentItem>> items;
    std::unordered_map<std::string, std::size_t> byUid;

    // False when an item with this uid is there already.
    bool add(std::shared_ptr<const ContentItem> item);
    const ContentItem* find(const std::string& uid) const;
    // The same for a caller that goes through the store in order: looks at `expected` first, and leaves there
    // the place behind the item it found.
    const ContentItem* find(const std::string& uid, std::size_t& expected) const;
    Word lastPosition() const;
};

}  // namespace ovno2::simulator
