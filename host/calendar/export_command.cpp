// `ovphone calendar export`: all entries of a phone in a file.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "host/calendar/calendar_changes.h"
#include "host/calendar/calendar_output.h"
#include "host/calendar/commands.h"
#include "host/calendar/ical_writer.h"
#include "host/contacts/contact_files.h"
#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/output_file.h"

namespace ovno2::host {

namespace {

struct ExportOptions {
    std::string file;
    std::string form;  // empty = as the file's name ends
    bool force = false;
};

constexpr std::pair<const char*, const char*> forms[] = {
    {"ics", ".ics"}, {"vcs", ".vcs"}, {"json", ".json"}};  // and how names of such files end

std::string formOf(const ExportOptions& wanted) {
    if (!wanted.form.empty()) return wanted.form;
    const std::string name = toUtf8(lowerCase(fromUtf8(wanted.file)));
    for (const auto& [form, ending] : forms)
        if (name.ends_with(ending)) return form;
    throw CommandFailure{wrongUsage,
                         "\"" + wanted.file + "\": say with --as what is to be written: ics, vcs or json."};
}

void exportCalendar(const Context& context, const ExportOptions& wanted) {
    const std::string form = formOf(wanted);
    const AttachedPhones phones(context);
    const ListedPhone& phone = phones.chosen();
    OutputFile file(wanted.file, wanted.force);
    PhoneCalendars list = readCalendars(phones, phone);
    readAgain(phones, phone, list);
    // A file's uids must differ from those of other phones.
    for (CalendarEntry& entry : list.entries)
        entry.uid = exportedUid(phone.serial, entry.uid);
    CalendarText text;
    if (form == "json") {
        writeEntriesAsJson(list.entries, [&](std::string_view piece) { file.write(piece); });
    } else {
        text = writeCalendarFile(list.entries,
                                 form == "vcs" ? CalendarForm::vCalendar : CalendarForm::iCalendar);
        file.write(text.text);
    }
    file.finish();
    remark(std::to_string(list.entries.size()) + " of " + std::to_string(list.listed) +
           " calendar entries of " + titleOf(phone) + " written.");
    for (const auto& [place, what] : text.lost)
        note("ovphone: " + forPerson(titleOf(list.entries.at(place))) +
             ": not in the file: " + forPerson(what));
    requireWhole(list.missing);
    if (!text.lost.empty()) throw CommandFailure{failed, {}};
}

}  // namespace

void registerCalendarExport(CLI::App& calendar, Context& context) {
    const auto options = std::make_shared<ExportOptions>();
    CLI::App& command = addCommand(calendar, "export", "Write all entries to a file", context,
                                   [&context, options] { exportCalendar(context, *options); });
    addPhoneCommandOptions(command, context);
    command.add_option("FILE", options->file, "the file, or - for standard output")
        ->type_name("")
        ->required();
    command.add_option("--as", options->form, "what the file is to be (default: as its name ends)")
        ->type_name("ics|vcs|json")
        ->check(CLI::IsMember({"ics", "vcs", "json"}).description(""));
    command.add_flag("-f,--force", options->force, "overwrite a file that is there");
    command.footer(R"(Examples:
  ovphone calendar export calendar.ics      for every program of today
  ovphone calendar export calendar.vcs      for old phones)");
}

}  // namespace ovno2::host
