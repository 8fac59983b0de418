#include "host/calendar/single_entries.h"

#include <algorithm>
#include <set>

#include "host/calendar/ical_zone.h"
#include "host/calendar/recurrence_general.h"

namespace ovno2::host {

using namespace std::chrono;

namespace {

// The clock that the rule is written by.
Clock clockOf(const WideRule& rule) {
    if (rule.start.isUtc) return [](sys_seconds time) { return local_seconds(time.time_since_epoch()); };
    if (rule.zone) return [&rule](sys_seconds time) { return rule.zone->localOf(time); };
    return localHere;
}

bool isAbout(const std::string& unplaced, std::string_view property) {
    return unplaced.starts_with(property);
}

class Exceptions {
  public:
    explicit Exceptions(const WideRule& rule) {
        for (const Moment& one : rule.exceptions)
            if (one.isDay || rule.start.isDay)
                days_.insert(one.day);
            else
                times_.insert(one.time());
    }
    bool hold(const Moment& date) const { return days_.contains(date.day) || times_.contains(date.time()); }

  private:
    std::set<local_days> days_;
    std::set<local_seconds> times_;
};

}  // namespace

SingleEntries singleEntries(const CalendarEntry& entry, local_days until) {
    SingleEntries result;
    const WideRule& wide = *entry.wideRule;
    const auto refuse = [&](std::string why) {
        result.entries.clear();
        result.problem = std::move(why);
        return result;
    };
    for (const std::string& one : entry.unplaced)
        if (isAbout(one, "RDATE") || isAbout(one, "EXRULE"))
            return refuse("it repeats by " + one + ", too, which is not understood");
    Moment start = wide.start;
    start.isUtc = false;
    GeneralRule rule;
    const Clock clock = clockOf(wide);
    if (const std::string why = wide.isOldForm ? readGeneralOldRule(wide.text, start, clock, rule)
                                               : readGeneralRule(wide.text, start, clock, rule);
        !why.empty())
        return refuse(why);

    CalendarEntry single = entry;
    single.wideRule.reset();
    single.rule.clear();
    single.exceptions.clear();
    std::erase_if(single.unplaced, [](const std::string& one) { return isAbout(one, "RRULE"); });
    const auto begin = entry.kind == CalendarEntry::Kind::toDo ? &CalendarEntry::due : &CalendarEntry::start;
    const Exceptions exceptions(wide);
    const std::string untilText = toUtf8(isoText({.day = until}));
    // Another clock may be a day ahead; what is left out does not count.
    const GeneralDates found =
        datesOf(rule, start, until + days(1), mostSingleEntries + 1 + wide.exceptions.size());
    result.isWhole = found.isWhole;
    for (Moment date : found.dates) {
        date.isUtc = wide.start.isUtc;
        date = localMoment(date, wide.zone.get());
        if (date.day > until) {
            result.isWhole = false;
            break;
        }
        if (exceptions.hold(date)) continue;
        if (result.entries.size() == mostSingleEntries)
            return refuse("it has more than " + std::to_string(mostSingleEntries) + " dates up to " +
                          untilText + ", the last of these on " +
                          toUtf8(beginOf(result.entries.back()).substr(0, untilText.size())));
        result.entries.push_back(single);
        moveBegin(result.entries.back(), begin, date);
        single.uid.clear();
        single.unplaced.clear();
    }
    if (result.entries.empty()) return refuse("it has no date up to " + untilText);
    return result;
}

WideRule wideRuleOf(const CalendarEntry& entry) {
    WideRule rule{.text = toUtf8(entry.rule), .isOldForm = true};
    if (const std::optional<Moment> start = readMoment(TextView(beginOf(entry)))) rule.start = *start;
    for (const Text& day : entry.exceptions)
        if (const std::optional<Moment> moment = readMoment(TextView(day)))
            rule.exceptions.push_back(*moment);
    return rule;
}

std::string described(const SingleEntries& singles, local_days until) {
    const std::size_t count = singles.entries.size();
    return std::to_string(count) + (count == 1 ? " single entry" : " single entries") +
           (singles.isWhole ? "" : " up to " + toUtf8(isoText({.day = until})));
}

}  // namespace ovno2::host
