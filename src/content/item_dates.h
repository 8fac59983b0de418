// Date records of the library and the module's date values.
//
// Phones of some platforms keep their times in UTC, others in local time; the time-zone mode that each caller
// passes says which: 1 = the phone may give UTC, -1 = the same without regard to daylight saving, 0 = local
// time, 2 see `GetDateStruct`. Nothing here throws; a step that fails leaves its target alone.
#pragma once

#include "library/library_records.h"

namespace ovno2::Content {

// The date, without time, of the record at `pointer`; date zero when there is none. Remembers the record's
// size for the records that are written.
DateValue GetDateFromPointer(Address pointer);

// The local date, with its time when asked, of a record; date zero for year 0. A record's offsets (minutes)
// are added; a time in UTC, which has none, is shifted to local time unless the host's time offset setting is
// below 0.
DateValue GetDateFromStruct(const library::DateRecord& record, bool withTime, Long mode);

// Fills `record` from a date text in the user's form; one that is not readable leaves its date and time
// alone. With `toUtc` the time is shifted from local time to UTC; mode 2 then takes the standing bias off
// again. In mode 1 the offsets are set, for the platforms that want them; otherwise the first offset stays as
// the caller set it.
void GetDateStruct(const Text& text, library::DateRecord& record, bool toUtc, Long mode);

}  // namespace ovno2::Content
