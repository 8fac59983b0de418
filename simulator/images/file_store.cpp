#include "simulator/images/file_store.h"

#include <algorithm>
#include <chrono>

#include "simulator/base/refused.h"
#include "simulator/base/text.h"
#include "simulator/images/files_image.h"
#include "simulator/images/image_file.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

namespace fs = std::filesystem;

constexpr Word readOnlyAttribute = 0x200;
constexpr std::uint64_t ticksFrom1601To1970 = 116444736000000000;  // of 100 ns

fs::path diskName(std::u16string_view name) {
    return fs::path(name);
}

std::u16string shownName(const fs::path& disk) {
    const std::u8string name = disk.filename().u8string();
    return toUtf16({reinterpret_cast<const char*>(name.data()), name.size()});
}

bool sameName(std::u16string_view left, std::u16string_view right) {
    const auto upper = [](char16_t letter) {
        return letter >= u'a' && letter <= u'z' ? static_cast<char16_t>(letter - u'a' + u'A') : letter;
    };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](char16_t a, char16_t b) { return upper(a) == upper(b); });
}

std::string upperName(std::u16string_view name) {
    std::string upper = toUtf8(name);
    std::ranges::transform(upper, upper.begin(), IgnoringCase::upper);
    return upper;
}

bool isFolder(const fs::path& disk) {
    std::error_code ignored;
    return fs::symlink_status(disk, ignored).type() == fs::file_type::directory;
}

bool isFile(const fs::path& disk) {
    std::error_code ignored;
    return fs::symlink_status(disk, ignored).type() == fs::file_type::regular;
}

std::uint64_t fileTime(const fs::path& disk) {
    std::error_code failed;
    const auto time = fs::last_write_time(disk, failed);
    if (failed) return 0;
    const auto since1970 = std::chrono::file_clock::to_sys(time).time_since_epoch();
    const std::int64_t nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(since1970).count();
    return static_cast<std::uint64_t>(nanoseconds / 100) + ticksFrom1601To1970;
}

}  // namespace

FileStore::FileStore(fs::path imageFolder, std::shared_ptr<FileSettings> fileSettings)
    : image(std::move(imageFolder)), settings(std::move(fileSettings)) {}

FileStore::Entry FileStore::root() const {
    return {"", settings->root};
}

std::u16string FileStore::name(const Entry& entry) {
    return entry.isDrive() ? toUtf16(entry.path + ":") : shownName(entry.disk);
}

FileStore::Entry FileStore::child(const Entry& parent, std::u16string_view name) const {
    if (parent.isRoot()) {
        for (const auto& [letter, drive] : settings->drives) {
            if (sameName(toUtf16(letter + ":"), name)) return {letter, settings->root / letter};
        }
        return {};
    }
    const std::string prefix = parent.path + "/";
    const fs::path exact = parent.disk / diskName(name);
    if (isFolder(exact) || isFile(exact)) return {prefix + toUtf8(name), exact};
    const auto& names = indexOf(parent).names;
    const auto other = names.find(upperName(name));
    if (other == names.end()) return {};
    const fs::path disk = parent.disk / diskName(toUtf16(other->second));
    if (!isFolder(disk) && !isFile(disk)) return {};
    return {prefix + other->second, disk};
}

const FileStore::NameIndex& FileStore::indexOf(const Entry& folder) const {
    std::error_code failed;
    const fs::file_time_type time = fs::last_write_time(folder.disk, failed);
    if (!failed && index.folder == folder.disk && index.time == time) return index;
    index = {folder.disk, time, {}};
    for (const auto& entry : fs::directory_iterator(folder.disk, failed)) {
        const std::u16string shown = shownName(entry.path());
        index.names.emplace(upperName(shown), toUtf8(shown));
    }
    return index;
}

void FileStore::learn(const Entry& folder, std::u16string_view name) {
    if (index.folder != folder.disk) return;
    index.names.emplace(upperName(name), toUtf8(name));
    std::error_code failed;
    index.time = fs::last_write_time(folder.disk, failed);
    if (failed) index = {};
}

FileStore::Entry FileStore::folder(const Entry& current, std::u16string_view path) const {
    Entry at = current;
    if (path.starts_with(u"\\\\")) {
        at = root();
        path.remove_prefix(2);
    }
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(u'\\'), path.size());
        at = folderIn(at, path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    if (!isFolder(at.disk)) throw Refused{status::folderNotFound};
    return at;
}

