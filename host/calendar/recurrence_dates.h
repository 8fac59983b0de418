// Dates and times of calendar entries: ISO 8601 texts, extended ("2008-01-05T10:00:00") as entries have them,
// basic ("20080105T100000Z") as files do, and the values between.
//
// Nothing here fails: what is no date in the years 1 to 9999 is none.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "host/output/text.h"

namespace ovno2::host {

// A day, or a time of day on it, by some clock.
struct Moment {
    std::chrono::local_days day;
    std::chrono::seconds clock{0};  // since midnight
    bool isDay = true;              // without a time
    bool isUtc = false;             // "Z" follows

    std::chrono::local_seconds time() const { return day + clock; }
    bool operator==(const Moment&) const = default;
};

// A time that is not UTC's.
Moment momentAt(std::chrono::local_seconds time);

// Either form; seconds may be missing.
std::optional<Moment> readMoment(std::string_view text);
std::optional<Moment> readMoment(TextView text);

Text isoText(const Moment& moment);           // empty outside the years
std::string basicText(const Moment& moment);  // with its "Z"

// What a clock shows at a time of UTC.
using Clock = std::function<std::chrono::local_seconds(std::chrono::sys_seconds)>;

// By `clock` where the moment is UTC's; another comes back as it is.
Moment shownBy(const Clock& clock, const Moment& moment);

}  // namespace ovno2::host
