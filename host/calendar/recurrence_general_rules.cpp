// General rules, in the two forms that files have.
#include <algorithm>
#include <utility>

#include "host/calendar/recurrence_general.h"

namespace ovno2::host {

using namespace std::chrono;
using Period = GeneralRule::Period;

namespace {

constexpr seconds endOfDay = hours(24) - seconds(1);

std::string quoted(std::string_view word) {
    return "\"" + std::string(word) + "\"";
}

void sortUnique(std::vector<Long>& list) {
    std::ranges::sort(list);
    list.erase(std::unique(list.begin(), list.end()), list.end());
}

std::optional<Long> signedNumber(std::string_view word) {
    const bool isNegative = word.starts_with('-');
    if (isNegative || word.starts_with('+')) word.remove_prefix(1);
    const std::optional<Long> number = numberOf(word);
    return number && isNegative ? std::optional(-*number) : number;
}

class GeneralRuleReader {
  public:
    GeneralRuleReader(const Moment& start, const Clock& clock, GeneralRule& rule)
        : start_(start), clock_(clock), rule_(rule) {}

    std::string read(std::string_view text) {
        if (std::string why = readRuleParts(text, parts_); !why.empty()) return why;
        rule_ = {};
        for (const auto step : {&GeneralRuleReader::readFrequency, &GeneralRuleReader::readLists,
                                &GeneralRuleReader::readWeekdays, &GeneralRuleReader::readEnd,
                                &GeneralRuleReader::refuseWhatDoesNotGoTogether})
            if (std::string why = (this->*step)(); !why.empty()) return why;
        return {};
    }

  private:
    // Empty = it is not there.
    std::string_view valueOf(std::string_view name) const {
        const auto found = parts_.find(name);
        return found == parts_.end() ? std::string_view() : std::string_view(found->second);
    }

    static std::string none(std::string_view name, std::string_view value) {
        return std::string(name).append("=").append(value).append(" is none");
    }

    std::string readFrequency() {
        static constexpr std::pair<std::string_view, Period> periods[] = {
            {"YEARLY", Period::year}, {"MONTHLY", Period::month}, {"WEEKLY", Period::week},
            {"DAILY", Period::day},   {"HOURLY", Period::hour},   {"MINUTELY", Period::minute}};
        const std::string_view frequency = valueOf("FREQ");
        if (frequency == "SECONDLY") return "entries every few seconds are no calendar's";
        const auto* const found =
            std::ranges::find(periods, frequency, &std::pair<std::string_view, Period>::first);
        if (found == std::end(periods)) return none("FREQ", frequency);
        rule_.period = found->second;
        if (const std::string_view interval = valueOf("INTERVAL"); !interval.empty()) {
            rule_.interval = numberOf(interval).value_or(0);
            if (rule_.interval == 0) return none("INTERVAL", interval);
        }
        if (const std::string_view name = valueOf("WKST"); !name.empty()) {
            const std::optional<int> day = weekdayNamed(name);
            if (!day) return none("WKST", name);
            rule_.weekStart = *day;
        }
        return {};
    }

    std::string readLists() {
        static constexpr struct {
            std::string_view name;
            std::vector<Long> GeneralRule::*list;
            Long first, last;
            bool isSigned;
        } lists[] = {{"BYMONTH", &GeneralRule::months, 1, 12, false},
                     {"BYWEEKNO", &GeneralRule::weeks, 1, 53, true},
                     {"BYYEARDAY", &GeneralRule::yearDays, 1, 366, true},
                     {"BYMONTHDAY", &GeneralRule::monthDays, 1, 31, true},
                     {"BYHOUR", &GeneralRule::hours, 0, 23, false},
                     {"BYMINUTE", &GeneralRule::minutes, 0, 59, false},
                     {"BYSECOND", &GeneralRule::seconds, 0, 59, false},
                     {"BYSETPOS", &GeneralRule::positions, 1, 366, true}};
        for (const auto& [name, list, first, last, isSigned] : lists) {
            const std::string_view value = valueOf(name);
            for (const std::string_view word : wordsOf(value, ',')) {
                const std::optional<Long> number = signedNumber(word);
                if (!number || (*number < 0 && !isSigned) || std::abs(*number) < first ||
                    std::abs(*number) > last)
                    return none(name, value);
                (rule_.*list).push_back(*number);
            }
            sortUnique(rule_.*list);
        }
        return {};
    }

