// Reading what a caller's records point to: every address is checked before it is followed. No state of its
// own.
#pragma once

#include <optional>
#include <string>

#include "simulator/calls/serve.h"

namespace ovno2::simulator {

// Copies bytes from an address that a caller gave; false when they cannot be read or belong to nobody.
bool copyFrom(const World& world, Address from, std::size_t bytes, void* to);

// What is read for one CAWriteItem; a bad address refuses the call and counts as misuse.
class CallerMemory {
  public:
    explicit CallerMemory(World& forWorld) : world(forWorld) {}

    [[noreturn]] void fail(const char* what, Address address) const;

    // Copies a record that the caller's item points to, which must not have been given back.
    void take(Address from, std::size_t bytes, void* to) const;

    // A text up to its end; nothing for the address 0.
    std::optional<std::u16string> readText(Address from) const;

    // The reserved word, group, field id and value of a data item of this size.
    struct Words {
        Word reserved, group, fieldId, value;
    };
    Words readDataItem(Address from, std::size_t itemBytes) const;

    // A day and time that there are.
    library::DateRecord readDate(Address from) const;

  private:
    World& world;
};

// Refuses a date that no phone could mean.
void requireDate(const library::DateRecord& date);

}  // namespace ovno2::simulator
