// The simulated phone that --demo attaches.
#pragma once

#include <filesystem>

namespace ovno2::host {

// The bundled simulator's libraries and phones, beside this program. Throws CommandFailure when it is not
// installed.
std::filesystem::path simulatorFolder();

// A folder of phone images with the user's own copy of the demo phone: what is changed on it stays. The copy
// is made when there is none, and the user is told where it is; it appears whole or not at all, however many
// programs make it. Throws CommandFailure or std::filesystem::filesystem_error.
std::filesystem::path demoPhones();

}  // namespace ovno2::host
