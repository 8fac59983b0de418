// The phone's files in an archive.
//
// What has the size and the time of the phone's is not fetched again. Of a file that differs the one of
// before goes to files-replaced, under the time of the run.
#include <algorithm>

#include "host/archive/archive_names.h"
#include "host/archive/archive_run.h"
#include "host/archive/archive_times.h"
#include "host/archive/json_reading.h"
#include "host/archive/saved_files.h"
#include "host/files/fetcher.h"
#include "host/files/file_report.h"
#include "host/files/files_output.h"
#include "host/files/phone_path.h"
#include "host/output/console.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr const char* section = "files";

class FilesSection {
  public:
    FilesSection(ArchiveRun& run, SectionReport& report, const PhoneFiles& phone, SavedFiles saved)
        : run_(run),
          report_(report),
          phone_(phone),
          saved_(std::move(saved)),
          fetcher_(phone, run.folder.workplace()) {}

    // A folder that was not listed, or only in part.
    void missFolder(const Text& path, const std::string& message) {
        report_.lose(message);
        run_.losses.push_back({section, /*isUnread=*/true, toUtf8(path), message});
    }

    void write() {
        list();
        requireRoomForAll();
        std::optional<BrokenOff> brokenOff;
        try {
            saveAll();
        } catch (const BrokenOff& reason) {
            // An end that the user wants is told by the run.
            if (reason.status == failed) report_.missing.push_back(reason.message);
            report_.state = SectionReport::State::partial;
            for (Item& item : items_)
                if (!item.isDone && !item.entry.isFolder) item.reason = reason.message;
            if (reason.status != failed) brokenOff = reason;
        }
        fetcher_.drop();
        writeList();
        if (brokenOff) throw *brokenOff;
    }

  private:
    struct Item {
        PhoneEntry entry;
        std::string place;  // in the archive
        bool isDone = false;
        std::string reason;  // why it could not be saved
    };

    // All that the phone has, and where it goes.
    void list() {
        std::vector<std::string> folders{archive::files};  // those that the walk is in
        PhoneEntry top;
        top.isFolder = true;
        try {
            phone_.walk(top, [&](const PhoneEntry& entry, std::size_t depth, bool) {
                folders.resize(depth + 1);
                Item item{entry, saved_.placeFor(entry, folders[depth]), /*isDone=*/false, /*reason=*/{}};
                item.entry.changedText.clear();
                if (SavedFile* const known = saved_.find(toUtf8(entry.path))) known->isSeen = true;
                if (entry.isFolder) folders.push_back(item.place);
                report_.listed += entry.isFolder ? 0 : 1;
                items_.push_back(std::move(item));
            });
            isWalked_ = true;
        } catch (const CommandFailure& failure) {
            report_.lose(failure.message);
        }
    }

    bool isThere(const Item& item) const {
        std::error_code error;
        return fs::is_regular_file(fs::symlink_status(run_.folder.placeOf(item.place), error));
    }
    bool isEqual(const Item& item) const {
        return isThere(item) && item.entry.changed &&
               hasSizeAndTime(run_.folder.placeOf(item.place), item.entry);
    }

    void requireRoomForAll() {
        std::uint64_t wanted = 0;
        for (const Item& item : items_)
            if (!item.entry.isFolder && !isEqual(item)) wanted += item.entry.size;
        total_ = wanted;
        std::error_code error;
        const fs::space_info space = fs::space(run_.folder.workplace(), error);
        if (error || run_.folder.isTrial() || space.available >= wanted) return;
        throw CommandFailure{failed, "The phone's files need " + sizeText(wanted) + " on the disk of \"" +
                                         console::textOf(run_.folder.path()) + "\", which has room for " +
                                         sizeText(space.available) + "."};
    }

