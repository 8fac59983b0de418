// The dates of a general rule. What reads rules is in recurrence_general_rules.cpp.
#include "host/calendar/recurrence_general.h"

#include <algorithm>
#include <span>

namespace ovno2::host {

using namespace std::chrono;
using Period = GeneralRule::Period;

namespace {

constexpr local_days endOfTime{local_days(year(9999) / December / 31)};
constexpr std::int64_t monthsAYear = 12;

bool holds(const std::vector<Long>& list, Long number) {
    return std::ranges::binary_search(list, number);
}

// Whether the list has the number, counted from the start or from the end of so many.
bool holdsEither(const std::vector<Long>& list, Long number, Long of) {
    return holds(list, number) || holds(list, number - of - 1);
}

Long count(days span) {
    return static_cast<Long>(span.count());
}

std::int64_t roundedUp(std::int64_t number, std::int64_t step) {
    return (number + step - 1) / step * step;
}

// Finds the dates period by period: which days of it, at which times, and which of those count.
class DateFinder {
  public:
    DateFinder(const GeneralRule& rule, const Moment& start, local_days to, std::size_t most)
        : rule_(rule), start_(start), to_(std::min(to, endOfTime)), most_(most), left_(rule.count) {
        if (!start.isDay) clock_ = hh_mm_ss(start.clock);
        byWeek_ = !rule.weeks.empty();
        fillFromStart();
    }

    GeneralDates find() {
        if (rule_.period == Period::hour || rule_.period == Period::minute)
            visitClock();
        else
            visitDays();
        return std::move(found_);
    }

  private:
    // Where a rule says nothing, the start does: the same day of the year, the month or the week. A year of
    // weeks is the start's when it is one of the dates.
    void fillFromStart() {
        const year_month_day date(start_.day);
        firstYear_ = date.year();
        const bool hasDay = !rule_.yearDays.empty() || !rule_.monthDays.empty() || !rule_.weekdays.empty();
        if (rule_.period == Period::year && byWeek_ && !hasDay) ownWeekday_ = weekdayNumber(start_.day);
        if (rule_.period == Period::year && !byWeek_ && !hasDay) {
            ownDay_ = static_cast<Long>(static_cast<unsigned>(date.day()));
            if (rule_.months.empty()) ownMonth_ = static_cast<Long>(static_cast<unsigned>(date.month()));
        }
        // Days of the month in a year whose months are not named are those of the start's month.
        if (rule_.period == Period::year && rule_.months.empty() && !rule_.monthDays.empty() && !byWeek_ &&
            rule_.yearDays.empty())
            ownMonth_ = static_cast<Long>(static_cast<unsigned>(date.month()));
        if (rule_.period == Period::month && !hasDay)
            ownDay_ = static_cast<Long>(static_cast<unsigned>(date.day()));
        if (rule_.period == Period::week && rule_.weekdays.empty()) ownWeekday_ = weekdayNumber(start_.day);
        if (byWeek_ && (rule_.interval == 1 || takes(start_.day))) firstYear_ = weekYearOf(start_.day);
    }

    // Days
    // ---------------------------------------------------------------------------------------------------

    local_days weekOf(local_days date) const {
        return date - days((weekdayNumber(date) - rule_.weekStart + 7) % 7);
    }

    // The first of a year's weeks is the one with 4 January in it.
    local_days firstWeekOf(year which) const { return weekOf(local_days(which / January / 4)); }

    // The year whose week it is in.
    year weekYearOf(local_days date) const { return year_month_day(weekOf(date) + days(3)).year(); }

    bool takesWeek(local_days date) const {
        if (!byWeek_) return true;
        const year own = weekYearOf(date);
        const local_days first = firstWeekOf(own);
        return holdsEither(rule_.weeks, count(date - first) / 7 + 1,
                           count(firstWeekOf(own + years(1)) - first) / 7);
    }

