#include "host/files/download.h"

#include <algorithm>
#include <system_error>

#include "host/driver/result_messages.h"
#include "host/files/phone_path.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr const char* incomingFolder = ".ovphone-incoming";
constexpr std::chrono::seconds timeTolerance{2};  // what memory cards round times to
constexpr std::size_t classicPathLimit = 260;     // of Windows

#ifdef _WIN32
constexpr bool isWindows = true;
#else
constexpr bool isWindows = false;
#endif

std::string quoted(const fs::path& path) {
    return "\"" + console::textOf(path) + "\"";
}

std::optional<std::chrono::sys_seconds> changeTime(const fs::path& file) {
    std::error_code error;
    const auto time = fs::last_write_time(file, error);
    if (error) return std::nullopt;
    return std::chrono::floor<std::chrono::seconds>(std::chrono::file_clock::to_sys(time));
}

bool isEqual(const PhoneEntry& entry, const fs::path& local) {
    std::error_code error;
    if (fs::file_size(local, error) != entry.size || error) return false;
    if (!entry.changed) return true;
    const auto changed = changeTime(local);
    return changed && std::chrono::abs(*changed - *entry.changed) <= timeTolerance;
}

// Makes a folder; what is wrong with it, if anything. A link would lead out of the target folder.
std::string makeFolder(const fs::path& folder) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(folder, error);
    if (fs::is_directory(status)) return {};
    if (fs::exists(status)) return quoted(folder) + " is there and is no folder.";
    if (!fs::create_directory(folder, error))
        return quoted(folder) + " cannot be made: " + error.message() + ".";
    return {};
}

}  // namespace

// The folder inside the target in which files arrive; what an interrupted run left in it goes.
class Download::Incoming {
  public:
    explicit Incoming(const fs::path& target) : path_(target / incomingFolder) {
        clear();
        fs::create_directory(path_);
    }
    ~Incoming() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    Incoming(const Incoming&) = delete;
    Incoming& operator=(const Incoming&) = delete;

    void clear() const {
        if (!fs::exists(fs::symlink_status(path_))) return;
        for (const fs::path& file : isFolder() ? files() : std::vector<fs::path>{path_})
            fs::remove(file);
    }
    // The one file that has arrived; empty when none has.
    fs::path file() const {
        const std::vector<fs::path> arrived = files();
        return arrived.size() == 1 && fs::is_regular_file(fs::symlink_status(arrived[0])) ? arrived[0]
                                                                                          : fs::path();
    }
    const fs::path& path() const { return path_; }

  private:
    bool isFolder() const { return fs::is_directory(fs::symlink_status(path_)); }
    std::vector<fs::path> files() const {
        std::vector<fs::path> found;
        for (const auto& one : fs::directory_iterator(path_))
            found.push_back(one.path());
        return found;
    }

    fs::path path_;
};

const char* fetchingObstacle(TextView name, bool onWindows) {
    constexpr const char* noPath = "no path can name it";
    // The driver takes a quote at the end for one around the path.
    if (!canStandInAPath(name) || name.find_first_of(TextView(u"\"\0", 2)) != TextView::npos) return noPath;
    if (!onWindows) return nullptr;
    // The driver writes "_" for "?".
    Text written(name);
    std::ranges::replace(written, u'?', u'_');
    return localName(written) == written ? nullptr : "Windows has no such name";
}

Download::Download(const PhoneFiles& phone, fs::path target, bool overwrite)
    : phone_(phone), target_(std::move(target)), overwrite_(overwrite) {
    const std::string path = console::textOf(target_);
    if (path.find_first_of(isWindows ? "?" : "?\\\"") != std::string::npos)
        throw CommandFailure{failed, quoted(target_) +
                                         ": the phone driver cannot write to a folder with such a name. "
                                         "Choose another one."};
    std::error_code error;
    fs::create_directories(target_, error);
    if (!fs::is_directory(target_))
        throw CommandFailure{failed, "The folder " + quoted(target_) + " cannot be made" +
                                         (error ? ": " + error.message() : "") + "."};
}

Download::~Download() = default;

