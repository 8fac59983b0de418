// A calendar entry outside a phone: what a file's event or to-do holds, or what an entry of a phone becomes
// on its way to a file. Readers and writers of all formats, the views and the commands that write to a phone
// meet here.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/calendar/recurrence_dates.h"
#include "host/output/text.h"

namespace ovno2::host {

class FileZone;

// A repetition that phones have no room for, as its source has it: single_entries.h makes entries of it.
struct WideRule {
    std::string text;        // an RRULE, or a rule of vCalendar 1.0
    bool isOldForm = false;  // the latter
    Moment start = {};       // its first date by its own clock: UTC, that of `zone`, or else this computer's
    std::shared_ptr<const FileZone> zone = {};
    std::vector<Moment> exceptions = {};  // by this computer's clock; a day stands for all of its times
};

struct CalendarEntry {
    // The kinds that phones know.
    enum class Kind { meeting, call, birthday, note, reminder, other, toDo };

    Kind kind = Kind::meeting;
    Text uid = {};       // what phone or file calls it; empty = nothing
    Text calendar = {};  // the name of the calendar it lies in; empty = the phone's first

    // Local times on this computer, ISO 8601: "2008-01-05T10:00:00", or "2008-01-05" for whole days. Empty =
    // none. The end of whole days is the first day after them.
    Text start = {};
    Text end = {};
    Text due = {};    // of a to-do, instead of both
    Text alarm = {};  // when it rings

    Text summary = {}, location = {}, description = {};
    Long birthYear = 0;   // of a birthday; 0 = not known
    Long priority = 0;    // of a to-do: 1 high, 2 normal, 3 low; 0 = not given
    bool isDone = false;  // of a to-do

    // Repetition in the short style that phones' software writes: "D1", "W2 MO TH 20081231", "MD1", "MP1 3+
    // TU", "YD1"; empty = none. The last date is the last on which it may begin.
    Text rule = {};
    std::vector<Text> exceptions = {};  // ISO dates on which it does not take place

    // Instead of a rule where no phone can hold it.
    std::optional<WideRule> wideRule = {};

    // What the source had and no entry here can hold, for people: "ATTENDEE", "RRULE: BYSETPOS". UTF-8.
    std::vector<std::string> unplaced = {};
};

// When it begins: its start, of a to-do its due date; empty = none.
inline const Text& beginOf(const CalendarEntry& entry) {
    return entry.kind == CalendarEntry::Kind::toDo ? entry.due : entry.start;
}

// Moves the entry's start or due date, and what it has after its start along with it: its end and its alarm.
void moveBegin(CalendarEntry& entry, Text CalendarEntry::*begin, const Moment& to);

}  // namespace ovno2::host
