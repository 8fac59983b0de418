// Which of a phone's contacts a file's contact is, and what both together are.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/contacts/contact_content.h"

namespace ovno2::host {

struct ContactMatch {
    std::size_t contact;   // of the phone's
    bool isByUid = false;  // an earlier export says so, and name or number agree
};

// One entry a card: the contact of the phone that it is, none for a new one. A contact is the card's when
// their uids are equal and a name or number agrees; else when it holds all that the card says under the same
// name; else when it has the same name and nothing that contradicts, a common number
// first. Two cards get one contact only when it
// holds all that both say.
std::vector<std::optional<ContactMatch>> matchContacts(std::span<const ContactDraft> cards,
                                                       std::span<const ContactDraft> contacts);

// The phone's contact with what the card adds. What only the phone has stays. Where a person has one value
// (a name, a birthday, a company), a card that was matched by its uid replaces the phone's; any other value
// goes beside those that are there. `kept` gets what the card has and the phone's contact does not take, as
// "PICTURE: why".
ContactDraft merged(const ContactDraft& contact, const ContactDraft& card, bool isByUid,
                    std::vector<std::string>& kept);

}  // namespace ovno2::host
