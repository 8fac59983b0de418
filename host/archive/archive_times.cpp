#include "host/archive/archive_times.h"

#include "host/calendar/recurrence_dates.h"

namespace ovno2::host {

using namespace std::chrono;

std::string utcText(sys_seconds time) {
    return toUtf8(isoText(momentAt(local_seconds(time.time_since_epoch())))) + "Z";
}

std::optional<sys_seconds> utcTime(const std::string& text) {
    const std::optional<Moment> moment = readMoment(std::string_view(text));
    if (!moment || !moment->isUtc) return std::nullopt;
    return sys_seconds(moment->time().time_since_epoch());
}

}  // namespace ovno2::host
