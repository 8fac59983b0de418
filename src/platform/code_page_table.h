// One ANSI code page as tables both ways, whatever the platform took it from.
//
// Filled once and then only read, so that several threads may use it. 64 K entries from characters to codes
// make a conversion one look-up a character.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "base/types.h"

namespace ovno2::platform {

class CodePageTable {
  public:
    // A page whose codes are the characters of the same number, and that holds nothing else.
    CodePageTable();

    // A code of one byte (0 to 255), or of two (the lead byte above the second byte).
    void define(std::uint16_t code, char16_t character);
    // Codes `lead` << 8 | second byte are read as pairs.
    void defineLeadByte(std::uint8_t lead);
    // The code that stands for a character, where it is not the first that was defined for it.
    void encodeAs(char16_t character, std::uint16_t code) { codes_[character] = code; }
    // Gives characters that no code stands for the plain letter or sign closest to them.
    void addBestFits();

    bool isDoubleByte() const { return !pairs_.empty(); }
    const char16_t* singleBytes() const { return singles_.data(); }
    bool holds(char16_t character) const { return codes_[character] != noCode; }

    Text fromAnsi(std::string_view bytes) const;
    std::string toAnsi(TextView text) const;

  private:
    static constexpr std::uint16_t noCode =
        '?';  // what an unknown character becomes; "?" itself needs no other

    std::array<char16_t, 256> singles_;
    std::array<bool, 256> leads_{};
    std::vector<char16_t> pairs_;  // by code; empty on single-byte pages; 0 = undefined
    std::vector<std::uint16_t> codes_;
};

}  // namespace ovno2::platform