FileStore::Entry FileStore::folderIn(const Entry& current, std::u16string_view name) const {
    if (name.empty() || name == u"." || name == u".." || name.find_first_of(u"\\/") != name.npos) {
        throw Refused{status::folderNotFound};
    }
    Entry found = child(current, name);
    if (found.disk.empty() || !isFolder(found.disk)) throw Refused{status::folderNotFound};
    return found;
}

FileStore::Entry FileStore::file(const Entry& current, std::u16string_view name) const {
    if (name.empty() || name == u"." || name == u".." || name.find(u'/') != name.npos || current.isRoot()) {
        throw Refused{status::fileNotFound};
    }
    Entry found = child(current, name);
    if (found.disk.empty() || !isFile(found.disk)) throw Refused{status::fileNotFound};
    return found;
}

FileStore::Listing FileStore::list(const Entry& folder) {
    if (filesHaveChanged(image, *settings)) {
        const system::FolderLock lock = lockImage(image);
        refresh();
    }
    Listing listing;
    if (folder.isRoot()) {
        for (const auto& [letter, drive] : settings->drives) {
            listing.folders.push_back({letter, settings->root / letter});
        }
        return listing;
    }
    std::error_code failed;
    for (const auto& entry : fs::directory_iterator(folder.disk, failed)) {
        const fs::file_type type = entry.symlink_status(failed).type();
        if (type != fs::file_type::directory && type != fs::file_type::regular) continue;
        auto& group = type == fs::file_type::directory ? listing.folders : listing.files;
        group.push_back({folder.path + "/" + toUtf8(shownName(entry.path())), entry.path()});
    }
    const auto byName = [](const Entry& left, const Entry& right) { return left.path < right.path; };
    std::sort(listing.folders.begin(), listing.folders.end(), byName);
    std::sort(listing.files.begin(), listing.files.end(), byName);
    return listing;
}

FileStore::Facts FileStore::facts(const Entry& entry) const {
    Facts facts;
    if (const auto bits = settings->attributes.find(entry.path); bits != settings->attributes.end()) {
        facts.attributes = bits->second;
    }
    if (settings->readOnly.contains(entry.path)) facts.attributes |= readOnlyAttribute;
    const auto time = settings->times.find(entry.path);
    facts.time = time != settings->times.end() ? time->second : fileTime(entry.disk);
    std::error_code failed;
    if (isFile(entry.disk)) facts.size = fs::file_size(entry.disk, failed);
    return facts;
}

const Drive* FileStore::drive(const Entry& entry) const {
    return entry.isDrive() ? &settings->drives.at(entry.path) : nullptr;
}

void FileStore::requireName(std::u16string_view name) const {
    const bool forbidden = std::any_of(name.begin(), name.end(), [](char16_t unit) {
        return unit < 0x20 || std::u16string_view(u"\\/:*?\"<>|").find(unit) != std::u16string_view::npos;
    });
    if (name.empty() || name.size() > settings->nameLength || forbidden || name == u"." || name == u"..") {
        throw Refused{status::invalidName};
    }
}

void FileStore::requireChangeable(const Entry& entry) const {
    if (entry.isRoot() || entry.isDrive() || settings->readOnly.contains(entry.path)) {
        throw Refused{status::readOnly};
    }
}

// Carries one change out where no other process can come between: on what is on disk now, whoever put it
// there. What `body` throws leaves the image to be read again.
template <typename Body>
void FileStore::change(Body body) {
    const system::FolderLock lock = lockImage(image);
    refresh();
    body();
    markFilesChanged(image, *settings);
}

void FileStore::refresh() {
    if (!filesHaveChanged(image, *settings)) return;
    refreshFiles(image, *settings);
    index = {};
}

void FileStore::describe(FileSettings next) {
    writeFilesJson(image, next);
    *settings = std::move(next);
}

void FileStore::forget(const std::string& path) {
    FileSettings next = *settings;
    if (next.forget(path)) describe(std::move(next));
}

Drive& FileStore::driveOf(const Entry& entry) const {
    return settings->drives.at(entry.path.substr(0, 1));
}