    std::string readWeekdays() {
        const std::string_view value = valueOf("BYDAY");
        for (const std::string_view word : wordsOf(value, ',')) {
            const std::optional<NamedDay> day = namedDay(word);
            if (!day) return none("BYDAY", value);
            rule_.weekdays.push_back(*day);
        }
        return {};
    }

    std::string readEnd() {
        if (const std::string_view until = valueOf("UNTIL"); !until.empty()) {
            const std::optional<Moment> end = readMoment(until);
            if (!end) return none("UNTIL", until);
            // Of whole days only the day that is written counts.
            const Moment local = start_.isDay ? *end : shownBy(clock_, *end);
            rule_.until = local.day + (local.isDay || start_.isDay ? endOfDay : local.clock);
        }
        if (const std::string_view times = valueOf("COUNT"); !times.empty()) {
            rule_.count = numberOf(times);
            if (rule_.count.value_or(0) == 0) return none("COUNT", times);
        }
        return {};
    }

    std::string refuseWhatDoesNotGoTogether() {
        constexpr std::string_view known[] = {"FREQ",    "INTERVAL", "COUNT",     "UNTIL",      "WKST",
                                              "BYMONTH", "BYWEEKNO", "BYYEARDAY", "BYMONTHDAY", "BYDAY",
                                              "BYHOUR",  "BYMINUTE", "BYSECOND",  "BYSETPOS"};
        for (const auto& [name, value] : parts_)
            if (std::ranges::find(known, name) == std::end(known) && !name.starts_with("X-"))
                return none(name, value);
        const Period period = rule_.period;
        const bool hasPositions =
            std::ranges::any_of(rule_.weekdays, [](const NamedDay& day) { return day.position != 0; });
        const auto refused = [&](std::string_view name) {
            return std::string(name)
                .append("=")
                .append(valueOf(name))
                .append(" cannot go with FREQ=")
                .append(valueOf("FREQ"));
        };
        if (!rule_.weeks.empty() && period != Period::year) return refused("BYWEEKNO");
        if (!rule_.yearDays.empty() &&
            (period == Period::month || period == Period::week || period == Period::day))
            return refused("BYYEARDAY");
        if (!rule_.monthDays.empty() && period == Period::week) return refused("BYMONTHDAY");
        if (hasPositions && (!rule_.weeks.empty() || (period != Period::year && period != Period::month)))
            return refused("BYDAY");
        if (start_.isDay && (period == Period::hour || period == Period::minute))
            return "FREQ=" + std::string(valueOf("FREQ")) + ": its days have no times";
        return {};
    }

    Moment start_;
    const Clock& clock_;
    GeneralRule& rule_;
    RuleParts parts_;
};

// vCalendar 1.0's, of words: the kind with its interval, then what counts in it, then the end.
class GeneralOldRuleReader {
  public:
    GeneralOldRuleReader(const Moment& start, const Clock& clock, GeneralRule& rule)
        : start_(start), clock_(clock), rule_(rule) {}

    std::string read(std::string_view text) {
        const std::string whole = upperCased(text);
        const std::vector<std::string_view> words = wordsOf(whole, ' ');
        if (words.empty()) return "it is empty";
        rule_ = {};
        std::string why = readKind(words.front());
        for (std::size_t i = 1; why.empty() && i < words.size(); ++i)
            if (!readWord(words[i])) why = quoted(words[i]) + " is nothing that can stand there";
        finish();
        return why;
    }

  private:
    std::string readKind(std::string_view word) {
        static constexpr struct {
            std::string_view letters;
            Period period;
        } kinds[] = {{"MP", Period::month}, {"MD", Period::month}, {"M", Period::month}, {"YM", Period::year},
                     {"YD", Period::year},  {"Y", Period::year},   {"D", Period::day},   {"W", Period::week}};
        const auto* const found =
            std::ranges::find_if(kinds, [&](const auto& one) { return word.starts_with(one.letters); });
        if (found == std::end(kinds)) return quoted(word) + " is no kind of repetition";
        kind_ = found->letters;
        rule_.period = found->period;
        std::string_view digits = word.substr(kind_.size());
        // "MP13+" names the position too: the last digit before the sign.
        if (kind_ == "MP" && digits.size() > 2 && (digits.ends_with('+') || digits.ends_with('-'))) {
            readPlace(digits.substr(digits.size() - 2));
            digits.remove_suffix(2);
        }
        rule_.interval = numberOf(digits).value_or(0);
        return rule_.interval == 0 ? quoted(word) + " has no interval" : "";
    }

