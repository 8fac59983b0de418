#include "host/calendar/ical_writer.h"

#include <algorithm>

#include "host/calendar/ical_names.h"
#include "host/calendar/ical_own_zone.h"
#include "host/calendar/recurrence.h"
#include "host/formats/content_lines.h"

namespace ovno2::host {

using namespace std::chrono;
using Kind = CalendarEntry::Kind;

namespace {

int yearOf(const Moment& moment) {
    return static_cast<int>(year_month_day(moment.day).year());
}

// The years for which a zone is needed; none when no entry has a time of day.
struct Years {
    int first = 9999, last = 0;

    void take(const CalendarEntry& entry) {
        constexpr int forEver = 9999;
        for (const Text* const text : {&entry.start, &entry.end, &entry.due, &entry.alarm}) {
            const std::optional<Moment> moment = readMoment(TextView(*text));
            if (!moment || moment->isDay) continue;
            first = std::min(first, yearOf(*moment));
            last = std::max(last, entry.rule.empty() ? yearOf(*moment) : forEver);
        }
    }
};

void beginFile(ContentLineWriter& lines, std::string_view version) {
    lines.line("BEGIN", "VCALENDAR");
    lines.line("VERSION", version);
    lines.line("PRODID", "-//ovphone//EN");
}

class CalendarWriter {
  public:
    CalendarWriter(std::span<const CalendarEntry> entries, CalendarForm form, sys_seconds stamp)
        : entries_(entries),
          isOld_(form == CalendarForm::vCalendar),
          lines_(result_.text, isOld_ ? LineForm::old : LineForm::current),
          zone_(zoneFor(entries)),
          stamp_(momentAt(local_seconds(stamp.time_since_epoch()))) {}

    CalendarText written() {
        stamp_.isUtc = true;
        beginFile(lines_, isOld_ ? "1.0" : "2.0");
        if (!isOld_ && hasTimes_) zone_.write(lines_);
        for (place_ = 0; place_ < entries_.size(); ++place_)
            write(entries_[place_]);
        lines_.line("END", "VCALENDAR");
        return std::move(result_);
    }

  private:
    OwnZone zoneFor(std::span<const CalendarEntry> entries) {
        Years years;
        for (const CalendarEntry& entry : entries)
            years.take(entry);
        hasTimes_ = years.last != 0;
        return OwnZone(hasTimes_ ? years.first : 2000, hasTimes_ ? years.last : 2000);
    }

    void lose(const std::string& what) { result_.lost.emplace_back(place_, what); }

    void text(std::string_view name, const Text& value) {
        if (!value.empty()) lines_.line(name, lines_.escaped(toUtf8(value), ValueKind::text));
    }

    // A date that is none is lost; empty = there is none.
    std::optional<Moment> moment(std::string_view name, const Text& value) {
        if (value.empty()) return std::nullopt;
        std::optional<Moment> read = readMoment(TextView(value));
        if (!read) lose(std::string(name) + ": " + toUtf8(value) + " is no date");
        return read;
    }

    bool hasZone(const Moment& moment) const {
        return !isOld_ && !moment.isDay && yearOf(moment) >= OwnZone::firstYear;
    }

    std::string head(std::string_view name, const Moment& moment) const {
        std::string whole(name);
        if (isOld_ || (!moment.isDay && !hasZone(moment))) return whole;
        return moment.isDay ? whole.append(";VALUE=DATE") : whole.append(";TZID=").append(zone_.name());
    }

    void date(std::string_view name, const Moment& moment) {
        lines_.line(head(name, moment), basicText(moment));
    }

    Moment inUtc(const Moment& local) const {
        Moment utc = momentAt(local_seconds(zone_.utcOf(local.time()).time_since_epoch()));
        utc.isUtc = true;
        return utc;
    }

    void write(const CalendarEntry& entry) {
        const bool isToDo = entry.kind == Kind::toDo;
        const std::optional<Moment> start =
            isToDo ? moment("DUE", entry.due) : moment("DTSTART", entry.start);
        if (!isToDo && !start) return lose("VEVENT: it has no date to begin on");
        const std::string_view component = isToDo ? "VTODO" : "VEVENT";
        lines_.line("BEGIN", component);
        writeUid(entry);
        if (!isOld_) lines_.line("DTSTAMP", basicText(stamp_));
        if (entry.kind == Kind::other) lines_.line(kindProperty, kindName(entry.kind));
        if (const std::string_view category = categoryOf(entry.kind); !category.empty())
            lines_.line("CATEGORIES", category);
        text(calendarProperty, entry.calendar);
        text("SUMMARY", entry.summary);
        text("LOCATION", entry.location);
        text("DESCRIPTION", entry.description);
        if (entry.kind == Kind::birthday) lines_.line(birthYearProperty, std::to_string(entry.birthYear));
        if (start) writeStart(entry, *start);
        if (isToDo) writeState(entry);
        writeAlarm(entry, start);
        lines_.line("END", component);
    }

