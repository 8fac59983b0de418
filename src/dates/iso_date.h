// Conversions between the two forms in which dates travel: the user's local text (see date_text.h) and the
// ISO basic texts of phones and vCalendar.
//
//   ISO basic date            20080105
//   ISO basic date and time   20080105T103000, in UTC when "Z" follows; this module never writes the "Z"
//   ISO dashed date           2008-01-05 or 2008-1-05
//
// Owns the thread's date and time settings. No routine fails: a step that fails is skipped, and a text that
// cannot be read gives what each routine says. Called by the calendar, and by the public class when it
// starts.
#pragma once

#include "dates/date_value.h"
#include "dates/dates_state.h"

namespace ovno2::ISODate {

// Reads the user's time settings and the bias in force now; forgets what was known of the user's locale.
void DateTimeInit() noexcept;
void GetTimeFormat() noexcept;

// The user's short date, normalised so that the day is "dd", the month "MM" and the year has two or four
// letters.
Text GetDateformat() noexcept;

// The settings of this thread.
const DateTimeSettings& Settings();

// ISO text to local text. A text that is readable as a date comes back as it is, and so does, without a
// weekday or other word in front, one that is no ISO text either. "TZ" and "0" give an empty text; "TZ" is
// emptied in `text` too. `initialiseFormats` lets the routine fetch the date format when it is not known.
// `convertUtc`: a text that ends in "Z" is shifted to local time by the bias in force now, whatever its date.
Text GetISO8601Date(Text& text, bool initialiseFormats, bool convertUtc) noexcept;

// Local text to ISO basic text. A date with a bare hour behind it gets its minutes. A text that cannot be
// read gives "T", or an empty text when `dateOnly`.
Text ConvertToISO8601Date(TextView text, bool dateOnly) noexcept;

// The date value as ISO basic text, in local time.
Text FormatISODate(DateValue date, bool dateOnly) noexcept;

// An ISO dashed date in the date format of the settings; nothing is checked.
Text ISODashedToLocal(TextView text) noexcept;

// `interval` as `addIntervals` takes it. The text unchanged when it is not readable as a date; empty when the
// result is no date.
Text DateAddText(TextView interval, Long count, TextView text) noexcept;

// Intervals from `first` to `second`. Two empty texts give 0, otherwise a `first` that is empty or unreadable
// gives -1, an empty `second` 1, an unreadable one -1.
Long DateDiffText(TextView interval, TextView first, TextView second) noexcept;

// The date built from parts that may roll over; empty when that is no date.
Text DateSerialText(Long year, Long month, Long day) noexcept;

}  // namespace ovno2::ISODate
