#include "contacts/library_pieces.h"

#include <cstring>

namespace ovno2::Contacts {

LibraryPieces::~LibraryPieces() {
    for (char16_t* const text : texts_)
        library::CONAFreeString.tried(text);
    for (void* const block : blocks_)
        library::CONAFreeMemory.tried(block);
}

Address LibraryPieces::text(const Text& text) {
    texts_.reserve(texts_.size() + 1);
    char16_t* const made = library::CONAAllocString.tried(text.c_str());
    if (!made) throw RuntimeFailure(outOfMemory);
    texts_.push_back(made);
    return library::addressOf(made);
}

Address LibraryPieces::block(std::span<const std::uint8_t> bytes) {
    blocks_.reserve(blocks_.size() + 1);
    void* const made = library::CONAAllocMemory.tried(static_cast<library::Word>(bytes.size()));
    if (!made) throw RuntimeFailure(outOfMemory);
    blocks_.push_back(made);
    std::memcpy(made, bytes.data(), bytes.size());
    return library::addressOf(made);
}

void giveTextBack(Address text) {
    if (library::isAddress(text))
        library::CONAFreeString.tried(static_cast<char16_t*>(library::pointerTo(text)));
}

void giveBlockBack(Address block) {
    if (library::isAddress(block)) library::CONAFreeMemory.tried(library::pointerTo(block));
}

}  // namespace ovno2::Contacts