    // Positions count in the month, or in a year whose months are not named.
    bool takesWeekday(local_days date) const {
        const int weekday = weekdayNumber(date);
        if (ownWeekday_) return weekday == *ownWeekday_;
        if (rule_.weekdays.empty()) return true;
        const year_month_day fields(date);
        const bool inYear = rule_.period == Period::year && rule_.months.empty();
        const local_days first = local_days(fields.year() / (inYear ? January : fields.month()) / 1);
        const local_days end = local_days(fields.year() / (inYear ? December : fields.month()) / last);
        return std::ranges::any_of(rule_.weekdays, [&](const NamedDay& named) {
            const Long position = count(named.fromEnd ? end - date : date - first) / 7 + 1;
            return named.weekday == weekday && (named.position == 0 || named.position == position);
        });
    }

    bool takes(local_days date) const {
        const year_month_day fields(date);
        const auto month = static_cast<Long>(static_cast<unsigned>(fields.month()));
        const auto day = static_cast<Long>(static_cast<unsigned>(fields.day()));
        if (ownMonth_ && month != *ownMonth_) return false;
        if (ownDay_ && day != *ownDay_) return false;
        if (!rule_.months.empty() && !holds(rule_.months, month)) return false;
        if (!rule_.monthDays.empty()) {
            const year_month_day end(fields.year() / fields.month() / last);
            if (!holdsEither(rule_.monthDays, day, static_cast<Long>(static_cast<unsigned>(end.day()))))
                return false;
        }
        if (!rule_.yearDays.empty()) {
            const local_days first(fields.year() / January / 1);
            const local_days next((fields.year() + years(1)) / January / 1);
            if (!holdsEither(rule_.yearDays, count(date - first) + 1, count(next - first))) return false;
        }
        return takesWeek(date) && takesWeekday(date);
    }

    // Where the period number `number` from the start's begins.
    local_days beginOf(std::int64_t number) const {
        const year_month_day date(start_.day);
        switch (rule_.period) {
            case Period::year: {
                const year own = firstYear_ + years(static_cast<int>(std::min<std::int64_t>(number, 10000)));
                return byWeek_ ? firstWeekOf(own) : local_days(own / January / 1);
            }
            case Period::month: {
                const std::int64_t month = static_cast<int>(date.year()) * monthsAYear +
                                           static_cast<unsigned>(date.month()) - 1 +
                                           std::min<std::int64_t>(number, 10000 * monthsAYear);
                return local_days(year(static_cast<int>(month / monthsAYear)) /
                                  std::chrono::month(static_cast<unsigned>(month % monthsAYear) + 1) / 1);
            }
            case Period::week:
                return weekOf(start_.day) + days(7 * number);
            default:
                return start_.day + days(number);
        }
    }

    void visitDays() {
        const std::vector<seconds> times = timesOfDay();
        std::vector<local_days> taken;
        for (std::int64_t number = 0; isOpen(); number += rule_.interval) {
            const local_days begin = beginOf(number);
            if (begin > to_) return stop();
            const local_days end = beginOf(number + 1);
            taken.clear();
            for (local_days date = begin; date < end; date += days(1))
                if (takes(date)) taken.push_back(date);
            take(taken, times);
        }
    }

    // Times of day
    // -------------------------------------------------------------------------------------------

    static std::vector<Long> orOwn(const std::vector<Long>& list, Long own) {
        return list.empty() ? std::vector<Long>{own} : list;
    }

    std::vector<seconds> timesOfDay() const {
        if (start_.isDay) return {seconds(0)};
        if (!rule_.times.empty()) return rule_.times;
        std::vector<seconds> times;
        for (const Long hour : orOwn(rule_.hours, static_cast<Long>(clock_.hours().count())))
            addTimes(hours(hour), times);
        return times;
    }

    // Within an hour.
    void addTimes(seconds hour, std::vector<seconds>& times) const {
        for (const Long minute : orOwn(rule_.minutes, static_cast<Long>(clock_.minutes().count())))
            for (const Long second : orOwn(rule_.seconds, static_cast<Long>(clock_.seconds().count())))
                times.push_back(hour + minutes(minute) + seconds(second));
    }

