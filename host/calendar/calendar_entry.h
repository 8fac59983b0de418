// A calendar entry outside a phone: what a file's event or to-do holds, or what an entry of a phone becomes
// on its way to a file. Readers and writers of all formats, the views and the commands that write to a phone
// meet here.
#pragma once

#include <string>
#include <vector>

#include "host/output/text.h"

namespace ovno2::host {

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

    // What the source had and no entry here can hold, for people: "ATTENDEE", "RRULE: BYSETPOS". UTF-8.
    std::vector<std::string> unplaced = {};
};

}  // namespace ovno2::host
