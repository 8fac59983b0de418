// One VEVENT or VTODO of a calendar file as an entry.
#pragma once

#include <map>
#include <string>

#include "host/calendar/calendar_entry.h"
#include "host/calendar/ical_zone.h"

namespace ovno2::host {

// What an entry's file says about all of its entries.
struct FileClocks {
    std::map<std::string, FileZone, std::less<>> zones;  // by TZID
    FileZone oldZone;                                    // of vCalendar 1.0
};

struct FileEntry {
    CalendarEntry entry;
    std::string problem;  // why there is no entry; empty = there is one
    Text instead;         // the date of the series that this entry stands for; empty = none
};

FileEntry readFileEntry(const FileComponent& component, const FileClocks& clocks);

}  // namespace ovno2::host
