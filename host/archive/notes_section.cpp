// The notes of an archive: all in one file, and each as a text.
#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "host/archive/archive_names.h"
#include "host/archive/archive_run.h"
#include "host/archive/manifest.h"
#include "host/archive/saved_items.h"
#include "host/files/local_name.h"
#include "host/messages/message_output.h"
#include "host/messages/message_store.h"
#include "host/output/console.h"

namespace ovno2::host {

namespace {

constexpr const char* section = "notes";

// The beginning of its first line.
Text titleOf(const Note& note) {
    constexpr std::size_t longest = 40;
    const std::size_t begin = std::min(note.text.find_first_not_of(u" \t\r\n"), note.text.size());
    Text title = note.text.substr(begin, std::min(longest, note.text.find_first_of(u"\r\n", begin) - begin));
    return title.empty() ? Text(u"Note") : title;
}

class NotesSection {
  public:
    NotesSection(ArchiveRun& run, SectionReport& report, std::vector<SavedNote> before)
        : run_(run), report_(report), before_(std::move(before)) {
        for (const SavedNote& saved : before_) {
            names_.give(fromUtf8(saved.file.substr(saved.file.rfind('/') + 1)));
            files_.emplace(identityOf(saved.note), saved.file);
        }
    }

    void write(const ItemList<Note>& list) {
        ArchiveOutput output(run_.folder, archive::noteList);
        JsonLines lines([&](std::string_view piece) { output.write(piece); });
        PageArray page(run_.folder, section);
        const auto add = [&](const Note& note, const std::string& goneSince) {
            const std::string& file = fileOf(note);
            run_.folder.put(file, toUtf8(note.text));
            for (JsonLine* const line : {&lines.next(), &page.next()}) {
                line->StartObject();
                writeNote(*line, note);
                line->member("file", file);
                if (!goneSince.empty()) writeGone(*line, goneSince);
                line->EndObject();
            }
        };
        std::unordered_set<std::string> present, uids;
        for (const Note& note : list.items) {
            present.insert(identityOf(note));
            uids.insert(toUtf8(note.uid));
            add(note, {});
            run_.looseCharacters(section, toUtf8(titleOf(note)), toUtf8(note.text));
        }
        report_.count = list.items.size();
        for (SavedNote& saved : before_) {
            if (present.contains(identityOf(saved.note))) continue;
            if (saved.goneSince.empty() && (list.missing.empty() || uids.contains(toUtf8(saved.note.uid)))) {
                saved.goneSince = run_.startedText();
                ++report_.newlyGone;
            }
            report_.gone += saved.goneSince.empty() ? 0 : 1;
            ++report_.count;
            add(saved.note, saved.goneSince);
        }
        lines.end();
        output.finish();
        page.finish();
    }

  private:
    const std::string& fileOf(const Note& note) {
        std::string& file = files_[identityOf(note)];
        const bool isOurs = file.starts_with(std::string(archive::notes) + "/") && file.ends_with(".txt") &&
                            staysInside(file);
        if (!isOurs) file = std::string(archive::notes) + "/" + toUtf8(names_.give(titleOf(note) + u".txt"));
        return file;
    }

    ArchiveRun& run_;
    SectionReport& report_;
    std::vector<SavedNote> before_;
    LocalNames names_;
    std::unordered_map<std::string, std::string> files_;  // by identity
};

}  // namespace

void archiveNotes(ArchiveRun& run, SectionReport& report) {
    bool isRefused = false;
    const std::optional<ItemList<Note>> list = run.readingTwice(report, [&] {
        try {
            return readNotes(run.phones, run.phone);
        } catch (const NoSuchStore&) {
            isRefused = true;
            throw;
        }
    });
    if (!list) {
        // Of a phone that hands out other things, and never had notes here, it is no failure.
        if (isRefused && run.names && !run.folder.read(archive::noteList))
            report.state = SectionReport::State::notSupported;
        return;
    }
    std::vector<SavedNote> before;
    try {
        if (const std::optional<std::string> text = run.folder.read(archive::noteList))
            before = readSavedNotes(*text, console::textOf(run.folder.placeOf(archive::noteList)));
    } catch (const CommandFailure& failure) {
        return report.fail(failure.message);
    }
    report.arrived(list->items.size(), list->listed, list->missing);
    NotesSection(run, report, std::move(before)).write(*list);
}

}  // namespace ovno2::host
