#include "host/calendar/phone_entry.h"

#include <algorithm>
#include <array>

#include "host/calendar/recurrence.h"

namespace ovno2::host {

namespace {

using Kind = CalendarEntry::Kind;
using std::chrono::days;

struct KindName {
    Kind kind;
    TextView word;     // in a phone's block, and in its cell
    const char* name;  // for people and programs
};
// The words are those of `calendarTypeWords`.
constexpr KindName kindNames[] = {{Kind::meeting, u"Meeting", "meeting"},
                                  {Kind::call, u"Call", "call"},
                                  {Kind::birthday, u"Birthday", "birthday"},
                                  {Kind::note, u"Note", "note"},
                                  {Kind::reminder, u"Reminder", "reminder"},
                                  {Kind::toDo, u"Task", "to-do"},
                                  {Kind::other, u"", "other"}};

const KindName& namesOf(Kind kind) {
    return *std::ranges::find(kindNames, kind, &KindName::kind);
}

constexpr Long mostPriorities = 3, middlePriority = 2;
constexpr TextView noDueDate = u"2050-12-31";  // what a phone is given for none

// Whether the end of a note is its last day to the driver, on older platforms, or the day after.
bool writesLastDays(const ListedPhone& phone) {
    return phone.type < eNokiaPhoneS60_3_FP1;
}

// A series without an end runs as long as newer platforms can count.
Text withoutFarEnd(Text rule) {
    constexpr TextView farYear = u" 2100";
    constexpr std::size_t dateLength = 9;
    if (rule.size() > dateLength && rule.substr(rule.size() - dateLength).starts_with(farYear))
        rule.resize(rule.size() - dateLength);
    return rule;
}

// Phones divide lines by CR LF, blocks by "\n".
Text linesOf(TextView value) {
    return replaceAll(value, u"\\n", u"\n");
}

Text phoneLines(TextView value) {
    return replaceAll(removeAll(value, u'\r'), u"\n", u"\r\n");
}

// "20080105T100000" and "20080105" in the extended form; of `days` without the time.
Text momentText(TextView basic, bool asDay) {
    std::optional<Moment> moment = readMoment(basic);
    if (!moment) return {};
    if (asDay) *moment = {.day = moment->day};
    if (!asDay) moment->isDay = false;
    return isoText(*moment);
}

Text daysAfter(const Text& iso, Long count) {
    std::optional<Moment> moment = readMoment(TextView(iso));
    if (!moment) return {};
    return isoText({.day = moment->day + days(count)});
}

Long daysBetween(const Text& from, const Text& to) {
    const std::optional<Moment> first = readMoment(TextView(from)), last = readMoment(TextView(to));
    return first && last ? static_cast<Long>((last->day - first->day).count()) : 0;
}

// The driver takes a blank between date and time.
Text dateCell(Text iso) {
    std::ranges::replace(iso, u'T', u' ');
    return iso;
}

Text withYear(Text iso, Long year) {
    constexpr std::size_t yearLength = 4;
    const Text digits = decimalText(year);
    if (digits.size() == yearLength && iso.size() > yearLength) iso.replace(0, yearLength, digits);
    return iso;
}

// A birthday is written on the day of birth: the phone takes the year of birth from it.
Text startOf(const CalendarEntry& entry) {
    if (entry.kind != Kind::birthday || entry.birthYear == 0) return entry.start;
    const Text born = withYear(entry.start, entry.birthYear);
    return readMoment(TextView(born)) ? born : entry.start;
}

Text endOf(const CalendarEntry& entry) {
    if (entry.kind == Kind::birthday) return daysAfter(startOf(entry), 1);
    if (!entry.end.empty() || entry.start.empty()) return entry.end;
    return hasWholeDays(entry.kind) ? daysAfter(entry.start, 1) : entry.start;
}

// Of kinds that have a time of day, a whole day begins and ends at midnight.
Text atMidnight(const CalendarEntry& entry, Text moment) {
    const bool isDay = !moment.empty() && moment.find(u'T') == Text::npos;
    if (isDay && !hasWholeDays(entry.kind)) moment += u"T00:00:00";
    return moment;
}

Text ruleCell(const CalendarEntry& entry) {
    Text cell = entry.rule;
    for (std::size_t i = 0; i < entry.exceptions.size(); ++i)
        cell.append(i == 0 ? u" EX:" : u";").append(removeAll(entry.exceptions[i], u'-'));
    return cell;
}

using Cell = CalendarCell;

void addDates(const CalendarEntry& entry, bool lastDays, std::vector<Cell>& cells) {
    if (entry.kind == Kind::toDo) {
        cells.push_back({Cell::due, dateCell(entry.due)});
    } else {
        cells.push_back({Cell::start, dateCell(startOf(entry))});
        const Text end = endOf(entry);
        const bool isLastDay = entry.kind == Kind::note && lastDays;
        cells.push_back({Cell::end, isLastDay ? daysAfter(end, -1) : dateCell(end)});
    }
    cells.push_back({Cell::rule, ruleCell(entry)});
    cells.push_back({Cell::alarm, dateCell(entry.alarm)});
}

// Those whose cells stand for a value of their own, whatever the others are.
std::vector<Cell> cellsWithoutCalendar(const CalendarEntry& entry, bool lastDays) {
    std::vector<Cell> cells{{Cell::type, Text(namesOf(entry.kind).word)},
                            {Cell::summary, phoneLines(entry.summary)},
                            {Cell::location, phoneLines(entry.location)}};
    if (entry.kind != Kind::birthday) cells.push_back({Cell::description, phoneLines(entry.description)});
    if (entry.kind == Kind::toDo) {
        cells.push_back({Cell::priority, decimalText(entry.priority == 0 ? middlePriority : entry.priority)});
        cells.push_back({Cell::status, entry.isDone ? u"1" : u"0"});
    }
    addDates(entry, lastDays, cells);
    return cells;
}

// The line of a block, without its name and ":".
void takeLine(CalendarEntry& entry, TextView name, TextView value, Text& type) {
    if (name == u"TYPE")
        type = value;
    else if (name == u"SUMMARY")
        entry.summary = linesOf(value);
    else if (name == u"DESCRIPTION")
        entry.description = linesOf(value);
    else if (name == u"LOCATION")
        entry.location = linesOf(value);
    else if (name == u"CALENDAR")
        entry.calendar = value;
    else if (name == u"DTSTART")
        entry.start = value;
    else if (name == u"DTEND")
        entry.end = value;
    else if (name == u"DUE")
        entry.due = value;
    else if (name == u"AALARM")
        entry.alarm = value;
    else if (name == u"RRULE")
        entry.rule = value;
    else if (name == u"PRIORITY")
        entry.priority = std::clamp<Long>(numericLong(value), 0, mostPriorities);
    else if (name == u"STATUS")
        entry.isDone = numericLong(value) == 1;
    else if (name == u"EXDATE")
        entry.exceptions = split(value, u';');
}

void makeDates(CalendarEntry& entry, bool lastDays) {
    const bool wholeDays = hasWholeDays(entry.kind);
    entry.start = momentText(entry.start, wholeDays);
    entry.end = entry.kind == Kind::birthday ? daysAfter(entry.start, 1) : momentText(entry.end, wholeDays);
    // Of older platforms the driver gives the day after a note of one day, but the last one of a longer note.
    if (entry.kind == Kind::note && lastDays && daysBetween(entry.start, entry.end) > 1)
        entry.end = daysAfter(entry.end, 1);
    entry.due = momentText(entry.due, /*asDay=*/true);
    if (entry.due == noDueDate) entry.due.clear();
    entry.alarm = momentText(entry.alarm, /*asDay=*/false);
    for (Text& day : entry.exceptions)
        day = momentText(day, /*asDay=*/true);
    std::erase_if(entry.exceptions, [](const Text& day) { return day.empty(); });
}

// Whether two rules give the same dates, as far as they are looked at: the first dozen years, and late ones.
bool sameDates(const CalendarEntry& a, const CalendarEntry& b) {
    if (a.rule == b.rule && a.exceptions == b.exceptions) return true;
    if (a.rule.empty() != b.rule.empty()) return false;
    const std::optional<Moment> start = readMoment(TextView(beginOf(a)));
    if (!start) return false;
    constexpr Long day = 1, year = 366;
    for (const auto& [first, last] : {std::pair(0 * day, year), {year, 12 * year}, {80 * year, 84 * year}}) {
        const Text from = isoText({.day = start->day + days(first)});
        const Text to = isoText({.day = start->day + days(last)});
        if (datesOf(a, from, to) != datesOf(b, from, to)) return false;
    }
    return true;
}

}  // namespace

const char* nameOf(Kind kind) {
    return namesOf(kind).name;
}

std::optional<Kind> kindCalled(std::string_view name) {
    const auto found = std::ranges::find_if(kindNames, [&](const KindName& one) { return one.name == name; });
    return found == std::end(kindNames) ? std::nullopt : std::optional(found->kind);
}

bool hasWholeDays(Kind kind) {
    return kind == Kind::birthday || kind == Kind::note;
}

std::optional<CalendarEntry> entryOf(const CalendarItem& item, const ListedPhone& phone) {
    CalendarEntry entry;
    entry.uid = item.uid;
    const bool isToDo = item.block.starts_with(u"BEGIN:VTODO");
    if (!isToDo && !item.block.starts_with(u"BEGIN:VEVENT")) return std::nullopt;
    Text type;
    TextView rest = item.block;
    while (!rest.empty()) {
        const std::size_t end = rest.find(u"\r\n");
        const TextView line = rest.substr(0, end);
        rest.remove_prefix(end == TextView::npos ? rest.size() : end + 2);
        const std::size_t colon = line.find(u':');
        if (colon != TextView::npos) takeLine(entry, line.substr(0, colon), line.substr(colon + 1), type);
    }
    const auto named =
        std::ranges::find_if(kindNames, [&](const KindName& one) { return one.word == TextView(type); });
    entry.kind = isToDo ? Kind::toDo : named == std::end(kindNames) ? Kind::other : named->kind;
    if (entry.kind == Kind::birthday) {
        constexpr std::size_t yearLength = 4;
        if (entry.description.size() == yearLength) entry.birthYear = numericLong(entry.description);
        entry.description.clear();
    }
    if (!isToDo) entry.priority = 0;
    entry.rule = withoutFarEnd(std::move(entry.rule));
    makeDates(entry, writesLastDays(phone));
    return entry;
}

std::vector<Cell> cellsOf(const CalendarEntry& entry, const ListedPhone& phone) {
    std::vector<Cell> cells = cellsWithoutCalendar(entry, writesLastDays(phone));
    if (!entry.calendar.empty()) cells.push_back({Cell::calendar, entry.calendar});
    return cells;
}

std::vector<Cell> changedCells(const CalendarEntry& before, const CalendarEntry& after,
                               const ListedPhone& phone) {
    if (after.calendar != before.calendar && !after.calendar.empty()) return cellsOf(after, phone);
    const std::vector<Cell> old = cellsWithoutCalendar(before, writesLastDays(phone));
    std::vector<Cell> cells = cellsWithoutCalendar(after, writesLastDays(phone));
    // A rule is kept by the start's day, exceptions by its time.
    const bool starts = startOf(before) != startOf(after) || before.due != after.due;
    if (before.kind == after.kind)
        std::erase_if(cells, [&](const Cell& cell) {
            if (starts && cell.field == Cell::rule) return cell.text.empty();
            const auto same = std::ranges::find(old, cell.field, &Cell::field);
            return same != old.end() && same->text == cell.text;
        });
    return cells;
}

CalendarEntry asPhonesKeepIt(CalendarEntry entry) {
    entry.start = atMidnight(entry, startOf(entry));
    entry.end = atMidnight(entry, endOf(entry));
    entry.rule = withoutFarEnd(std::move(entry.rule));
    if (entry.kind == Kind::birthday) {
        entry.description.clear();
        if (const std::optional<Moment> start = readMoment(TextView(entry.start)))
            entry.birthYear = numericLong(entry.start.substr(0, 4));
        if (entry.rule.find(u'Y') == Text::npos) entry.rule = u"YD1";
    }
    if (entry.kind == Kind::toDo) {
        entry.start.clear();
        entry.end.clear();
        if (entry.priority == 0) entry.priority = middlePriority;
        entry.due = entry.due.substr(0, entry.due.find(u'T'));
    }
    return entry;
}

std::vector<std::string> differences(const CalendarEntry& wanted, const CalendarEntry& there) {
    std::vector<std::string> names;
    const auto compare = [&](const char* name, bool same) {
        if (!same) names.emplace_back(name);
    };
    const auto text = [](const Text& raw) { return trimBlanks(removeAll(raw, u'\r')); };
    compare("type", wanted.kind == there.kind || (wanted.kind == Kind::other && there.kind == Kind::meeting));
    compare("calendar", wanted.calendar.empty() || wanted.calendar == there.calendar);
    compare("start", wanted.start == there.start);
    const bool isShortNote = wanted.kind == Kind::note && daysBetween(wanted.start, wanted.end) <= 2;
    compare("end", wanted.end == there.end || (isShortNote && daysBetween(there.start, there.end) <= 2));
    compare("due", wanted.due == there.due);
    compare("alarm", wanted.alarm == there.alarm);
    compare("summary", text(wanted.summary) == text(there.summary));
    compare("location", text(wanted.location) == text(there.location));
    compare("description", text(wanted.description) == text(there.description));
    compare("birth year", wanted.birthYear == there.birthYear);
    compare("priority", wanted.priority == there.priority);
    compare("done", wanted.isDone == there.isDone);
    compare("rule", sameDates(wanted, there));
    return names;
}

}  // namespace ovno2::host
