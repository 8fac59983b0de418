// Byte strings: texts in which each character stands for one byte of the system's ANSI code page.
//
// The table goes through them faster than character by character. It is taken from the calling thread's
// platform when it is made; make one for each run of work and keep none.
//
// On double-byte code pages the bytes that only begin a character stand for themselves (U+0081 is byte 81),
// so that a file read byte by byte is written back unchanged.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/types.h"

namespace ovno2 {

class ByteTable {
  public:
    ByteTable();
    ByteTable(const ByteTable&) = delete;
    ByteTable& operator=(const ByteTable&) = delete;

    char16_t character(std::uint8_t byte) const { return characters_[byte]; }

    // The byte that `character` stands for, -1 when it stands for none. Best fits do not count.
    Long code(char16_t character) const {
        if (character < codeCount && characters_[character] == character) return character;
        return otherCode(character);
    }

    // Appends one character for each byte. Reserve the room for a long text beforehand.
    void append(Text& text, const std::uint8_t* bytes, std::size_t count) const;

    // One byte for each character: its code, or that of its best fit or of "?"; 0 for a character of two
    // bytes.
    std::string codesOf(TextView text) const;

    // The bytes of a text that is written out: a byte string gives its bytes, any other text is put into the
    // code page.
    std::string bytesOf(TextView text) const;

  private:
    static constexpr std::size_t codeCount = 256;
    static constexpr char16_t firstPageCode = 0x80;  // below, code and character are the same on every page
    static constexpr std::size_t slotCount = 256;    // twice the characters to be found

    static std::size_t slotOf(char16_t character) { return (character ^ character >> 8) % slotCount; }
    Long otherCode(char16_t character) const;
    void buildSlots() const;

    const char16_t* characters_;  // the platform's table, or the one below
    std::array<char16_t, codeCount> ownCharacters_;
    bool singleByte_;
    // From the upper 128 characters back to their codes: open addressing, filled when first asked.
    mutable bool slotsBuilt_ = false;
    mutable std::array<char16_t, slotCount> slots_;  // 0 = free
    mutable std::array<std::uint8_t, slotCount> codes_;
};

}  // namespace ovno2
