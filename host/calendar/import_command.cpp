// `ovphone calendar import`: the entries of a file to a phone.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <utility>

#include "host/calendar/calendar_import.h"
#include "host/calendar/commands.h"
#include "host/calendar/entry_fields.h"
#include "host/calendar/ical_reader.h"
#include "host/calendar/phone_entry.h"
#include "host/calendar/single_entries.h"
#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/input_file.h"

namespace ovno2::host {

namespace {

struct ImportOptions {
    std::string file;
    std::string calendar;
    std::string charset;
    std::string expandUntil;  // a day; empty = not at all
    bool dryRun = false;
    bool verbose = false;
};

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : "; ") + part;
    return forPerson(text);
}

// Rules that only this phone does not keep are wide ones on it, unless it has them already.
void widen(std::vector<CalendarEntry>& entries, const AttachedPhones& phones, const KnownEntries& known) {
    for (CalendarEntry& entry : entries) {
        if (keepsRule(phones, entry) || known.hasSame(asPhonesKeepIt(entry))) continue;
        const CalendarEntry* const before = known.withUid(entry.uid);
        if (!before || before->rule != entry.rule) entry.wideRule = wideRuleOf(entry);
    }
}

// Writes what repeats in ways that no phone can hold as single entries.
void expand(std::vector<CalendarEntry>& entries, std::chrono::local_days last) {
    std::vector<CalendarEntry> expanded;
    expanded.reserve(entries.size());
    for (CalendarEntry& entry : entries) {
        if (!entry.wideRule) {
            expanded.push_back(std::move(entry));
            continue;
        }
        SingleEntries singles = singleEntries(entry, last);
        if (!singles.problem.empty()) {
            note("ovphone: " + forPerson(titleOf(entry)) +
                 ": no single entries are made of it: " + forPerson(singles.problem) + ".");
            expanded.push_back(std::move(entry));
            continue;
        }
        note("ovphone: " + forPerson(titleOf(entry)) + ": becomes " + described(singles, last) +
             ", since the phone cannot repeat by \"" + forPerson(entry.wideRule->text) + "\".");
        std::ranges::move(singles.entries, std::back_inserter(expanded));
    }
    entries = std::move(expanded);
}

// The calendar that the line names; empty = none.
Text calendarNamed(const std::vector<Text>& names, const std::string& wanted) {
    Text name = fromUtf8(wanted);
    if (wanted.empty() || std::ranges::find(names, name) != names.end()) return name;
    throw CommandFailure{
        failed, "The phone has no calendar \"" + wanted + "\"; \"ovphone calendar mkdir\" makes one."};
}

void importCalendar(const Context& context, const ImportOptions& wanted) {
    CalendarFile file = readCalendarFile(readInputFile(wanted.file), inputName(wanted.file), wanted.charset);
    for (const std::string& problem : file.problems)
        note("ovphone: " + forPerson(problem));
    if (file.entries.empty())
        throw CommandFailure{failed, "\"" + inputName(wanted.file) + "\" holds no entry for a calendar."};
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const PhoneCalendars calendars = readCalendars(phones, phone);
    // An entry that could not be read would come a second time.
    if (!calendars.missing.empty()) {
        note("ovphone: Nothing was written: what the phone has must be known first.");
        requireWhole(calendars.missing);
    }

    KnownEntries known(calendars.entries, phone.serial);
    if (!wanted.expandUntil.empty()) {
        widen(file.entries, phones, known);
        expand(file.entries, dayFrom("--expand-until", wanted.expandUntil));
    }
    if (const Text calendar = calendarNamed(calendars.names, wanted.calendar); !calendar.empty())
        for (CalendarEntry& entry : file.entries)
            entry.calendar = calendar;
    CalendarImport import = planImport(std::move(file.entries), phones, phone, calendars);
    std::size_t unchanged = 0, refused = 0;
    for (const ImportedEntry& entry : import.entries) {
        const std::string title = "ovphone: " + forPerson(entry.title) + ": ";
        if (!entry.unplaced.empty()) note(title + "the phone has no place for " + joined(entry.unplaced));
        if (!entry.refusal.empty())
            note(title + entry.refusal +
                 (entry.hasWideRule && wanted.expandUntil.empty()
                      ? " \"--expand-until DAY\" makes single entries of it."
                      : ""));
        unchanged += entry.isThere() ? 1 : 0;
        refused += entry.refusal.empty() ? 0 : 1;
    }
    for (const Text& name : import.homeless)
        note("ovphone: The phone has no calendar \"" + toUtf8(name) +
             "\": new entries of it go to the first one. \"ovphone calendar mkdir\" makes it.");
    if (!wanted.dryRun) carryOut(phones, phone, calendars, import.changes);
    std::size_t added = 0, changed = 0, bad = refused;
    for (const CalendarChange& change : import.changes) {
        const bool isNew = change.kind == CalendarChange::Kind::add;
        if (!change.isDone())
            note("ovphone: " + forPerson(titleOf(change.after)) + ": " + change.failure);
        else if (wanted.verbose || wanted.dryRun)
            write(std::string(wanted.dryRun ? "would be " : "") + (isNew ? "added: " : "changed: ") +
                  titleOf(change.after) + "\n");
        ++(!change.isDone() ? bad : isNew ? added : changed);
    }
    if (!isQuiet())
        write(std::to_string(added) + (wanted.dryRun ? " would be added, " : " added, ") +
              std::to_string(changed) + (wanted.dryRun ? " would be changed, " : " changed, ") +
              std::to_string(unchanged) + " unchanged, " + std::to_string(bad) + " failed\n");
    if (bad != 0 || !file.problems.empty()) throw CommandFailure{failed, {}};
}

}  // namespace

void registerCalendarImport(CLI::App& calendar, Context& context) {
    const auto options = std::make_shared<ImportOptions>();
    CLI::App& command = addCommand(calendar, "import", "Put the entries of a file on the phone", context,
                                   [&context, options] { importCalendar(context, *options); });
    addPhoneCommandOptions(command, context);
    command.add_option("FILE", options->file, "an iCalendar or vCalendar file, or - for standard input")
        ->type_name("")
        ->required();
    command.add_option("--calendar", options->calendar, "the calendar that they go to")->type_name("NAME");
    command.add_option("--charset", options->charset, "of an old file that does not say it")
        ->type_name("NAME");
    command
        .add_option("--expand-until", options->expandUntil,
                    "write what no phone can repeat as single entries up to that day, at most " +
                        std::to_string(mostSingleEntries) + " a rule")
        ->type_name("DAY");
    command.add_flag("-n,--dry-run", options->dryRun, "only say what would be done");
    command.add_flag("-v,--verbose", options->verbose, "name every entry");
    command.footer(
        R"(What the phone has already stays as it is; the same file imported again changes nothing. An entry that repeats in
a way that no phone can hold is named and not written, or becomes single entries with --expand-until.

Examples:
  ovphone calendar import --dry-run calendar.ics     what would be done
  ovphone calendar import --calendar Private calendar.ics
  ovphone calendar import --expand-until 2009-12-31 calendar.ics)");
}

}  // namespace ovno2::host
