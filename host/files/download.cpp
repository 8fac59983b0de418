#include "host/files/download.h"

#include <algorithm>
#include <system_error>

#include "host/files/phone_path.h"
#include "host/files/sent_files.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

std::string quoted(const fs::path& path) {
    return "\"" + console::textOf(path) + "\"";
}

}  // namespace

Download::Download(const PhoneFiles& phone, fs::path target, bool overwrite, bool isTrial)
    : phone_(phone),
      target_(std::move(target)),
      overwrite_(overwrite),
      isTrial_(isTrial),
      fetcher_(phone, target_) {
    if (const std::string wrong = arrivalObstacle(target_); !wrong.empty())
        throw CommandFailure{failed, wrong};
    std::error_code error;
    if (!isTrial_) fs::create_directories(target_, error);
    if (!fs::is_directory(target_) && (!isTrial_ || fs::exists(target_)))
        throw CommandFailure{failed, "The folder " + quoted(target_) + " cannot be made" +
                                         (error ? ": " + error.message() : "") + "."};
}

void Download::place(const PhoneEntry& entry, const fs::path& folder, LocalNames& names) {
    // A drive becomes a folder named by its letter.
    const Text wanted = entry.isDrive() && entry.name.ends_with(u':')
                            ? entry.name.substr(0, entry.name.size() - 1)
                            : entry.name;
    Text name = names.give(wanted);
    // Nothing may be taken for a folder in which files arrive.
    if (name.starts_with(fromUtf8(Incoming::prefix))) name = u"_" + name;
    items_.push_back({entry, folder / console::pathOf(toUtf8(name)), name != wanted});
}

void Download::add(const PhoneEntry& entry) {
    if (!added_.insert(entry.path).second) return;
    if (entry.isPhone()) {
        addChildren(entry, target_);
        return;
    }
    place(entry, target_, topNames_);
    if (entry.isFolder) addChildren(entry, fs::path(items_.back().local));
}

void Download::add(const PhoneEntry& file, const fs::path& name) {
    items_.push_back({file, target_ / name, /*madeUp=*/false});
}

void Download::addChildren(const PhoneEntry& folder, const fs::path& local) {
    struct Level {
        fs::path local;
        LocalNames names;
    };
    std::vector<Level> levels;
    levels.push_back({local, {}});
    phone_.walk(folder, [&](const PhoneEntry& entry, std::size_t depth, bool) {
        levels.resize(depth + 1);
        place(entry, levels[depth].local, levels[depth].names);
        if (entry.isFolder) levels.push_back({items_.back().local, {}});
    });
}

std::uint64_t Download::totalBytes() const {
    std::uint64_t total = 0;
    for (const Item& item : items_)
        total += item.entry.size;
    return total;
}

void Download::announce(FileReport& report) const {
    for (const Item& item : items_)
        if (!item.entry.isFolder)
            report.expect(
                {toUtf8(item.entry.path), console::textOf(item.local), FileOutcome::failure, 0, {}});
}

// Brings one file to its place. What another program has put there meanwhile may be the same file.
void Download::bring(const Item& item, FileResult& result) {
    fs::path file;
    result.message = fetcher_.fetch(item.entry, file);
    if (!result.message.empty()) return;
    if (!Incoming::move(file, item.local, overwrite_)) {
        const std::optional<Content> content = contentOf(file);
        if (content && content == contentOf(item.local))
            result.outcome = FileOutcome::equal;
        else
            result.message = quoted(item.local) + " came there meanwhile and differs from " + result.path +
                             "; --force overwrites it.";
    } else if (fs::file_size(item.local) != item.entry.size) {
        result.message = quoted(item.local) +
                         " was changed by another program while it was copied. Give the command again.";
    }
}

FileResult Download::copy(const Item& item, TransferProgress& progress) {
    const PhoneEntry& entry = item.entry;
    FileResult result{toUtf8(entry.path), console::textOf(item.local), FileOutcome::success, entry.size, {}};
    std::error_code error;
    const fs::file_status there = fs::symlink_status(item.local, error);
    if (fs::is_regular_file(there) && hasSizeAndTime(item.local, entry)) {
        result.outcome = FileOutcome::equal;
    } else if (fs::is_directory(there)) {
        result.message = quoted(item.local) + " is a folder; " + result.path + " cannot take its place.";
    } else if (fs::exists(there) && !overwrite_) {
        result.message =
            quoted(item.local) + " is there and differs from " + result.path + "; --force overwrites it.";
    } else if (!isTrial_) {
        progress.begin(entry.name, entry.size);
        try {
            bring(item, result);
        } catch (const fs::filesystem_error& failure) {
            result.message = result.path + " cannot be written to " + quoted(item.local) + ": " +
                             failure.code().message() + ".";
        }
    }
    if (result.message.empty() && result.outcome == FileOutcome::success) {
        progress.copied(entry.size);
        return result;
    }
    progress.left(entry.size);
    if (result.outcome != FileOutcome::equal) result.outcome = FileOutcome::failure;
    return result;
}

// A link in place of the folder would lead out of the target folder.
void Download::makeFolder(const Item& item, FileReport& report) {
    const std::string path = toUtf8(item.entry.path);
    std::error_code error;
    const fs::file_status status = fs::symlink_status(item.local, error);
    std::string wrong;
    if (fs::exists(status) && !fs::is_directory(status))
        wrong = quoted(item.local) + " is there and is no folder.";
    else if (!fs::exists(status) && !isTrial_ && !fs::create_directory(item.local, error))
        wrong = quoted(item.local) + " cannot be made: " + error.message() + ".";
    if (!wrong.empty()) {
        missing_.push_back(item.local);
        report.add({path, console::textOf(item.local), FileOutcome::failure, 0, wrong});
    }
    if (!canStandInAPath(item.entry.name))
        report.add({path, console::textOf(item.local), FileOutcome::failure, 0,
                    path + " cannot be copied: no path can name the folder."});
}

void Download::run(FileReport& report, TransferProgress& progress) {
    for (const Item& item : items_) {
        phone_.goOnOrEnd();
        if (!missing_.empty() &&
            item.local.native().starts_with(missing_.back().native() + fs::path::preferred_separator)) {
            progress.left(item.entry.size);
            if (!item.entry.isFolder)
                report.add({toUtf8(item.entry.path), console::textOf(item.local), FileOutcome::failure, 0,
                            toUtf8(item.entry.path) + " was left out with its folder."});
        } else if (item.entry.isFolder) {
            makeFolder(item, report);
        } else {
            FileResult result = copy(item, progress);
            if (item.madeUp && result.outcome == FileOutcome::success)
                report.say(result.path + " is stored as \"" + console::textOf(item.local.filename()) + "\".");
            report.add(std::move(result));
        }
    }
    fetcher_.drop();
}

}  // namespace ovno2::host
