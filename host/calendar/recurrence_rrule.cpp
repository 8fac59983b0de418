#include <algorithm>
#include <map>

#include "host/calendar/recurrence.h"
#include "host/calendar/recurrence_names.h"

namespace ovno2::host {

using namespace std::chrono;
using Kind = Repetition::Kind;

namespace {

class RecurrenceRuleReader {
  public:
    RecurrenceRuleReader(const Moment& start, const Clock& clock, Repetition& rule)
        : start_(start), clock_(clock), rule_(rule) {}

    std::string read(std::string_view text) {
        if (std::string why = readRuleParts(text, parts_); !why.empty()) return why;
        rule_ = {};
        for (const auto step : {&RecurrenceRuleReader::readFrequency, &RecurrenceRuleReader::readWeekStart,
                                &RecurrenceRuleReader::readDays, &RecurrenceRuleReader::readPlaces,
                                &RecurrenceRuleReader::refuseTheRest, &RecurrenceRuleReader::readEnd})
            if (std::string why = (this->*step)(); !why.empty()) return why;
        return {};
    }

  private:
    // Takes the part away; empty = it is not there.
    std::string taken(const char* name) {
        const auto found = parts_.find(name);
        if (found == parts_.end()) return {};
        std::string value = std::move(found->second);
        parts_.erase(found);
        return value;
    }

    std::string readFrequency() {
        const std::string frequency = taken("FREQ");
        static const std::map<std::string_view, Kind> kinds = {{"DAILY", Kind::daily},
                                                               {"WEEKLY", Kind::weekly},
                                                               {"MONTHLY", Kind::monthlyByDay},
                                                               {"YEARLY", Kind::yearly}};
        const auto found = kinds.find(frequency);
        if (found == kinds.end())
            return frequency.empty() ? "FREQ is missing"
                                     : "FREQ=" + frequency + " is no repetition that a phone knows";
        rule_.kind = found->second;
        const std::string interval = taken("INTERVAL");
        const std::optional<Long> number = interval.empty() ? 1 : numberOf(interval);
        if (!number || *number == 0) return "INTERVAL=" + interval + " is no interval";
        interval_ = *number;
        return {};
    }

    std::string readWeekStart() {
        const std::string name = taken("WKST");
        if (name.empty()) return {};
        const std::optional<int> day = weekdayNamed(name);
        if (!day) return "WKST=" + name + " is no weekday";
        weekStart_ = *day;
        return {};
    }

    std::string readDays() {
        const std::string list = taken("BYDAY");
        std::vector<NamedDay> named;
        for (const std::string_view word : wordsOf(list, ',')) {
            const std::optional<NamedDay> day = namedDay(word);
            if (!day) return "BYDAY=" + list + " is no list of weekdays";
            named.push_back(*day);
        }
        if (rule_.kind == Kind::weekly || (rule_.kind == Kind::daily && !named.empty()))
            return readWeek(list, named);
        if (named.empty()) return {};
        if (rule_.kind == Kind::yearly) {
            // The third Sunday of May is one every twelve months.
            if (std::string why = readOwnMonth(); !why.empty() || !hasMonth_)
                return why.empty() ? "BYDAY=" + list + " in a year is no repetition that a phone knows" : why;
            constexpr Long monthsAYear = 12;
            if (interval_ <= lastInterval) interval_ *= monthsAYear;
        }
        rule_.kind = Kind::monthlyByPosition;
        return readPosition(list, named);
    }

    std::string readWeek(const std::string& list, const std::vector<NamedDay>& named) {
        for (const NamedDay& day : named) {
            if (day.position != 0) return "BYDAY=" + list + ": a week has each weekday once";
            rule_.weekdays |= 1u << day.weekday;
        }
        if (rule_.kind == Kind::daily && interval_ != 1)
            return "BYDAY=" + list + " with every " + std::to_string(interval_) +
                   " days is no repetition that a phone knows";
        rule_.kind = Kind::weekly;
        if (rule_.weekdays == 0) rule_.weekdays = 1u << weekdayNumber(start_.day);
        // Which weeks a day falls into may hang on the day they begin on.
        if (interval_ == 1) return {};
        const auto week = [&](int day, int first) {
            return weekdayNumber(start_.day) - (weekdayNumber(start_.day) - first + 7) % 7 +
                   (day - first + 7) % 7;
        };
        for (int day = 0; day < 7; ++day)
            if ((rule_.weekdays >> day & 1) != 0 && week(day, weekStart_) != week(day, 0))
                return "WKST=" + std::string(weekdayName(weekStart_)) + ": a phone's weeks begin on Monday";
        return {};
    }

