// Contacts as address cards. What is written reads back as the same contact (vcard_reader.h), apart from
// `unplaced` and from lines inside a value that end in several ways.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/contacts/contact_draft.h"

namespace ovno2::host {

enum class CardVersion {
    v21,  // what old phones take
    v30,  // what nearly every program takes
    v40,
};

// "2.1", "3.0" or "4.0".
std::optional<CardVersion> cardVersion(std::string_view number);

// One card, UTF-8, lines ending in CR LF.
std::string writeCard(const ContactDraft& contact, CardVersion version = CardVersion::v30);

}  // namespace ovno2::host
