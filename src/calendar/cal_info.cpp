#include "calendar/cal_info.h"

#include <algorithm>

#include "calendar/series_info.h"
#include "content/item_dates.h"
#include "core/attempt.h"
#include "dates/date_text.h"
#include "dates/iso_date.h"
#include "devices/devices.h"
#include "library/library_memory.h"
#include "library/library_start.h"
#include "library/library_texts.h"

namespace ovno2::Calendar {

using namespace std::string_view_literals;  // names of routines whose length is known beforehand

namespace {

using library::DateRecord;
using library::Word;

constexpr Long firstYear = 1900;
constexpr Long lastYearWithoutDaylight = 1980;
constexpr Long lastHourOfSameDay = 14;
constexpr Word noValue = 0xFFFF;
constexpr std::size_t mostExceptions = 50;

bool isText(Word fieldId) {
    return fieldId != library::calendarPriority && fieldId != library::calendarStatus;
}

// A phone that keeps a note's day as a time in UTC may give it as the evening before.
DateValue dayOfNote(DateValue date) {
    attempt([&] {
        const Long hour = fieldsOf(date).hour;
        if (hour > lastHourOfSameDay) date = addSeconds(date, (24 - hour) * 3600);
    });
    return date;
}

DateValue startOf(const Entry& entry, bool withTime) {
    const DateValue date = Content::GetDateFromStruct(entry.record.start, withTime, utcMode);
    return entry.isNote() ? dayOfNote(date) : date;
}

DateValue endOf(const Entry& entry, bool withTime) {
    DateValue date = Content::GetDateFromStruct(entry.record.end, withTime, utcMode);
    if (entry.isNote()) date = dayOfNote(date);
    if (entry.isNote() || entry.isBirthday())
        attempt([&] {
            if (serialDay(date) != serialDay(startOf(entry, withTime))) date = addSeconds(date, -1);
        });
    return date;
}

Text dateText(const DateRecord& record, DateValue date) {
    return record.year == 0 ? Text() : ISODate::FormatISODate(date, /*dateOnly=*/false);
}

Text alarmText(const Entry& entry) {
    const auto read = [&](Long mode) {
        return Content::GetDateFromStruct(entry.record.alarm, /*withTime=*/true, mode);
    };
    DateValue date = read(utcMode);
    if (const Long mode = alarmMode(entry, date); mode != utcMode) date = read(mode);
    if (serialDay(date) == 0) return {};  // a time without a date
    Long year = 0;
    attempt([&] { year = fieldsOf(date).year; });
    return year < firstYear ? Text() : ISODate::FormatISODate(date, /*dateOnly=*/false);
}

Text repeatText(const Entry& entry) {
    Text text;
    attempt([&] {
        const DateValue start = startOf(entry, hasTimeOfDay(entry.record.type));
        text = CalSeriesInfo::ruleText(entry.record.recurrence, start);
    });
    if (text.empty()) return text;
    const DateValue last =
        Content::GetDateFromStruct(entry.record.recurrenceEnd, /*withTime=*/false, utcMode);
    Long year = 0;
    attempt([&] { year = fieldsOf(last).year; });
    if (year >= firstYear) text.append(u" ").append(ISODate::FormatISODate(last, /*dateOnly=*/true));
    return text;
}

// The last item of the id that has a value.
Text itemText(const Entry& entry, Word fieldId) {
    for (auto item = entry.items.rbegin(); item != entry.items.rend(); ++item) {
        if (item->FieldId != fieldId) continue;
        if (!isText(fieldId)) return decimalText(static_cast<Long>(item->Value));
        if (fieldId == library::calendarBirthdayMark) return u"1";
        if (item->Value == 0 || item->Value == noValue) continue;
        if (fieldId == library::calendarDescription && entry.isBirthday())
            return decimalText(static_cast<Long>(item->Value));
        return library::GetStringFromPointer(item->Value);
    }
    return {};
}

Word fieldIdOf(Long code) {
    switch (code) {
        case value::summary:
            return library::calendarSummary;
        case value::status:
            return library::calendarStatus;
        case value::location:
            return library::calendarLocation;
        case value::description:
            return library::calendarDescription;
        case value::priority:
            return library::calendarPriority;
        default:
            return code >= value::firstFieldId ? static_cast<Word>(code) : 0;
    }
}

Text plainValue(const Entry& entry, Long code, bool withTime) {
    switch (code) {
        case value::start:
            return entry.isToDo() ? Text() : dateText(entry.record.start, startOf(entry, withTime));
        case value::end:
            return entry.isToDo() ? Text() : dateText(entry.record.end, endOf(entry, withTime));
        case value::due:
            return entry.isToDo()
                       ? dateText(entry.record.start,
                                  Content::GetDateFromStruct(entry.record.start, /*withTime=*/true, utcMode))
                       : Text();
        case value::rule:
            return repeatText(entry);
        case value::alarm:
            return alarmText(entry);
        default:
            break;
    }
    const Word fieldId = fieldIdOf(code);
    return fieldId == 0 ? Text() : itemText(entry, fieldId);
}

// The lines of a block.
class Lines {
  public:
    Lines() { text_.reserve(512); }
    void add(TextView name, TextView content = {}) {
        if (!text_.empty()) text_.append(u"\r\n");
        text_.append(name).append(content);
    }
    void addUnlessEmpty(TextView name, TextView content) {
        if (!content.empty()) add(name, content);
    }
    Text take() { return std::move(text_); }

