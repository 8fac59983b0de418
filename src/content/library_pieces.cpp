#include "content/library_pieces.h"

#include <cstring>

namespace ovno2::Content {

LibraryPieces::~LibraryPieces() {
    for (char16_t* const text : texts_)
        if (text) library::CONAFreeString.tried(text);
    for (void* const block : blocks_)
        if (block) library::CONAFreeMemory.tried(block);
}

Address LibraryPieces::text(const Text& text) {
    char16_t*& made = texts_.emplace_back(nullptr);  // there is a place for what the library gives
    made = library::CONAAllocString.tried(text.c_str());
    if (!made) throw RuntimeFailure(outOfMemory);
    return library::addressOf(made);
}

Address LibraryPieces::block(std::span<const std::uint8_t> bytes) {
    void*& made = blocks_.emplace_back(nullptr);
    made = library::CONAAllocMemory.tried(static_cast<library::Word>(bytes.size()));
    if (!made) throw RuntimeFailure(outOfMemory);
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

}  // namespace ovno2::Content