    // False when it cannot stand there.
    bool readWord(std::string_view word) {
        if (word.starts_with('#')) {
            const std::optional<Long> count = numberOf(word.substr(1));
            if (count && *count > 0) rule_.count = count;  // 0 is for ever
            return count.has_value();
        }
        if (const std::optional<int> day = weekdayNamed(word)) return readWeekday(*day);
        if (word.size() >= 8) return readEnd(word);
        if (word == "LD") return readPlace("1-");
        constexpr std::size_t digitsOfATime = 4;
        return word.size() == digitsOfATime ? readTime(word) : readPlace(word);
    }

    // Times are those of all days: a weekday of its own time is none here.
    bool readWeekday(int day) {
        if (!rule_.times.empty()) return false;
        if (kind_ == "W") rule_.weekdays.push_back({.weekday = day});
        if (kind_ != "MP") return kind_ == "W";
        hasWeekday_ = true;
        for (NamedDay place : places_) {
            place.weekday = day;
            rule_.weekdays.push_back(place);
        }
        return !places_.empty();
    }

    bool readTime(std::string_view word) {
        const std::optional<Long> number = numberOf(word);
        if (!number || *number / 100 > 23 || *number % 100 > 59 || start_.isDay) return false;
        rule_.times.push_back(hours(*number / 100) + minutes(*number % 100));
        return true;
    }

    // "2+", "1-", or a number alone.
    bool readPlace(std::string_view word) {
        const bool fromEnd = word.ends_with('-');
        if (fromEnd || word.ends_with('+')) word.remove_suffix(1);
        const std::optional<Long> number = numberOf(word);
        if (!number || *number == 0 || !rule_.times.empty()) return false;
        const auto listed = [&](std::vector<Long>& list, Long last) {
            list.push_back(fromEnd ? -*number : *number);
            return *number <= last;
        };
        if (kind_ == "MP") {
            // Behind weekdays another group begins.
            if (std::exchange(hasWeekday_, false)) places_.clear();
            places_.push_back({.position = *number, .fromEnd = fromEnd});
            return *number <= 5;
        }
        if (kind_ == "M" || kind_ == "MD") return listed(rule_.monthDays, 31);
        if (kind_ == "YM") return !fromEnd && listed(rule_.months, 12);
        return kind_ == "YD" && listed(rule_.yearDays, 366);
    }

    // Midnight means the day: that is how phones write their last dates.
    bool readEnd(std::string_view word) {
        const std::optional<Moment> end = readMoment(word);
        if (!end) return false;
        const bool isMidnight = end->clock == seconds(0) && !end->isUtc;
        const Moment local = shownBy(clock_, *end);
        rule_.until = local.day + (isMidnight || start_.isDay ? endOfDay : local.clock);
        return true;
    }

    void finish() {
        for (std::vector<Long>* const list : {&rule_.months, &rule_.monthDays, &rule_.yearDays})
            sortUnique(*list);
        std::ranges::sort(rule_.times);
        rule_.times.erase(std::unique(rule_.times.begin(), rule_.times.end()), rule_.times.end());
        if (kind_ != "MP" || !rule_.weekdays.empty()) return;
        // The start's weekday, at the start's own place where none is named.
        if (places_.empty()) places_.push_back({.position = positionOf(start_.day)});
        readWeekday(weekdayNumber(start_.day));
    }

    Moment start_;
    const Clock& clock_;
    GeneralRule& rule_;
    std::string_view kind_;
    std::vector<NamedDay> places_;  // of the weekdays that follow
    bool hasWeekday_ = false;
};

}  // namespace

std::string readGeneralRule(std::string_view text, const Moment& start, const Clock& clock,
                            GeneralRule& rule) {
    return GeneralRuleReader(start, clock, rule).read(text);
}

std::string readGeneralOldRule(std::string_view text, const Moment& start, const Clock& clock,
                               GeneralRule& rule) {
    return GeneralOldRuleReader(start, clock, rule).read(text);
}

}  // namespace ovno2::host
