// Calendar entries for people, as a month, an agenda or in full, and as JSON for programs.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

#include "host/calendar/calendar_entry.h"
#include "host/output/json.h"

namespace ovno2::host {

// From a day up to and without another.
struct Period {
    std::chrono::local_days from;
    std::chrono::local_days to;
};
Period monthPeriod(std::chrono::year_month month);

// An entry that takes place once; repeats are one each.
struct Occurrence {
    Text start;  // in the form of the entry's own
    std::chrono::local_days day;
    std::chrono::local_days lastDay;  // on which it goes on
    const CalendarEntry* entry;
};

// What takes place in the period, in order; with it what has begun before and goes on. The entries live
// as long.
std::vector<Occurrence> occurrencesIn(const std::vector<CalendarEntry>& entries, const Period& period);

// The month in which most entries begin that do not repeat; of several the last. None without such an entry.
std::optional<std::chrono::year_month> busiestMonth(const std::vector<CalendarEntry>& entries);

// A month's sheet, no wider than `width` cells as far as it can be; UTF-8.
std::string asMonth(std::chrono::year_month month, const std::vector<Occurrence>& occurrences,
                    std::size_t width);

// Day by day; with `uids` each entry's uid stands with it. UTF-8.
std::string asAgenda(const std::vector<Occurrence>& occurrences, const Period& period, std::size_t width,
                     bool uids);

// All of an entry, a line a field. UTF-8.
std::string inFull(const CalendarEntry& entry, std::size_t width);

// "08:00-09:30", "whole day"; UTF-8.
std::string timesOf(const Occurrence& occurrence);

// The members of an entry's object.
void writeEntry(JsonLine& line, const CalendarEntry& entry);
// An array with one object an entry, one a line; texts are always valid UTF-8. What is absent is left out.
void writeEntriesAsJson(const std::vector<CalendarEntry>& entries,
                        const std::function<void(std::string_view)>& write);
// The same with "date", when it takes place.
void writeOccurrencesAsJson(const std::vector<Occurrence>& occurrences,
                            const std::function<void(std::string_view)>& write);

}  // namespace ovno2::host