  private:
    Text text_;
};

TextView typeLine(Word type) {
    static constexpr TextView lines[] = {
        u""sv, u"TYPE:Meeting"sv, u"TYPE:Call"sv, u"TYPE:Birthday"sv, u"TYPE:Note"sv, u"TYPE:Reminder"sv};
    return type < std::size(lines) ? lines[type] : TextView();
}

constexpr std::size_t dateLength = 8;

void cutToDate(Text& iso) {
    if (iso.size() > dateLength) iso.resize(dateLength);
}

// The first day after a note, at least one day after its first.
Text endOfNote(Text start, Text end) {
    const Text first = ISODate::GetISO8601Date(start, /*initialiseFormats=*/true, /*convertUtc=*/true);
    const Text last = ISODate::GetISO8601Date(end, /*initialiseFormats=*/true, /*convertUtc=*/true);
    const Long days = std::max<Long>(ISODate::DateDiffText(u"d", first, last), 1);
    return ISODate::ConvertToISO8601Date(ISODate::DateAddText(u"d", days, first), /*dateOnly=*/true);
}

// Puts the year of birth in the place of the year in which the phone shows the birthday first.
void putYear(Text& iso, const Text& year) {
    if (iso.size() >= year.size() && !iso.starts_with(year)) iso.replace(0, year.size(), year);
}

}  // namespace

Word calendarRecordSize() {
    constexpr Long firstVersionWithExceptions = 36;
    return library::recordedContentVersion() < firstVersionWithExceptions ? library::shortCalendarRecord
                                                                          : library::longCalendarRecord;
}

bool hasTimeOfDay(Word type) {
    if (type == library::calendarNote) return Devices::platformType() >= eNokiaPhoneS60_3_FP1;
    return type != library::calendarBirthday;
}

Long alarmMode(const Entry& entry, DateValue alarm) {
    if (entry.phonePlatform < eNokiaPhoneS60 || !(entry.isBirthday() || entry.isNote())) return utcMode;
    Long year = 0;
    attempt([&] { year = fieldsOf(alarm).year; });
    return year <= lastYearWithoutDaylight ? utcModeWithoutDaylight : utcMode;
}

void takeItems(Entry& entry) {
    constexpr Word countMask = 0xFF;
    const Word count = entry.record.items.count & countMask;
    entry.items.clear();
    Content::CopyToDataStruct(entry.items, entry.record.items.items, static_cast<Long>(count));
}

Text GetCalInfo(const Entry& entry, Long code, bool withTime) {
    const RoutineLog log(u"GetCalInfo"sv);
    Text text = plainValue(entry, code, withTime);
    if (contains(text, u'\n')) text = removeAll(text, u'\n');
    if (contains(text, u'\r')) text = replaceAll(text, u"\r", u"\\n");
    return text;
}

std::optional<Text> exceptionsText(const library::CalendarRecord& record) {
    if (record.size < library::longCalendarRecord || record.exceptionCount == 0 ||
        !library::isAddress(record.exceptions))
        return std::nullopt;
    Text list;
    const auto count = std::min<std::size_t>(record.exceptionCount, mostExceptions);
    std::vector<DateRecord> dates;
    attempt([&] { library::copyBlock(record.exceptions, count, dates); });
    for (const DateRecord& exception : dates) {
        const DateValue date = Content::GetDateFromStruct(exception, /*withTime=*/true, utcMode);
        if (serialDay(date) == 0) continue;
        if (!list.empty()) list.push_back(u';');
        list.append(ISODate::FormatISODate(date, /*dateOnly=*/true));
    }
    return list;
}

Times shownTimes(const Entry& entry) {
    const bool withTime = hasTimeOfDay(entry.record.type);
    Times times;
    times.start = GetCalInfo(entry, value::start, withTime);
    times.end = GetCalInfo(entry, value::end, withTime);
    times.alarm = GetCalInfo(entry, value::alarm, withTime);
    if (entry.isBirthday() || entry.isNote()) cutToDate(times.start);
    if (entry.isBirthday()) cutToDate(times.end);
    if (entry.isNote()) times.end = endOfNote(times.start, times.end);
    if (entry.isBirthday()) {
        const Text birthYear = itemText(entry, library::calendarDescription);
        const Long year = birthYear.size() == 4 ? numericLong(birthYear) : 0;
        if (year > firstYear && year < lastYearWithoutDaylight)
            for (Text* const iso : {&times.start, &times.end, &times.alarm})
                putYear(*iso, birthYear);
    }
    return times;
}

Text entryText(const Entry& entry, const Text& folderName, const Text& uid) {
    Lines lines;
    lines.add(entry.isToDo() ? u"BEGIN:VTODO"sv : u"BEGIN:VEVENT"sv);
    lines.addUnlessEmpty({}, typeLine(entry.record.type));
    lines.add(u"DESCRIPTION:", GetCalInfo(entry, value::description, /*withTime=*/true));
    lines.addUnlessEmpty(u"SUMMARY:", GetCalInfo(entry, value::summary, /*withTime=*/true));
    DebugWrite(u"WriteDebugInfo", 3);
    Text alarm;
    if (entry.isToDo()) {
        const Text due = GetCalInfo(entry, value::due, /*withTime=*/true);
        const Text priority = GetCalInfo(entry, value::priority, /*withTime=*/true);
        lines.add(u"DUE:", TextView(due).substr(0, due.find(u'T')));
        lines.add(u"PRIORITY:", priority.empty() ? u"2"sv : TextView(priority));
        lines.add(u"STATUS:", GetCalInfo(entry, value::status, /*withTime=*/true));
        alarm = GetCalInfo(entry, value::alarm, /*withTime=*/true);
    } else {
        Times times = shownTimes(entry);
        lines.add(u"DTSTART:", times.start);
        lines.add(u"DTEND:", times.end);
        alarm = std::move(times.alarm);
    }
    DebugWrite(u"WriteDebugInfo", 4);
    if (!folderName.empty() && folderName != u"/" && folderName != u"\\") lines.add(u"CALENDAR:", folderName);
    lines.add(u"AALARM:", alarm);
    lines.add(u"DALARM:", alarm);
    lines.addUnlessEmpty(u"LOCATION:", GetCalInfo(entry, value::location, /*withTime=*/true));
    lines.addUnlessEmpty(u"RRULE:", GetCalInfo(entry, value::rule, /*withTime=*/true));
    if (const std::optional<Text> exceptions = exceptionsText(entry.record))
        lines.add(u"EXDATE:", *exceptions);
    DebugWrite(u"WriteDebugInfo", 5);
    if (entry.isBirthday())
        lines.addUnlessEmpty(u"X-BIRTHDAY:",
                             GetCalInfo(entry, static_cast<Long>(library::calendarBirthdayMark), true));
    lines.add(u"X-IRMC-LUID:", uid);
    lines.add(entry.isToDo() ? u"END:VTODO"sv : u"END:VEVENT"sv);
    return lines.take();
}

}  // namespace ovno2::Calendar
