// Dates and times as the images write them. No state.
#pragma once

#include <string>
#include <string_view>

#include "library/library_records.h"

namespace ovno2::simulator {

// Whether a phone can mean it: a day of its month, a time of the day. Year, month and day may be 0, as of a
// birthday without a year.
bool isDate(const library::DateRecord& record);

// "YYYY-MM-DD" or "YYYY-MM-DDThh:mm:ss" into the record's date and time; false when it is neither,
// or no such day.
bool parseDate(std::string_view text, library::DateRecord& record);
std::string dateText(const library::DateRecord& record);

// The same with both of the record's offsets in minutes behind it unless they are 0:
// "2008-07-19T14:30:00+60+60".
bool parseDateWithOffsets(std::string_view text, library::DateRecord& record);
std::string dateTextWithOffsets(const library::DateRecord& record);

}  // namespace ovno2::simulator
