// The short style and vCalendar 1.0's rules; RFC 5545's are in recurrence_rrule.cpp.
#include <algorithm>
#include <bit>

#include "host/calendar/recurrence.h"
#include "host/calendar/recurrence_names.h"

namespace ovno2::host {

using namespace std::chrono;
using Kind = Repetition::Kind;

namespace {

std::string quoted(std::string_view word) {
    return "\"" + std::string(word) + "\"";
}

// Reads the words behind a rule's first. Each step says what is wrong, or nothing.
class OldRuleReader {
  public:
    OldRuleReader(const Moment& start, const Clock& clock, Repetition& rule)
        : start_(start), clock_(clock), rule_(rule) {}

    std::string read(std::string_view text) {
        std::vector<std::string_view> words = wordsOf(text, ' ');
        if (words.empty()) return "it is empty";
        rule_ = {};
        std::string why = readKind(words.front());
        for (std::size_t i = 1; why.empty() && i < words.size(); ++i)
            why = readWord(words[i]);
        return why.empty() ? finish() : why;
    }

  private:
    // "MP13+" names the position too: the last digit before the sign.
    std::string readKind(std::string_view word) {
        static constexpr struct {
            std::string_view letters;
            Kind kind;
        } kinds[] = {{"MP", Kind::monthlyByPosition},
                     {"MD", Kind::monthlyByDay},
                     {"M", Kind::monthlyByDay},
                     {"YM", Kind::yearly},
                     {"YD", Kind::yearly},
                     {"Y", Kind::yearly},
                     {"D", Kind::daily},
                     {"W", Kind::weekly}};
        const auto* const found =
            std::ranges::find_if(kinds, [&](const auto& one) { return word.starts_with(one.letters); });
        if (found == std::end(kinds)) return quoted(word) + " is no kind of repetition";
        rule_.kind = found->kind;
        namesMonths_ = found->letters == "YM";
        std::string_view digits = word.substr(found->letters.size());
        if (digits.ends_with('+') || digits.ends_with('-')) {
            if (found->kind != Kind::monthlyByPosition || digits.size() < 3)
                return quoted(word) + " is no rule";
            if (std::string why = readPosition(digits.substr(digits.size() - 2)); !why.empty()) return why;
            digits.remove_suffix(2);
        }
        const std::optional<Long> interval = numberOf(digits);
        if (!interval || *interval == 0) return quoted(word) + " has no interval";
        if (*interval > lastInterval) return quoted(word) + ": a phone's intervals end at 255";
        rule_.interval = *interval;
        return {};
    }

    std::string readWord(std::string_view word) {
        if (word.starts_with('#')) {
            count_ = numberOf(word.substr(1));
            return count_ ? "" : quoted(word) + " is no number of times";
        }
        if (const std::optional<int> day = weekdayNamed(word)) return readWeekday(*day);
        if (word.size() >= 8) return readEnd(word);
        if (word == "LD") return "LD, the last day of the month, is no repetition that a phone knows";
        if (word.ends_with('+') || word.ends_with('-')) return readPosition(word);
        const std::optional<Long> number = numberOf(word);
        if (number && word.size() <= 2 && rule_.kind == Kind::monthlyByDay) return readDayOfMonth(*number);
        if (number && word.size() <= 2 && namesMonths_) return readMonth(*number);
        return quoted(word) + " is nothing that a phone's repetition has";
    }

    std::string readWeekday(int day) {
        if (rule_.kind == Kind::weekly) {
            rule_.weekdays |= 1u << day;
            return {};
        }
        if (rule_.kind != Kind::monthlyByPosition || !hasPosition_) return "a weekday cannot stand here";
        if (hasWeekday_) return "several weekdays a month are no repetition that a phone knows";
        hasWeekday_ = true;
        return day == weekdayNumber(start_.day)
                   ? ""
                   : "it begins on " + std::string(weekdayName(weekdayNumber(start_.day))) + ", not on " +
                         std::string(weekdayName(day));
    }

    std::string readPosition(std::string_view word) {
        if (rule_.kind != Kind::monthlyByPosition) return quoted(word) + " cannot stand here";
        if (hasPosition_) return "several positions in a month are no repetition that a phone knows";
        hasPosition_ = true;
        if (word.ends_with('-'))
            return quoted(word) + ", counted from the end of the month, is no repetition that a phone knows";
        const std::optional<Long> position = numberOf(word.substr(0, word.size() - 1));
        if (!position || *position < 1 || *position > 5) return quoted(word) + " is no position in a month";
        if (*position == positionOf(start_.day)) return {};
        return "it begins on the month's " + std::to_string(positionOf(start_.day)) +
               ". weekday of its kind, not on the " + std::to_string(*position) + ".";
    }

