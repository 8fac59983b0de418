// One contact as a phone keeps it: fields in the order the phone delivers them, and all its texts in one
// piece.
//
// The form is compact and close to the library's record, so that reading a contact is one allocation, one
// copy of the texts and a short loop over the fields. Immutable once it is in a store.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/world/content_item.h"

namespace ovno2::simulator {

inline constexpr std::size_t pairCount = 4;  // a to d
inline constexpr std::size_t mostItemsPerPair = 255;

struct Contact : ItemBase<Contact> {
    enum class Kind : std::uint8_t { text, number, date, picture, address };

    // A text of the pool; `none` for a null pointer.
    using TextPlace = std::uint32_t;  // index of its first unit in `texts`
    static constexpr TextPlace none = 0xFFFFFFFF;

    struct Field {
        std::uint16_t id = 0;
        std::uint8_t pair = 0;  // 0 to 3
        Kind kind = Kind::text;
        Word group = 0;
        Word reserved = 0;
        Word value = 0;  // text: TextPlace; number: itself; others: index into dates, pictures or addresses
    };
    struct Date {
        library::DateRecord record;  // the size is the phone's, not the date's
    };
    struct Picture {
        TextPlace format = none;
        std::filesystem::path file;  // inside the image; empty when the bytes are here
        std::string bytes;
    };
    using AddressWords = std::vector<TextPlace>;  // entry i is word i + 1

    std::vector<Field> fields;                  // sorted by pair, the phone's order within each
    std::array<Word, pairCount> fieldCounts{};  // of each pair
    std::u16string texts;                       // every text with its terminator
    std::vector<Date> dates;
    std::vector<Picture> pictures;
    std::vector<AddressWords> addresses;

    TextPlace addText(std::u16string_view text);
    std::u16string_view textAt(TextPlace place) const { return texts.c_str() + place; }

    // Takes the fields, pair by pair; false when a pair holds more than mostItemsPerPair.
    bool arrange(const std::vector<Field>& unsorted);
};

// The pair (and, plus 1, the group) that a field id belongs to by default.
std::uint8_t defaultPair(Word fieldId);

}  // namespace ovno2::simulator
