#include "host/calendar/calendar_entry.h"

namespace ovno2::host {

void moveBegin(CalendarEntry& entry, Text CalendarEntry::*begin, const Moment& to) {
    const std::optional<Moment> from = readMoment(TextView(entry.*begin));
    entry.*begin = isoText(to);
    if (!from) return;
    for (Text* const iso : {&entry.end, &entry.alarm})
        if (const std::optional<Moment> moment = readMoment(TextView(*iso))) {
            Moment moved = momentAt(moment->time() + (to.time() - from->time()));
            moved.isDay = moment->isDay;
            *iso = isoText(moved);
        }
}

}  // namespace ovno2::host
