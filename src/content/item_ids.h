// Item identifiers and the UID texts the host knows items by.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/failure.h"
#include "library/library_records.h"

namespace ovno2::Content {

// An item identifier in the module's form.
struct ItemId {
    Long Size = 0;  // 24
    Long FolderId = 0;
    Long Position = 0;   // of an item just written: its temporary id
    Long UidLength = 0;  // bytes
    Text Uid;            // two upper-case hexadecimal digits per byte, in byte order
    Long Word5 = 0;      // passed through unchanged
};

// The UID text of a record in the library's form; empty when it has none or it cannot be read.
Text GetUIDAsString(const library::ItemIdRecord& record);

// Fills `record` with `id`. The UID bytes go to the library's memory or, when it has none, to a buffer that
// stays valid until the next call; the record's UID stays 0 when there is no memory at all. `FreeItemIdBytes`
// gives them back.
void CopyItemIdToLibrary(const ItemId& id, library::ItemIdRecord& record);
void FreeItemIdBytes(library::ItemIdRecord& record);

// An identifier in the library's form while the library is called. Throws RuntimeFailure 7 when there is no
// memory for the UID: without it the library would take the item for a new one.
class LibraryItemId {
  public:
    explicit LibraryItemId(const ItemId& id) {
        CopyItemIdToLibrary(id, record_);
        if (record_.uid == 0 && !id.Uid.empty()) throw RuntimeFailure(outOfMemory);
    }
    ~LibraryItemId() { FreeItemIdBytes(record_); }
    LibraryItemId(const LibraryItemId&) = delete;
    LibraryItemId& operator=(const LibraryItemId&) = delete;
    library::ItemIdRecord& get() { return record_; }

  private:
    library::ItemIdRecord record_{};
};

Text BytesToHex(std::span<const std::uint8_t> bytes);
// One byte for every two characters; what is not a hexadecimal digit counts as 0, an odd last character is
// dropped.
std::vector<std::uint8_t> HexToBytes(TextView text);

}  // namespace ovno2::Content
