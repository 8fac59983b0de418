#include "host/calendar/ical_zone.h"

#include <algorithm>

#include "host/calendar/recurrence_names.h"
#include "host/output/console.h"

namespace ovno2::host {

using namespace std::chrono;

namespace {

constexpr int earliestYear = 1900, lastYear = 2100;  // between which rules are followed
constexpr std::size_t mostChanges = 20000;           // no zone ever had as many

// "+0530", "-08", "+01:24"; the sign may be missing.
std::optional<seconds> offsetNamed(std::string_view text) {
    const bool isWest = text.starts_with('-');
    if (isWest || text.starts_with('+')) text.remove_prefix(1);
    std::string digits(text);
    std::erase(digits, ':');
    while (digits.ends_with(' '))
        digits.pop_back();
    if (digits.size() != 2 && digits.size() != 4 && digits.size() != 6) return std::nullopt;
    const std::optional<Long> number = numberOf(digits.append(6 - digits.size(), '0'));
    if (!number) return std::nullopt;
    const seconds offset = hours(*number / 10000) + minutes(*number / 100 % 100) + seconds(*number % 100);
    if (offset > hours(15)) return std::nullopt;
    return isWest ? -offset : offset;
}

// A yearly rule of a zone: one day of one month.
struct YearlyRule {
    unsigned month = 0;
    int position = 0;             // 1 to 5, or -1 the last; 0 = not by position
    int weekday = -1;             // Monday 0
    unsigned earliest = 0;        // the weekday on or after that day of the month
    std::optional<Moment> until;  // UTC as a rule
    bool isRead = false;