    // Every so many hours or minutes; days on which nothing can be are passed over.
    void visitClock() {
        const bool byHour = rule_.period == Period::hour;
        const seconds unit = byHour ? seconds(hours(1)) : seconds(minutes(1));
        const auto numberOf = [&](local_seconds time) { return time.time_since_epoch() / unit; };
        const std::int64_t first = numberOf(start_.time());
        std::vector<seconds> times;
        for (local_days date = start_.day; isOpen(); date += days(1)) {
            if (date > to_) return stop();
            if (!takes(date)) continue;
            const std::int64_t midnight = numberOf(date), next = numberOf(date + days(1));
            const std::int64_t ahead = std::max<std::int64_t>(midnight - first, 0);
            for (std::int64_t number = first + roundedUp(ahead, rule_.interval); number < next && isOpen();
                 number += rule_.interval) {
                const seconds begin = (number - midnight) * unit;
                const hh_mm_ss at(begin);
                if (!rule_.hours.empty() && !holds(rule_.hours, static_cast<Long>(at.hours().count())))
                    continue;
                if (!byHour && !rule_.minutes.empty() &&
                    !holds(rule_.minutes, static_cast<Long>(at.minutes().count())))
                    continue;
                times.clear();
                if (byHour)
                    addTimes(begin, times);
                else
                    for (const Long second :
                         orOwn(rule_.seconds, static_cast<Long>(clock_.seconds().count())))
                        times.push_back(begin + seconds(second));
                take({&date, 1}, times);
            }
        }
    }

    // Results
    // ------------------------------------------------------------------------------------------------

    bool isOpen() const { return !isDone_; }

    // Whether more dates follow is not known from here on.
    void stop() {
        isDone_ = true;
        found_.isWhole = rule_.until && *rule_.until < to_ + days(1) && found_.dates.size() < most_;
    }

    // The dates of one period are each day at each time.
    void take(std::span<const local_days> taken, std::span<const seconds> times) {
        const std::size_t all = taken.size() * times.size();
        const auto dateAt = [&](std::size_t index) {
            return Moment{.day = taken[index / times.size()],
                          .clock = times[index % times.size()],
                          .isDay = start_.isDay};
        };
        if (rule_.positions.empty()) {
            for (std::size_t i = 0; i < all && isOpen(); ++i)
                add(dateAt(i));
            return;
        }
        std::vector<std::int64_t> indices;
        for (const Long position : rule_.positions) {
            const std::int64_t index =
                position > 0 ? position - 1 : static_cast<std::int64_t>(all) + position;
            if (index >= 0 && index < static_cast<std::int64_t>(all)) indices.push_back(index);
        }
        std::ranges::sort(indices);
        indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
        for (const std::int64_t index : indices)
            if (isOpen()) add(dateAt(static_cast<std::size_t>(index)));
    }

    void add(const Moment& date) {
        if (date.time() < start_.time()) return;
        if (rule_.until && date.time() > *rule_.until) {
            isDone_ = true;
            return;
        }
        if (date.day > to_ || found_.dates.size() == most_) return stop();
        found_.dates.push_back(date);
        if (left_ && --*left_ == 0) isDone_ = true;
    }

    const GeneralRule& rule_;
    Moment start_;
    local_days to_;
    std::size_t most_;
    std::optional<Long> left_;
    hh_mm_ss<seconds> clock_{seconds(0)};
    bool byWeek_ = false;
    year firstYear_{0};
    std::optional<Long> ownMonth_, ownDay_;
    std::optional<int> ownWeekday_;
    GeneralDates found_;
    bool isDone_ = false;
};

}  // namespace

GeneralDates datesOf(const GeneralRule& rule, const Moment& start, local_days to, std::size_t most) {
    return DateFinder(rule, start, to, most).find();
}

}  // namespace ovno2::host