    void writeUid(const CalendarEntry& entry) {
        if (!entry.uid.empty()) return text("UID", entry.uid);
        // There has to be one.
        if (!isOld_)
            lines_.line("UID", basicText(stamp_) + "-" + std::to_string(place_) + std::string(noUid));
    }

    void writeStart(const CalendarEntry& entry, const Moment& start) {
        const bool isToDo = entry.kind == Kind::toDo;
        Repetition rule;
        std::string why = entry.rule.empty() ? "" : readShortRule(toUtf8(entry.rule), start, rule);
        if (!why.empty()) lose("RRULE: " + why);
        const bool repeats = !entry.rule.empty() && why.empty();
        // The standard counts a to-do's repetition from a start.
        date(isToDo && (isOld_ || !repeats) ? "DUE" : "DTSTART", start);
        if (const std::optional<Moment> end = isToDo ? std::nullopt : moment("DTEND", entry.end)) {
            if (end->isDay != start.isDay || end->time() < start.time() ||
                (end->isDay && end->day == start.day))
                lose("DTEND: " + toUtf8(entry.end) + " does not go with the start");
            else
                date("DTEND", *end);
        }
        if (repeats) writeRule(rule, start);
        writeExceptions(entry, start);
    }

    void writeRule(const Repetition& rule, const Moment& start) {
        if (isOld_) return lines_.line("RRULE", oldRule(rule, start));
        std::string until;
        if (rule.last) {
            Moment last = start;
            last.day = *rule.last;
            until = basicText(hasZone(start) ? inUtc(last) : last);
        }
        lines_.line("RRULE", recurrenceRule(rule, start, until));
    }

    void writeExceptions(const CalendarEntry& entry, const Moment& start) {
        std::string list;
        for (const Text& text : entry.exceptions) {
            const std::optional<Moment> day = moment("EXDATE", text);
            if (!day) continue;
            Moment exception = start;
            exception.day = day->day;
            list.append(list.empty() ? "" : isOld_ ? ";" : ",").append(basicText(exception));
        }
        if (!list.empty()) lines_.line(head("EXDATE", start), list);
    }

    void writeState(const CalendarEntry& entry) {
        if (entry.priority >= 1 && entry.priority <= 3)
            lines_.line("PRIORITY", std::to_string(isOld_ ? entry.priority : entry.priority * 4 - 3));
        else if (entry.priority != 0)
            lose("PRIORITY: " + std::to_string(entry.priority) + " is none");
        if (entry.isDone) lines_.line("STATUS", "COMPLETED");
    }

    // By the start, so that it rings before every repetition; where it is far from it, or there is none, by
    // itself.
    void writeAlarm(const CalendarEntry& entry, const std::optional<Moment>& start) {
        std::optional<Moment> alarm = moment("VALARM", entry.alarm);
        if (!alarm) return;
        alarm->isDay = false;
        if (isOld_) {
            lines_.line("DALARM", basicText(*alarm));
            lines_.line("AALARM", basicText(*alarm));
            return;
        }
        lines_.line("BEGIN", "VALARM");
        lines_.line("ACTION", "DISPLAY");
        lines_.line("DESCRIPTION",
                    entry.summary.empty() ? "-" : lines_.escaped(toUtf8(entry.summary), ValueKind::text));
        constexpr days furthest(365);
        const seconds lead = start ? alarm->time() - start->time() : furthest * 2;
        if (abs(lead) < furthest) {
            const bool byDue = entry.kind == Kind::toDo && entry.rule.empty();
            lines_.line(byDue ? "TRIGGER;RELATED=END" : "TRIGGER", durationText(lead));
        } else {
            lines_.line("TRIGGER;VALUE=DATE-TIME", basicText(inUtc(*alarm)));
        }
        lines_.line("END", "VALARM");
    }

    std::span<const CalendarEntry> entries_;
    bool isOld_;
    CalendarText result_;
    ContentLineWriter lines_;
    bool hasTimes_ = false;
    OwnZone zone_;
    Moment stamp_;
    std::size_t place_ = 0;
};

}  // namespace

CalendarText writeCalendarFile(std::span<const CalendarEntry> entries, CalendarForm form,
                               std::optional<sys_seconds> stamp) {
    return CalendarWriter(entries, form, stamp.value_or(floor<seconds>(system_clock::now()))).written();
}

namespace {

OwnZone zoneOfAllYears() {
    constexpr int lastYear = 9999;
    return OwnZone(OwnZone::firstYear, lastYear);
}

}  // namespace

std::string calendarFileAround(std::string_view components) {
    std::string text;
    ContentLineWriter lines(text, LineForm::current);
    beginFile(lines, "2.0");
    zoneOfAllYears().write(lines);
    text += components;
    lines.line("END", "VCALENDAR");
    return text;
}

std::string ownZoneName() {
    return zoneOfAllYears().name();
}

}  // namespace ovno2::host
