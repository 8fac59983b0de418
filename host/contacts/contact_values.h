// One contact's values for people: decoded, one a row of the field table.
#pragma once

#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

// Several values of a row are joined by "; "; pictures are the files that were kept.
std::vector<Text> valuesOf(const Contact& contact);

// First and last name; without them the formal name, nickname or company; empty without any.
Text nameOf(const std::vector<Text>& values);
Text nameOf(const Contact& contact);

// What messages call it: its name, else its number or its place on the phone; UTF-8.
std::string titleOf(const Contact& contact);

// By name as people look names up: letter case and accents do not count, contacts without a name come last.
void sortByName(std::vector<Contact>& contacts);

}  // namespace ovno2::host
