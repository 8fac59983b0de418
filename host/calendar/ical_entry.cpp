#include "host/calendar/ical_entry.h"

#include <algorithm>
#include <set>

#include "host/calendar/ical_names.h"
#include "host/calendar/ical_repetition.h"
#include "host/calendar/recurrence_names.h"
#include "host/formats/charset.h"

namespace ovno2::host {

using namespace std::chrono;
using Kind = CalendarEntry::Kind;

namespace {

Text textOf(const ContentLine& line) {
    return line.isBinary ? fromUnknownCharset(line.value) : fromUtf8(unescaped(line, line.value));
}

// Properties that say nothing about the entry itself, or what is usual.
bool saysNothing(const ContentLine& line) {
    constexpr std::string_view names[] = {
        "DTSTAMP",        "CREATED",  "LAST-MODIFIED",      "DCREATED",
        "SEQUENCE",       "TYPE",     "X-IRMC-LUID",        "X-SYMBIAN-LUID",
        "X-EPOCTODOLIST", "X-METHOD", "X-SONYERICSSON-DST", "X-EPOCAGENDAENTRYTYPE"};
    static constexpr std::pair<std::string_view, std::string_view> usual[] = {
        {"CLASS", "PUBLIC"},     {"TRANSP", "OPAQUE"},       {"TRANSP", "0"},
        {"STATUS", "CONFIRMED"}, {"STATUS", "NEEDS ACTION"}, {"STATUS", "NEEDS-ACTION"},
        {"STATUS", "ACCEPTED"},  {"PRIORITY", "0"},          {"PERCENT-COMPLETE", "0"}};
    if (line.value.empty() || std::ranges::find(names, line.name) != std::end(names)) return true;
    return std::ranges::any_of(usual, [&](const auto& one) {
        return line.name == one.first && upperCased(line.value) == one.second;
    });
}

class EntryReader {
  public:
    EntryReader(const FileComponent& component, const FileClocks& clocks)
        : component_(component), clocks_(clocks) {
        isToDo_ = component.name == "VTODO";
        if (isToDo_) entry().kind = Kind::toDo;
    }

    FileEntry read() {
        for (const ContentLine& line : component_.lines)
            take(line);
        if (readTimes()) {
            readAlarms();
            readRepetition();
            finishBirthday();
        }
        return std::move(result_);
    }

  private:
    CalendarEntry& entry() { return result_.entry; }

    void say(const std::string& what) {
        if (said_.insert(what).second) entry().unplaced.push_back(what);
    }

    void take(const ContentLine& line) {
        static const std::map<std::string_view, void (EntryReader::*)(const ContentLine&)> takers = {
            {"SUMMARY", &EntryReader::takeText},
            {"DESCRIPTION", &EntryReader::takeText},
            {"LOCATION", &EntryReader::takeText},
            {"UID", &EntryReader::takeText},
            {calendarProperty, &EntryReader::takeText},
            {"CALENDAR", &EntryReader::takeText},
            {"CATEGORIES", &EntryReader::takeCategories},
            {"TYPE", &EntryReader::takeKind},
            {kindProperty, &EntryReader::takeKind},
            {"X-EPOCAGENDAENTRYTYPE", &EntryReader::takeKind},
            {"X-BIRTHDAY", &EntryReader::takeBirthday},
            {birthYearProperty, &EntryReader::takeBirthYear},
            {"PRIORITY", &EntryReader::takePriority},
            {"STATUS", &EntryReader::takeStatus},
            {"COMPLETED", &EntryReader::takeDone},
            {"PERCENT-COMPLETE", &EntryReader::takeDone},
            {"DTSTART", &EntryReader::keep},
            {"DTEND", &EntryReader::keep},
            {"DUE", &EntryReader::keep},
            {"DURATION", &EntryReader::keep},
            {"RRULE", &EntryReader::keep},
            {"EXDATE", &EntryReader::takeExceptions},
            {"RECURRENCE-ID", &EntryReader::takeRecurrenceId},
            {"AALARM", &EntryReader::takeOldAlarm},
            {"DALARM", &EntryReader::takeOldAlarm},
            {"X-IRMC-LUID", &EntryReader::takeDeviceId},
        };
        if (!line.trouble.empty()) say((line.name.empty() ? "a line" : line.name) + ": " + line.trouble);
        if (line.name.empty()) return say("line " + std::to_string(line.number) + ": it is no property");
        const auto found = takers.find(line.name);
        if (found != takers.end())
            (this->*found->second)(line);
        else
            sayLine(line);
    }

