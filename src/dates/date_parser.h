// The parser behind "readable as a date". It reads what date_text.h renders in the user's locale, and is
// tolerant of the other ways in which people and phones write dates.
//
// Grammar ("[ ]" optional, "/" between alternatives; letters in any case):
//
//   text        = [date] [blanks time], at least one of them; blanks around are ignored; at most 128
//   characters date        = the user's short date, literals included, with or without leading zeros
//               / number sep number sep number     in the order of the user's short date; a first number of
//               three or
//                                                  four digits or above 31 is a year before month and day
//               / number sep number                day and month of the current year in the user's order;
//               with a
//                                                  year among them the first of that month
//               / number sep name [sep number] / name sep number [sep number] / number sep name sep number
//                                                  day, month name and year; without a year the current one
//   sep         = blanks and at most one of "." "/" "-" "," or the user's date separator; between two numbers
//   that
//                 are the whole date, one of these must stand. A "." may follow the date.
//   number      = 1 to 4 digits; day and month have at most two, a year without a century has two (00 to 29:
//   2000s,
//                 30 to 99: 1900s)
//   name        = a month of the user's locale or in English, full or abbreviated, with or without a final
//   "." time        = the user's long time / [designator] hour [":" minute [":" second]] [designator]
//                 with minute or designator; ":" is also the user's time separator
//   designator  = the user's morning or afternoon designator, "AM" or "PM"
//
// Between date and time stand blanks, or "T" behind a date that begins with its year and has "-" separators.
// Where the month is no month but day and month exchanged are a date, they are exchanged, unless the year
// comes first. A text without a date means date zero. Blanks are also no-break blanks and direction marks.
// All digits without separators are no date unless the user's short date is written so.
#pragma once

#include <optional>

#include "dates/date_value.h"

namespace ovno2 {

// Longer than any date in words; what is longer is not looked at.
inline constexpr std::size_t longestDateText = 128;

// Throw only when memory runs out.
std::optional<DateFields> readDateFields(TextView text);
std::optional<DateValue> readDate(TextView text);

}  // namespace ovno2
