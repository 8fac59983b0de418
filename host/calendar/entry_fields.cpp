#include "host/calendar/entry_fields.h"

#include <algorithm>
#include <map>

#include "host/calendar/phone_entry.h"
#include "host/calendar/recurrence.h"
#include "host/calendar/recurrence_names.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/folding.h"

namespace ovno2::host {

namespace {

using Kind = CalendarEntry::Kind;
using std::chrono::local_seconds;

constexpr const char* fieldNames[] = {"type",  "summary",  "start",       "end",     "due",
                                      "alarm", "location", "description", "born",    "priority",
                                      "done",  "rule",     "not-on",      "calendar"};

[[noreturn]] void misuse(const std::string& message) {
    throw CommandFailure{wrongUsage, message};
}

Moment momentFrom(const std::string& name, std::string value) {
    std::ranges::replace(value, ' ', 'T');
    const std::optional<Moment> moment = readMoment(std::string_view(value));
    if (!moment || moment->isUtc)
        misuse(name + ": \"" + value +
               "\" is no time such as \"2008-07-14 10:00\", and no day such as 2008-07-14.");
    return *moment;
}

// The values of the line by their fields; each may stand once.
std::map<std::string, std::string> valuesIn(const std::vector<std::string>& words) {
    std::map<std::string, std::string> values;
    for (const std::string& word : words) {
        const std::size_t sign = word.find('=');
        const std::string name = word.substr(0, sign);
        if (sign == std::string::npos || std::ranges::find(fieldNames, name) == std::end(fieldNames))
            misuse("\"" + word + "\" is no FIELD=VALUE; the fields are " + entryFieldNames() + ".");
        if (!values.emplace(name, word.substr(sign + 1)).second) misuse("\"" + name + "=\" stands twice.");
    }
    return values;
}

std::optional<Moment> beginMoment(const CalendarEntry& entry) {
    return readMoment(TextView(beginOf(entry)));
}

// Of an alarm "15m", "2h" or "1d": before the start.
std::optional<std::chrono::seconds> leadIn(const std::string& value) {
    constexpr std::size_t longest = 7;
    if (value.size() < 2 || value.size() > longest ||
        value.find_first_not_of("0123456789") != value.size() - 1)
        return std::nullopt;
    const std::chrono::minutes number(std::stol(value));
    switch (value.back()) {
        case 'm':
            return number;
        case 'h':
            return number * 60;
        case 'd':
            return number * 60 * 24;
        default:
            return std::nullopt;
    }
}

Text alarmFrom(const CalendarEntry& entry, const std::string& value) {
    if (value.empty()) return {};
    const std::optional<Moment> begin = beginMoment(entry);
    if (const std::optional<std::chrono::seconds> lead = leadIn(value)) {
        if (!begin) misuse("alarm: without a date it has nothing to be before.");
        return isoText(momentAt(begin->time() - *lead));
    }
    Moment moment = momentFrom("alarm", value);
    moment.isDay = false;
    return isoText(moment);
}

// Either style. What the phone cannot hold is refused, or kept as it is.
void assignRule(CalendarEntry& entry, const std::string& value, bool keepsWideRule) {
    entry.rule.clear();
    if (value.empty()) return;
    const std::optional<Moment> begin = beginMoment(entry);
    if (!begin) misuse("rule: an entry without a date cannot repeat.");
    const bool isOldForm = upperCased(value).find("FREQ=") == std::string::npos;
    Repetition rule;
    const std::string why = isOldForm ? readShortRule(value, *begin, rule)
                                      : readRecurrenceRule(value, *begin, console::localTime, rule);
    if (why.empty())
        entry.rule = shortRule(rule, *begin);
    else if (keepsWideRule)
        entry.wideRule = {.text = value, .isOldForm = isOldForm, .start = *begin};
    else
        misuse("rule: \"" + value + "\": " + why);
}

// The rule of an entry whose start was moved: what repeated on the start's day of the week or of the month
// does so on the new one.
Text movedRule(const Text& rule, const Moment& from, const Moment& to) {
    Repetition series;
    if (rule.empty() || !readShortRule(toUtf8(rule), from, series).empty()) return rule;
    const auto bitOf = [](const Moment& moment) {
        return 1U << (std::chrono::weekday(moment.day).iso_encoding() - 1);
    };
    if (series.kind == Repetition::Kind::weekly && series.weekdays == bitOf(from))
        series.weekdays = bitOf(to);
    return shortRule(series, to);
}

Text calendarFrom(const std::string& value, const std::vector<Text>& calendars) {
    const Text wanted = folded(fromUtf8(value));
    std::string all;
    for (const Text& name : calendars) {
        if (folded(name) == wanted) return name;
        all += (all.empty() ? "" : ", ") + toUtf8(name);
    }
    throw CommandFailure{failed, "The phone has no calendar \"" + value + "\". It has: " + all + "."};
}

Kind kindFrom(const std::string& value) {
    const std::optional<Kind> kind = kindCalled(value);
    if (!kind || *kind == Kind::other)
        misuse("type: \"" + value + "\" is none of meeting, call, birthday, note, reminder, to-do.");
    return *kind;
}

Long numberFrom(const std::string& name, const std::string& value, Long last) {
    const Long number = numericLong(fromUtf8(value));
    if (value.empty() || value.find_first_not_of("0123456789") != std::string::npos || number > last)
        misuse(name + ": \"" + value + "\" is no such number.");
    return number;
}

// What an entry must be to go to a phone.
void require(const CalendarEntry& entry) {
    if (entry.kind == Kind::toDo) {
        if (!entry.start.empty() || !entry.end.empty()) misuse("A to-do has due=, neither start= nor end=.");
        return;
    }
    if (!entry.due.empty()) misuse("Only a to-do has due=.");
    const std::optional<Moment> start = readMoment(TextView(entry.start));
    if (!start) misuse(std::string("A ") + nameOf(entry.kind) + " needs start=.");
    const bool wholeDays = hasWholeDays(entry.kind);
    if (start->isDay != wholeDays)
        misuse(std::string("A ") + nameOf(entry.kind) +
               (wholeDays ? " has days, no times." : " needs a time; type=note is for whole days."));
    const std::optional<Moment> end = readMoment(TextView(entry.end));
    if (!end) return;
    if (end->isDay != wholeDays) misuse("start= and end= must both have a time, or neither.");
    if (end->time() < start->time()) misuse("end= lies before start=.");
}

}  // namespace

std::chrono::local_days dayFrom(const char* option, const std::string& text) {
    const std::optional<Moment> moment = readMoment(std::string_view(text));
    if (!moment || !moment->isDay)
        misuse(std::string(option) + ": \"" + text + "\" is no date such as 2008-07-14.");
    return moment->day;
}

std::string entryFieldNames() {
    std::string names;
    for (const char* const name : fieldNames)
        names += std::string(names.empty() ? "" : ", ") + name;
    return names;
}

void assignFields(CalendarEntry& entry, const std::vector<std::string>& words,
                  const std::vector<Text>& calendars, const FieldRules& rules) {
    const bool isNew = rules.isNew;
    const std::map<std::string, std::string> values = valuesIn(words);
    const auto valueOf = [&](const char* name) -> const std::string* {
        const auto found = values.find(name);
        return found == values.end() ? nullptr : &found->second;
    };
    const std::optional<Moment> oldBegin = beginMoment(entry);
    if (const std::string* const value = valueOf("start")) {
        const Moment start = momentFrom("start", *value);
        if (isNew && start.isDay) entry.kind = Kind::note;
        moveBegin(entry, &CalendarEntry::start, start);
    }
    if (isNew && valueOf("due")) entry.kind = Kind::toDo;
    if (const std::string* const value = valueOf("type")) entry.kind = kindFrom(*value);
    if (const std::string* const value = valueOf("end")) entry.end = isoText(momentFrom("end", *value));
    if (const std::string* const value = valueOf("due"))
        entry.due = value->empty() ? Text() : isoText({.day = momentFrom("due", *value).day});
    if (const std::string* const value = valueOf("summary")) entry.summary = fromUtf8(*value);
    if (const std::string* const value = valueOf("location")) entry.location = fromUtf8(*value);
    if (const std::string* const value = valueOf("description")) entry.description = fromUtf8(*value);
    if (const std::string* const value = valueOf("born")) entry.birthYear = numberFrom("born", *value, 9999);
    if (const std::string* const value = valueOf("priority"))
        entry.priority = numberFrom("priority", *value, 3);
    if (const std::string* const value = valueOf("done")) {
        if (*value != "yes" && *value != "no") misuse("done: say yes or no.");
        entry.isDone = *value == "yes";
    }
    if (const std::string* const value = valueOf("calendar"))
        entry.calendar = calendarFrom(*value, calendars);
    require(entry);
    if (const std::optional<Moment> begin = beginMoment(entry); begin && oldBegin && *begin != *oldBegin)
        entry.rule = movedRule(entry.rule, *oldBegin, *begin);
    if (const std::string* const value = valueOf("rule")) assignRule(entry, *value, rules.keepsWideRule);
    if (const std::string* const value = valueOf("not-on")) {
        entry.exceptions.clear();
        std::vector<Moment> exceptions;
        for (const Text& day : split(fromUtf8(*value), u','))
            exceptions.push_back({.day = momentFrom("not-on", toUtf8(trimBlanks(day))).day});
        for (const Moment& day : exceptions)
            entry.exceptions.push_back(isoText(day));
        if (entry.wideRule) entry.wideRule->exceptions = exceptions;
    }
    if (const std::string* const value = valueOf("alarm")) entry.alarm = alarmFrom(entry, *value);
    if (isNew && entry.summary.empty()) misuse("A new entry needs summary=.");
}

}  // namespace ovno2::host
