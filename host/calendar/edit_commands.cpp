// The commands that write entries: `ovphone calendar add`, `edit` and `remove`.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <set>

#include "host/calendar/calendar_changes.h"
#include "host/calendar/calendar_output.h"
#include "host/calendar/commands.h"
#include "host/calendar/entry_fields.h"
#include "host/calendar/single_entries.h"
#include "host/messages/changes.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

struct EditOptions {
    std::vector<std::string> words;
    std::string id;
    std::string expandUntil;  // a day; empty = not at all
    bool dryRun = false;
};

constexpr std::size_t pageWidth = 80;

const char* verbOf(CalendarChange::Kind kind) {
    switch (kind) {
        case CalendarChange::Kind::add:
            return "added to ";
        case CalendarChange::Kind::change:
            return "changed on ";
        default:
            return "deleted from ";
    }
}

std::string counted(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " entry " : " entries ");
}

void reportAsJson(const std::vector<CalendarChange>& changes, bool dryRun, const std::string& failure = {}) {
    std::vector<ReportedItem> items;
    items.reserve(changes.size());
    for (const CalendarChange& change : changes) {
        items.push_back(reportedOf(change));
        const bool isSame = change.kind == CalendarChange::Kind::change && items.back().fields.empty();
        if (isSame && change.isDone()) items.back().result = ReportedItem::Result::unchanged;
    }
    if (!failure.empty()) failAll(items, failure);
    writeChangesAsJson(items, dryRun);
}

void carryOutAll(const AttachedPhones& phones, const ListedPhone& phone, const PhoneCalendars& calendars,
                 std::vector<CalendarChange>& changes, const Context& context, const EditOptions& wanted) {
    const std::string where = verbOf(changes.front().kind) + titleOf(phone) + ".";
    refuseWhatIsNotKept(phones, phone, changes);
    if (wanted.dryRun && changes.front().isDone()) {
        if (context.asJson()) return reportAsJson(changes, wanted.dryRun);
        for (const CalendarChange& change : changes)
            write(inFull(change.entry(), pageWidth) + "\n");
        note(counted(changes.size()) + "would be " + where);
        return;
    }
    try {
        carryOut(phones, phone, calendars, changes);
    } catch (const CommandFailure& failure) {
        if (context.asJson()) reportAsJson(changes, wanted.dryRun, failure.message);
        throw;
    }
    if (context.asJson()) reportAsJson(changes, wanted.dryRun);
    const auto done = static_cast<std::size_t>(std::ranges::count_if(changes, &CalendarChange::isDone));
    if (!context.asJson()) {
        for (const CalendarChange& change : changes)
            if (!change.isDone()) note("ovphone: " + titleOf(change.entry()) + ": " + change.failure);
        note(counted(done) + where);
    }
    if (done != changes.size()) throw CommandFailure{failed, {}};
}

const CalendarEntry& entryWithId(const PhoneCalendars& calendars, const std::string& id) {
    std::vector<Text> uids;
    for (const CalendarEntry& entry : calendars.entries)
        uids.push_back(entry.uid);
    return calendars.entries[placeOf(uids, id, "entry")];
}

void addEntry(const Context& context, const EditOptions& wanted) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const PhoneCalendars calendars = readCalendars(phones, phone);
    const bool expands = !wanted.expandUntil.empty();
    CalendarEntry entry;
    assignFields(entry, wanted.words, calendars.names, {.isNew = true, .keepsWideRule = expands});
    if (expands && !keepsRule(phones, entry)) entry.wideRule = wideRuleOf(entry);
    std::vector<CalendarEntry> entries{entry};
    if (entry.wideRule) {
        const std::chrono::local_days until = dayFrom("--expand-until", wanted.expandUntil);
        SingleEntries singles = singleEntries(entry, until);
        if (!singles.problem.empty())
            throw CommandFailure{wrongUsage,
                                 "rule: \"" + entry.wideRule->text + "\": " + singles.problem + "."};
        remark("It becomes " + described(singles, until) + ".");
        entries = std::move(singles.entries);
    }
    std::vector<CalendarChange> changes;
    changes.reserve(entries.size());
    for (CalendarEntry& one : entries)
        changes.push_back({.after = std::move(one)});
    carryOutAll(phones, phone, calendars, changes, context, wanted);
}

