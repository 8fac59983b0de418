// An archive as what is to go to a phone.
//
// Only files that are as the archive's manifest says are read, and none outside its folder: what was damaged
// or changed by hand is named. Names of files on the phone come from the archive's list of files, since a
// file here may have had to get another name.
#include <algorithm>
#include <set>

#include "host/archive/archive_names.h"
#include "host/archive/manifest.h"
#include "host/archive/saved_files.h"
#include "host/archive/saved_items.h"
#include "host/archive/verification.h"
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
using Trouble = Verification::Trouble;

class ArchiveSource {
  public:
    ArchiveSource(const fs::path& folder, const SourceOptions& wanted, RestoreSource& source)
        : folder_(folder), wanted_(wanted), source_(source) {}

    void read() {
        verify();
        readContacts();
        readCalendars();
        readNotes();
        readMessages();
        readFiles();
    }

  private:
    fs::path placeOf(const std::string& path) const { return folder_ / console::pathOf(path); }

    void verify() {
        const Verification verification = verifyArchive(folder_, console::errorIsTerminal() && !isQuiet());
        for (const Verification::Finding& finding : verification.findings) {
            // What nobody wrote into the archive is nobody's loss, and is not looked at.
            if (finding.trouble == Trouble::extra) continue;
            damaged_.insert(finding.path);
            source_.problems.push_back("Damaged archive: " + finding.message);
        }
        if (verification.isUnfinished)
            source_.problems.push_back(
                "The archive was interrupted while it was written, and may not hold everything: \"ovphone "
                "archive\" completes it as long as there is the phone.");
        for (const auto& [path, digest] :
             readManifest(readInputFile(console::textOf(placeOf(archive::manifest)))).files)
            if (!damaged_.contains(path)) intact_.insert(path);
    }

    // The bytes of an intact file; none where the archive has none.
    std::optional<std::string> bytesOf(const std::string& path) const {
        if (!intact_.contains(path)) return std::nullopt;
        return readInputFile(console::textOf(placeOf(path)));
    }

    // Calls `read` with a file's bytes and name; what it throws becomes a problem.
    template <class Read>
    void reading(const std::string& path, Read read) {
        try {
            if (const std::optional<std::string> bytes = bytesOf(path))
                read(*bytes, console::textOf(placeOf(path)));
        } catch (const CommandFailure& failure) {
            source_.problems.push_back(failure.message);
        }
    }

    void addProblems(std::vector<std::string>& problems) {
        std::ranges::move(problems, std::back_inserter(source_.problems));
    }

    void leaveOut(const char* kind, std::size_t count) {
        if (count != 0) source_.goneLeftOut[kind] += count;
    }

    void readContacts() {
        const auto addCards = [&](const std::string& bytes, const std::string& name) {
            CardFile cards = readCards(bytes, name);
            addProblems(cards.problems);
            std::ranges::move(cards.contacts, std::back_inserter(source_.contacts));
        };
        reading(archive::contactCards, addCards);
        reading(archive::goneContacts, [&](const std::string& bytes, const std::string& name) {
            if (wanted_.withGone)
                addCards(bytes, name);
            else
                leaveOut("contacts", readCards(bytes, name).contacts.size());
        });
    }

    void readCalendars() {
        const std::string top = std::string(archive::calendars) + "/";
        for (const std::string& path : intact_) {
            if (!path.starts_with(top) || !path.ends_with(".ics")) continue;
            reading(path, [&](const std::string& bytes, const std::string& name) {
                CalendarFile calendar = readCalendarFile(bytes, name);
                if (path == archive::goneEntries && !wanted_.withGone)
                    return leaveOut("calendar", calendar.entries.size());
                addProblems(calendar.problems);
                std::ranges::move(calendar.entries, std::back_inserter(source_.entries));
            });
        }
    }

    void readNotes() {
        reading(archive::noteList, [&](const std::string& bytes, const std::string& name) {
            for (SavedNote& saved : readSavedNotes(bytes, name)) {
                if (saved.goneSince.empty() || wanted_.withGone)
                    source_.notes.push_back(std::move(saved.note));
                else
                    leaveOut("notes", 1);
            }
        });
    }

    void readMessages() {
        reading(archive::messageList, [&](const std::string& bytes, const std::string& name) {
            for (SavedMessage& saved : readSavedMessages(bytes, name)) {
                if (saved.goneSince.empty() || wanted_.withGone)
                    source_.messages.push_back(std::move(saved.message));
                else
                    leaveOut("messages", 1);
            }
        });
    }

    void readFiles() {
        reading(archive::fileList, [&](const std::string& bytes, const std::string& name) {
            SavedFiles saved(bytes, name);
            for (const auto& [path, file] : saved.all())
                addFile(path, file);
        });
    }

    void addFile(const std::string& path, const SavedFile& file) {
        if (!file.goneSince.empty() && !wanted_.withGone) {
            if (!file.isFolder) leaveOut("files", 1);
            return;
        }
        const std::string& local = file.latest.file;
        if (local.empty()) {
            if (!file.isFolder)
                source_.problems.push_back("\"" + path + "\" of the phone was never saved in the archive.");
            return;
        }
        // Damaged and missing ones were named when the archive was checked.
        if (!file.isFolder && !intact_.contains(local)) {
            if (!damaged_.contains(local))
                source_.problems.push_back("Damaged archive: \"" + path +
                                           "\" is in the list of files and not in the manifest.");
            return;
        }
        const std::size_t end = path.rfind('/');
        if (end == std::string::npos) {
            source_.drives.push_back({path, placeOf(local)});
            return;
        }
        source_.files.emplace(placeOf(local), fromUtf8(path.substr(end + 1)));
        if (!file.isFolder) ++source_.fileCount;
    }

    const fs::path& folder_;
    const SourceOptions& wanted_;
    RestoreSource& source_;
    std::set<std::string> intact_, damaged_;
};

}  // namespace

bool isArchive(const fs::path& folder) {
    std::error_code error;
    return std::ranges::any_of(
        std::initializer_list<const char*>{archive::manifest, archive::unfinished, archive::fileList},
        [&](const char* name) { return fs::exists(folder / name, error); });
}

void readArchive(const fs::path& folder, const SourceOptions& wanted, RestoreSource& source) {
    std::error_code error;
    if (!fs::exists(folder / archive::manifest, error))
        throw CommandFailure{
            failed, "\"" + forPerson(console::textOf(folder)) + "\" is an archive without its manifest (" +
                        archive::manifest +
                        "), so nobody knows whether it is as it was written. Its files can be "
                        "restored one by one, such as its contacts/contacts.vcf."};
    ArchiveSource(folder, wanted, source).read();
}

}  // namespace ovno2::host