    std::optional<local_days> in(int year) const {
        const auto ym = std::chrono::year(year) / std::chrono::month(month);
        if (weekday < 0) {
            const year_month_day date = ym / day(earliest);
            return date.ok() ? std::optional(local_days(date)) : std::nullopt;
        }
        const std::chrono::weekday wanted = Monday + days(weekday);
        if (position < 0) return local_days(ym / wanted[last]) - days(7) * (-position - 1);
        const local_days from =
            local_days(ym / 1) + days(position > 0 ? (position - 1) * 7 : static_cast<int>(earliest) - 1);
        return from + (wanted - std::chrono::weekday(from));
    }
};

YearlyRule readYearlyRule(std::string_view text) {
    YearlyRule rule;
    bool isYearly = false;
    for (const std::string_view part : wordsOf(text, ';')) {
        const std::size_t mark = std::min(part.find('='), part.size() - 1);
        const std::string_view name = part.substr(0, mark), value = part.substr(mark + 1);
        if (name == "FREQ") isYearly = value == "YEARLY";
        if (name == "BYMONTH") rule.month = static_cast<unsigned>(numberOf(value).value_or(0));
        if (name == "UNTIL") rule.until = readMoment(value);
        if (name == "BYMONTHDAY") {
            // "8,9,10,11,12,13,14" with a weekday is that weekday on or after the 8th.
            Long least = 32;
            for (const std::string_view word : wordsOf(value, ','))
                least = std::min(least, numberOf(word).value_or(0));
            rule.earliest = static_cast<unsigned>(least);
        }
        if (name == "BYDAY" && value.size() >= 2) {
            rule.weekday = weekdayNamed(value.substr(value.size() - 2)).value_or(-1);
            std::string_view place = value.substr(0, value.size() - 2);
            const bool isFromEnd = place.starts_with('-');
            if (isFromEnd || place.starts_with('+')) place.remove_prefix(1);
            rule.position = static_cast<int>(std::min(numberOf(place).value_or(0), Long{5}));
            if (isFromEnd) rule.position = -rule.position;
        }
    }
    const bool hasDay = rule.weekday >= 0 && (rule.position != 0 || rule.earliest > 0);
    rule.isRead = isYearly && rule.month >= 1 && rule.month <= 12 && rule.earliest <= 31 &&
                  (hasDay || (rule.weekday < 0 && rule.earliest > 0));
    return rule;
}

}  // namespace

FileZone::FileZone(const FileComponent& zone) {
    for (const FileComponent& part : zone.parts)
        if (part.name == "STANDARD" || part.name == "DAYLIGHT") addObservance(part);
    sort();
    compareWithHere();
}

void FileZone::compareWithHere() {
    if (changes_.empty()) return;
    const sys_seconds end = sys_days(year(2038) / January / 1);
    isOwn_ = true;
    const auto ask = [&](sys_seconds time) {
        isOwn_ = isOwn_ && time < end && localHere(time) == localOf(time);
        return isOwn_;
    };
    for (const Change& change : changes_)
        if (change.time >= end || !ask(change.time) ||
            (&change != &changes_.front() && !ask(change.time - seconds(1))))
            break;
    for (sys_seconds time = changes_.front().time; isOwn_ && time < end; time += days(10))
        ask(time);
}

bool FileZone::isOwnSince(sys_seconds time) const {
    return isOwn_ && time >= changes_.front().time;
}

void FileZone::addObservance(const FileComponent& observance) {
    const ContentLine *const start = observance.find("DTSTART"),
                             *const from = observance.find("TZOFFSETFROM"),
                             *const to = observance.find("TZOFFSETTO");
    if (!start || !to) return;
    const std::optional<Moment> first = readMoment(start->value);
    const std::optional<seconds> after = offsetNamed(to->value);
    const std::optional<seconds> before = from ? offsetNamed(from->value) : after;
    if (!first || !after || !before) return;
    isKnown_ = true;
    const auto add = [&](local_seconds time) {
        if (changes_.size() < mostChanges)
            changes_.push_back({sys_seconds(time.time_since_epoch()) - *before, *before, *after});
    };
    add(first->time());
    for (const ContentLine& line : observance.lines) {
        if (line.name == "RDATE")
            for (const std::string_view word : wordsOf(line.value, ','))
                if (const std::optional<Moment> date = readMoment(word)) add(date->time());
        if (line.name != "RRULE") continue;
        const YearlyRule rule = readYearlyRule(upperCased(line.value));
        if (!rule.isRead) continue;
        const int firstYear = std::max(static_cast<int>(year_month_day(first->day).year()), earliestYear);
        for (int year = firstYear; year <= lastYear; ++year) {
            const std::optional<local_days> date = rule.in(year);
            if (!date || *date <= first->day) continue;
            const local_seconds time = *date + first->clock;
            if (rule.until) {
                const local_seconds until = rule.until->time() + (rule.until->isUtc ? *before : seconds(0));
                if (rule.until->isDay ? *date > rule.until->day : time > until) break;
            }
            add(time);
        }
    }
}

void FileZone::sort() {
    std::ranges::stable_sort(changes_, {}, &Change::time);
    if (!changes_.empty()) before_ = changes_.front().before;
}

FileZone FileZone::ofOldForm(const FileComponent& calendar) {
    FileZone zone;
    const ContentLine* const standard = calendar.find("TZ");
    const std::optional<seconds> offset = standard ? offsetNamed(standard->value) : std::nullopt;
    // Phones write minutes of their own making there ("+0124").
    if (!offset || *offset % minutes(15) != seconds(0)) return zone;
    zone.isKnown_ = true;
    zone.before_ = *offset;
    for (const ContentLine& line : calendar.lines) {
        if (line.name != "DAYLIGHT" || zone.changes_.size() >= mostChanges) continue;
        // TRUE;offset;begin;end;name;name
        const std::vector<std::string_view> words = wordsOf(line.value, ';');
        if (words.size() < 4 || upperCased(words[0]) != "TRUE") continue;
        const std::optional<seconds> summer = offsetNamed(words[1]);
        const std::optional<Moment> begin = readMoment(words[2]), end = readMoment(words[3]);
        if (!summer || !begin || !end) continue;
        const auto timeOf = [](const Moment& moment, seconds before) {
            return sys_seconds(moment.time().time_since_epoch()) - (moment.isUtc ? seconds(0) : before);
        };
        zone.changes_.push_back({timeOf(*begin, *offset), *offset, *summer});
        zone.changes_.push_back({timeOf(*end, *summer), *summer, *offset});
    }
    zone.sort();
    return zone;
}

sys_seconds FileZone::utcOf(local_seconds time) const {
    // A change counts once the later of its two clocks has reached it.
    const sys_seconds shown(time.time_since_epoch());
    const auto next = std::ranges::upper_bound(changes_, shown, {}, [](const Change& change) {
        return change.time + std::max(change.before, change.after);
    });
    return shown - (next == changes_.begin() ? before_ : std::prev(next)->after);
}

seconds FileZone::offsetAt(sys_seconds time) const {
    const auto next = std::ranges::upper_bound(changes_, time, {}, &Change::time);
    return next == changes_.begin() ? before_ : std::prev(next)->after;
}

local_seconds FileZone::localOf(sys_seconds time) const {
    return local_seconds(time.time_since_epoch() + offsetAt(time));
}

local_seconds localHere(sys_seconds time) {
    return console::localTime(time);
}

Moment localMoment(const Moment& moment, const FileZone* zone) {
    if (moment.isDay) return moment;
    if (moment.isUtc) return shownBy(localHere, moment);
    if (!zone) return moment;
    const sys_seconds time = zone->utcOf(moment.time());
    if (zone->isOwnSince(time)) return moment;
    const local_seconds here = localHere(time);
    // The same clock: what is skipped or there twice stays as it is written.
    if (here.time_since_epoch() - time.time_since_epoch() == zone->offsetAt(time)) return moment;
    return momentAt(here);
}

}  // namespace ovno2::host