std::uint64_t FileStore::usedOn(const Entry& entry) const {
    Drive& drive = driveOf(entry);
    if (!drive.used) {
        drive.used = 0;
        std::error_code failed;
        for (const auto& one :
             fs::recursive_directory_iterator(settings->root / entry.path.substr(0, 1), failed)) {
            if (isFile(one.path())) *drive.used += one.file_size(failed);
        }
    }
    return *drive.used;
}

void FileStore::write(const Entry& current, std::u16string_view name, std::span<const char> bytes,
                      std::optional<std::size_t> cutAfter) {
    requireName(name);
    if (current.isRoot()) throw Refused{status::readOnly};
    change([&] {
        Entry target = child(current, name);
        const bool isNew = target.disk.empty();
        std::uint64_t replaced = 0;
        if (isNew) {
            target = {current.path + "/" + toUtf8(name), current.disk / diskName(name)};
        } else {
            if (!isFile(target.disk)) throw Refused{status::alreadyExists};
            requireChangeable(target);
            replaced = fs::file_size(target.disk);
        }
        std::optional<std::uint64_t> used;  // counted for a limit alone
        if (const std::optional<std::uint64_t> capacity = driveOf(target).capacity) {
            const std::uint64_t before = usedOn(target);
            used = before - std::min(before, replaced) + bytes.size();
            if (*used > *capacity) throw Refused{status::storeFull};
        }
        IncomingFile incoming(image, bytes.first(std::min(cutAfter.value_or(bytes.size()), bytes.size())));
        if (cutAfter) throw Refused{library::connectionLost};
        if (settings->times.contains(target.path)) {
            FileSettings next = *settings;
            next.times.erase(target.path);
            describe(std::move(next));
        }
        incoming.moveTo(target.disk);
        driveOf(target).used = used;
        if (isNew) learn(current, name);
    });
}

void FileStore::renameFile(const Entry& current, std::u16string_view name, std::u16string_view newName) {
    change([&] { rename(file(current, name), newName); });
}

void FileStore::renameFolder(const Entry& current, std::u16string_view name, std::u16string_view newName) {
    change([&] { rename(folderIn(current, name), newName); });
}

void FileStore::rename(const Entry& entry, std::u16string_view newName) {
    requireChangeable(entry);
    requireName(newName);
    const Entry parent{entry.path.substr(0, entry.path.rfind('/')), entry.disk.parent_path()};
    const Entry existing = child(parent, newName);
    if (!existing.disk.empty() && !fs::equivalent(existing.disk, entry.disk))
        throw Refused{status::alreadyExists};
    const std::string newPath = parent.path + "/" + toUtf8(newName);
    FileSettings next = *settings;
    const bool described = next.rename(entry.path, newPath);
    if (described) writeFilesJson(image, *settings, RenameUnderWay{entry.path, newPath});
    try {
        system::replaceDurably(entry.disk, parent.disk / diskName(newName));
    } catch (const std::system_error&) {
        if (described) writeFilesJson(image, *settings);
        throw;
    }
    if (described) describe(std::move(next));
    index = {};
}

void FileStore::removeFile(const Entry& current, std::u16string_view name) {
    change([&] {
        const Entry gone = file(current, name);
        requireChangeable(gone);
        const std::uint64_t size = fs::file_size(gone.disk);
        forget(gone.path);
        system::removeDurably(gone.disk);
        std::optional<std::uint64_t>& used = driveOf(gone).used;
        if (used) *used -= std::min(*used, size);
    });
}

void FileStore::createFolder(const Entry& current, std::u16string_view name) {
    requireName(name);
    if (current.isRoot()) throw Refused{status::readOnly};
    change([&] {
        if (!child(current, name).disk.empty()) throw Refused{status::alreadyExists};
        system::createFolderDurably(current.disk / diskName(name));
        learn(current, name);
    });
}

void FileStore::requireRemovable(const Entry& folder) const {
    requireChangeable(folder);
    if (!fs::is_empty(folder.disk)) throw Refused{status::folderNotEmpty};
}

void FileStore::removeFolder(const Entry& current, std::u16string_view name) {
    change([&] {
        const Entry gone = folderIn(current, name);
        requireRemovable(gone);
        forget(gone.path);
        system::removeDurably(gone.disk);
    });
}

}  // namespace ovno2::simulator
