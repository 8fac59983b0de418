// One VEVENT or VTODO of a calendar file as an entry.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "host/calendar/calendar_entry.h"
#include "host/calendar/ical_zone.h"

namespace ovno2::host {

// What an entry's file says about all of its entries.
struct FileClocks {
    std::map<std::string, std::shared_ptr<const FileZone>, std::less<>> zones;  // by TZID
    std::shared_ptr<const FileZone> oldZone;  // of vCalendar 1.0; null = none
};

struct FileEntry {
    CalendarEntry entry;
    std::string problem;            // why there is no entry; empty = there is one
    std::optional<Moment> instead;  // the date of the series that this entry stands for, by clocks here
};

FileEntry readFileEntry(const FileComponent& component, const FileClocks& clocks);

}  // namespace ovno2::host
