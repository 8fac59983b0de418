// A file's rule as this computer's: it may be written by another clock.
#pragma once

#include <string>
#include <vector>

#include "host/calendar/ical_zone.h"
#include "host/calendar/recurrence.h"

namespace ovno2::host {

struct FileRule {
    std::string_view text;
    bool isOldForm = false;
    Moment start;       // as the file has it
    Moment localStart;  // the same here
    const FileZone* zone = nullptr;
};

// The rule in the short style; empty when it cannot be held. `said` gets the reason, or what is not quite so.
Text localRule(const FileRule& rule, std::vector<std::string>& said);

}  // namespace ovno2::host
