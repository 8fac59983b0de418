// One entry of the phone's calendar: its record and data items, and its values as text.
//
// No state. Where memory is short a value may be left out; a MemoryWatch (core/attempt.h) tells. Reading
// writes the texts that the host gets from here, and writing compares the host's cells with what an entry
// already says.
#pragma once

#include <optional>
#include <vector>

#include "content/data_items.h"
#include "dates/date_value.h"

namespace ovno2::Calendar {

// Values of an entry; from `firstFieldId` on a value's code is the id of its data item.
namespace value {
inline constexpr Long summary = 3;
inline constexpr Long start = 4;   // not of to-dos
inline constexpr Long end = 5;     // not of to-dos
inline constexpr Long status = 6;  // a number
inline constexpr Long due = 7;     // of to-dos only
inline constexpr Long rule = 8;    // with its last date; see series_info.h
inline constexpr Long alarm = 9;
inline constexpr Long location = 11;
inline constexpr Long description = 12;  // of a birthday: the birth year
inline constexpr Long priority = 13;     // a number
inline constexpr Long firstFieldId = 768;
}  // namespace value

struct Entry {
    library::CalendarRecord record{};
    std::vector<Content::DataItem> items;
    Long phonePlatform = 0;  // a tNokiaPhoneType

    bool isToDo() const { return record.type == library::calendarToDo; }
    bool isBirthday() const { return record.type == library::calendarBirthday; }
    bool isNote() const { return record.type == library::calendarNote; }
};

// Bytes of a calendar record of the library that is loaded.
library::Word calendarRecordSize();

// Whether start and end of such an entry have a time of day: birthdays have none, and notes only on the
// platforms that keep them in UTC.
bool hasTimeOfDay(library::Word type);

// Time-zone modes of Content::GetDateFromStruct.
inline constexpr Long utcMode = 1;
inline constexpr Long utcModeWithoutDaylight = -1;

// The mode in which an alarm on that date is read.
Long alarmMode(const Entry& entry, DateValue alarm);

// Takes the data items that `entry`'s record points to.
void takeItems(Entry& entry);

// One value as text: dates and times as ISO basic text with the time, texts on one line with "\n" for a line
// end. Empty when the entry has no such value.
Text GetCalInfo(const Entry& entry, Long code, bool withTime);

// The days on which the rule does not hold, as ISO basic dates separated by ";", at most the first 50; none
// for a record without such a list.
std::optional<Text> exceptionsText(const library::CalendarRecord& record);

// Start, end and alarm as the entry's text has them: dates without a time for birthdays and notes, the first
// day after a note as its end, and the year of birth in a birthday's.
struct Times {
    Text start, end, alarm;
};
Times shownTimes(const Entry& entry);

// The whole entry as a VEVENT or VTODO block, its lines separated by CR LF.
Text entryText(const Entry& entry, const Text& folderName, const Text& uid);

}  // namespace ovno2::Calendar
