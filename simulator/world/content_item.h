// What every item of a phone's content has, whatever its kind; an item of the kind that is only counted has
// no more.
//
// Immutable once it is in a store.
#pragma once

#include <memory>
#include <string>

#include "library/library_records.h"

namespace ovno2::simulator {

using library::Word;

struct ContentItem {
    virtual ~ContentItem() = default;
    virtual std::shared_ptr<ContentItem> clone() const = 0;

    std::string uid;
    Word position = 0;
    Word folderId = 0;
};

// How every kind of item is derived: ItemBase<Contact> clones contacts.
template <typename Kind>
struct ItemBase : ContentItem {
    std::shared_ptr<ContentItem> clone() const override {
        return std::make_shared<Kind>(static_cast<const Kind&>(*this));
    }
};

struct CountedItem : ItemBase<CountedItem> {};

}  // namespace ovno2::simulator
