// The names by which people call the rows of the field table: on the command line and as headings of tables.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/output/text.h"

namespace ovno2::host {

// The row of a key or a label: "homePhone", "Home phone", "home-phone"; also what other programs call it.
// None for a name that is no row's.
std::optional<std::size_t> rowNamed(std::string_view name);

// The names near to one that is no row's, at most `count`.
std::vector<Text> fieldNamesNear(std::string_view name, std::size_t count);

// All keys, for a help text: lines of at most `width`, each with `indent` blanks in front.
std::string listOfFields(std::size_t width, std::size_t indent);

}  // namespace ovno2::host
