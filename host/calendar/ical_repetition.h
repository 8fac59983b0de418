// A file's rule as this computer's: it may be written by another clock.
#pragma once

#include <string>

#include "host/calendar/ical_zone.h"
#include "host/calendar/recurrence.h"

namespace ovno2::host {

struct FileRule {
    std::string_view text;
    bool isOldForm = false;
    Moment start;       // as the file has it
    Moment localStart;  // the same here
    std::shared_ptr<const FileZone> zone = {};
};

// Gives the entry the rule in the short style, or as it is where no phone can hold it. Says why it cannot;
// empty = it can.
std::string takeRule(const FileRule& rule, CalendarEntry& entry);

}  // namespace ovno2::host
