// How many terminal cells a text takes, and how a text is made safe to show in one line of a terminal.
//
// No state. The table and the progress bar call it. Texts are UTF-16.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/output/text.h"

namespace ovno2::host {

// Cells of one character: 0 for combining marks and format characters, 2 for East Asian wide ones, else 1.
std::size_t displayWidth(char32_t character);

std::size_t displayWidth(TextView text);

// What a cell of a table may hold: line breaks and tabs become blanks, other control characters their visible
// pictures, and characters that change the direction of what follows them are taken out.
Text singleLine(TextView text);

// The same of a UTF-8 text: a name or a path in a message.
std::string forPerson(std::string_view utf8);

// The longest beginning of `text` that takes at most `width` cells; a text that does not fit ends in an
// ellipsis. Characters and the marks on them stay together.
Text cutToWidth(TextView text, std::size_t width);

}  // namespace ovno2::host
