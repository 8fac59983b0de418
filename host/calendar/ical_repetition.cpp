#include "host/calendar/ical_repetition.h"

namespace ovno2::host {

using namespace std::chrono;

namespace {

std::string read(const FileRule& rule, const Moment& start, const Clock& clock, Repetition& repetition) {
    return rule.isOldForm ? readOldRule(rule.text, start, clock, repetition)
                          : readRecurrenceRule(rule.text, start, clock, repetition);
}

// Whether both are the same dates and times here, over the years in which people plan; empty = they are.
std::string compared(const Repetition& there, const Repetition& here, const Moment& start,
                     const Moment& localStart, const FileZone& zone) {
    constexpr std::size_t most = 400;
    constexpr local_days horizon(year(2100) / January / 1);  // up to which zones are known
    const auto datesOf = [&](const Repetition& repetition, local_days first) {
        std::vector<local_days> dates;
        visitDates(repetition, first, first, [&](local_days date) {
            dates.push_back(date);
            return dates.size() < most;
        });
        return dates;
    };
    const std::vector<local_days> theirs = datesOf(there, start.day);
    const std::vector<local_days> ours = datesOf(here, localStart.day);
    const char* const otherDays = "it repeats by another clock, on other days here";
    if (theirs.size() != ours.size()) return otherDays;
    bool sameTimes = true;
    for (std::size_t i = 0; i < theirs.size() && theirs[i] < horizon; ++i) {
        Moment moment = start;
        moment.day = theirs[i];
        const Moment local = localMoment(moment, &zone);
        if (local.day != ours[i]) return otherDays;
        sameTimes = sameTimes && local.clock == localStart.clock;
    }
    return sameTimes ? "" : "it repeats by another clock; some of its dates are at another time of day here";
}

// A rule by another clock; `repetition` is what it is here.
std::string readThere(const FileRule& rule, const FileZone& zone, Repetition& repetition) {
    Moment start = rule.start;
    start.isUtc = false;
    Repetition there;
    const Clock clock = [&](sys_seconds time) { return zone.localOf(time); };
    if (std::string why = read(rule, start, clock, there); !why.empty()) return why;
    repetition = there;
    const days shift = rule.localStart.day - start.day;
    if (there.kind == Repetition::Kind::weekly && shift != days(0))
        repetition.weekdays = shift > days(0) ? (there.weekdays << 1 | there.weekdays >> 6) & 0x7F
                                              : (there.weekdays >> 1 | there.weekdays << 6) & 0x7F;
    if (repetition.last) *repetition.last += shift;
    return compared(there, repetition, start, rule.localStart, zone);
}

}  // namespace

std::string takeRule(const FileRule& rule, CalendarEntry& entry) {
    // Phones write UTC and mean their own clock.
    const bool isUtc = rule.start.isUtc && !rule.isOldForm;
    const bool isHere = rule.start.isDay || (!rule.zone && !isUtc) || (rule.isOldForm && rule.start.isUtc) ||
                        (!isUtc && rule.zone->isOwnSince(rule.zone->utcOf(rule.start.time())));
    static const FileZone utc;
    Repetition repetition;
    std::string why = isHere ? read(rule, rule.localStart, localHere, repetition)
                             : readThere(rule, isUtc ? utc : *rule.zone, repetition);
    if (why.empty())
        entry.rule = shortRule(repetition, rule.localStart);
    else
        entry.wideRule = {.text = std::string(rule.text),
                          .isOldForm = rule.isOldForm,
                          .start = isHere ? rule.localStart : rule.start,
                          .zone = isHere || isUtc ? nullptr : rule.zone};
    return why;
}

}  // namespace ovno2::host
