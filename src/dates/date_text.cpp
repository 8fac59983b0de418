#include "dates/date_text.h"

namespace ovno2 {

namespace {

using Kind = PicturePiece::Kind;

// At least `digits` digits.
void appendNumber(Text& text, Long number, std::size_t digits) {
    char16_t buffer[12];
    std::size_t start = std::size(buffer);
    do {
        buffer[--start] = static_cast<char16_t>(u'0' + number % 10);
        number /= 10;
    } while (number > 0);
    while (std::size(buffer) - start < digits)
        buffer[--start] = u'0';
    text.append(buffer + start, std::size(buffer) - start);
}

void appendName(Text& text, const PicturePiece& piece, const DateFields& fields, Long weekday) {
    const LocaleNames& names = localeNames();
    const bool abbreviated = piece.width == 3;
    if (piece.kind == Kind::monthName) {
        const auto month = static_cast<std::size_t>(fields.month - 1);
        text.append(abbreviated ? names.abbreviatedMonths[month] : names.months[month]);
    } else {
        const auto fromMonday = static_cast<std::size_t>((weekday + 5) % 7);
        text.append(abbreviated ? names.abbreviatedDays[fromMonday] : names.days[fromMonday]);
    }
}

void appendDesignator(Text& text, const PicturePiece& piece, Long hour) {
    const LocaleFormats& formats = localeFormats();
    const Text& designator = hour < 12 ? formats.morning : formats.afternoon;
    text.append(designator, 0, piece.width == 1 ? 1 : Text::npos);
}

void appendPicture(Text& text, const Picture& picture, const DateFields& fields, Long weekday) {
    for (const PicturePiece& piece : picture) {
        const std::size_t digits = piece.width == 1 ? 1 : 2;
        switch (piece.kind) {
            case Kind::literal:
                text.push_back(piece.character);
                break;
            case Kind::day:
                appendNumber(text, fields.day, digits);
                break;
            case Kind::month:
                appendNumber(text, fields.month, digits);
                break;
            case Kind::year:
                if (piece.width > 2)
                    appendNumber(text, fields.year, 4);
                else
                    appendNumber(text, fields.year % 100, digits);
                break;
            case Kind::hour24:
                appendNumber(text, fields.hour, digits);
                break;
            case Kind::hour12:
                appendNumber(text, fields.hour % 12 == 0 ? 12 : fields.hour % 12, digits);
                break;
            case Kind::minute:
                appendNumber(text, fields.minute, digits);
                break;
            case Kind::second:
                appendNumber(text, fields.second, digits);
                break;
            case Kind::designator:
                appendDesignator(text, piece, fields.hour);
                break;
            case Kind::dayName:
            case Kind::monthName:
                appendName(text, piece, fields, weekday);
                break;
        }
    }
}

bool hasTime(const DateFields& fields) {
    return fields.hour != 0 || fields.minute != 0 || fields.second != 0;
}

// The short date and the time behind it, each only where it says something; `appendTime` writes the time.
template <class AppendTime>
Text dateAndTime(DateValue date, AppendTime&& appendTime) {
    const LocaleFormats& formats = localeFormats();
    const DateFields fields = fieldsOf(date);
    const bool hasDate = serialDay(date) != 0;
    Text text;
    text.reserve(24);
    if (hasDate) appendPicture(text, formats.shortDate, fields, weekdayOf(date));
    if (hasDate && hasTime(fields)) text.push_back(u' ');
    if (!hasDate || hasTime(fields)) appendTime(text, fields, formats);
    return text;
}

}  // namespace

Text dateInPicture(DateValue date, const Picture& picture) {
    Text text;
    text.reserve(16);
    appendPicture(text, picture, fieldsOf(date), weekdayOf(date));
    return text;
}

Text shortDateText(DateValue date) {
    return dateInPicture(date, localeFormats().shortDate);
}

Text localDateText(DateValue date) {
    return dateAndTime(date, [](Text& text, const DateFields& fields, const LocaleFormats& formats) {
        appendNumber(text, fields.hour, 2);
        text.append(formats.timeSeparator);
        appendNumber(text, fields.minute, 2);
        text.append(formats.timeSeparator);
        appendNumber(text, fields.second, 2);
    });
}

Text generalDateText(DateValue date) {
    return dateAndTime(date, [](Text& text, const DateFields& fields, const LocaleFormats& formats) {
        appendPicture(text, formats.longTime, fields, /*weekday=*/1);
    });
}

}  // namespace ovno2
