#include "host/calendar/recurrence.h"

#include <algorithm>
#include <set>

#include "host/calendar/recurrence_names.h"

namespace ovno2::host {

using namespace std::chrono;

namespace {

constexpr std::int64_t monthsAYear = 12;
constexpr local_days endOfTime{local_days(year(9999) / December / 31)};

std::int64_t monthNumber(local_days date) {
    const year_month_day fields(date);
    return static_cast<int>(fields.year()) * monthsAYear + static_cast<unsigned>(fields.month()) - 1;
}

year_month monthOf(std::int64_t number) {
    return year(static_cast<int>(number / monthsAYear)) /
           month(static_cast<unsigned>(number % monthsAYear) + 1);
}

// The date in that month, if it has one.
std::optional<local_days> dateIn(const year_month& month, local_days start, bool byPosition) {
    if (byPosition) {
        const year_month_weekday date = month / weekday(start)[static_cast<unsigned>(positionOf(start))];
        return date.ok() ? std::optional(local_days(date)) : std::nullopt;
    }
    const year_month_day date = month / year_month_day(start).day();
    return date.ok() ? std::optional(local_days(date)) : std::nullopt;
}

}  // namespace

void visitDates(const Repetition& rule, local_days start, local_days from,
                const std::function<bool(local_days)>& visit) {
    const local_days end = std::min(rule.last.value_or(endOfTime), endOfTime);
    from = std::max(from, start);
    // False once nothing more is wanted.
    const auto take = [&](local_days date) { return date <= end && (date < from || visit(date)); };
    using Kind = Repetition::Kind;
    if (rule.kind == Kind::daily) {
        const std::int64_t gone = ((from - start).count() + rule.interval - 1) / rule.interval;
        for (local_days date = start + days(gone * rule.interval); take(date);)
            date += days(rule.interval);
    } else if (rule.kind == Kind::weekly) {
        const local_days monday = start - (weekday(start) - Monday);
        const days step = days(7) * rule.interval;
        for (local_days week = monday + (from - monday) / step * step; week <= end; week += step)
            for (int day = 0; day < 7; ++day)
                if ((rule.weekdays >> day & 1) != 0 && !take(week + days(day))) return;
    } else {
        const bool byPosition = rule.kind == Kind::monthlyByPosition;
        const std::int64_t step = rule.interval * (rule.kind == Kind::yearly ? monthsAYear : 1);
        const std::int64_t first = monthNumber(start), last = monthNumber(end);
        for (std::int64_t number = first + (monthNumber(from) - first) / step * step; number <= last;
             number += step) {
            const std::optional<local_days> date = dateIn(monthOf(number), start, byPosition);
            if (date && !take(*date)) return;
        }
    }
}

std::vector<Text> datesOf(const CalendarEntry& entry, TextView from, TextView to) {
    const bool isToDo = entry.kind == CalendarEntry::Kind::toDo;
    std::optional<Moment> start =
        readMoment(TextView(isToDo && !entry.due.empty() ? entry.due : entry.start));
    const std::optional<Moment> first = readMoment(from), beyond = readMoment(to);
    if (!start || !first || !beyond) return {};
    std::set<local_days> exceptions;
    for (const Text& text : entry.exceptions)
        if (const std::optional<Moment> date = readMoment(TextView(text))) exceptions.insert(date->day);
    std::vector<Text> dates;
    const auto take = [&](local_days date) {
        if (date >= beyond->day) return false;
        if (date < first->day || exceptions.contains(date)) return true;
        Moment moment = *start;
        moment.day = date;
        dates.push_back(isoText(moment));
        return true;
    };
    Repetition rule;
    if (entry.rule.empty() || !readShortRule(toUtf8(entry.rule), *start, rule).empty())
        take(start->day);
    else
        visitDates(rule, start->day, first->day, take);
    return dates;
}

}  // namespace ovno2::host