    void sayLine(const ContentLine& line) {
        if (!saysNothing(line)) say(line.name);
    }

    void takeText(const ContentLine& line) {
        Text& text = line.name == "SUMMARY"       ? entry().summary
                     : line.name == "DESCRIPTION" ? entry().description
                     : line.name == "LOCATION"    ? entry().location
                     : line.name == "UID"         ? entry().uid
                                                  : entry().calendar;
        if (!text.empty()) return say(line.name + ": more than one");
        text = textOf(line);
        if (line.name == "UID" && toUtf8(text).ends_with(noUid)) text.clear();
    }

    void takeDeviceId(const ContentLine& line) {
        if (!component_.find("UID")) entry().uid = textOf(line);
    }

    void setKind(Kind kind) {
        if (!isToDo_ && kind != Kind::toDo) entry().kind = kind;
    }

    void takeCategories(const ContentLine& line) {
        for (const std::string_view word : partsOf(line.value, ",;")) {
            const std::string name = upperCased(toUtf8(trimBlanks(fromUtf8(unescaped(line, word)))));
            if (name.empty() || name == "MISCELLANEOUS") continue;
            const std::optional<Kind> kind = fileKindNamed(name);
            if (!kind)
                say("CATEGORIES");
            else if (!component_.find(kindProperty))
                setKind(*kind);
        }
    }

    void takeKind(const ContentLine& line) {
        if (const std::optional<Kind> kind = fileKindNamed(upperCased(line.value))) return setKind(*kind);
        if (line.name == kindProperty && !line.value.empty()) say(line.name);
    }

    void takeBirthday(const ContentLine& line) {
        if (line.value != "0" && !line.value.empty()) setKind(Kind::birthday);
    }

    void takeBirthYear(const ContentLine& line) {
        hasBirthYear_ = true;
        entry().birthYear = std::min(numberOf(line.value).value_or(0), Long{9999});
    }

    void takePriority(const ContentLine& line) {
        const Long number = numberOf(line.value).value_or(0);
        if (!isToDo_) return sayLine(line);
        if (number <= 0) return;
        if (line.isOldForm)
            entry().priority = std::min(number, Long{3});
        else
            entry().priority = number < 5 ? 1 : number == 5 ? 2 : 3;
    }

    void takeStatus(const ContentLine& line) {
        if (isToDo_ && upperCased(line.value) == "COMPLETED")
            entry().isDone = true;
        else
            sayLine(line);
    }

    void takeDone(const ContentLine& line) {
        if (!isToDo_ || line.name == "PERCENT-COMPLETE") {
            if (isToDo_ && line.value == "100")
                entry().isDone = true;
            else
                sayLine(line);
        } else if (!line.value.empty()) {
            entry().isDone = true;
        }
    }

    void keep(const ContentLine& line) {
        if (line.value.empty()) return;
        if (!kept_.emplace(line.name, &line).second) say(line.name + ": more than one");
    }

    // Times
    // ------------------------------------------------------------------------------------------------

    // The clock that a line's times are by; null = none in particular.
    std::shared_ptr<const FileZone> zoneOf(const ContentLine& line) {
        const std::string_view name = line.parameter("TZID");
        if (!name.empty()) {
            const auto found = clocks_.zones.find(name);
            if (found != clocks_.zones.end() && found->second->isKnown()) return found->second;
            say("TZID: the file does not describe " + std::string(name) +
                "; its times are taken as they stand");
            return nullptr;
        }
        return line.isOldForm ? clocks_.oldZone : nullptr;
    }

