// Repetition as phones know it: every so many days, weeks (on some weekdays), months (on the start's day, or
// on the same weekday as the third Tuesday is) or years, for ever or up to a last date.
//
// Its text in an entry is the short style: "D1", "W2 MO TH 20081231", "MD1", "MP1 3+ TU", "YD1"; phones leave
// the weekday out ("MP13+"). Other forms are RFC 5545's RRULE and vCalendar 1.0's rules. What a phone cannot
// hold is refused with the reason, never made simpler. Weeks begin on Monday.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/calendar/calendar_entry.h"
#include "host/calendar/recurrence_dates.h"

namespace ovno2::host {

struct Repetition {
    enum class Kind { daily, weekly, monthlyByDay, monthlyByPosition, yearly };

    Kind kind = Kind::daily;
    Long interval = 1;      // 1 to 255
    unsigned weekdays = 0;  // weekly: bit 0 Monday to bit 6 Sunday, at least one
    // By position: which of the month's Mondays and so on, 1 to 5, is what the start says.
    std::optional<std::chrono::local_days> last = {};  // on which it may begin; none = for ever
};

// The three readers say why the rule cannot be held, for people (UTF-8; empty = `rule` is set). `start` is
// the first date; `clock`, the one that it is read from, shows the ends that a rule gives in UTC.
std::string readShortRule(std::string_view text, const Moment& start, Repetition& rule);
std::string readRecurrenceRule(std::string_view text, const Moment& start, const Clock& clock,
                               Repetition& rule);
std::string readOldRule(std::string_view text, const Moment& start, const Clock& clock, Repetition& rule);

// The three writers. `until` is the last date as it is to stand in the rule; empty = for ever.
Text shortRule(const Repetition& rule, const Moment& start);
std::string recurrenceRule(const Repetition& rule, const Moment& start, std::string_view until);
std::string oldRule(const Repetition& rule, const Moment& start);

// Calls `visit` with one date after the other, from `from` on, until it says false, the rule ends or the year
// 9999 does.
void visitDates(const Repetition& rule, std::chrono::local_days start, std::chrono::local_days from,
                const std::function<bool(std::chrono::local_days)>& visit);

// Ends the rule with its date number `count`, counted from 1; one that has fewer dates keeps its end.
void endAfter(Repetition& rule, std::chrono::local_days start, Long count);

// When an entry takes place: its start, or a to-do's due date, on every date of its rule but the exceptions,
// from the day `from` up to and without the day `to` (ISO dates). In order, in the start's form. One that
// does not repeat, or whose rule is none of these, has its start alone.
std::vector<Text> datesOf(const CalendarEntry& entry, TextView from, TextView to);

}  // namespace ovno2::host
