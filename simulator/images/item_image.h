// How the items of one kind are written in an image: what the reader and the writer of a store's file ask of
// each kind.
#pragma once

#include <cstring>
#include <memory>

#include "simulator/images/json_node.h"
#include "simulator/images/json_writer.h"
#include "simulator/world/content_kind.h"
#include "simulator/world/content_store.h"

namespace ovno2::simulator {

class ItemImage {
  public:
    virtual ~ItemImage() = default;

    // `position` is the item's unless it says another one.
    virtual std::shared_ptr<ContentItem> read(const JsonNode& node, Word position) = 0;

    // What follows the members that every item has; each begins with ", ".
    virtual void write(JsonWriter& writer, const ContentItem& item) const = 0;

    // A commit gives a new item of this kind the position behind the last.
    virtual bool isNumbered() const { return false; }
};

// `image` is where the files are that items name.
std::unique_ptr<ItemImage> contactsForm(const std::filesystem::path& image);
std::unique_ptr<ItemImage> calendarForm();
std::unique_ptr<ItemImage> messagesForm();
std::unique_ptr<ItemImage> notesForm();
std::unique_ptr<ItemImage> countedItemsForm();

// A comparison that costs next to nothing: there are forty member names in a contact of twenty fields.
template <std::size_t size>
bool isName(std::string_view name, const char (&wanted)[size]) {
    return name.size() == size - 1 && std::memcmp(name.data(), wanted, size - 1) == 0;
}

void readUid(const JsonNode& node, std::string& uid);
inline Word readId(const JsonNode& node) {
    return node.wordBetween(1, 0xFFFFFFFF);
}

// A member that every item has; false for a name that is none of theirs.
inline bool readItemMember(std::string_view name, const JsonNode& value, ContentItem& item) {
    if (isName(name, "uid")) {
        readUid(value, item.uid);
    } else if (isName(name, "position")) {
        item.position = value.word();
    } else if (isName(name, "folderId")) {
        item.folderId = readId(value);
    } else {
        return false;
    }
    return true;
}

// A text or null of an item.
std::optional<std::u16string> readItemText(const JsonNode& node);

// A date with its offsets behind it; see date_text.h.
void readDate(const JsonNode& node, library::DateRecord& date);

// One member of an item's line.
template <typename Value>
void writeItemMember(JsonWriter& writer, const char* name, const Value& value) {
    writer.layout(std::string(", \"") + name + "\": ");
    writer.value(value);
}

// The same for a text that may be null.
void writeItemMember(JsonWriter& writer, const char* name, const std::optional<std::u16string>& text);

}  // namespace ovno2::simulator
