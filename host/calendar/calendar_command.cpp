// `ovphone calendar` and its commands that read.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "host/calendar/calendar_output.h"
#include "host/calendar/calendar_store.h"
#include "host/calendar/commands.h"
#include "host/calendar/entry_fields.h"
#include "host/calendar/recurrence_dates.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/folding.h"

namespace ovno2::host {

namespace {

using namespace std::chrono;

struct CalendarOptions {
    std::vector<std::string> words;
    std::string month, from, to;  // as the user writes them; empty = not given
    std::string calendar;
    bool verbose = false;
};

constexpr std::size_t pageWidth = 120;  // where there is no terminal

std::size_t widthHere() {
    return console::outputIsTerminal() ? console::terminalWidth() : pageWidth;
}

year_month thisMonth() {
    const year_month_day today(floor<days>(console::localTime(floor<seconds>(system_clock::now()))));
    return today.year() / today.month();
}

year_month monthFrom(const std::string& text) {
    if (text.empty()) return thisMonth();
    const std::optional<Moment> first = readMoment(std::string_view(text + "-01"));
    if (!first) throw CommandFailure{wrongUsage, "--month: \"" + text + "\" is no month such as 2008-07."};
    const year_month_day date(first->day);
    return date.year() / date.month();
}

// The period that the line means; `isMonth` says that it is one month.
Period periodOf(const CalendarOptions& wanted, bool& isMonth) {
    isMonth = wanted.from.empty() && wanted.to.empty();
    if (isMonth) return monthPeriod(monthFrom(wanted.month));
    if (!wanted.month.empty()) throw CommandFailure{wrongUsage, "Say either --month, or --from and --to."};
    constexpr years furthest(100);
    Period period{};
    if (!wanted.from.empty()) period.from = dayFrom("--from", wanted.from);
    if (!wanted.to.empty()) period.to = dayFrom("--to", wanted.to) + days(1);
    if (wanted.from.empty()) period.from = period.to - days(31);
    if (wanted.to.empty()) period.to = period.from + days(31);
    if (period.to <= period.from) throw CommandFailure{wrongUsage, "--to lies before --from."};
    if (period.to - period.from > furthest)
        throw CommandFailure{wrongUsage, "Between --from and --to lie more than a hundred years."};
    return period;
}

// Takes out what lies in other calendars.
void keepCalendar(PhoneCalendars& list, const std::string& wanted) {
    if (wanted.empty()) return;
    const Text name = folded(fromUtf8(wanted));
    if (std::ranges::none_of(list.names, [&](const Text& one) { return folded(one) == name; })) {
        std::string names;
        for (const Text& one : list.names)
            names += (names.empty() ? "" : ", ") + toUtf8(one);
        throw CommandFailure{failed, "The phone has no calendar \"" + wanted + "\". It has: " + names + "."};
    }
    std::erase_if(list.entries, [&](const CalendarEntry& entry) { return folded(entry.calendar) != name; });
}

bool isOpenToDo(const CalendarEntry& entry) {
    return entry.kind == CalendarEntry::Kind::toDo && entry.due.empty() && !entry.isDone;
}

void listCalendar(const Context& context, const CalendarOptions& wanted) {
    bool isMonth = false;
    const Period period = periodOf(wanted, isMonth);
    const AttachedPhones phones(context);
    PhoneCalendars list = readCalendars(phones, phones.chosen());
    keepCalendar(list, wanted.calendar);
    const std::vector<Occurrence> occurrences = occurrencesIn(list.entries, period);
    if (context.asJson()) {
        writeOccurrencesAsJson(occurrences, writeData);
        requireWhole(list.missing);
        return;
    }
    if (isMonth) write(asMonth(monthFrom(wanted.month), occurrences, widthHere()) + "\n");
    write(asAgenda(occurrences, period, widthHere(), wanted.verbose));
    const auto toDos = std::ranges::count_if(list.entries, isOpenToDo);
    if (toDos != 0) {
        write("\nTo do, some day\n");
        for (const CalendarEntry& entry : list.entries)
            if (isOpenToDo(entry))
                write("  " + toUtf8(entry.summary) + (wanted.verbose ? " [" + toUtf8(entry.uid) + "]" : "") +
                      "\n");
    }
    if (list.entries.empty() && list.missing.empty()) {
        note("The calendar is empty.");
    } else if (occurrences.empty()) {
        const std::optional<year_month> month = busiestMonth(list.entries);
        std::string hint;
        if (month) {
            const Text first = isoText({.day = monthPeriod(*month).from});
            hint = " \"--month " + toUtf8(first.substr(0, 7)) + "\" has some of the " +
                   std::to_string(list.entries.size()) + " entries; \"ovphone calendar show\" shows all.";
        }
        note("Nothing takes place in that time." + hint);
    }
    requireWhole(list.missing);
}

// Those that hold the words, or the one whose id they are.
std::vector<CalendarEntry> meant(const std::vector<CalendarEntry>& entries,
                                 const std::vector<std::string>& words) {
    if (words.empty()) return entries;
    std::string wanted;
    for (const std::string& word : words)
        wanted += (wanted.empty() ? "" : " ") + word;
    const Text id = upperCase(fromUtf8(wanted)), text = folded(fromUtf8(wanted));
    std::vector<CalendarEntry> found;
    std::ranges::copy_if(entries, std::back_inserter(found), [&](const CalendarEntry& entry) {
        const auto holds = [&](const Text& field) { return folded(field).find(text) != Text::npos; };
        return entry.uid == id || holds(entry.summary) || holds(entry.location) || holds(entry.description);
    });
    if (found.empty()) throw CommandFailure{failed, "No entry holds \"" + wanted + "\"."};
    return found;
}

void showEntries(const Context& context, const CalendarOptions& wanted) {
    const AttachedPhones phones(context);
    PhoneCalendars list = readCalendars(phones, phones.chosen());
    try {
        keepCalendar(list, wanted.calendar);
        std::vector<CalendarEntry> entries = meant(list.entries, wanted.words);
        sortByStart(entries);
        if (context.asJson()) {
            writeEntriesAsJson(entries, writeData);
        } else {
            for (std::size_t i = 0; i < entries.size(); ++i)
                write((i == 0 ? "" : "\n") + inFull(entries[i], widthHere()));
        }
    } catch (const CommandFailure& failure) {
        note("ovphone: " + failure.message);
        requireWhole(list.missing);
        throw CommandFailure{failed, {}};
    }
    requireWhole(list.missing);
}

void addListOptions(CLI::App& command, CalendarOptions& wanted) {
    command.add_option("--month", wanted.month, "the month, such as 2008-07 (default: this one)")
        ->type_name("MONTH");
    command.add_option("--from", wanted.from, "the first day, such as 2008-07-14")->type_name("DAY");
    command.add_option("--to", wanted.to, "the last day")->type_name("DAY");
    command.add_flag("-v,--verbose", wanted.verbose, "with the ids of the entries");
}

}  // namespace

void registerCalendar(CLI::App& app, Context& context) {
    using Action = void (*)(const Context&, const CalendarOptions&);
    const auto options = std::make_shared<CalendarOptions>();
    const auto running = [&context, options](Action action) {
        return [&context, options, action] { action(context, *options); };
    };
    const auto addOptions = [&](CLI::App& command) {
        addPhoneCommandOptions(command, context);
        command.add_option("--calendar", options->calendar, "of one calendar only")->type_name("NAME");
    };
    CLI::App& calendar = addCommand(app, "calendar", "Show the calendar of a phone, or change it", context,
                                    running(listCalendar));
    calendar.require_subcommand(0, 1);
    addOptions(calendar);
    addListOptions(calendar, *options);
    calendar.footer(R"(Examples:
  ovphone calendar                                this month, with its repeats
  ovphone calendar --month 2008-07                another one
  ovphone calendar --from 2008-07-01 --to 2008-09-30 --format json
  ovphone calendar show dentist                   the entries that hold a word, in full)");
    CLI::App& list = addCommand(calendar, "list", "Show a month, or what takes place between two days",
                                context, running(listCalendar));
    addOptions(list);
    addListOptions(list, *options);
    list.footer("Examples:\n  ovphone calendar list --month 2008-07 --calendar Private");
    CLI::App& show = addCommand(calendar, "show", "Show entries in full", context, running(showEntries));
    addOptions(show);
    show.add_option("WHAT", options->words, "an id, or what an entry holds (default: all)")->type_name("");
    registerCalendarFolders(calendar, context);
    registerCalendarEdits(calendar, context);
    registerCalendarImport(calendar, context);
    registerCalendarExport(calendar, context);
    show.footer(
        "Examples:\n  ovphone calendar show --format json > calendar.json     all of them, for programs");
}

}  // namespace ovno2::host
