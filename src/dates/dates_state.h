// What the date routines keep on the thread.
#pragma once

#include "dates/locale_formats.h"
#include "platform/locale.h"
#include "platform/thread_state.h"

namespace ovno2 {

// The date and time settings; empty until `DateTimeInit` and `GetDateformat` fill them.
struct DateTimeSettings {
    Text DateFormat;  // the short date with "dd", "MM" and "yy" or "yyyy"
    Text
        DateOnlyFormat;  // in place of the short date when its rendering cannot be read back; empty as a rule
    Text TimeSeparator;
    Text ZeroTime;  // midnight with this separator, "00:00:00"
    Text AMSymbol;  // both empty when the user's time format has no designator at its end
    Text PMSymbol;
    Long ActiveTimeBias = 0;  // minutes to add to local time for UTC, as of now
};

struct DatesState {
    static constexpr StateSlot slot = StateSlot::dates;
    DateTimeSettings settings;
    platform::TimeZoneInformation timeZone;
    LocaleFormatsState locale;
};

}  // namespace ovno2
