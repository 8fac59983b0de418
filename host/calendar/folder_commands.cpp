// The commands on whole calendars: `ovphone calendar folders`, `mkdir`, `rename` and `rmdir`.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "host/calendar/calendar_store.h"
#include "host/calendar/commands.h"
#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/output/json.h"
#include "host/output/table.h"

namespace ovno2::host {

namespace {

struct FolderOptions {
    std::string name, newName;
    bool dryRun = false;
    bool recursive = false;
};

// As the driver gives names to phones.
Text cleanName(const std::string& name) {
    Text clean = fromUtf8(name);
    std::ranges::replace(clean, u'/', u' ');
    std::ranges::replace(clean, u':', u' ');
    clean = trimBlanks(clean);
    if (clean.empty()) throw CommandFailure{wrongUsage, "A calendar needs a name."};
    return clean;
}

std::string quoted(const Text& name) {
    return "\"" + toUtf8(name) + "\"";
}

bool has(const std::vector<Text>& names, const Text& name) {
    return std::ranges::find(names, name) != names.end();
}

// The name of one calendar as the phone writes it.
Text nameOfOne(const std::vector<Text>& names, const std::string& wanted, const ListedPhone& phone) {
    const Text name = fromUtf8(wanted);
    const auto count = std::ranges::count(names, name);
    if (count == 1) return Text(name);
    if (count > 1)
        throw CommandFailure{failed, titleOf(phone) + " has several calendars " + quoted(name) +
                                         "; which one is meant cannot be said from here."};
    std::string all;
    for (const Text& one : names)
        all += (all.empty() ? "" : ", ") + toUtf8(one);
    throw CommandFailure{failed, titleOf(phone) + " has no calendar " + quoted(name) +
                                     ". It has: " + (all.empty() ? "none" : all) + "."};
}

void requireNew(const std::vector<Text>& names, const Text& name, const ListedPhone& phone) {
    if (has(names, name))
        throw CommandFailure{failed, titleOf(phone) + " already has a calendar " + quoted(name) + "."};
}

void require(Long result, const ListedPhone& phone) {
    if (result != 0)
        throw CommandFailure{failed, resultMessage(Operation::changeCalendars, result, titleOf(phone))};
}

// Looks at the phone again.
void requireNow(bool done, const std::string& what) {
    if (!done)
        throw CommandFailure{failed, what +
                                         " was asked for, but the phone does not show it. See \"ovphone "
                                         "calendar folders\"."};
}

void listFolders(const Context& context, const FolderOptions&) {
    const AttachedPhones phones(context);
    const PhoneCalendars list = readCalendars(phones, phones.chosen());
    Table table({u"Calendar", u"Entries"});
    JsonLines lines([](std::string_view piece) { writeData(piece); });
    for (const Text& name : list.names) {
        const Long count =
            static_cast<Long>(std::ranges::count(list.entries, name, &CalendarEntry::calendar));
        if (!context.asJson()) {
            table.addRow({name, decimalText(count)});
            continue;
        }
        JsonLine& line = lines.next();
        line.StartObject();
        line.member("name", TextView(name));
        line.member("entries", count);
        line.EndObject();
    }
    if (context.asJson())
        lines.end();
    else
        writeTable(table);
    requireWhole(list.missing);
}

void makeFolder(const Context& context, const FolderOptions& wanted) {
    const Text name = cleanName(wanted.name);
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    requireNew(readCalendarNames(phones, phone), name, phone);
    if (wanted.dryRun)
        return note("The calendar " + quoted(name) + " would be made on " + titleOf(phone) + ".");
    require(phones.driver().createCalendar(phone, name), phone);
    requireNow(has(readCalendarNames(phones, phone), name), "The calendar " + quoted(name));
    remark("Calendar " + quoted(name) + " made on " + titleOf(phone) + ".");
}

void renameFolder(const Context& context, const FolderOptions& wanted) {
    const Text newName = cleanName(wanted.newName);
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const std::vector<Text> names = readCalendarNames(phones, phone);
    const Text name = nameOfOne(names, wanted.name, phone);
    if (name == newName) return remark("The calendar has that name already.");
    requireNew(names, newName, phone);
    if (wanted.dryRun)
        return note("The calendar " + quoted(name) + " of " + titleOf(phone) + " would be named " +
                    quoted(newName) + ".");
    require(phones.driver().renameCalendar(phone, name, newName), phone);
    const std::vector<Text> now = readCalendarNames(phones, phone);
    requireNow(has(now, newName) && !has(now, name), "The name " + quoted(newName));
    remark("Calendar " + quoted(name) + " is now " + quoted(newName) + ".");
}

void removeFolder(const Context& context, const FolderOptions& wanted) {
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen(Purpose::change);
    const PhoneCalendars list = readCalendars(phones, phone);
    const Text name = nameOfOne(list.names, wanted.name, phone);
    const auto count = std::ranges::count(list.entries, name, &CalendarEntry::calendar);
    if (!wanted.recursive) {
        if (count != 0)
            throw CommandFailure{failed, "The calendar " + quoted(name) + " has " + std::to_string(count) +
                                             " entries, which would be deleted with it: say so with -r."};
        requireWhole(list.missing);
    }
    const std::string what = "Calendar " + quoted(name) + " with " + std::to_string(count) + " entries";
    if (wanted.dryRun) return note(what + " would be deleted from " + titleOf(phone) + ".");
    require(phones.driver().deleteCalendar(phone, name), phone);
    requireNow(!has(readCalendarNames(phones, phone), name), "Deleting " + quoted(name));
    remark(what + " deleted from " + titleOf(phone) + ".");
}

}  // namespace

void registerCalendarFolders(CLI::App& calendar, Context& context) {
    using Action = void (*)(const Context&, const FolderOptions&);
    const auto options = std::make_shared<FolderOptions>();
    const auto add = [&](const char* name, const char* description, Action action,
                         const char* examples) -> CLI::App& {
        CLI::App& command = addCommand(calendar, name, description, context,
                                       [&context, options, action] { action(context, *options); });
        addPhoneCommandOptions(command, context);
        command.footer(std::string("Examples:\n") + examples);
        return command;
    };
    const auto changes = [&](CLI::App& command) {
        command.add_option("NAME", options->name, "the calendar's name")->type_name("")->required();
        command.add_flag("-n,--dry-run", options->dryRun, "only say what would be done");
    };
    add("folders", "Show the calendars of the phone", listFolders, "  ovphone calendar folders");
    changes(add("mkdir", "Make a calendar", makeFolder, "  ovphone calendar mkdir Holidays"));
    CLI::App& rename =
        add("rename", "Rename a calendar", renameFolder, "  ovphone calendar rename Holidays \"Days off\"");
    changes(rename);
    rename.add_option("NEWNAME", options->newName, "the new name")->type_name("")->required();
    CLI::App& remove =
        add("rmdir", "Delete a calendar", removeFolder, "  ovphone calendar rmdir -r Holidays");
    changes(remove);
    remove.add_flag("-r,--recursive", options->recursive, "with its entries");
}

}  // namespace ovno2::host
