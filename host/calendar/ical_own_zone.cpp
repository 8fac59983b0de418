#include "host/calendar/ical_own_zone.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "host/calendar/ical_zone.h"
#include "host/calendar/recurrence_names.h"

namespace ovno2::host {

using namespace std::chrono;

namespace {

seconds offsetAt(sys_seconds time) {
    return localHere(time).time_since_epoch() - time.time_since_epoch();
}

std::string offsetText(seconds offset) {
    const hh_mm_ss clock(abs(offset));
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "%c%02d%02d", offset < seconds(0) ? '-' : '+',
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()));
    std::string whole(text.data());
    if (clock.seconds() == seconds(0)) return whole;
    std::snprintf(text.data(), text.size(), "%02d", static_cast<int>(clock.seconds().count()));
    return whole.append(text.data());
}

year_month_day dateOf(local_seconds time) {
    return year_month_day(floor<days>(time));
}

}  // namespace

OwnZone::OwnZone(int first, int last) {
    constexpr int lastKnown = 2037;
    first = std::clamp(first, firstYear, lastKnown);
    last = std::clamp(last, first, lastKnown);
    const sys_seconds begin = sys_days(year(first) / January / 1),
                      end = sys_days(year(last + 1) / January / 1);
    base_ = offsetAt(begin);
    start_ = local_seconds(begin.time_since_epoch());
    seconds offset = base_;
    // No zone on earth has changed twice in less than four days since 1902.
    constexpr days step(3);
    for (sys_seconds time = begin; time < end; time += step) {
        const sys_seconds next = time + step;
        if (offsetAt(next) == offset) continue;
        // The first second at which it is another.
        sys_seconds before = time, after = next;
        while (after - before > seconds(1)) {
            const sys_seconds middle = before + (after - before) / 2;
            (offsetAt(middle) == offset ? before : after) = middle;
        }
        addChange(after, offset, offsetAt(after));
        offset = offsetAt(after);
    }
    for (Rule& rule : rules_)
        rule.isOpen = dateOf(rule.last).year() == year(last);
    const seconds winter = offsetAt(sys_days(year(last) / January / 15)),
                  summer = offsetAt(sys_days(year(last) / July / 15));
    name_ = "Local" + offsetText(std::min(winter, summer));
}

bool OwnZone::Rule::takes(const Rule& next) {
    const local_days mine = floor<days>(last), other = floor<days>(next.first);
    const bool fits = before == next.before && after == next.after && last - mine == next.first - other &&
                      dateOf(last).month() == dateOf(next.first).month() && weekday(mine) == weekday(other) &&
                      dateOf(next.first).year() == dateOf(last).year() + years(1);
    const bool samePosition = position == next.position && position != 0;
    const bool isLast = isLastOfMonth && next.isLastOfMonth;
    if (!fits || (!samePosition && !isLast)) return false;
    if (!samePosition) position = 0;
    isLastOfMonth = isLast;
    last = next.last;
    return true;
}

void OwnZone::addChange(sys_seconds time, seconds before, seconds after) {
    Rule rule{.before = before, .after = after};
    rule.first = rule.last = local_seconds(time.time_since_epoch() + before);
    const local_days day = floor<days>(rule.first);
    rule.position = positionOf(day);
    rule.isLastOfMonth = year_month_day(day + days(7)).month() != year_month_day(day).month();
    for (Rule& one : rules_)
        if (one.takes(rule)) return;
    rules_.push_back(rule);
}

void OwnZone::writeRule(ContentLineWriter& lines, const Rule& rule, const std::string& from) {
    const std::string component = rule.after > rule.before ? "DAYLIGHT" : "STANDARD";
    lines.line("BEGIN", component);
    lines.line("DTSTART", from);
    lines.line("TZOFFSETFROM", offsetText(rule.before));
    lines.line("TZOFFSETTO", offsetText(rule.after));
    if (rule.last != rule.first || rule.isOpen) {
        const year_month_day date = dateOf(rule.first);
        const std::string place = rule.isLastOfMonth ? "-1" : std::to_string(rule.position);
        std::string text = "FREQ=YEARLY;BYMONTH=" + std::to_string(static_cast<unsigned>(date.month())) +
                           ";BYDAY=" + place +
                           std::string(weekdayName(weekdayNumber(floor<days>(rule.first))));
        if (!rule.isOpen) {
            Moment until = momentAt(rule.last - rule.before);
            until.isUtc = true;
            text.append(";UNTIL=").append(basicText(until));
        }
        lines.line("RRULE", text);
    }
    lines.line("END", component);
}

void OwnZone::write(ContentLineWriter& lines) const {
    lines.line("BEGIN", "VTIMEZONE");
    lines.line("TZID", name_);
    writeRule(lines, {.before = base_, .after = base_, .first = start_, .last = start_},
              basicText(momentAt(start_)));
    for (const Rule& rule : rules_)
        writeRule(lines, rule, basicText(momentAt(rule.first)));
    lines.line("END", "VTIMEZONE");
}

sys_seconds OwnZone::utcOf(local_seconds time) const {
    const sys_seconds shown(time.time_since_epoch());
    const seconds before = offsetAt(shown - days(1)), after = offsetAt(shown + days(1));
    for (const seconds offset : {std::max(before, after), std::min(before, after)})
        if (offsetAt(shown - offset) == offset) return shown - offset;
    return shown - before;
}

}  // namespace ovno2::host
