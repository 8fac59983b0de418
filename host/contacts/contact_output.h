// Contacts as JSON for programs and as a table for people.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "host/driver/driver.h"
#include "host/output/table.h"

namespace ovno2::host {

// An array with one object a contact, one a line; `write` gets it piece by piece. The keys are those of the
// field table in its order, then "location" and "uid"; empty values are left out; "categories" and "other"
// are arrays of texts. With `pictures` false the paths of the pictures are left out. Always valid UTF-8.
void writeContactsAsJson(std::span<const Contact> contacts, bool pictures,
                         const std::function<void(std::string_view)>& write);

// One row a contact: the name, then every field that any of the contacts has. A contact without a name is
// called by what it has instead: its formal name, nickname or company.
Table contactsAsTable(std::span<const Contact> contacts, bool pictures);

}  // namespace ovno2::host
