// Repetition: rule texts in both styles, the series they stand for, and the phone's recurrence word.
//
//   FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,TH;UNTIL=20081231T230000Z     the iCalendar style
//   W2 MO TH 20081231                                             the vCalendar 1.0 style
//
// A rule of the second style is kind and interval ("D1", "W2", "MD1", "MP1", "YD1"), then what the kind
// needs: weekdays, a day of the month, a position ("MP13+" or "MP1 3+"), the number of occurrences ("#5") or
// the last date. No state; reading and writing the calendar call in here. Nothing here throws.
#pragma once

#include "dates/date_value.h"
#include "library/library_records.h"

namespace ovno2::CalSeriesInfo {

enum Frequency : Long { daily = 0, weekly = 1, monthlyByDay = 2, monthlyByPosition = 3, yearly = 5 };

// What a rule says. Only the iCalendar style gives a position and its weekday.
struct SeriesInfo {
    Long Frequency = daily;
    Long WeekOfMonth = 0;  // of a position: 2 for 2TU, -1 for -1SU
    Long DayIndex = 0;     // of a position: 1 = Sunday to 7 = Saturday, the last one named
    Long Count = 0;        // 0 = not given
    Text Until;            // local date text; empty = not given
    Long Interval = 0;     // 0 = not given; yearly rules of the 1.0 style give none
    Long Days = 0;         // weekly: bits, bit 0 Sunday to bit 6 Saturday; "MD" rules: the day of the month
    Text Exdates;          // as written in the rule, separated by ";"
    bool isRule = false;   // false while no kind of repetition has been read
};

inline constexpr Long keepsSeries = 1;  // option of GetSeriesInfo

// Takes `rule` apart into `series`, which is cleared first unless `options` has `keepsSeries`. `start`, local
// date text, may be empty; it gives a rule of the 1.0 style without an end its last date.
void GetSeriesInfo(const Text& rule, SeriesInfo& series, const Text& start, Long options) noexcept;

// The last date of a series, local date text: by its count, or 100 years on where it has none. An `Interval`
// of 0 becomes 1. Empty when there is no such date.
Text SeriesEndDate(const Text& start, SeriesInfo& series) noexcept;

// The recurrence word of a series that begins on `start`, for a content-access version: kind, interval and,
// for versions that have them, weekdays. Throws RuntimeFailure 6 for an interval the word has no room for.
library::Word recurrenceWord(const SeriesInfo& series, DateValue start, Long contentVersion);

// The rule text of a recurrence word whose entry begins on `start`, without its end; empty for none.
Text ruleText(library::Word recurrence, DateValue start);

}  // namespace ovno2::CalSeriesInfo