    // A line's time as clocks here show it.
    Moment localHereOf(const Moment& moment, const ContentLine& line) {
        return localMoment(moment, zoneOf(line).get());
    }

    std::optional<Moment> momentOf(const ContentLine& line, std::string_view value) {
        while (value.ends_with(' '))
            value.remove_suffix(1);
        std::optional<Moment> moment = readMoment(value);
        if (moment && line.parameter("VALUE") == "DATE") *moment = {.day = moment->day};
        return moment;
    }

    std::optional<Moment> keptMoment(const char* name) {
        const auto found = kept_.find(name);
        if (found == kept_.end()) return std::nullopt;
        const ContentLine& line = *found->second;
        const std::optional<Moment> read = momentOf(line, line.value);
        const std::optional<Moment> moment = read ? std::optional(localHereOf(*read, line)) : std::nullopt;
        if (!moment || isoText(*moment).empty()) {
            say(line.name + ": " + line.value.substr(0, 40) + " is no date");
            return std::nullopt;
        }
        return moment;
    }

    std::optional<seconds> keptDuration() {
        const auto found = kept_.find("DURATION");
        if (found == kept_.end()) return std::nullopt;
        std::optional<seconds> duration = readDuration(upperCased(found->second->value));
        if (!duration || *duration < seconds(0)) {
            say("DURATION: " + found->second->value.substr(0, 40) + " is none");
            return std::nullopt;
        }
        return duration;
    }

    static Moment later(const Moment& start, seconds duration) {
        if (start.isDay && duration % days(1) == seconds(0))
            return {.day = start.day + floor<days>(duration)};
        return momentAt(start.time() + duration);
    }

    // False when the entry cannot be one.
    bool readTimes() {
        start_ = keptMoment("DTSTART");
        const std::optional<Moment> due = keptMoment("DUE");
        const std::optional<seconds> duration = keptDuration();
        if (isToDo_) {
            ruleLine_ = due ? "DUE" : "DTSTART";
            if (due && start_) say("DTSTART: a to-do has its due date alone");
            if (due)
                start_ = due;
            else if (start_ && duration)
                start_ = later(*start_, *duration);
            if (start_) entry().due = isoText(*start_);
            if (kept_.contains("DTEND")) say("DTEND");
            return true;
        }
        if (due) say("DUE");
        if (!start_) {
            result_.problem = kept_.contains("DTSTART") ? "its DTSTART is no date" : "it has no DTSTART";
            return false;
        }
        entry().start = isoText(*start_);
        std::optional<Moment> end = keptMoment("DTEND");
        if (!end && duration) end = later(*start_, *duration);
        if (!end) return true;
        // Whole days end with a day; a file that says the same day twice means that day.
        if (start_->isDay && !end->isDay)
            end = Moment{.day = end->day + days(end->clock > seconds(0) ? 1 : 0)};
        if (start_->isDay && end->day == start_->day) end->day += days(1);
        if (!start_->isDay && end->isDay) *end = momentAt(local_seconds(end->day));
        if (end->time() < start_->time())
            say("DTEND: it is before the start");
        else
            entry().end = isoText(*end);
        return true;
    }

    // Alarms
    // -----------------------------------------------------------------------------------------------

    void setAlarm(const Moment& alarm) {
        const Text text = isoText(Moment{.day = alarm.day, .clock = alarm.clock, .isDay = false});
        if (!entry().alarm.empty() && entry().alarm != text) return say("VALARM: an entry has one alarm");
        entry().alarm = text;
    }

    // The date, then how often it rings and with what.
    void takeOldAlarm(const ContentLine& line) {
        const std::vector<std::string_view> parts = partsOf(line.value, ";");
        if (parts.empty() || parts[0].empty()) return;
        const std::optional<Moment> alarm = momentOf(line, parts[0]);
        if (!alarm) return say(line.name + ": " + std::string(parts[0].substr(0, 40)) + " is no date");
        setAlarm(localHereOf(*alarm, line));
    }

