// Messages and notes as a phone keeps them. Immutable once they are in a store.
#pragma once

#include <optional>
#include <vector>

#include "simulator/world/content_item.h"

namespace ovno2::simulator {

inline constexpr std::size_t mostMessageAddresses = 255;

struct Message : ItemBase<Message> {
    // The data formats, the low four bits of `info`.
    static constexpr Word formatBits = 15;
    static constexpr Word textFormat = 1;
    static constexpr Word bytesFormat = 2;
    static constexpr Word usualAddressInfo = 2;

    struct Address {
        Word info = usualAddressInfo;
        std::optional<std::u16string> text;
    };

    Word format() const { return info & formatBits; }

    Word info = textFormat;
    std::string data;  // the bytes of a text in UTF-16, or just bytes
    std::vector<Address> addresses;
    library::DateRecord date{};
};

struct Note : ItemBase<Note> {
    std::optional<std::u16string> text;
};

}  // namespace ovno2::simulator
