// Phones that a Bluetooth search finds, and which of them the user means.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/driver/driver.h"
#include "host/output/table.h"

namespace ovno2::host {

// What is typed for an address, as the library writes it: upper-case digits divided by ":". Twelve
// hexadecimal digits are one, alone or in pairs divided by ":" or "-"; anything else is a name.
std::optional<Text> bluetoothAddress(TextView typed);

// Searches; tells how long it takes on the way. Throws CommandFailure.
std::vector<FoundPhone> searchPhones(PhoneDriver& driver);

// The phone whose name is `wanted`, else whose name contains it; letter case does not matter. Throws
// CommandFailure when there is none or several.
const FoundPhone& chosenOf(std::span<const FoundPhone> found, TextView wanted);

// "Omas 3110 (02:00:00:31:10:0B)", or the address alone. UTF-8, safe to show.
std::string titleOf(const FoundPhone& phone);

void showFound(std::span<const FoundPhone> found, bool asJson);

}  // namespace ovno2::host
