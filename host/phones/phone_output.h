// The listed phones as JSON for programs and as a table for people.
#pragma once

#include <span>
#include <string>

#include "host/driver/driver.h"
#include "host/output/json.h"
#include "host/output/table.h"

namespace ovno2::host {

// The members of a connection's object; what a phone does not tell is left out.
void writePhone(JsonLine& line, const ListedPhone& phone);

// An array with one object a connection, one a line; what a phone does not tell is left out.
std::string phonesAsJson(std::span<const ListedPhone> phones);

Table phonesAsTable(std::span<const ListedPhone> phones);

// Writes them.
void showPhones(std::span<const ListedPhone> phones, bool asJson);

}  // namespace ovno2::host
