#include "dates/iso_date.h"

#include "base/values.h"
#include "core/attempt.h"
#include "core/current_platform.h"
#include "dates/date_parser.h"
#include "dates/date_text.h"
#include "pc/registry_access.h"

namespace ovno2::ISODate {

namespace {

DateTimeSettings& settings() {
    return stateOf<DatesState>().settings;
}

// Makes sure that the settings exist, which needs memory the first time. False when there is none: then a
// routine has nothing to work with.
bool settingsExist() noexcept {
    return attempt([] { settings(); }) == noFailure;
}

// Nothing when the text is not readable as a date.
std::optional<DateFields> readable(TextView text) noexcept {
    std::optional<DateFields> fields;
    attempt([&] { fields = readDateFields(text); });
    return fields;
}

// At most `length` characters from the 1-based `position` on, fewer at the end of the text.
TextView middle(TextView text, std::size_t position, std::size_t length) {
    return position > text.size() ? TextView() : text.substr(position - 1, length);
}

// `number` with at least `digits` digits, at most 4.
void appendDigits(Text& text, Long number, int digits) {
    static constexpr Long powers[] = {1, 10, 100, 1000};
    for (int i = digits - 1; i >= 0; --i)
        text.push_back(static_cast<char16_t>(u'0' + number / powers[i] % 10));
}

Text isoText(const DateFields& fields, bool dateOnly) {
    Text text;
    text.reserve(15);
    appendDigits(text, fields.year, 4);
    appendDigits(text, fields.month, 2);
    appendDigits(text, fields.day, 2);
    if (dateOnly) return text;
    text.push_back(u'T');
    appendDigits(text, fields.hour, 2);
    appendDigits(text, fields.minute, 2);
    appendDigits(text, fields.second, 2);
    return text;
}

// The short date, or the format that stands in for it.
Text dateText(DateValue date) {
    const Text& format = settings().DateOnlyFormat;
    return format.empty() ? shortDateText(date) : dateInPicture(date, datePicture(format));
}

// GetDateformat, step by step
// -------------------------------------------------------------------------------------

Text platformOrRegistry(platform::LocaleItem item, TextView registryName, std::size_t shortest) {
    Text text;
    attempt([&] { text = currentPlatform().locale().item(item); });
    if (text.size() < shortest)
        attempt([&] {
            text =
                Registry::GetRegValue(platform::currentUser, u"Control Panel\\International", registryName);
        });
    return text;
}

// Takes the first literal between apostrophes out, with the blank in front of it.
void removeQuotedLiteral(Text& format) {
    std::size_t from = format.find(u'\'');
    if (from == Text::npos) return;
    if (from > 0 && format[from - 1] == u' ') --from;
    const std::size_t closing = format.find(u'\'', from + 2);
    format.erase(from, closing == Text::npos ? Text::npos : closing - from + 1);
}

// Sets the date-only format when the platform's own rendering of a date cannot be read back.
void checkRendering(const Text& format) {
    const auto readsBack = [] { return readable(DateSerialText(2006, 1, 1)).has_value(); };
    if (readsBack()) return;
    const std::size_t lastBlank = format.rfind(u' ');
    if (lastBlank == Text::npos) return;
    settings().DateOnlyFormat = format.substr(0, lastBlank);
    if (!readsBack()) settings().DateOnlyFormat.clear();
}

// The format that a rendered date shows.
Text derivedFormat() {
    Text format = localDateText(dateSerial(2003, 2, 1));
    static constexpr struct {
        TextView digits, letters;
    } parts[] = {{u"2003", u"yyyy"}, {u"03", u"yy"}, {u"01", u"dd"},
                 {u"1", u"dd"},      {u"02", u"MM"}, {u"2", u"MM"}};
    for (const auto& part : parts)
        format = replaceAll(format, part.digits, part.letters);
    return format;
}

// The day becomes "dd", the month "MM" and the year at least two letters.
void normalise(Text& format) {
    if (!containsIgnoringCase(format, u"dd")) format = replaceAll(format, u"d", u"dd");
    if (!containsIgnoringCase(format, u"yy"))
        format = replaceAll(replaceAll(format, u"Y", u"YY"), u"y", u"yy");
    if (!containsIgnoringCase(format, u"MM")) format = replaceAll(format, u"M", u"MM");
}

// GetISO8601Date, step by step
// ------------------------------------------------------------------------------------

// The text behind a weekday prefix such as "MO " and behind the first blank, when a date can still follow.
TextView withoutPrefix(TextView text) {
    const Text prefix = upperCase(text.substr(0, 3));
    if (TextView(u"SU SO MO TH TU WE FR ").find(prefix) != TextView::npos)
        text.remove_prefix(std::min<std::size_t>(3, text.size()));
    const std::size_t blank = text.find(u' ');
    if (blank != TextView::npos && blank + 1 + 8 < text.size()) text.remove_prefix(blank + 1);
    return text;
}

// A date written by the settings' own format, for renderings that the user's characters cannot show. Month
// and day keep the digits they have.
Text dateByFormat(Long year, Long month, Long day) {
    const auto lastTwo = [](const Text& digits) {
        return digits.size() > 2 ? digits.substr(digits.size() - 2) : digits;
    };
    Text text = replaceAll(settings().DateFormat, u"yyyy", decimalText(year));
    text = replaceAll(text, u"yy", lastTwo(decimalText(year)));
    text = replaceAll(text, u"MM", lastTwo(decimalText(month)));
    text = replaceAll(text, u"M", decimalText(month));
    text = replaceAll(text, u"dd", lastTwo(decimalText(day)));
    return replaceAll(text, u"d", decimalText(day));
}

// Whether the date format, or while it has not been fetched the user's own, has a blank inside.
bool formatHasBlank() {
    const Text& format = settings().DateFormat;
    return (format.empty() ? localeFormats().shortDateText : format).find(u' ') != Text::npos;
}

// An ISO basic date, with or without its time, as local text.
Text localFromBasic(TextView iso) {
    const Long year = numericLong(iso.substr(0, 4));
    const Long month = numericLong(middle(iso, 5, 2));
    const Long day = numericLong(middle(iso, 7, 2));
    Text local;
    if (year != 0) {
        attempt([&] { local = dateText(dateSerial(year, month, day)); });
        if (local.find(u'?') != Text::npos) attempt([&] { local = dateByFormat(year, month, day); });
    }
    if (iso.size() == 8) {
        // Some renderings carry more than the date behind a blank.
        const std::size_t blank = local.find(u' ');
        if (blank != Text::npos && !formatHasBlank()) local.resize(blank);
        return local;
    }
    const TextView seconds = middle(iso, 14, 2);
    local.reserve(local.size() + 9);
    local.append(u" ").append(middle(iso, 10, 2)).append(u":").append(middle(iso, 12, 2)).append(u":");
    local.append(2 - seconds.size(), u'0').append(seconds);
    return local;
}

bool isDashed(TextView text) {
    return text.size() >= 8 && text[4] == u'-' && (text[7] == u'-' || text[6] == u'-');
}

// Everything but the shift to local time.
Text localFromIso(const Text& text, bool initialiseFormats) {
    const TextView iso = withoutPrefix(text == u"0" ? TextView() : TextView(text));
    if (iso.empty()) return {};
    DateTimeSettings& state = settings();
    if (state.DateFormat.size() < 8 && initialiseFormats) {
        DateTimeInit();
        state.DateFormat = GetDateformat();
    }
    if (isDashed(iso)) return ISODashedToLocal(text);
    if (iso.size() != 8 && middle(iso, 9, 1) != u"T") {
        DebugLine(u"GetISO8601Date: ", iso);
        return Text(iso);
    }
    if (!initialiseFormats && (state.DateFormat.size() < 8 || state.DateFormat.size() > 12)) DateTimeInit();
    return localFromBasic(iso);
}

// ConvertToISO8601Date, step by step
// ------------------------------------------------------------------------------

// Completes the hour behind the last blank to a time, as the settings write midnight. The text as it is where
// nothing is to be filled in. Fails when what stands behind the blank is longer than a time.
Text withFilledTime(TextView text) {
    const DateTimeSettings& state = settings();
    const std::size_t blank = text.rfind(u' ');
    if (!state.AMSymbol.empty() || blank == TextView::npos ||
        text.find(state.TimeSeparator) != TextView::npos)
        return Text(text);
    const std::size_t behind = text.size() - blank - 1;
    if (behind > 8) throw RuntimeFailure(invalidProcedureCall);
    const std::size_t missing = std::min(8 - behind, state.ZeroTime.size());
    return Text(text).append(state.ZeroTime, state.ZeroTime.size() - missing);
}

// The text with its time filled in, else as it is; where neither is readable, each without its full stops.
std::optional<DateFields> readableForIso(TextView text, TextView filled) {
    for (const bool withStops : {true, false})
        for (const TextView form : {filled, text})
            if (const auto fields = withStops ? readable(form) : readable(removeAll(form, u'.')))
                return fields;
    return {};
}

}  // namespace

const DateTimeSettings& Settings() {
    return settings();
}

void DateTimeInit() noexcept {
    const RoutineLog log(u"DateTimeInit");
    GetTimeFormat();
}

void GetTimeFormat() noexcept {
    static constexpr TextView international = u"Control Panel\\International";
    if (!settingsExist()) return;
    forgetLocaleFormats();
    DateTimeSettings& state = settings();
    Text separator = platformOrRegistry(platform::LocaleItem::timeSeparator, u"sTime", /*shortest=*/1);
    DebugLine(u"GetTimeFormat: ", separator);
    if (separator.empty())
        attempt([&] {
            // What stands behind the hour of the present moment.
            const Text now = localDateText(currentDateTime());
            const std::size_t blank = now.find(u' ');
            const TextView time = blank == Text::npos ? TextView() : TextView(now).substr(blank + 1);
            const std::size_t place = time.find_first_not_of(u"1234567890");
            separator = place == TextView::npos ? Text(u":") : Text(time.substr(place, 1));
        });
    if (separator.empty()) separator = u":";
    attempt([&] {
        Text zero(u"00");
        zero.append(separator).append(u"00").append(separator).append(u"00");
        state.ZeroTime = std::move(zero);
    });
    state.TimeSeparator = std::move(separator);
    state.AMSymbol.clear();
    state.PMSymbol.clear();
    attempt([&] {
        state.ActiveTimeBias = numericLong(Registry::GetRegValue(
            platform::localMachine, u"SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation",
            u"ActiveTimeBias"));
    });
    Text timeFormat;
    attempt(
        [&] { timeFormat = Registry::GetRegValue(platform::currentUser, international, u"sTimeFormat"); });
    if (!timeFormat.ends_with(u"tt")) return;
    attempt([&] { state.AMSymbol = Registry::GetRegValue(platform::currentUser, international, u"s1159"); });
    attempt([&] { state.PMSymbol = Registry::GetRegValue(platform::currentUser, international, u"s2359"); });
}

Text GetDateformat() noexcept {
    const RoutineLog log(u"GetDateformat");
    Text format = platformOrRegistry(platform::LocaleItem::shortDate, u"sShortDate", /*shortest=*/5);
    DebugLine(format);
    removeQuotedLiteral(format);
    attempt([&] { checkRendering(format); });
    attempt([&] { format = trimBlanks(format); });
    if (format.empty()) attempt([&] { format = derivedFormat(); });
    DebugLine(u"GetDateFormat: ", format);
    attempt([&] { normalise(format); });
    if (format.empty()) attempt([&] { format = u"dd.MM.yy"; });
    DebugLine(u"GetDateFormat: ", format);
    return format;
}

Text GetISO8601Date(Text& text, bool initialiseFormats, bool convertUtc) noexcept {
    const RoutineLog log(u"GetISO8601Date");
    Text result;
    if (text == u"TZ") text.clear();
    if (readable(text)) {
        attempt([&] { result = text; });
    } else {
        attempt([&] { result = localFromIso(text, initialiseFormats); });
        if (text.ends_with(u'Z') && convertUtc && !result.empty())
            result = DateAddText(u"n", -settings().ActiveTimeBias, result);
    }
    if (pendingFailure().number != noFailure && !result.empty()) DebugWrite(result);
    return result;
}

Text ConvertToISO8601Date(TextView text, bool dateOnly) noexcept {
    Text result;
    if (text.empty() || !settingsExist()) return result;
    Text filled;
    TextView completed;
    for (;;) {
        std::optional<DateFields> fields;
        completed = text;
        if (text.size() <= longestDateText) {
            if (attempt([&] { filled = withFilledTime(text); }) == noFailure) completed = filled;
            attempt([&] { fields = readableForIso(text, completed); });
        }
        if (fields) {
            attempt([&] { result = isoText(*fields, dateOnly); });
            return result;
        }
        const TextView end = text.substr(text.size() - std::min<std::size_t>(2, text.size()));
        if (end != u" a" && end != u" p" && end != u" A" && end != u" P") break;
        text.remove_suffix(2);
        while (text.starts_with(u' '))
            text.remove_prefix(1);
        while (text.ends_with(u' '))
            text.remove_suffix(1);
        if (text.empty()) return result;
    }
    if (dateOnly) return result;
    DebugLine(u"ConvertToISO8601Date: '", settings().DateFormat, u"' '", completed, u"'");
    result = u"T";
    return result;
}

Text FormatISODate(DateValue date, bool dateOnly) noexcept {
    Text text;
    attempt([&] { text = isoText(fieldsOf(date), dateOnly); });
    return text;
}

Text ISODashedToLocal(TextView text) noexcept {
    Text local;
    attempt([&] { local = settings().DateFormat; });
    const std::size_t first = text.find(u'-');
    const std::size_t second = first == TextView::npos ? first : text.find(u'-', first + 1);
    if (second == TextView::npos) {
        raisePending(invalidProcedureCall);
        return local;
    }
    const auto twoDigits = [](TextView digits) {
        Text padded(u"0");
        padded.append(digits);
        return padded.substr(padded.size() - std::min<std::size_t>(2, padded.size()));
    };
    const TextView year = text.substr(0, first);
    attempt([&] { local = replaceAll(local, u"yyyy", year); });
    attempt([&] { local = replaceAll(local, u"yy", year); });
    attempt([&] { local = replaceAll(local, u"MM", twoDigits(text.substr(first + 1, second - first - 1))); });
    attempt([&] { local = replaceAll(local, u"dd", twoDigits(text.substr(second + 1))); });
    return local;
}

Text DateAddText(TextView interval, Long count, TextView text) noexcept {
    Text result;
    const std::optional<DateFields> fields = readable(text);
    if (fields)
        attempt([&] { result = localDateText(addIntervals(interval, count, dateOf(*fields))); });
    else
        attempt([&] { result = text; });
    return result;
}

Long DateDiffText(TextView interval, TextView first, TextView second) noexcept {
    if (first.empty() && second.empty()) return 0;
    if (first.empty()) return -1;
    if (second.empty()) return 1;
    const std::optional<DateFields> from = readable(first);
    const std::optional<DateFields> to = readable(second);
    if (!from || !to) return -1;
    Long difference = 0;
    attempt([&] { difference = intervalsBetween(interval, dateOf(*from), dateOf(*to)); });
    return difference;
}

Text DateSerialText(Long year, Long month, Long day) noexcept {
    Text text;
    attempt([&] {
        const DateValue date = dateSerial(year, month, day);
        text = settings().DateOnlyFormat.empty() ? localDateText(date) : dateText(date);
    });
    return text;
}

}  // namespace ovno2::ISODate
