// Items as the library's records: one form a kind of content. It builds the record that a read hands out and
// reads one that a caller wrote. No state.
#pragma once

#include <array>
#include <span>

#include "simulator/calls/serve.h"
#include "simulator/world/content_kind.h"

namespace ovno2::simulator {

// A list that a record points to.
struct RecordPart {
    const char* name;  // for the plan
    std::size_t pair;  // tells apart those of one name
    Address address;
    std::size_t count;
    std::size_t stride;  // bytes
    bool endsInAddress;  // the last word of each element leads to a value
};

// The lists of one record.
class RecordParts {
  public:
    void add(const RecordPart& part) { parts[count++] = part; }
    std::span<const RecordPart> all() const { return {parts.data(), count}; }

  private:
    std::array<RecordPart, 4> parts;  // the first `count` are filled
    std::size_t count = 0;
};

class ItemForm {
  public:
    virtual ~ItemForm() = default;

    virtual std::string_view name() const = 0;                      // of its record, for the plan
    virtual std::size_t bytes(const RecordSizes& sizes) const = 0;  // of its record

    // Writes the record, as its last step. What does not fit into it is handed out as one block, which the
    // record's parts lead into; an item without more takes no memory.
    virtual void build(World& world, const Phone& phone, const RecordSizes& sizes, const ContentItem& item,
                       void* record) const = 0;

    // An item out of a caller's record; uid, position and folder stay empty. `previous`, when there is one,
    // tells the kinds of fields that only the phone knows. Every address is checked before it is followed; a
    // bad one refuses the call and counts as misuse.
    virtual std::shared_ptr<ContentItem> read(World& world, const Phone& phone, const void* record,
                                              const ContentItem* previous) const = 0;

    virtual RecordParts parts(const void* record, const RecordSizes& sizes) const = 0;

    // Whether a caller may write a record, or name an item by an identifier, of this size.
    virtual bool takesRecord(Word size, const RecordSizes& sizes) const { return size == bytes(sizes); }
    virtual bool takesId(Word size, const RecordSizes&) const {
        return size == sizeof(library::ItemIdRecord);
    }
};

extern const ItemForm& contactForm;
extern const ItemForm& calendarForm;
extern const ItemForm& messageForm;
extern const ItemForm& noteForm;

// Null for items that are only counted.
const ItemForm* formOf(ContentKind kind);

// Builds the record and lets the plan make it wild.
void handOut(World& world, const Phone& phone, const RecordSizes& sizes, const ItemForm& form,
             const ContentItem& item, char* record);

// The block that a record's parts lead into.
LowMemory::Block itemBlock(const World& world, const RecordParts& parts);

}  // namespace ovno2::simulator
