// Card and calendar files as what is to go to a phone.
#include <algorithm>

#include "host/calendar/calendar_changes.h"
#include "host/calendar/ical_reader.h"
#include "host/contacts/vcard_reader.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/input_file.h"
#include "host/restore/restore_source.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

enum class FileKind { cards, calendar, other };

FileKind kindOf(const fs::path& file) {
    const Text ending = lowerCase(fromUtf8(console::textOf(file.extension())));
    return ending == u".vcf"                        ? FileKind::cards
           : ending == u".ics" || ending == u".vcs" ? FileKind::calendar
                                                    : FileKind::other;
}

void addFile(const fs::path& file, RestoreSource& source) {
    const std::string name = console::textOf(file);
    try {
        const std::string bytes = readInputFile(name);
        std::size_t items = 0;
        std::vector<std::string> problems;
        if (kindOf(file) == FileKind::cards) {
            CardFile cards = readCards(bytes, name);
            items = cards.contacts.size();
            problems = std::move(cards.problems);
            std::ranges::move(cards.contacts, std::back_inserter(source.contacts));
        } else {
            CalendarFile calendar = readCalendarFile(bytes, name);
            items = calendar.entries.size();
            problems = std::move(calendar.problems);
            for (CalendarEntry& entry : calendar.entries)
                if (entry.calendar.empty()) entry.calendar = calendar.name;
            std::ranges::move(calendar.entries, std::back_inserter(source.entries));
        }
        if (items == 0 && problems.empty()) problems.push_back("\"" + name + "\" holds nothing for a phone.");
        std::ranges::move(problems, std::back_inserter(source.problems));
    } catch (const CommandFailure& failure) {
        source.problems.push_back(failure.message);
    }
}

void addFolder(const fs::path& folder, RestoreSource& source) {
    std::vector<fs::path> files;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code isNone;
        if (kindOf(entry->path()) != FileKind::other && fs::is_regular_file(entry->status(isNone)))
            files.push_back(entry->path());
    }
    if (error)
        source.problems.push_back("Not all of \"" + console::textOf(folder) +
                                  "\" can be listed: " + error.message() + ".");
    if (files.empty())
        throw CommandFailure{failed,
                             "\"" + forPerson(console::textOf(folder)) +
                                 "\" is no archive, and no card or calendar file (.vcf, .ics) lies in "
                                 "it."};
    std::ranges::sort(files);
    for (const fs::path& file : files)
        addFile(file, source);
}

}  // namespace

RestoreSource readSource(const std::string& path, const SourceOptions& wanted) {
    RestoreSource source;
    const fs::path place = fs::absolute(console::pathOf(path)).lexically_normal();
    std::error_code error;
    if (isArchive(place))
        readArchive(place, wanted, source);
    else if (fs::is_directory(place, error))
        addFolder(place, source);
    else if (!fs::exists(place, error))
        throw CommandFailure{failed, "\"" + forPerson(path) + "\" is not there."};
    else if (kindOf(place) == FileKind::other)
        throw CommandFailure{
            failed,
            "\"" + forPerson(path) + "\" is neither an archive nor a card or calendar file (.vcf, .ics)."};
    else
        addFile(place, source);
    return source;
}

}  // namespace ovno2::host
