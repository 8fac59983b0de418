// Calendar files, iCalendar 2.0 and vCalendar 1.0, as entries.
//
// docs/calendar-files.md says which property goes where. An entry is read as far as it goes: what it has and
// no entry here can hold is named in its `unplaced`: the property's name, with its reason behind ": ". Times
// come out as clocks on this computer show them. Nothing throws, whatever the bytes are.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/calendar/calendar_entry.h"

namespace ovno2::host {

struct CalendarFile {
    std::vector<CalendarEntry> entries;  // in the file's order
    std::vector<std::size_t> lines;      // where in the file each begins, from 1
    Text name;                           // what the file calls its calendar; empty = nothing
    // What could not be read at all, as "FILE:LINE: what", for people. UTF-8.
    std::vector<std::string> problems;
};

// `file` is the name that problems call it by. `charset` is that of values which name none (see charset.h);
// empty = UTF-8, or Windows-1252 where they are not.
CalendarFile readCalendarFile(std::string_view bytes, std::string_view file, std::string_view charset = {});

}  // namespace ovno2::host
