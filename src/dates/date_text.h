// Dates as the user reads them.
//
// All of these follow the user's locale (locale_formats.h), and the parser (date_parser.h) reads each of them
// back. A date outside the years 100 to 9999 throws RuntimeFailure 5.
#pragma once

#include "dates/date_value.h"
#include "dates/locale_formats.h"

namespace ovno2 {

// The short date alone: "05.01.2008".
Text shortDateText(DateValue date);

// Local date text, the form in which dates travel between host and module: the short date, and unless it is
// midnight a blank and the time as hours, separator, minutes, separator, seconds: "05.01.2008 10:30:00". Date
// zero has no date part: "00:00:00".
Text localDateText(DateValue date);

// The platform's default form for date values: the short date and, unless it is midnight, the time in the
// user's long form: "1/5/2008 10:30:00 AM". Date zero has no date part.
Text generalDateText(DateValue date);

// `date` in any date picture.
Text dateInPicture(DateValue date, const Picture& picture);

}  // namespace ovno2
