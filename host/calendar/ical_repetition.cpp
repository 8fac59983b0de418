#include "host/calendar/ical_repetition.h"

namespace ovno2::host {

using namespace std::chrono;

namespace {

std::string read(const FileRule& rule, const Moment& start, const Clock& clock, Repetition& repetition) {
    return rule.isOldForm ? readOldRule(rule.text, start, clock, repetition)
                          : readRecurrenceRule(rule.text, start, clock, repetition);
}

// How the dates of two rules go together, over the years in which people plan.
struct Comparison {
    bool sameDays = true, sameTimes = true;
};

Comparison compare(const Repetition& there, const Repetition& here, const FileRule& rule,
                   const FileZone& zone) {
    constexpr std::size_t most = 400;
    constexpr local_days horizon(year(2100) / January / 1);  // up to which zones are known
    const auto datesOf = [&](const Repetition& repetition, local_days start) {
        std::vector<local_days> dates;
        visitDates(repetition, start, start, [&](local_days date) {
            dates.push_back(date);
            return dates.size() < most;
        });
        return dates;
    };
    const std::vector<local_days> theirs = datesOf(there, rule.start.day);
    const std::vector<local_days> ours = datesOf(here, rule.localStart.day);
    Comparison result{.sameDays = theirs.size() == ours.size()};
    for (std::size_t i = 0; i < theirs.size() && result.sameDays && theirs[i] < horizon; ++i) {
        Moment moment = rule.start;
        moment.day = theirs[i];
        const Moment local = localMoment(moment, &zone);
        result.sameDays = local.day == ours[i];
        result.sameTimes = result.sameTimes && local.clock == rule.localStart.clock;
    }
    return result;
}

}  // namespace

Text localRule(const FileRule& rule, std::vector<std::string>& said) {
    Repetition here;
    const auto answer = [&](const std::string& why) {
        if (!why.empty()) said.push_back(why);
        return why.empty() ? shortRule(here, rule.localStart) : Text();
    };
    // Phones write UTC and mean their own clock.
    const bool isUtc = rule.start.isUtc && !rule.isOldForm;
    if (rule.start.isDay || (!rule.zone && !isUtc) || (rule.isOldForm && rule.start.isUtc))
        return answer(read(rule, rule.localStart, localHere, here));
    if (!isUtc && rule.zone->isOwnSince(rule.zone->utcOf(rule.start.time())))
        return answer(read(rule, rule.localStart, localHere, here));
    static const FileZone utc;
    const FileZone& zone = isUtc ? utc : *rule.zone;
    Moment start = rule.start;
    start.isUtc = false;
    Repetition there;
    const Clock clock = [&](sys_seconds time) { return zone.localOf(time); };
    if (const std::string why = read(rule, start, clock, there); !why.empty()) return answer(why);
    here = there;
    const Moment first = rule.localStart;
    const days shift = first.day - start.day;
    if (here.kind == Repetition::Kind::weekly && shift != days(0))
        here.weekdays = shift > days(0) ? (here.weekdays << 1 | here.weekdays >> 6) & 0x7F
                                        : (here.weekdays >> 1 | here.weekdays << 6) & 0x7F;
    if (here.last) *here.last += shift;
    const Comparison result =
        compare(there, here, {.text = rule.text, .start = start, .localStart = first}, zone);
    if (!result.sameDays) return answer("it repeats by another clock, on other days here");
    if (!result.sameTimes)
        said.push_back("it repeats by another clock; some of its dates are at another time of day here");
    return answer({});
}

}  // namespace ovno2::host
