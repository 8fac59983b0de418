// Address cards (vCard 2.1, 3.0 and 4.0) as contacts.
//
// docs/contacts.md, "Cards", says which property goes to which row. A card is read as far as it goes: what it
// has and no row can hold is named in the contact's `unplaced`, as "NAME: why". Nothing throws, whatever the
// bytes are.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/contacts/contact_draft.h"

namespace ovno2::host {

struct CardFile {
    std::vector<ContactDraft> contacts;  // in the file's order
    std::vector<std::size_t> lines;      // where in the file each begins, from 1
    // What could not be read at all, as "FILE:LINE: what", for people. UTF-8.
    std::vector<std::string> problems;
};

// `file` is the name that problems call it by. `charset` is that of values which name none (see charset.h);
// empty = UTF-8, or Windows-1252 where they are not.
CardFile readCards(std::string_view bytes, std::string_view file, std::string_view charset = {});

}  // namespace ovno2::host
