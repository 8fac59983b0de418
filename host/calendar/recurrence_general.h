// Repetition in general, wider than what phones hold: all that RFC 5545 and vCalendar 1.0 say, from every
// second a day on. Single entries are made of it (single_entries.h).
//
// Dates are those of the rule alone: a start that is none of its dates does not count as one. What does not
// exist is left out: the 31st of April, a fifth Monday.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/calendar/recurrence_dates.h"
#include "host/calendar/recurrence_names.h"

namespace ovno2::host {

struct GeneralRule {
    enum class Period { year, month, week, day, hour, minute };

    Period period = Period::day;
    Long interval = 1;                                     // 1 and up
    std::optional<Long> count = {};                        // of dates
    std::optional<std::chrono::local_seconds> until = {};  // by the start's clock; a date then still counts
    int weekStart = 0;                                     // Monday 0 to Sunday 6

    // What stands in the lists, ascending; negative ones count from the end. An empty list leaves all, or
    // what the start says.
    std::vector<Long> months = {}, weeks = {}, yearDays = {}, monthDays = {};
    std::vector<Long> hours = {}, minutes = {}, seconds = {};
    std::vector<NamedDay> weekdays = {};
    std::vector<Long> positions = {};  // of a period's dates, those that count

    // By the clock, instead of hours, minutes and seconds.
    std::vector<std::chrono::seconds> times = {};
};

// The readers say why a rule is none, for people (UTF-8; empty = `rule` is set). `clock` shows ends that a
// rule gives in UTC.
std::string readGeneralRule(std::string_view text, const Moment& start, const Clock& clock,
                            GeneralRule& rule);
std::string readGeneralOldRule(std::string_view text, const Moment& start, const Clock& clock,
                               GeneralRule& rule);

struct GeneralDates {
    std::vector<Moment> dates;  // in order, in the start's form
    bool isWhole = true;        // the rule has no more
};

// The dates from the start on, up to and with the day `to`, at most `most` of them. Cost grows with the days
// between, at worst with their minutes.
GeneralDates datesOf(const GeneralRule& rule, const Moment& start, std::chrono::local_days to,
                     std::size_t most);

}  // namespace ovno2::host
