// Texts and blocks made in the library's memory for one write, and pieces of an item that are given back.
#pragma once

#include <span>
#include <vector>

#include "library/library_memory.h"

namespace ovno2::Content {

// What has been made goes back to the library when this ends, after the write.
class LibraryPieces {
  public:
    LibraryPieces() = default;
    ~LibraryPieces();
    LibraryPieces(const LibraryPieces&) = delete;
    LibraryPieces& operator=(const LibraryPieces&) = delete;

    // Throw RuntimeFailure 7 when the library has no memory.
    Address text(const Text& text);
    Address block(std::span<const std::uint8_t> bytes);
    template <class Record>
    Address record(const Record& record) {
        static_assert(std::is_trivially_copyable_v<Record>);
        return block({reinterpret_cast<const std::uint8_t*>(&record), sizeof record});
    }

  private:
    std::vector<char16_t*> texts_;
    std::vector<void*> blocks_;
};

// Give one piece of an item that was read back to the library; nothing happens for an address that is none.
void giveTextBack(Address text);
void giveBlockBack(Address block);

}  // namespace ovno2::Content
