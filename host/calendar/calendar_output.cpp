#include "host/calendar/calendar_output.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "host/calendar/phone_entry.h"
#include "host/calendar/recurrence.h"
#include "host/output/display_width.h"
#include "host/output/json.h"
#include "host/output/wrapping.h"

namespace ovno2::host {

namespace {

using namespace std::chrono;
using Kind = CalendarEntry::Kind;

constexpr const char* monthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                      "July",    "August",   "September", "October", "November", "December"};
constexpr const char* dayNames[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                    "Friday", "Saturday", "Sunday"};
constexpr std::size_t daysOfWeek = 7;

std::string titleOf(year_month month) {
    return std::string(monthNames[static_cast<unsigned>(month.month()) - 1]) + " " +
           std::to_string(static_cast<int>(month.year()));
}

std::size_t weekdayOf(local_days day) {
    return weekday(day).iso_encoding() - 1;
}

// "10:00"; empty for a day.
Text clockOf(const Text& iso) {
    constexpr std::size_t placeOfT = 10, length = 5;
    return iso.size() > placeOfT ? iso.substr(placeOfT + 1, length) : Text();
}

// How many days an entry goes on after its first.
days furtherDays(const CalendarEntry& entry) {
    const std::optional<Moment> start = readMoment(TextView(entry.start));
    const std::optional<Moment> end = readMoment(TextView(entry.end));
    if (!start || !end || end->day <= start->day) return days(0);
    // What ends at midnight does not go on into the new day.
    return end->day - start->day - days(end->clock == seconds(0) ? 1 : 0);
}

Text padded(TextView text, std::size_t width) {
    Text cell = cutToWidth(text, width);
    cell.append(width - std::min(width, displayWidth(TextView(cell))), u' ');
    return cell;
}

Text shortLine(const Occurrence& one) {
    const Text clock = clockOf(one.start);
    return clock + (clock.empty() ? u"" : u" ") + singleLine(one.entry->summary);
}

Text ageOf(const Occurrence& one) {
    if (one.entry->kind != Kind::birthday || one.entry->birthYear == 0) return {};
    const Long age = static_cast<int>(year_month_day(one.day).year()) - one.entry->birthYear;
    return age > 0 ? u" (" + decimalText(age) + u")" : Text();
}

void addMember(JsonLine& line, std::string_view name, const Text& value) {
    if (!value.empty()) line.member(name, TextView(value));
}

constexpr const char* priorityNames[] = {"", "high", "normal", "low"};

}  // namespace

Period monthPeriod(year_month month) {
    const auto first = [](year_month one) { return local_days(one / 1); };
    return {first(month), first(month + months(1))};
}

std::vector<Occurrence> occurrencesIn(const std::vector<CalendarEntry>& entries, const Period& period) {
    std::vector<Occurrence> found;
    const Text to = isoText({.day = period.to});
    for (const CalendarEntry& entry : entries) {
        const days further = furtherDays(entry);
        for (Text& date : datesOf(entry, isoText({.day = period.from - further}), to))
            if (const std::optional<Moment> moment = readMoment(TextView(date)))
                found.push_back({std::move(date), moment->day, moment->day + further, &entry});
    }
    std::ranges::stable_sort(found, {}, [](const Occurrence& one) {
        return std::pair<const local_days&, const Text&>(one.day, one.start);
    });
    return found;
}

std::optional<year_month> busiestMonth(const std::vector<CalendarEntry>& entries) {
    std::map<year_month, std::size_t> counts;
    for (const CalendarEntry& entry : entries)
        if (const std::optional<Moment> start = readMoment(TextView(beginOf(entry)));
            start && entry.rule.empty()) {
            const year_month_day date(start->day);
            ++counts[date.year() / date.month()];
        }
    std::optional<year_month> busiest;
    std::size_t most = 1;
    for (const auto& [month, count] : counts)
        if (count >= most) {
            most = count;
            busiest = month;
        }
    return busiest;
}

std::string asMonth(year_month month, const std::vector<Occurrence>& occurrences, std::size_t width) {
    constexpr std::size_t narrowest = 5, widest = 22, mostLines = 4, narrowestWithTexts = 9;
    const std::size_t cell = std::clamp(width / daysOfWeek, narrowest, widest) - 1;
    const bool withTexts = cell + 1 >= narrowestWithTexts;
    const Period period = monthPeriod(month);
    std::map<local_days, std::vector<Text>> lines;
    for (const Occurrence& one : occurrences)
        for (local_days day = std::max(one.day, period.from); day <= one.lastDay && day < period.to;
             day += days(1))
            lines[day].push_back(shortLine(one));

    Text sheet = fromUtf8(titleOf(month)) + u"\n\n";
    const auto endLine = [&] {
        sheet.erase(sheet.find_last_not_of(u' ') + 1);
        sheet.push_back(u'\n');
    };
    for (const char* const name : dayNames)
        sheet.append(padded(fromUtf8(withTexts ? name : std::string(name, 2)), cell)).push_back(u' ');
    endLine();
    for (local_days monday = period.from - days(weekdayOf(period.from)); monday < period.to;
         monday += days(7)) {
        std::size_t height = 1;
        for (std::size_t i = 0; i < daysOfWeek && withTexts; ++i)
            height = std::max(height, 1 + std::min(mostLines, lines[monday + days(i)].size()));
        for (std::size_t row = 0; row < height; ++row) {
            for (std::size_t i = 0; i < daysOfWeek; ++i) {
                const local_days day = monday + days(i);
                const std::vector<Text>& texts = lines[day];
                Text text;
                if (day >= period.from && day < period.to) {
                    const bool isLast = row == mostLines && texts.size() > mostLines;
                    if (row == 0)
                        text =
                            decimalText(static_cast<Long>(static_cast<unsigned>(year_month_day(day).day()))) +
                            (texts.empty() || withTexts ? u"" : u"*");
                    else if (isLast)
                        text = u"+" + decimalText(static_cast<Long>(texts.size() - mostLines + 1)) + u" more";
                    else if (row <= texts.size())
                        text = texts[row - 1];
                }
                sheet.append(padded(text, cell)).push_back(u' ');
            }
            endLine();
        }
    }
    return toUtf8(sheet);
}

