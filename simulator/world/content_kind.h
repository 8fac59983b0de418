// The kinds of content that a phone keeps, each in a store of its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "library/library_calls.h"

namespace ovno2::simulator {

using library::Word;

enum class ContentKind : std::uint8_t { contacts, calendar, notes, messages, otherMessages, countedItems };

struct ContentKindInfo {
    ContentKind kind;
    const char* name;  // of the store in commands; with ".json", of its file in an image
    Word target;       // what DAOpenCA calls it
    const char* list;  // the member of the file that holds the items
};

// In the order of the enumeration.
inline constexpr std::array<ContentKindInfo, 6> contentKinds = {{
    {ContentKind::contacts, "contacts", library::signature::targetContacts, "contacts"},
    {ContentKind::calendar, "calendar", library::signature::targetCalendar, "entries"},
    {ContentKind::notes, "notes", library::signature::targetNotes, "notes"},
    {ContentKind::messages, "messages", library::signature::targetMessages, "messages"},
    {ContentKind::otherMessages, "otherMessages", library::signature::targetOtherMessages, "messages"},
    {ContentKind::countedItems, "countedItems", library::signature::targetCountedItems, "items"},
}};

constexpr std::size_t indexOf(ContentKind kind) {
    return static_cast<std::size_t>(kind);
}
constexpr const ContentKindInfo& infoOf(ContentKind kind) {
    return contentKinds[indexOf(kind)];
}

}  // namespace ovno2::simulator