    void saveAll() {
        TransferProgress progress(total_, console::errorIsTerminal() && !isQuiet() && !run_.folder.isTrial());
        run_.progress = &progress;
        const struct Hidden {
            ArchiveRun& run;
            ~Hidden() { run.progress = nullptr; }
        } hidden{run_};
        std::size_t count = 0;
        for (Item& item : items_) {
            phone_.goOnOrEnd();
            if (item.entry.isFolder) {
                saveFolder(item);
            } else {
                progress.setPlace(run_.stage + ", file " + std::to_string(++count) + " of " +
                                  std::to_string(report_.listed));
                saveFile(item, progress);
            }
            item.isDone = true;
        }
    }

    void saveFolder(Item& item) {
        run_.folder.makeFolder(item.place);
        if (!canStandInAPath(item.entry.name))
            fail(item, toUtf8(item.entry.path) + " cannot be copied: no path can name the folder.");
    }

    void fail(Item& item, const std::string& why) {
        if (run_.progress) run_.progress->hide();
        item.reason = why;
        report_.lose(why);
        run_.losses.push_back({section, /*isUnread=*/true, toUtf8(item.entry.path), why});
    }

    // What the manifest says of a file that nobody has changed since, else what is there.
    Digest digestOfSaved(const Item& item) const {
        const fs::path place = run_.folder.placeOf(item.place);
        const SavedFile* const known = const_cast<SavedFiles&>(saved_).find(toUtf8(item.entry.path));
        if (const std::optional<Digest> before = run_.folder.digestBefore(item.place); before && known) {
            PhoneEntry then;
            then.size = known->latest.size;
            then.changed = utcTime(known->latest.changed);
            if (then.changed && hasSizeAndTime(place, then)) return *before;
        }
        const std::optional<Digest> now = digestOfFile(place);
        if (!now) throw CommandFailure{failed, "\"" + console::textOf(place) + "\" cannot be read."};
        return *now;
    }

    void saveFile(Item& item, TransferProgress& progress) {
        const PhoneEntry& entry = item.entry;
        if (isEqual(item)) {
            run_.folder.keep(item.place, digestOfSaved(item));
            ++report_.equal;
            ++report_.saved;
            return;
        }
        std::error_code error;
        if (fs::is_directory(fs::symlink_status(run_.folder.placeOf(item.place), error)))
            return fail(item, "\"" + console::textOf(run_.folder.placeOf(item.place)) + "\" is a folder; " +
                                  toUtf8(entry.path) + " cannot take its place.");
        if (run_.folder.isTrial()) return count(item);
        progress.begin(entry.name, entry.size);
        fs::path file;
        try {
            if (const std::string wrong = fetcher_.fetch(entry, file); !wrong.empty()) {
                progress.left(entry.size);
                run_.folder.requireRoom();
                return fail(item, wrong);
            }
            putFile(item, file);
            progress.copied(entry.size);
        } catch (const fs::filesystem_error& failure) {
            run_.folder.requireRoom();
            fail(item, toUtf8(entry.path) + " cannot be written: " + failure.code().message() + ".");
        }
    }

    void putFile(Item& item, const fs::path& file) {
        const std::optional<Digest> digest = digestOfFile(file);
        if (!digest) return fail(item, toUtf8(item.entry.path) + " arrived and cannot be read.");
        if (isThere(item)) {
            const Digest before = digestOfSaved(item);
            if (before == *digest) {
                const fs::path place = run_.folder.placeOf(item.place);
                fs::last_write_time(place, fs::last_write_time(file));
                run_.folder.keep(item.place, before);
                ++report_.equal;
                ++report_.saved;
                return;
            }
            replace(item, before);
        }
        run_.folder.place(file, item.place, *digest);
        count(item);
    }

    void count(const Item& item) {
        ++report_.saved;
        ++report_.fetched;
        report_.bytes += item.entry.size;
    }

