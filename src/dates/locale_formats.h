// How the user writes dates and times: the locale's pictures and words, taken apart once.
//
// Kept per thread, read from the platform's locale when first needed and again after `forgetLocaleFormats`.
// What the platform does not know comes from the user's registry values, then from a fixed default. The
// renderer (date_text.h) and the parser (date_parser.h) both work from here, so that each reads what the
// other writes.
#pragma once

#include <array>
#include <vector>

#include "platform/locale.h"
#include "platform/thread_state.h"

namespace ovno2 {

// One piece of a picture such as "dd.MM.yyyy" or "h:mm:ss tt".
struct PicturePiece {
    enum class Kind : std::uint8_t {
        literal,
        day,
        dayName,
        month,
        monthName,
        year,
        hour24,
        hour12,
        minute,
        second,
        designator
    };
    Kind kind = Kind::literal;
    std::uint8_t width = 1;      // letters in the picture, at most 4; names: 3 = abbreviated, 4 = full
    char16_t character = u'\0';  // of a literal

    bool isNumber() const {
        return kind != Kind::literal && kind != Kind::dayName && kind != Kind::monthName &&
               kind != Kind::designator;
    }
};
using Picture = std::vector<PicturePiece>;

// Text between apostrophes is literal, two apostrophes are one; letters of the other kind of picture are
// literal.
Picture datePicture(TextView picture);  // d, dd, ddd, dddd, M to MMMM, y, yy, yyyy; eras (g) are left out
Picture timePicture(TextView picture);  // h, hh, H, HH, m, mm, s, ss, t, tt

enum class DateOrder { dayMonthYear, monthDayYear, yearMonthDay };

struct LocaleFormats {
    Text shortDateText;  // the picture as the platform states it
    Picture shortDate;
    Picture longTime;
    DateOrder order = DateOrder::dayMonthYear;
    char16_t dateSeparator = u'\0';  // the first one in the short date; 0 when it has only blanks
    Text timeSeparator;
    Text morning;
    Text afternoon;
};

// Names in the order of the calendar: January first; days Monday first. English where the platform has none.
struct LocaleNames {
    std::array<Text, 12> months;
    std::array<Text, 12> abbreviatedMonths;
    std::array<Text, 7> days;
    std::array<Text, 7> abbreviatedDays;
};

struct LocaleFormatsState {
    bool formatsKnown = false;
    bool namesKnown = false;
    LocaleFormats formats;
    LocaleNames names;
};

// Accepted in every locale beside the user's own names.
extern const std::array<TextView, 12> englishMonths;
extern const std::array<TextView, 7> englishDays;
inline constexpr std::size_t englishAbbreviation = 3;  // letters

// Valid until `forgetLocaleFormats`. Throw only when memory runs out.
const LocaleFormats& localeFormats();
const LocaleNames& localeNames();
void forgetLocaleFormats();

}  // namespace ovno2
