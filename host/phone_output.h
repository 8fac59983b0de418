// The listed phones as JSON for programs and as a table for people.
#pragma once

#include <span>
#include <string>

#include "host/driver.h"
#include "host/table.h"

namespace ovno2::host {

// An array with one object a connection, one a line.
std::string phonesAsJson(std::span<const ListedPhone> phones);

Table phonesAsTable(std::span<const ListedPhone> phones);

}  // namespace ovno2::host