    std::string readPosition(const std::string& list, const std::vector<NamedDay>& named) {
        const std::string places = taken("BYSETPOS");
        if (named.size() != 1) return "BYDAY=" + list + ": a phone knows one weekday a month";
        NamedDay day = named.front();
        if (!places.empty()) {
            const std::optional<Long> place = numberOf(places);
            if (!place || day.position != 0)
                return "BYSETPOS=" + places + " is no repetition that a phone knows";
            day.position = *place;
        }
        if (day.fromEnd) return "BYDAY=" + list + ": a phone does not count from the end of the month";
        if (day.position == 0) return "BYDAY=" + list + ": a phone knows one weekday a month";
        if (day.weekday == weekdayNumber(start_.day) && day.position == positionOf(start_.day)) return {};
        return "BYDAY=" + list + ": it does not begin on such a day";
    }

    // Whether the months named are the start's alone.
    std::string readOwnMonth() {
        const std::string month = taken("BYMONTH");
        if (month.empty()) return {};
        hasMonth_ = true;
        const auto own = static_cast<unsigned>(year_month_day(start_.day).month());
        return numberOf(month) == static_cast<Long>(own)
                   ? ""
                   : "BYMONTH=" + month + ": a phone repeats in the month of the start alone";
    }

    std::string readPlaces() {
        if (rule_.kind == Kind::yearly)
            if (std::string why = readOwnMonth(); !why.empty()) return why;
        const bool takesDay = rule_.kind == Kind::monthlyByDay || (rule_.kind == Kind::yearly && hasMonth_);
        if (!takesDay) return {};
        const std::string day = taken("BYMONTHDAY");
        const auto own = static_cast<unsigned>(year_month_day(start_.day).day());
        if (day.empty() || numberOf(day) == static_cast<Long>(own)) return {};
        return "BYMONTHDAY=" + day + ": a phone repeats on the day of the start alone";
    }

    std::string refuseTheRest() {
        for (const auto& [name, value] : parts_)
            if (name != "COUNT" && name != "UNTIL" && !name.starts_with("X-"))
                return std::string(name).append("=").append(value).append(
                    " is nothing that a phone's repetition has");
        if (interval_ > lastInterval)
            return "INTERVAL=" + std::to_string(interval_) + ": a phone's intervals end at 255";
        rule_.interval = interval_;
        return {};
    }

    std::string readEnd() {
        const std::string until = taken("UNTIL"), count = taken("COUNT");
        if (!until.empty()) {
            const std::optional<Moment> end = readMoment(until);
            if (!end) return "UNTIL=" + until + " is no date";
            // Of whole days only the day that is written counts.
            const Moment local = start_.isDay ? *end : shownBy(clock_, *end);
            rule_.last = local.day;
            if (!local.isDay && !start_.isDay && local.clock < start_.clock) *rule_.last -= days(1);
            if (*rule_.last < start_.day) return "UNTIL=" + until + ": it ends before it begins";
        }
        if (count.empty()) return {};
        const std::optional<Long> times = numberOf(count);
        if (!times || *times == 0 || !until.empty()) return "COUNT=" + count + " is no number of times";
        endAfter(rule_, start_.day, *times);
        return {};
    }

    Moment start_;
    const Clock& clock_;
    Repetition& rule_;
    RuleParts parts_;
    Long interval_ = 1;
    int weekStart_ = 0;
    bool hasMonth_ = false;
};

}  // namespace

std::string readRecurrenceRule(std::string_view text, const Moment& start, const Clock& clock,
                               Repetition& rule) {
    return RecurrenceRuleReader(start, clock, rule).read(text);
}

std::string recurrenceRule(const Repetition& rule, const Moment& start, std::string_view until) {
    constexpr std::string_view frequencies[] = {"DAILY", "WEEKLY", "MONTHLY", "MONTHLY", "YEARLY"};
    std::string text = "FREQ=";
    text.append(frequencies[static_cast<std::size_t>(rule.kind)]);
    if (rule.interval != 1) text.append(";INTERVAL=").append(std::to_string(rule.interval));
    if (rule.kind == Kind::weekly) {
        std::string list;
        for (int day = 0; day < 7; ++day)
            if ((rule.weekdays >> day & 1) != 0)
                list.append(list.empty() ? "" : ",").append(weekdayName(day));
        text.append(";BYDAY=").append(list);
    }
    if (rule.kind == Kind::monthlyByPosition)
        text.append(";BYDAY=")
            .append(std::to_string(positionOf(start.day)))
            .append(weekdayName(weekdayNumber(start.day)));
    if (!until.empty()) text.append(";UNTIL=").append(until);
    return text;
}

}  // namespace ovno2::host