    // The version that is there goes aside.
    void replace(const Item& item, const Digest& digest) {
        std::string stamp = run_.startedText();
        std::erase(stamp, ':');
        const std::string place =
            std::string(archive::replacedFiles) + "/" + stamp + item.place.substr(item.place.find('/'));
        const fs::path there = run_.folder.placeOf(item.place);
        const auto time = std::chrono::floor<std::chrono::seconds>(
            std::chrono::file_clock::to_sys(fs::last_write_time(there)));
        const SavedVersion version{place, fs::file_size(there), utcText(time)};
        run_.folder.move(item.place, place, digest);
        ++report_.replaced;
        const std::string path = toUtf8(item.entry.path);
        if (SavedFile* const known = saved_.find(path))
            known->replaced.push_back(version);
        else
            saved_.all()[path].replaced.push_back(version);
    }

    bool wasListedWhole(Text path) const {
        if (!isWalked_) return false;
        while (!path.empty()) {
            path = folderOf(path);
            if (!phone_.isKnownWhole(path)) return false;
        }
        return true;
    }

    static void writeVersions(JsonLine& line, const std::vector<SavedVersion>& versions) {
        if (versions.empty()) return;
        line.key("replaced");
        line.StartArray();
        for (const SavedVersion& version : versions) {
            line.StartObject();
            line.member("file", version.file);
            line.member("size", version.size);
            if (!version.changed.empty()) line.member("changed", version.changed);
            line.EndObject();
        }
        line.EndArray();
    }

    void writeItem(JsonLine& line, const Item& item) {
        const SavedFile* const known = saved_.find(toUtf8(item.entry.path));
        line.StartObject();
        writeEntry(line, item.entry);
        if (item.entry.isFolder)
            line.member("folder", item.place);
        else if (item.reason.empty() || isThere(item))
            line.member("file", item.place);
        if (known) writeVersions(line, known->replaced);
        if (!item.reason.empty()) line.member("reason", item.reason);
        line.EndObject();
    }

    // The archive's own list and the page's are the same.
    void writeList() {
        ArchiveOutput output(run_.folder, archive::fileList);
        JsonLines lines([&](std::string_view piece) { output.write(piece); });
        PageArray page(run_.folder, section);
        for (const Item& item : items_) {
            writeItem(lines.next(), item);
            writeItem(page.next(), item);
            report_.count += item.entry.isFolder ? 0 : 1;
        }
        for (auto& [path, saved] : saved_.all()) {
            if (saved.isSeen || saved.line.empty()) continue;
            const bool isGone = !saved.goneSince.empty() || wasListedWhole(fromUtf8(path));
            if (isGone && saved.goneSince.empty()) {
                saved.goneSince = run_.startedText();
                report_.newlyGone += saved.isFolder ? 0 : 1;
            }
            report_.gone += isGone && !saved.isFolder ? 1 : 0;
            report_.count += saved.isFolder ? 0 : 1;
            for (JsonLine* const line : {&lines.next(), &page.next()}) {
                line->StartObject();
                writeMembers(*line, saved.line);
                if (isGone) writeGone(*line, saved.goneSince);
                line->EndObject();
            }
        }
        lines.end();
        output.finish();
        page.finish();
    }

    ArchiveRun& run_;
    SectionReport& report_;
    const PhoneFiles& phone_;
    SavedFiles saved_;
    Fetcher fetcher_;
    std::vector<Item> items_;  // folders before what is in them
    bool isWalked_ = false;
    std::uint64_t total_ = 0;  // bytes to fetch
};

}  // namespace

void archiveFiles(ArchiveRun& run, SectionReport& report) {
    run.goOnOrEnd();
    SavedFiles saved;
    FilesSection* current = nullptr;
    std::optional<PhoneFiles> phone;
    try {
        if (const std::optional<std::string> text = run.folder.read(archive::fileList))
            saved = SavedFiles(*text, console::textOf(run.folder.placeOf(archive::fileList)));
        phone.emplace(
            run.phones.driver(), run.phones.all(), run.phone,
            [&](const Text& path, const std::string& message) { current->missFolder(path, message); });
        phone->lookOn(&run.interruption);
        phone->list({});
    } catch (const CommandFailure& failure) {
        return report.fail(failure.message);
    }
    report.state = SectionReport::State::complete;
    FilesSection files(run, report, *phone, std::move(saved));
    current = &files;
    files.write();
}

}  // namespace ovno2::host
