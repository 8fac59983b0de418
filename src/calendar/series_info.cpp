#include "calendar/series_info.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <optional>

#include "core/attempt.h"
#include "dates/date_parser.h"
#include "dates/iso_date.h"
#include "library/library_start.h"

namespace ovno2::CalSeriesInfo {

using namespace std::string_view_literals;

namespace {

using library::Word;

constexpr TextView dayNames = u"SUMOTUWETHFRSA";
constexpr std::size_t daysAWeek = 7;
constexpr Long yearsWithoutCount = 100;
constexpr Long lastInterval = 255;  // what the recurrence word has room for
constexpr Long firstVersionWithDays = 36;

TextView dayName(std::size_t day) {
    return dayNames.substr(day * 2, 2);
}

// Bits, bit 0 Sunday, of the weekdays named in a text.
Long daysIn(TextView text) {
    Long days = 0;
    for (std::size_t day = 0; day < daysAWeek; ++day)
        if (text.find(dayName(day)) != TextView::npos) days |= 1 << day;
    return days;
}

bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

// The iCalendar style
// -----------------------------------------------------------------------------------------

void takeByDay(SeriesInfo& series, TextView value) {
    if (series.Frequency == daily) series.Frequency = weekly;
    if (series.Frequency == monthlyByDay) series.Frequency = monthlyByPosition;
    series.Days = daysIn(value);
    if (series.Frequency != monthlyByPosition) return;
    if (series.Days != 0) series.DayIndex = std::bit_width(static_cast<unsigned>(series.Days));
    series.WeekOfMonth = numericLong(value);
    series.Days = 0;
}

void takePart(SeriesInfo& series, const Text& key, Text& value) {
    if (key == u"FREQ") {
        static constexpr struct {
            TextView name;
            Long frequency;
        } kinds[] = {
            {u"DAILY"sv, daily}, {u"WEEKLY"sv, weekly}, {u"MONTHLY"sv, monthlyByDay}, {u"YEARLY"sv, yearly}};
        for (const auto& kind : kinds)
            if (value == kind.name) series.Frequency = kind.frequency;
        series.isRule = true;
    } else if (key == u"EXDATE") {
        if (!series.Exdates.empty()) series.Exdates.push_back(u';');
        series.Exdates.append(value);
    } else if (key == u"UNTIL") {
        series.Until = ISODate::GetISO8601Date(value, /*initialiseFormats=*/false, /*convertUtc=*/true);
    } else if (key == u"BYDAY") {
        takeByDay(series, value);
    } else if (key == u"COUNT") {
        series.Count = numericLong(value);
    } else if (key == u"INTERVAL") {
        series.Interval = numericLong(value);
    }
}

bool isCalendarStyle(const Text& rule) {
    return rule.starts_with(u"RRULE:") || rule.find(u"FREQ=") != Text::npos || rule.starts_with(u"EXDATE:");
}

void takeCalendarStyle(Text rule, SeriesInfo& series) {
    if (rule.starts_with(u"RRULE:")) rule.erase(0, 6);
    if (rule.ends_with(u"\\n")) rule.resize(rule.size() - 2);
    if (rule.starts_with(u"EXDATE:")) rule = replaceAll(rule, u":", u"=");
    for (const Text& part : split(rule, u';')) {
        std::vector<Text> pieces = split(part, u'=');
        if (pieces.size() < 2) continue;
        attempt([&] { takePart(series, upperCase(pieces[0]), pieces[1]); });
    }
}

// The vCalendar 1.0 style
// --------------------------------------------------------------------------------------

void dropLeading(Text& rule, std::size_t count) {
    rule.erase(0, count);
    rule = trimBlanks(rule);
}

// A position's digits stand directly before its sign, behind those of the interval: "MP121+" is every twelve
// months the first. What is left of the run is the interval's.
std::size_t intervalDigits(const Text& rule, bool byPosition) {
    std::size_t digits = 0;
    while (digits < rule.size() && isDigit(rule[digits]))
        ++digits;
    const bool endsInPosition =
        byPosition && digits > 0 && digits < rule.size() && (rule[digits] == u'+' || rule[digits] == u'-');
    return endsInPosition ? digits - 1 : digits;
}

// The interval, 0 when there is none.
Long takeInterval(Text& rule, bool byPosition) {
    const std::size_t digits = intervalDigits(rule, byPosition);
    if (digits == 0) return 0;
    const Long interval = numericLong(TextView(rule).substr(0, digits));
    dropLeading(rule, digits);
    return interval;
}

// The number of a day of the month, 0 when the rule goes on with something else, such as a date.
Long takeDayNumber(Text& rule) {
    std::size_t digits = 0;
    while (digits < rule.size() && isDigit(rule[digits]))
        ++digits;
    const bool isDate = digits < rule.size() && TextView(u" #+-").find(rule[digits]) == TextView::npos;
    const Long day = digits == 0 || isDate ? 0 : numericLong(TextView(rule).substr(0, digits));
    if (day < 1 || day > 31) return 0;
    dropLeading(rule, digits);
    return day;
}

bool beginsWithDay(TextView rule) {
    if (rule.size() < 2 || (rule.size() > 2 && rule[2] != u' ')) return false;
    for (std::size_t day = 0; day < daysAWeek; ++day)
        if (rule.starts_with(dayName(day))) return true;
    return false;
}

// Finds the date in what is left of a rule, behind weekdays and other words of up to three letters.
std::optional<Text> findUntil(Text rule) {
    while (beginsWithDay(rule))
        dropLeading(rule, 2);
    while (!rule.empty()) {
        Text date = ISODate::GetISO8601Date(rule, /*initialiseFormats=*/true, /*convertUtc=*/true);
        if (readDate(date)) {
            if (!rule.ends_with(u'Z')) return date;
            return ISODate::GetISO8601Date(rule, /*initialiseFormats=*/true, /*convertUtc=*/false);
        }
        const std::size_t blank = rule.find(u' ');
        if (blank > 2) break;  // none, or behind a longer word
        rule.erase(0, blank + 1);
    }
    return std::nullopt;
}

void takeOldStyle(Text rule, SeriesInfo& series, const Text& start) {
    const char16_t letter = rule[0];
    rule.erase(0, 1);
    char16_t subLetter = u'\0';
    if (rule.starts_with(u'P') || rule.starts_with(u'D')) {
        subLetter = rule[0];
        rule.erase(0, 1);
    }
    const Long interval = takeInterval(rule, letter == u'M' && subLetter == u'P');
    const Long dayNumber = interval != 0 ? takeDayNumber(rule) : 0;
    rule = trimBlanks(rule);
    Long count = 0;
    if (const std::size_t mark = rule.find(u'#'); mark != Text::npos) {
        count = numericLong(TextView(rule).substr(mark + 1));
        rule = trimBlanks(TextView(rule).substr(0, mark));
    }
    switch (letter) {
        case u'D':
            series.Frequency = daily;
            series.Interval = interval;
            break;
        case u'W':
            series.Frequency = weekly;
            series.Interval = interval;
            series.Days = daysIn(rule);
            break;
        case u'M':
            series.Frequency = subLetter == u'P' ? monthlyByPosition : monthlyByDay;
            series.Interval = interval;
            if (subLetter == u'D') series.Days = dayNumber;
            break;
        case u'Y':
            series.Frequency = yearly;
            break;
        default:
            return;
    }
    series.isRule = true;
    series.Count = count;
    if (const std::size_t mark = rule.find(u"EX:"); mark != Text::npos) {
        series.Exdates = trimBlanks(TextView(rule).substr(mark + 3));
        rule = trimBlanks(TextView(rule).substr(0, mark));
    }
    if (std::optional<Text> until = findUntil(rule)) {
        series.Until = std::move(*until);
        return;
    }
    if (start.empty() || !series.Until.empty()) return;
    SeriesInfo counted = series;  // an interval that the rule does not give stays 0
    series.Until = SeriesEndDate(start, counted);
}

}  // namespace

void GetSeriesInfo(const Text& rule, SeriesInfo& series, const Text& start, Long options) noexcept {
    const RoutineLog log(u"GetSeriesInfo");
    if ((options & keepsSeries) == 0) series = {};
    if (rule.empty()) return;
    attempt([&] {
        if (isCalendarStyle(rule))
            takeCalendarStyle(rule, series);
        else
            takeOldStyle(rule, series, start);
    });
}

Text SeriesEndDate(const Text& start, SeriesInfo& series) noexcept {
    static constexpr TextView units = u"d   ww  m   m   yyyyyyyy";
    Text end;
    attempt([&] {
        if (series.Interval == 0) series.Interval = 1;
        if (series.Count < 1) {
            end = ISODate::DateAddText(u"yyyy", yearsWithoutCount, start);
            return;
        }
        if (series.Frequency < 0 || series.Frequency > yearly) throw RuntimeFailure(invalidProcedureCall);
        const Text unit = trimBlanks(units.substr(static_cast<std::size_t>(series.Frequency) * 4, 4));
        const std::int64_t steps = (std::int64_t{series.Count} - 1) * series.Interval;
        if (steps > std::numeric_limits<Long>::max() || steps < std::numeric_limits<Long>::min())
            throw RuntimeFailure(overflowFailure);
        end = ISODate::DateAddText(unit, static_cast<Long>(steps), start);
        if (series.Frequency != weekly || series.Days == 0) return;
        const Long last = std::bit_width(static_cast<unsigned>(series.Days));
        for (std::size_t day = 0; day < daysAWeek; ++day) {
            end = ISODate::DateAddText(u"d", 1, end);
            const std::optional<DateValue> date = readDate(end);
            if (!date || weekdayOf(*date) == last) break;
        }
    });
    return end;
}

Word recurrenceWord(const SeriesInfo& series, DateValue start, Long contentVersion) {
    Word word = library::repeatsNot;
    switch (series.Frequency) {
        case daily:
            word = library::repeatsDaily;
            break;
        case weekly:
            word = library::repeatsWeekly;
            break;
        case monthlyByDay:
        case monthlyByPosition:
            word = library::repeatsMonthly;
            break;
        case yearly:
            word = library::repeatsYearly;
            break;
        default:
            break;
    }
    if (series.Interval > lastInterval) throw RuntimeFailure(overflowFailure);
    if (series.Interval >= 1) word |= static_cast<Word>(series.Interval) << 8;
    if (contentVersion < firstVersionWithDays) return word;
    Word days = 0;
    if (series.Frequency == monthlyByDay || series.Frequency == monthlyByPosition)
        days = 1u << (weekdayOf(start) + 5) % 7;
    else if (series.Frequency == weekly && series.Days != 0)
        days = (static_cast<Word>(series.Days) >> 1 | (static_cast<Word>(series.Days) & 1u) << 6) & 0x7Fu;
    return word | days << 16;
}

Text ruleText(Word recurrence, DateValue start) {
    constexpr Word byteMask = 0xFF;
    const Word kind = recurrence & byteMask;
    const Word interval = std::max<Word>(recurrence >> 8 & byteMask, 1);
    const Word days = recurrence >> 16 & 0x7F;
    static constexpr TextView letters[] = {u"", u"D", u"W", u"MD", u"YD"};
    if (kind == library::repeatsNot || kind > library::repeatsYearly) return {};
    const bool byPosition = kind == library::repeatsMonthly && days != 0;
    Text text(byPosition ? u"MP"sv : letters[kind]);
    text.append(decimalText(static_cast<Long>(interval)));
    if (kind == library::repeatsWeekly)
        for (std::size_t day = 0; day < daysAWeek; ++day)
            if ((days >> day & 1) != 0) text.append(u" ").append(dayName((day + 1) % daysAWeek));
    if (byPosition) {
        // How often the weekday occurs from the first of the month up to the start.
        const Long weekday = static_cast<Long>(std::bit_width(days) % daysAWeek) + 1;
        const Long dayOfMonth = fieldsOf(start).day;
        const Long sinceLast = (weekdayOf(start) - weekday + 7) % 7;
        const Long position = dayOfMonth > sinceLast ? (dayOfMonth - sinceLast - 1) / 7 + 1 : 0;
        text.append(decimalText(position)).append(u"+");
    }
    return text;
}

}  // namespace ovno2::CalSeriesInfo
