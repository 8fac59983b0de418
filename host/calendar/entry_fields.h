// The fields of a calendar entry as a person writes them on a command line: "start=2008-07-14 10:00".
#pragma once

#include "host/calendar/calendar_entry.h"

namespace ovno2::host {

// The names of the fields, for help and messages.
std::string entryFieldNames();

struct FieldRules {
    bool isNew = false;
    bool keepsWideRule = false;  // a rule that no phone can hold becomes the entry's wideRule
};

// Gives an entry fields in the order in which they stand; without type= a new one becomes what its dates say.
// An entry whose start is moved keeps its length, and its alarm the time before it. `calendars` are the names
// that the phone has. Throws CommandFailure for a word that is no field, or a value that is none of it.
void assignFields(CalendarEntry& entry, const std::vector<std::string>& words,
                  const std::vector<Text>& calendars, const FieldRules& rules);

// The day that an option names. Throws CommandFailure.
std::chrono::local_days dayFrom(const char* option, const std::string& text);

}  // namespace ovno2::host
