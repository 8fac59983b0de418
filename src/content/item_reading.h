// The road of every read: list a folder's items, begin an operation, go through the items in list order, end.
//
// A content area adds what is its own by deriving from `FolderReader`. Nothing here throws.
#pragma once

#include <type_traits>
#include <vector>

#include "content/connection.h"
#include "library/library_memory.h"

namespace ovno2::Content {

// Takes an item's data out of the library's memory and sees that the library gets it back. `Record` begins
// with its own size, which the library may change.
template <class Record>
class ItemData {
    static_assert(std::is_trivially_copyable_v<Record>);

  public:
    explicit ItemData(library::Handle connection, library::Word size = sizeof(Record))
        : connection_(connection) {
        record_.size = size;
    }
    ~ItemData() {
        if (filled_) library::CAFreeItemData.tried(connection_, /*one=*/1, &record_);
    }
    ItemData(const ItemData&) = delete;
    ItemData& operator=(const ItemData&) = delete;

    Long read(library::Handle operation, library::ItemIdRecord& id) {
        const library::Answer answer =
            library::CAReadItem.tried(operation, &id, /*zero=*/0, /*one=*/1, &record_);
        filled_ = answer.succeeded();
        return answer.status;
    }
    const Record& record() const { return record_; }

  private:
    library::Handle connection_;
    Record record_{};
    bool filled_ = false;
};

class FolderReader {
  public:
    virtual ~FolderReader() = default;

    // Goes through the folder's items. Returns what the hook of the last step taken returns.
    Long read(const Connection& connection, Long folderId);

  protected:
    FolderReader() = default;
    FolderReader(const FolderReader&) = default;
    FolderReader& operator=(const FolderReader&) = default;

    virtual Long notListed(Long status) = 0;       // the end: the identifiers could not be had
    virtual void listed(library::Word count) = 0;  // as the library counts them
    virtual Long notBegun(Long status) = 0;        // the end: no read operation
    // `count` as the library told it; `copied` identifiers follow. No item is read when this fails.
    virtual void begun(library::Word count, std::size_t copied) = 0;
    virtual void readItem(library::Handle operation, library::ItemIdRecord& id) = 0;
    virtual Long done() = 0;  // the operation has been ended
};

}  // namespace ovno2::Content
