// Contacts as a table of comma-separated values: one line a contact, one column a value.
//
// docs/contacts.md, "Tables", says how columns are headed. Pictures have no place in a table.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "host/contacts/contact_draft.h"

namespace ovno2::host {

struct CsvContacts {
    std::vector<ContactDraft> contacts;
    std::vector<std::string> problems;  // what could not be read, as "FILE:LINE: what"; UTF-8
};

// `file` is the name that problems call it by. What stands under a heading that is no field's goes to the
// contact's `unplaced`.
CsvContacts readCsvContacts(std::string_view bytes, std::string_view file);

// UTF-8 with a mark, which spreadsheets want.
std::string writeCsvContacts(std::span<const ContactDraft> contacts);

}  // namespace ovno2::host
