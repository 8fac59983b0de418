// What a contact says, whichever rows say it: for finding a file's contact on the phone, and for seeing
// whether what was written has arrived.
#pragma once

#include <utility>
#include <vector>

#include "host/contacts/contact_draft.h"

namespace ovno2::host {

// Families of rows with a value each, as a phone gives it back; sorted, each once. A picture is known by a
// number made of its bytes.
using ContactContent = std::vector<std::pair<std::size_t, Text>>;

// Without the values that no phone takes (row "other").
ContactContent contentOf(const ContactDraft& contact);

// The rows of `wanted` that `there` lacks; by family.
ContactContent lacking(const ContactContent& wanted, const ContactContent& there);
inline bool holdsAll(const ContactContent& there, const ContactContent& wanted) {
    return lacking(wanted, there).empty();
}
// Whether one person cannot have both: another birthday, company and the like.
bool contradict(const ContactContent& a, const ContactContent& b);
// A number or an address for mail that both have.
bool shareNumber(const ContactContent& a, const ContactContent& b);

// The labels of rows, each once: "Mobile, Note". UTF-8.
std::string labelsOf(const ContactContent& content);

Text nameOf(const ContactDraft& contact);
// What messages call it, UTF-8: its name, else the first that it holds.
std::string titleOf(const ContactDraft& contact);

}  // namespace ovno2::host
