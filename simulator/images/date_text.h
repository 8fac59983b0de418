// Dates and times as the images write them. No state.
#pragma once

#include <string>
#include <string_view>

#include "library/library_records.h"

namespace ovno2::simulator {

// "YYYY-MM-DD" or "YYYY-MM-DDThh:mm:ss" into the record's date and time; false when it is neither.
bool parseDate(std::string_view text, library::DateRecord& record);
std::string dateText(const library::DateRecord& record);

}  // namespace ovno2::simulator