std::string timesOf(const Occurrence& one) {
    const CalendarEntry& entry = *one.entry;
    if (entry.kind == Kind::toDo) return entry.isDone ? "done" : "to do";
    if (entry.kind == Kind::birthday) return "birthday";
    const Text from = clockOf(one.start), to = clockOf(entry.end);
    std::string text = from.empty() ? "whole day" : toUtf8(from);
    if (!from.empty() && entry.end != entry.start && !to.empty()) text += "-" + toUtf8(to);
    return text;
}

std::string asAgenda(const std::vector<Occurrence>& occurrences, const Period& period, std::size_t width,
                     bool uids) {
    constexpr std::size_t timesWidth = 13, least = 40;
    Text text;
    std::optional<local_days> day;
    for (const Occurrence& one : occurrences) {
        if (one.lastDay < period.from) continue;
        if (day != one.day) {
            day = one.day;
            text.append(text.empty() ? u"" : u"\n").append(isoText({.day = one.day})).append(u"  ");
            text.append(fromUtf8(dayNames[weekdayOf(one.day)])).append(u"\n");
        }
        Text line = singleLine(one.entry->summary) + ageOf(one);
        if (!one.entry->location.empty()) line += u", " + singleLine(one.entry->location);
        if (one.lastDay > one.day) line += u" (to " + isoText({.day = one.lastDay}) + u")";
        if (!one.entry->rule.empty() && one.entry->kind != Kind::birthday) line += u" (repeats)";
        if (uids) line += u" [" + one.entry->uid + u"]";
        bool first = true;
        for (const Text& part : wrapped(line, std::max(width, least) - timesWidth - 2)) {
            text.append(u"  ").append(padded(first ? fromUtf8(timesOf(one)) : Text(), timesWidth));
            text.append(part).push_back(u'\n');
            first = false;
        }
    }
    return toUtf8(text);
}

std::string inFull(const CalendarEntry& entry, std::size_t width) {
    constexpr std::size_t labelWidth = 13, least = 40;
    Text text = singleLine(entry.summary.empty() ? Text(u"(no summary)") : entry.summary) + u"\n";
    const auto add = [&](const char* label, const Text& value) {
        if (value.empty()) return;
        bool first = true;
        for (const Text& part : wrapped(value, std::max(width, least) - labelWidth - 2)) {
            text.append(u"  ").append(padded(first ? fromUtf8(label) : Text(), labelWidth)).append(part);
            text.push_back(u'\n');
            first = false;
        }
    };
    const auto moment = [](Text iso) {
        std::ranges::replace(iso, u'T', u' ');
        return iso;
    };
    add("type", fromUtf8(nameOf(entry.kind)));
    add("calendar", entry.calendar);
    add("start", moment(entry.start));
    add("end", entry.kind == Kind::birthday ? Text() : moment(entry.end));
    add("due", moment(entry.due));
    add("alarm", moment(entry.alarm));
    add("location", entry.location);
    add("description", entry.description);
    add("born", entry.birthYear == 0 ? Text() : decimalText(entry.birthYear));
    if (entry.kind == Kind::toDo) {
        add("priority", fromUtf8(priorityNames[std::clamp<Long>(entry.priority, 0, 3)]));
        add("done", entry.isDone ? u"yes" : u"no");
    }
    add("rule", entry.rule);
    add("not on", replaceAll(join(entry.exceptions, u','), u",", u", "));
    add("id", entry.uid);
    return toUtf8(text);
}

void writeEntry(JsonLine& line, const CalendarEntry& entry) {
    line.member("type", nameOf(entry.kind));
    addMember(line, "calendar", entry.calendar);
    addMember(line, "start", entry.start);
    addMember(line, "end", entry.end);
    addMember(line, "due", entry.due);
    addMember(line, "alarm", entry.alarm);
    addMember(line, "summary", entry.summary);
    addMember(line, "location", entry.location);
    addMember(line, "description", entry.description);
    if (entry.birthYear != 0) line.member("birthYear", entry.birthYear);
    if (entry.kind == Kind::toDo) {
        if (entry.priority != 0) line.member("priority", entry.priority);
        line.member("done", entry.isDone);
    }
    addMember(line, "rule", entry.rule);
    if (!entry.exceptions.empty()) {
        line.key("exceptions");
        line.StartArray();
        for (const Text& day : entry.exceptions)
            line.text(day);
        line.EndArray();
    }
    addMember(line, "uid", entry.uid);
}

void writeEntriesAsJson(const std::vector<CalendarEntry>& entries,
                        const std::function<void(std::string_view)>& write) {
    JsonLines lines(write);
    for (const CalendarEntry& entry : entries) {
        JsonLine& line = lines.next();
        line.StartObject();
        writeEntry(line, entry);
        line.EndObject();
    }
    lines.end();
}

void writeOccurrencesAsJson(const std::vector<Occurrence>& occurrences,
                            const std::function<void(std::string_view)>& write) {
    JsonLines lines(write);
    for (const Occurrence& one : occurrences) {
        JsonLine& line = lines.next();
        line.StartObject();
        line.member("date", TextView(one.start));
        writeEntry(line, *one.entry);
        line.EndObject();
    }
    lines.end();
}

}  // namespace ovno2::host
