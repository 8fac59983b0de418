// Entries of a phone as tables and trees for people and as JSON for programs.
#pragma once

#include <span>
#include <string>

#include "host/files/phone_files.h"
#include "host/output/json.h"
#include "host/output/table.h"

namespace ovno2::host {

// The members of an entry's object.
void writeEntry(JsonLine& line, const PhoneEntry& entry);

// An array with one object an entry, one a line. Times are UTC.
std::string entriesAsJson(std::span<const PhoneEntry> entries);

// One row an entry. `namedFrom` is the folder whose path is left out of the names; with `wholePaths` none is.
Table entriesAsTable(std::span<const PhoneEntry> entries, const Text& namedFrom, bool wholePaths);

// The tree below an entry, drawn with lines, and a line that counts it.
std::string treeAsText(const PhoneFiles& phone, const PhoneEntry& top);
// The same as one object with "entries" in every folder.
std::string treeAsJson(const PhoneFiles& phone, const PhoneEntry& top);

}  // namespace ovno2::host
