// `ovphone calendar import`: the entries of a file to a phone.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "host/calendar/calendar_changes.h"
#include "host/calendar/commands.h"
#include "host/calendar/entry_fields.h"
#include "host/calendar/ical_reader.h"
#include "host/calendar/phone_entry.h"
#include "host/calendar/single_entries.h"
#include "host/contacts/contact_files.h"
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

// The phone's entries by what tells them apart at a glance.
class KnownEntries {
  public:
    KnownEntries(const std::vector<CalendarEntry>& entries, const Text& serial) {
        for (const CalendarEntry& entry : entries) {
            byLook_.emplace(lookOf(entry), &entry);
            byUid_.emplace(exportedUid(serial, entry.uid), &entry);
        }
    }

    bool hasSame(const CalendarEntry& wanted) const { return findSame(wanted) != byLook_.end(); }
    // The same is not given twice.
    bool takeSame(const CalendarEntry& wanted) {
        const auto found = findSame(wanted);
        if (found == byLook_.end()) return false;
        byLook_.erase(found);
        return true;
    }
    // The one that the file's entry was once exported from.
    const CalendarEntry* withUid(const Text& uid) const {
        const auto found = uid.empty() ? byUid_.end() : byUid_.find(uid);
        return found == byUid_.end() ? nullptr : found->second;
    }

  private:
    static Text lookOf(const CalendarEntry& entry) {
        return entry.start + u"\n" + entry.due + u"\n" + trimBlanks(entry.summary);
    }

    using ByLook = std::multimap<Text, const CalendarEntry*>;

    ByLook::const_iterator findSame(const CalendarEntry& wanted) const {
        const auto [first, last] = byLook_.equal_range(lookOf(wanted));
        const auto found = std::find_if(
            first, last, [&](const auto& one) { return differences(wanted, *one.second).empty(); });
        return found == last ? byLook_.end() : found;
    }

    ByLook byLook_;
    std::map<Text, const CalendarEntry*> byUid_;
};

// What a file's entry repeats by and no phone can hold: without it the entry would be another.
bool losesRepeats(const CalendarEntry& entry) {
    return std::ranges::any_of(entry.unplaced, [](const std::string& property) {
        return property.starts_with("RRULE") || property.starts_with("RDATE") ||
               property.starts_with("EXRULE");
    });
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
    std::vector<CalendarChange> changes;
    std::vector<ReportedItem> reported;  // all entries of the file
    std::vector<std::size_t> places;     // of the changes among them
    reported.reserve(file.entries.size());
    const Text calendar = calendarNamed(calendars.names, wanted.calendar);
    std::set<Text> homeless;  // calendars that the phone has not got
    for (CalendarEntry& entry : file.entries) {
        ReportedItem& item = reported.emplace_back(ReportedItem{.title = titleOf(entry)});
        item.unplaced = entry.unplaced;
        if (losesRepeats(entry)) {
            item.result = ReportedItem::Result::failed;
            item.message = "Not written, since it would repeat otherwise there.";
            if (entry.wideRule && wanted.expandUntil.empty())
                item.message += " \"--expand-until DAY\" makes single entries of it.";
            continue;
        }
        if (!wanted.calendar.empty())
            entry.calendar = calendar;
        else if (std::ranges::find(calendars.names, entry.calendar) == calendars.names.end())
            homeless.insert(std::exchange(entry.calendar, {}));
        if (known.takeSame(asPhonesKeepIt(entry))) continue;
        places.push_back(reported.size() - 1);
        const CalendarEntry* const before = known.withUid(entry.uid);
        if (entry.calendar.empty())
            entry.calendar = before                    ? before->calendar
                             : calendars.names.empty() ? Text()
                                                       : calendars.names[0];
        CalendarChange change{.kind = before ? CalendarChange::Kind::change : CalendarChange::Kind::add};
        if (before) change.before = *before;
        change.after = std::move(entry);
        change.after.uid = change.before.uid;
        changes.push_back(std::move(change));
    }
    homeless.erase(Text());
    for (const Text& name : homeless)
        note("ovphone: The phone has no calendar \"" + toUtf8(name) +
             "\": new entries of it go to the first one. \"ovphone calendar mkdir\" makes it.");
    refuseWhatIsNotKept(phones, phone, changes);
    const auto report = [&](const std::string& failure) {
        for (std::size_t i = 0; i < changes.size(); ++i) {
            ReportedItem& item = reported[places[i]];
            std::vector<std::string> unplaced = std::move(item.unplaced);
            item = reportedOf(changes[i]);
            item.unplaced = std::move(unplaced);
        }
        if (!failure.empty()) failAll(reported, failure);
        reportChanges(reported, {context.asJson(), wanted.dryRun, wanted.verbose});
    };
    if (!wanted.dryRun) {
        try {
            carryOut(phones, phone, calendars, changes);
        } catch (const CommandFailure& failure) {
            if (context.asJson()) report(failure.message);
            throw;
        }
    }
    report({});
    if (!file.problems.empty() ||
        std::ranges::count(reported, ReportedItem::Result::failed, &ReportedItem::result) != 0)
        throw CommandFailure{failed, {}};
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