    void readAlarms() {
        for (const FileComponent& part : component_.parts) {
            if (part.name != "VALARM") {
                say(part.name);
                continue;
            }
            const ContentLine* const trigger = part.find("TRIGGER");
            if (!trigger) {
                say("VALARM: without a TRIGGER");
                continue;
            }
            if (part.find("REPEAT")) say("VALARM: REPEAT");
            if (const std::optional<Moment> alarm = momentOf(*trigger, trigger->value)) {
                setAlarm(localHereOf(*alarm, *trigger));
                continue;
            }
            const std::optional<seconds> lead = readDuration(upperCased(trigger->value));
            const bool fromEnd = upperCased(trigger->parameter("RELATED")) == "END" && !entry().end.empty();
            const std::optional<Moment> base = fromEnd ? readMoment(TextView(entry().end)) : start_;
            if (lead && base)
                setAlarm(momentAt(base->time() + *lead));
            else
                say("VALARM: " + trigger->value.substr(0, 40) +
                    (lead ? ": there is no time to count from" : ": no time"));
        }
    }

    // Repetition
    // -------------------------------------------------------------------------------------------

    void takeExceptions(const ContentLine& line) {
        for (const std::string_view word : partsOf(line.value, ",;")) {
            if (word.empty()) continue;
            const std::optional<Moment> date = momentOf(line, word);
            if (!date) {
                say("EXDATE: " + std::string(word.substr(0, 40)) + " is no date");
                continue;
            }
            exceptions_.push_back(localHereOf(*date, line));
            Text day = isoText({.day = exceptions_.back().day});
            if (exceptionDays_.insert(day).second) entry().exceptions.push_back(std::move(day));
        }
    }

    void takeRecurrenceId(const ContentLine& line) {
        say("RECURRENCE-ID");
        if (!line.parameter("RANGE").empty()) say("RECURRENCE-ID: RANGE");
        if (const std::optional<Moment> date = momentOf(line, line.value))
            result_.instead = localHereOf(*date, line);
    }

    void readRepetition() {
        const auto found = kept_.find("RRULE");
        if (found == kept_.end()) return;
        const auto start = kept_.find(ruleLine_);
        if (!start_ || start == kept_.end()) return say("RRULE: there is no date to begin on");
        const ContentLine& line = *found->second;
        const FileRule rule{.text = line.value,
                            .isOldForm = upperCased(line.value).find("FREQ=") == std::string::npos,
                            .start = *momentOf(*start->second, start->second->value),
                            .localStart = *start_,
                            .zone = zoneOf(*start->second)};
        if (const std::string why = takeRule(rule, entry()); !why.empty()) say("RRULE: " + why);
        if (entry().wideRule) entry().wideRule->exceptions = std::move(exceptions_);
    }

    // Phones that have no room of their own for the year of birth write it where the description stands.
    void finishBirthday() {
        if (entry().kind != Kind::birthday || hasBirthYear_ || entry().description.size() != 4) return;
        const std::optional<Long> year = numberOf(toUtf8(entry().description));
        constexpr Long first = 1800, last = 2100;
        if (!year || *year < first || *year > last) return;
        entry().birthYear = *year;
        entry().description.clear();
    }

    const FileComponent& component_;
    const FileClocks& clocks_;
    FileEntry result_;
    std::map<std::string_view, const ContentLine*> kept_;
    std::set<std::string> said_;
    std::set<Text> exceptionDays_;
    std::vector<Moment> exceptions_;
    std::optional<Moment> start_;  // local; a to-do's due date
    const char* ruleLine_ = "DTSTART";
    bool isToDo_ = false;
    bool hasBirthYear_ = false;
};

}  // namespace

FileEntry readFileEntry(const FileComponent& component, const FileClocks& clocks) {
    return EntryReader(component, clocks).read();
}

}  // namespace ovno2::host
