// Dates of the host as dates of the phone's records, so that they read back as the same local time.
//
// A time goes to the phone in UTC; a day without a time of day goes as it is, since the same day in UTC would
// be the day before, east of Greenwich. No state.
#pragma once

#include <optional>

#include "dates/date_value.h"
#include "library/library_records.h"

namespace ovno2::Calendar {

// The date of a host's text, in the user's form or as ISO text; none when it is neither, nor a time alone.
std::optional<DateValue> dateIn(const Text& text);

bool hasTime(DateValue date);

// Fills `record` with a local date and time. It reads back as the same in every zone, summer and winter, when
// it is read with its time in `readMode`.
void storeTime(DateValue local, library::DateRecord& record, Long readMode);
// Fills `record` with a day; its time of day is kept in the record, but never shifted.
void storeDay(DateValue local, library::DateRecord& record);

}  // namespace ovno2::Calendar