void editEntry(const Context& context, const EditOptions& wanted) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const PhoneCalendars calendars = readCalendars(phones, phone);
    const CalendarEntry& entry = entryWithId(calendars, wanted.id);
    std::vector<CalendarChange> changes{
        {.kind = CalendarChange::Kind::change, .before = entry, .after = entry}};
    assignFields(changes[0].after, wanted.words, calendars.names, {});
    carryOutAll(phones, phone, calendars, changes, context, wanted);
}

void removeEntries(const Context& context, const EditOptions& wanted) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const PhoneCalendars calendars = readCalendars(phones, phone);
    std::set<const CalendarEntry*> chosen;
    for (const std::string& word : wanted.words)
        chosen.insert(&entryWithId(calendars, word));
    std::vector<CalendarChange> changes;
    changes.reserve(chosen.size());
    for (const CalendarEntry* const entry : chosen)
        changes.push_back({.kind = CalendarChange::Kind::remove, .before = *entry});
    carryOutAll(phones, phone, calendars, changes, context, wanted);
}

}  // namespace

void registerCalendarEdits(CLI::App& calendar, Context& context) {
    using Action = void (*)(const Context&, const EditOptions&);
    const auto options = std::make_shared<EditOptions>();
    const auto add = [&](const char* name, const char* description, Action action,
                         const std::string& footer) -> CLI::App& {
        CLI::App& command = addCommand(calendar, name, description, context,
                                       [&context, options, action] { action(context, *options); });
        addPhoneCommandOptions(command, context);
        command.add_flag("-n,--dry-run", options->dryRun, "only say what would be done");
        command.footer(footer);
        return command;
    };
    const auto takesFields = [&](CLI::App& command) {
        command.add_option("FIELD=VALUE", options->words, "what it has: " + entryFieldNames())
            ->type_name("")
            ->required();
    };
    CLI::App& adding = add(
        "add", "Add an entry", addEntry,
        R"(Times are "2008-07-14 10:00", whole days 2008-07-14; end= of whole days is the day after the last.
An alarm is a time, or 15m, 2h, 1d before. A rule is "W2 MO TH 20081231" or "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,TH".
Examples:
  ovphone calendar add summary=Dentist "start=2008-07-14 10:00" "end=2008-07-14 10:30" alarm=15m
  ovphone calendar add summary=Holidays start=2008-08-04 end=2008-08-18 calendar=Private
  ovphone calendar add type=birthday summary=Anna start=1975-04-12
  ovphone calendar add type=to-do "summary=Pay the rent" due=2008-07-31 priority=1
  ovphone calendar add summary=Choir "start=2008-01-27 19:00" rule=FREQ=MONTHLY\;BYDAY=-1SU --expand-until 2008-12-31)");
    takesFields(adding);
    adding
        .add_option("--expand-until", options->expandUntil,
                    "write a rule that no phone can hold as single entries up to that day")
        ->type_name("DAY");
    CLI::App& edit = add("edit", "Give an entry other values", editEntry,
                         R"(Fields that are not named stay as they are; an empty value empties one.
Examples:
  ovphone calendar edit 0C0001F9 done=yes
  ovphone calendar edit 0C0001C6 "start=2008-01-16 17:30" calendar=Private)");
    edit.add_option("ID", options->id, "the entry's id, or as much of it as no other has")
        ->type_name("")
        ->required();
    takesFields(edit);
    CLI::App& remove = add("remove", "Delete entries from the phone", removeEntries,
                           "Examples:\n  ovphone calendar remove 0C0001F9 0C0001C6");
    remove.add_option("ID", options->words, "the entries' ids, or as much of one as no other has")
        ->type_name("")
        ->required();
}

}  // namespace ovno2::host
