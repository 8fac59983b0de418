#include "calendar/entry_editor.h"

#include <algorithm>
#include <cmath>

#include "calendar/series_info.h"
#include "content/item_dates.h"
#include "core/settings.h"
#include "dates/date_parser.h"
#include "dates/date_text.h"
#include "dates/iso_date.h"
#include "devices/devices.h"
#include "library/library_memory.h"
#include "library/library_start.h"
#include "library/library_texts.h"

namespace ovno2::Calendar {

namespace {

using Content::DataItem;
using library::DateRecord;
using library::Word;

constexpr Long firstS40Year = 1980;
constexpr Long lastSeriesYear = 2100;
constexpr Long endlessYears = 100;
constexpr Long firstVersionWithExceptions = 36;
constexpr std::size_t mostExceptions = 255;  // the record counts them in a byte
constexpr std::size_t longestDateCell = 12;  // characters; what is longer has a time
constexpr std::int64_t minutesAnHour = 60, minutesADay = 1440;

constexpr TextView exceptionsMark = u" EX:";

bool isTextField(Long code) {
    return code == field::description || code == field::location || code == field::summary;
}

Word typeNamed(const Text& cell) {
    const Settings& words = settings();
    const struct {
        TextView name;
        const Text& word;
        Word type;
    } types[] = {{u"meeting", words.meeting, library::calendarMeeting},
                 {u"birthday", words.birthday, library::calendarBirthday},
                 {u"note", words.note, library::calendarNote},
                 {u"task", words.task, library::calendarToDo},
                 {u"call", words.call, library::calendarCall},
                 {u"reminder", words.reminder, library::calendarReminder}};
    for (const auto& one : types)
        if (equalsIgnoringCase(cell, one.name) || (!cell.empty() && equalsIgnoringCase(cell, one.word)))
            return one.type;
    return library::calendarMeeting;
}

// The place of a word in the host's list, from 0; the list's length for one that it has not.
Long placeInList(const TextArray& list, const Text& word, Long ofNone) {
    if (word.empty()) return ofNone;
    const std::vector<Text>& words = list.elements();
    if (words.empty()) return numericLong(word);
    const auto found =
        std::ranges::find_if(words, [&](const Text& one) { return equalsIgnoringCase(one, word); });
    return static_cast<Long>(found - words.begin());
}

// Minutes before the start; none for a cell that says nothing of the kind.
std::optional<std::int64_t> leadMinutes(const Text& cell) {
    double minutes = std::fabs(numericValue(cell));
    if (minutes == 0 && !cell.starts_with(u'0')) return std::nullopt;
    const Settings& words = settings();
    if (!words.hour.empty() && containsIgnoringCase(cell, words.hour)) minutes *= minutesAnHour;
    if (!words.day.empty() && containsIgnoringCase(cell, words.day)) minutes *= minutesADay;
    constexpr double longest = 1e9;
    return std::llround(std::min(minutes, longest));
}

std::optional<DateValue> isoDate(const Text& iso) {
    return iso.empty() ? std::nullopt : dateIn(iso);
}

bool isSet(const DateRecord& record) {
    return record.year != 0;
}

}  // namespace

EntryEditor::EntryEditor(Long phonePlatform) {
    entry_.phonePlatform = phonePlatform;
    entry_.record.size = library::longCalendarRecord;
    entry_.record.type = library::calendarMeeting;
    entry_.record.alarmState = library::alarmNone;
}

EntryEditor::EntryEditor(Entry existing)
    : entry_(std::move(existing)), original_(entry_), shown_(shownTimes(original_)), existing_(true) {}

template <class Value>
void EntryEditor::set(Value& place, const Value& value) {
    if (place == value) return;
    place = value;
    changed_ = true;
}

void EntryEditor::place(const GridRow& row) {
    library::CalendarRecord& record = entry_.record;
    for (DateRecord* const date : {&record.start, &record.end, &record.alarm, &record.recurrenceEnd})
        date->size = sizeof(DateRecord);
    if (const Text* const cell = row.cell(field::type)) placeType(*cell);
    placeTexts(row);
    placeDates(row);
    if (const Text* const cell = row.cell(field::rule)) placeRule(*cell, row);
    if (const Text* const cell = row.cell(field::alarm)) placeAlarm(*cell);
}

void EntryEditor::placeType(const Text& cell) {
    // An entry of a kind that has no word is shown with none.
    if (cell.empty() && existing_) return;
    const Word type = typeNamed(cell);
    DebugLine(u"dwInfoField:", decimal{static_cast<Long>(type)});
    set(entry_.record.type, type);
    if (!existing_) changed_ = true;
}

// Texts and numbers
// -------------------------------------------------------------------------------------------

DataItem* EntryEditor::find(Word fieldId) {
    // The last one counts when the entry is read.
    const auto found =
        std::ranges::find(entry_.items.rbegin(), entry_.items.rend(), fieldId, &DataItem::FieldId);
    return found == entry_.items.rend() ? nullptr : &*found;
}

void EntryEditor::setNumber(Word fieldId, Long number) {
    const Word value = static_cast<Word>(number);
    if (DataItem* const item = find(fieldId)) {
        // What was a text before the entry became a birthday goes back.
        if (fieldId == library::calendarDescription && existing_ && !original_.isBirthday() &&
            item->Value != value)
            Content::giveTextBack(item->Value);
        set(item->Value, value);
        return;
    }
    entry_.items.push_back(
        {.Size = sizeof(library::DataItemRecord), .Group = 16, .FieldId = fieldId, .Value = value});
    changed_ = true;
}

void EntryEditor::setText(Word fieldId, const Text& text) {
    DataItem* const item = find(fieldId);
    if (!item) {
        if (text.empty()) return;
        const Text written = entry_.phonePlatform < eNokiaPhoneS60_6 ? removeAll(text, u'\n') : text;
        entry_.items.push_back({.Size = sizeof(library::DataItemRecord),
                                .Group = 16,
                                .FieldId = fieldId,
                                .Value = pieces_.text(written)});
        changed_ = true;
        return;
    }
    if (fieldId == library::calendarDescription && existing_ && original_.isBirthday()) {
        set(item->Value, Word{0});  // it was the year of birth
    }
    const Text old = item->Value == 0 ? Text() : library::GetStringFromPointer(item->Value);
    if (old == text || (text.empty() && item->Value == 0)) return;
    // Line ends that the phone keeps in its own way are no difference.
    if (entry_.phonePlatform < eNokiaPhoneS60_6 && removeAll(old, u'\n') == removeAll(text, u'\n')) return;
    const Address made = pieces_.text(text);
    Content::giveTextBack(std::exchange(item->Value, made));
    changed_ = true;
}

void EntryEditor::placeTexts(const GridRow& row) {
    static constexpr struct {
        Long code;
        Word fieldId;
    } fields[] = {{field::description, library::calendarDescription},
                  {field::status, library::calendarStatus},
                  {field::location, library::calendarLocation},
                  {field::summary, library::calendarSummary},
                  {field::priority, library::calendarPriority}};
    constexpr Long firstStatus = 1, middlePriority = 2;
    constexpr Long lastHiddenLevel = 5;
    for (const auto& [code, fieldId] : fields) {
        const Text* const cell = row.cell(code);
        if (!cell) continue;
        if (isTextField(code) && logsMoreThan(0))
            DebugLine(u"WriteCalItem 3a:", logsMoreThan(lastHiddenLevel) ? *cell : Text(cell->size(), u'x'));
        if (code == field::status || code == field::priority) {
            if (!entry_.isToDo()) continue;
            setNumber(fieldId, code == field::status
                                   ? placeInList(settings().statuses, *cell, firstStatus)
                                   : placeInList(settings().priorities, *cell, middlePriority));
        } else if (code == field::description && entry_.isBirthday()) {
            if (!cell->empty()) setNumber(fieldId, numericLong(*cell));
        } else if (code == field::summary && cell->empty()) {
            if (!existing_ || find(fieldId)) setText(fieldId, u" ");
        } else {
            setText(fieldId, *cell);
        }
    }
}

// Dates
// -------------------------------------------------------------------------------------------------------

// Older phones know no birthday and no note before 1980.
DateValue EntryEditor::afterFirstYear(DateValue date, const Text& cell) const {
    const Long platform = entry_.phonePlatform;
    if (platform < eNokiaPhoneS40 || platform >= eNokiaPhoneS60) return date;
    if (!entry_.isBirthday() && !entry_.isNote()) return date;
    const DateFields fields = fieldsOf(date);
    if (fields.year >= firstS40Year) return date;
    const DateValue day = dateSerial(firstS40Year, fields.month, fields.day);
    return cell.size() > longestDateCell ? day + std::fabs(date - std::trunc(date)) : day;
}

DateValue EntryEditor::start() const {
    return Content::GetDateFromStruct(entry_.record.start, hasTimeOfDay(entry_.record.type), utcMode);
}

// Whether the entry's text has this date already.
bool EntryEditor::shows(const Text& shown, DateValue date, bool withTime) const {
    if (!isUnchangedKind()) return false;
    const std::optional<DateValue> known = isoDate(shown);
    return known && (withTime ? *known == date : serialDay(*known) == serialDay(date));
}

// False when the record has this date already.
bool EntryEditor::store(DateValue date, DateRecord& record, bool withTime) {
    if (isSet(record)) {
        const DateValue known = Content::GetDateFromStruct(record, withTime, utcMode);
        if (withTime ? intervalsBetween(u"s", known, date) == 0 : serialDay(known) == serialDay(date))
            return false;
    }
    if (withTime)
        storeTime(date, record, utcMode);
    else
        storeDay(dayOf(date), record);
    changed_ = true;
    return true;
}

void EntryEditor::placeDates(const GridRow& row) {
    if (const Text* const cell = row.cell(field::start)) placeStart(*cell);
    if (const Text* const cell = row.cell(field::end)) placeEnd(*cell);
    if (const Text* const cell = row.cell(field::due)) placeDue(*cell);
}

void EntryEditor::placeStart(const Text& cell) {
    const std::optional<DateValue> date = entry_.isToDo() ? std::nullopt : dateIn(cell);
    if (!date) return;
    const bool withTime = hasTimeOfDay(entry_.record.type);
    if (!shows(shown_.start, *date, withTime))
        store(afterFirstYear(*date, cell), entry_.record.start, withTime);
    if (entry_.isBirthday()) setNumber(library::calendarDescription, fieldsOf(*date).year);
}

void EntryEditor::placeEnd(const Text& cell) {
    const std::optional<DateValue> date = entry_.isToDo() ? std::nullopt : dateIn(cell);
    if (!date) return;
    const bool withTime = hasTimeOfDay(entry_.record.type);
    if (shows(shown_.end, *date, withTime)) return;
    DateValue end = afterFirstYear(*date, cell);
    if (entry_.isNote()) {
        const DateFields fields = fieldsOf(end);
        if (!withTime)
            end = addDays(end, 1);
        else if (!hasTime(end) && serialDay(end) > serialDay(start()))
            end = addSeconds(end, -60);  // such a phone keeps the end of the last day
        if (fields.hour == 23 && fields.minute == 59 && fields.second == 59) end = addSeconds(end, -59);
    }
    store(end, entry_.record.end, withTime);
}

void EntryEditor::placeDue(const Text& cell) {
    if (!entry_.isToDo()) return;
    // A to-do that has no date yet keeps none.
    if (cell.empty() && isUnchangedKind() && !isSet(entry_.record.start)) return;
    const std::optional<DateValue> date = cell.empty() ? dateSerial(2050, 12, 31) : dateIn(cell);
    if (!date || shows(GetCalInfo(original_, value::due, /*withTime=*/true), *date, hasTime(*date))) return;
    if (store(*date, entry_.record.start, /*withTime=*/true)) entry_.record.end = entry_.record.start;
}

// Repetition
// --------------------------------------------------------------------------------------------------

void EntryEditor::placeRule(const Text& cell, const GridRow& row) {
    const std::size_t mark = cell.find(exceptionsMark);
    Text rule = trimBlanks(TextView(cell).substr(0, mark));
    Text exceptions = mark == Text::npos ? Text() : cell.substr(mark + exceptionsMark.size());
    const bool sameStart = isUnchangedKind() && Content::GetDateFromStruct(
                                                    original_.record.start,
                                                    hasTimeOfDay(original_.record.type), utcMode) == start();
    // The text shows at most the first fifty; the others are not lost with an edited rule.
    const bool sameExceptions = sameStart && exceptions == exceptionsText(original_.record).value_or(Text());
    if (sameExceptions && rule == GetCalInfo(original_, value::rule, /*withTime=*/true)) return;
    if (entry_.isBirthday() && rule.find(u'Y') == Text::npos) rule = u"Y1";
    if (rule.empty()) {
        set(entry_.record.recurrence, library::repeatsNot);
        placeLastDate(std::nullopt, dateZero);
    } else {
        placeRepetition(rule);
    }
    if (!sameExceptions && library::recordedContentVersion() >= firstVersionWithExceptions)
        placeExceptions(exceptions, row);
}

void EntryEditor::placeRepetition(const Text& rule) {
    CalSeriesInfo::SeriesInfo series;
    CalSeriesInfo::GetSeriesInfo(rule, series, /*start=*/{}, /*options=*/0);
    if (!series.isRule) {
        DebugLine(u"no rule: ", rule);
        return;
    }
    const DateValue first = start();
    set(entry_.record.recurrence,
        CalSeriesInfo::recurrenceWord(series, first, library::recordedContentVersion()));
    std::optional<DateValue> last = readDate(series.Until);
    if (!last) last = readDate(CalSeriesInfo::SeriesEndDate(localDateText(first), series));
    if (last && fieldsOf(*last).year - fieldsOf(first).year >= endlessYears) {
        // Older platforms know a series without end; on newer ones it runs as long as they can, or a birthday
        // of 1901 would have been over in 2001.
        DateFields fields = fieldsOf(*last);
        fields.year = std::max(fields.year, lastSeriesYear);
        fields.day = std::min(fields.day, daysInMonth(fields.year, fields.month));
        last = dateOf(fields);
        if (Devices::platformType() < eNokiaPhoneS60) last.reset();
    }
    placeLastDate(last, first);
}

void EntryEditor::placeLastDate(std::optional<DateValue> last, DateValue first) {
    DateRecord& record = entry_.record.recurrenceEnd;
    if (!last) {
        if (isSet(record)) changed_ = true;
        record = {};
        return;
    }
    DateFields fields = fieldsOf(*last);
    if (fields.year > lastSeriesYear) {
        fields.year = lastSeriesYear;
        fields.day = std::min(fields.day, daysInMonth(fields.year, fields.month));
    }
    if (isSet(record)) {
        const DateValue known = Content::GetDateFromStruct(record, /*withTime=*/false, utcMode);
        if (serialDay(known) == serialDay(dateOf(fields))) return;
    }
    if (Devices::platformType() >= eNokiaPhoneS60) {
        const DateFields from = fieldsOf(first);
        fields.hour = from.hour;
        fields.minute = from.minute;
        fields.second = from.second;
    } else if (fields.hour == 0) {
        fields.hour = 1;
    }
    storeDay(dateOf(fields), record);
    changed_ = true;
}

void EntryEditor::placeExceptions(const Text& dates, const GridRow& row) {
    const std::optional<DateValue> startCell = dateIn(row.startText());
    const DateValue time = startCell.value_or(start());
    const DateValue timeOfDay = std::fabs(time - std::trunc(time));
    std::vector<DateValue> days;
    for (const Text& part : split(replaceAll(dates, u";", u" "), u' ')) {
        const std::optional<DateValue> date = part.empty() ? std::nullopt : dateIn(part);
        if (date && std::ranges::find(days, dayOf(*date)) == days.end()) days.push_back(dayOf(*date));
    }
    if (days.size() > mostExceptions) throw RuntimeFailure(overflowFailure);
    std::vector<DateRecord> records(days.size());
    for (std::size_t i = 0; i < days.size(); ++i)
        storeTime(days[i] < 0 ? days[i] - timeOfDay : days[i] + timeOfDay, records[i], utcMode);

    library::CalendarRecord& record = entry_.record;
    if (record.exceptionCount == 0 && records.empty()) return;
    std::vector<DateRecord> known;
    if (record.exceptionCount <= mostExceptions)
        attempt([&] { library::copyBlock(record.exceptions, record.exceptionCount, known); });
    const auto sameDate = [](const DateRecord& a, const DateRecord& b) {
        return Content::GetDateFromStruct(a, /*withTime=*/true, utcMode) ==
               Content::GetDateFromStruct(b, /*withTime=*/true, utcMode);
    };
    if (std::ranges::equal(known, records, sameDate) && known.size() == record.exceptionCount) return;
    const Address made = records.empty()
                             ? 0
                             : pieces_.block({reinterpret_cast<const std::uint8_t*>(records.data()),
                                              records.size() * sizeof(DateRecord)});
    Content::giveBlockBack(std::exchange(record.exceptions, made));
    record.exceptionCount = static_cast<Word>(records.size());
    changed_ = true;
}

// Alarm
// -------------------------------------------------------------------------------------------------------

void EntryEditor::clearAlarm() {
    library::CalendarRecord& record = entry_.record;
    if (isSet(record.alarm) || record.alarmState == library::alarmSet) changed_ = true;
    record.alarm = {};
    record.alarm.size = sizeof(DateRecord);
    record.alarmState = library::alarmNone;
}

void EntryEditor::placeAlarm(const Text& cell) {
    if (cell.empty()) return clearAlarm();
    std::optional<DateValue> date = dateIn(cell);
    if (!date) {
        const std::optional<std::int64_t> lead = leadMinutes(cell);
        if (!lead) return clearAlarm();
        attempt([&] { date = addSeconds(start(), -*lead * 60); });
        if (!date || !isSet(entry_.record.start)) return;
    }
    if (shows(shown_.alarm, *date, /*withTime=*/true)) return;
    const DateValue alarm = afterFirstYear(*date, localDateText(*date));
    const Long mode = alarmMode(entry_, alarm);
    DateRecord& record = entry_.record.alarm;
    if (isSet(record) && Content::GetDateFromStruct(record, /*withTime=*/true, mode) == alarm) return;
    storeTime(alarm, record, mode);
    entry_.record.alarmState = library::alarmSet;
    changed_ = true;
}

}  // namespace ovno2::Calendar