void Download::place(const PhoneEntry& entry, const fs::path& folder, LocalNames& names) {
    // A drive becomes a folder named by its letter.
    const Text wanted = entry.isDrive() && entry.name.ends_with(u':')
                            ? entry.name.substr(0, entry.name.size() - 1)
                            : entry.name;
    Text name = names.give(wanted);
    // Nothing may take the place of the folder in which files arrive.
    if (name == fromUtf8(incomingFolder)) name = u"_" + name;
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

// Brings one file to its place; what went wrong, if anything.
std::string Download::fetch(const Item& item) {
    const std::string path = toUtf8(item.entry.path);
    if (const char* obstacle = fetchingObstacle(item.entry.name, isWindows))
        return path + " cannot be copied: " + obstacle + ". Rename it on the phone.";
    if (incoming_)
        incoming_->clear();
    else
        incoming_ = std::make_unique<Incoming>(target_);
    if (isWindows && incoming_->path().native().size() + 1 + item.entry.name.size() >= classicPathLimit)
        return path +
               " cannot be copied: its path here would be too long. Choose a folder with a shorter path.";
    const Long result =
        phone_.driver().getFile(modulePath(item.entry.path), console::textOf(incoming_->path()));
    if (result < 0) {
        requireConnection(phone_);
        return resultMessage(Operation::getFile, result, phone_.phoneTitle(), path);
    }
    const fs::path file = incoming_->file();
    if (file.empty())
        return path + " cannot be written to " + quoted(target_) + ". Is there room on the disk?";
    if (const std::uint64_t size = fs::file_size(file); size != item.entry.size)
        return path + " arrived with " + sizeText(size) + " instead of " + sizeText(item.entry.size) +
               ". It may have changed meanwhile, or the disk is full; retry.";
    if (item.entry.changed) fs::last_write_time(file, std::chrono::file_clock::from_sys(*item.entry.changed));
    fs::rename(file, item.local);
    return {};
}

FileResult Download::copy(const Item& item, TransferProgress& progress) {
    const PhoneEntry& entry = item.entry;
    FileResult result{toUtf8(entry.path), console::textOf(item.local), FileOutcome::success, entry.size, {}};
    std::error_code error;
    const fs::file_status there = fs::symlink_status(item.local, error);
    if (fs::is_regular_file(there) && isEqual(entry, item.local)) {
        result.outcome = FileOutcome::equal;
    } else if (fs::is_directory(there)) {
        result.message = quoted(item.local) + " is a folder; " + result.path + " cannot take its place.";
    } else if (fs::exists(there) && !overwrite_) {
        result.message =
            quoted(item.local) + " is there and differs from " + result.path + "; --force overwrites it.";
    } else {
        progress.begin(entry.name);
        try {
            result.message = fetch(item);
        } catch (const fs::filesystem_error& failure) {
            result.message = result.path + " cannot be written to " + quoted(item.local) + ": " +
                             failure.code().message() + ".";
        }
        if (result.message.empty()) {
            progress.copied(entry.size);
            return result;
        }
    }
    progress.left(entry.size);
    if (result.outcome != FileOutcome::equal) result.outcome = FileOutcome::failure;
    return result;
}

void Download::run(FileReport& report, TransferProgress& progress) {
    std::vector<fs::path> missing;  // folders that could not be made: what is in them fails with them
    for (const Item& item : items_) {
        if (!missing.empty() &&
            item.local.native().starts_with(missing.back().native() + fs::path::preferred_separator)) {
            progress.left(item.entry.size);
            if (!item.entry.isFolder)
                report.add({toUtf8(item.entry.path), console::textOf(item.local), FileOutcome::failure, 0,
                            toUtf8(item.entry.path) + " was left out with its folder."});
            continue;
        }
        if (item.entry.isFolder) {
            if (const std::string wrong = makeFolder(item.local); !wrong.empty()) {
                missing.push_back(item.local);
                report.add(
                    {toUtf8(item.entry.path), console::textOf(item.local), FileOutcome::failure, 0, wrong});
            }
            if (!canStandInAPath(item.entry.name))
                report.add({toUtf8(item.entry.path), console::textOf(item.local), FileOutcome::failure, 0,
                            toUtf8(item.entry.path) + " cannot be copied: no path can name the folder."});
            continue;
        }
        FileResult result = copy(item, progress);
        if (item.madeUp && result.outcome == FileOutcome::success)
            report.say(result.path + " is stored as \"" + console::textOf(item.local.filename()) + "\".");
        report.add(std::move(result));
    }
}

}  // namespace ovno2::host
