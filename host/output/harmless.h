// What is written for a person: whatever a text holds, it moves no cursor, rings no bell and changes no
// setting of the terminal.
//
// Everything that the commands write goes through here (see command_output.h). Names of phones, contacts and
// files also pass singleLine (display_width.h), since a line's end in them cannot be told from the writer's
// own here. JSON is left as it is: its control characters are escaped. Texts are UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace ovno2::host {

// Whether there is no control character in it but line ends, tabs and what terminals pass over (U+007F).
bool isHarmless(std::string_view text);

// Each other control character becomes its visible picture, or the replacement character.
std::string harmless(std::string_view text);

}  // namespace ovno2::host