    std::string readDayOfMonth(Long day) const {
        const year_month_day date(start_.day);
        if (static_cast<Long>(static_cast<unsigned>(date.day())) == day) return {};
        return "it repeats on day " + std::to_string(day) + ", which it does not begin on";
    }

    std::string readMonth(Long month) const {
        const year_month_day date(start_.day);
        if (static_cast<Long>(static_cast<unsigned>(date.month())) == month) return {};
        return "it repeats in month " + std::to_string(month) + ", which it does not begin in";
    }

    // Midnight means the day: that is how phones write their last dates.
    std::string readEnd(std::string_view word) {
        std::optional<Moment> end = readMoment(word);
        if (!end) return quoted(word) + " is no date";
        const bool isMidnight = end->clock == seconds(0) && !end->isUtc;
        const Moment local = shownBy(clock_, *end);
        rule_.last = local.day;
        if (!isMidnight && !start_.isDay && local.clock < start_.clock) *rule_.last -= days(1);
        return {};
    }

    // A number of times counts; 0 is for ever.
    std::string finish() {
        if (rule_.kind == Kind::weekly && rule_.weekdays == 0)
            rule_.weekdays = 1u << weekdayNumber(start_.day);
        if (rule_.last && *rule_.last < start_.day) return "it ends before it begins";
        if (count_ && *count_ > 0) endAfter(rule_, start_.day, *count_);
        return {};
    }

    Moment start_;
    const Clock& clock_;
    Repetition& rule_;
    std::optional<Long> count_;
    bool namesMonths_ = false;
    bool hasPosition_ = false;
    bool hasWeekday_ = false;
};

constexpr std::string_view lettersOf(Kind kind) {
    constexpr std::string_view letters[] = {"D", "W", "MD", "MP", "YD"};
    return letters[static_cast<std::size_t>(kind)];
}

// All but the end.
std::string oldStyle(const Repetition& rule, const Moment& start) {
    std::string text(lettersOf(rule.kind));
    text.append(std::to_string(rule.interval));
    for (int day = 0; day < 7; ++day)
        if (rule.kind == Kind::weekly && (rule.weekdays >> day & 1) != 0)
            text.append(" ").append(weekdayName(day));
    if (rule.kind == Kind::monthlyByPosition)
        text.append(" ")
            .append(std::to_string(positionOf(start.day)))
            .append("+ ")
            .append(weekdayName(weekdayNumber(start.day)));
    return text;
}

std::chrono::local_seconds noClock(sys_seconds time) {
    return local_seconds(time.time_since_epoch());
}

}  // namespace

void endAfter(Repetition& rule, local_days start, Long count) {
    // Whole weeks and days are not walked through one by one.
    local_days from = start;
    Long left = count;
    const local_days monday = start - (weekday(start) - Monday);
    const auto datesIn = [](unsigned weekdays) { return static_cast<Long>(std::popcount(weekdays & 0x7F)); };
    const unsigned firstWeek = rule.weekdays >> (start - monday).count();
    if (rule.kind == Kind::daily) {
        from = start + days((std::int64_t{count} - 1) * rule.interval);
        left = 1;
    } else if (rule.kind == Kind::weekly && left > datesIn(firstWeek)) {
        const Long weeks = (left - datesIn(firstWeek) - 1) / datesIn(rule.weekdays);
        left -= datesIn(firstWeek) + weeks * datesIn(rule.weekdays);
        from = monday + days(7 * (std::int64_t{weeks} + 1) * rule.interval);
    }
    constexpr local_days endOfTime(year(9999) / December / 31);
    if (from < start || from > endOfTime) return;
    std::optional<local_days> last;
    visitDates(rule, start, from, [&](local_days date) {
        last = date;
        return --left > 0;
    });
    if (left == 0) rule.last = last;
}

std::string readShortRule(std::string_view text, const Moment& start, Repetition& rule) {
    return OldRuleReader(start, noClock, rule).read(text);
}

std::string readOldRule(std::string_view text, const Moment& start, const Clock& clock, Repetition& rule) {
    return OldRuleReader(start, clock, rule).read(text);
}

Text shortRule(const Repetition& rule, const Moment& start) {
    std::string text = oldStyle(rule, start);
    if (rule.last) text.append(" ").append(basicText({.day = *rule.last}));
    return fromUtf8(text);
}

std::string oldRule(const Repetition& rule, const Moment& start) {
    std::string text = oldStyle(rule, start);
    // "YD" counts the days of the year there.
    if (rule.kind == Kind::yearly) text[1] = 'M';
    return rule.last ? text.append(" ").append(basicText({.day = *rule.last, .isDay = false}))
                     : text.append(" #0");
}

}  // namespace ovno2::host
