#include "platform/portable/files.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/portable/native_file.h"
#include "platform/portable/paths.h"

namespace ovno2::platform::portable {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t pathLimit = 260;
constexpr Long attributeArchive = 32;  // what an ordinary file has

constexpr Long shellPathNotFound = 3;
constexpr Long shellAccessDenied = 5;
constexpr Long shellDiskFull = 112;
constexpr Long shellAlreadyExists = 183;

bool fitsLookUp(TextView path) {
    return path.size() < pathLimit || path.starts_with(u"\\\\?\\");
}

// No system call sees what stands behind a NUL, so such a path would name another file.
bool isName(TextView path) {
    return !path.empty() && path.find(u'\0') == TextView::npos;
}

bool statusOf(const fs::path& path, struct stat& status) {
    return stat(path.c_str(), &status) == 0;
}

// "a/b/" and "a/b" are the same folder.
fs::path withoutTrailingSeparator(const fs::path& path) {
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

}  // namespace

FailureNumber PortableFiles::open(Long number, TextView path, FileAccess access, OpenFile*& file) {
    if (onOpen)
        if (const FailureNumber failure = onOpen(number, path, access)) return failure;
    if (const FailureNumber failure = numbers_.check(number)) return failure;
    if (!isName(path)) return badFileNameOrNumber;
    std::unique_ptr<OpenFile> opened;
    FailureNumber failure = noFailure;
    if (access == FileAccess::append)
        failure = openForAppending(nativePath(machine_, path), opened);
    else if (access == FileAccess::replace)
        failure = openForReplacing(nativePath(machine_, path), opened);
    else
        failure = path.size() < pathLimit ? openForReading(nativePath(machine_, path), opened) : fileNotFound;
    if (failure != noFailure) return failure;
    if (onOpened) opened = onOpened(std::move(opened));
    file = numbers_.keep(number, std::move(opened));
    return noFailure;
}

FailureNumber PortableFiles::openWide(TextView path, std::unique_ptr<OpenFile>& file) {
    if (!isName(path) || !fitsLookUp(path)) return fileNotFound;
    std::unique_ptr<OpenFile> opened;
    const FailureNumber failure = openForReading(nativePath(machine_, path), opened);
    if (failure != noFailure) return failure;
    file = onOpened ? onOpened(std::move(opened)) : std::move(opened);
    return noFailure;
}

bool PortableFiles::pathExists(TextView path) {
    return fitsLookUp(path) && attributes(path) != noAttributes;
}

Long PortableFiles::attributes(TextView path) {
    struct stat status = {};
    if (!isName(path)) return noAttributes;
    const fs::path native = nativePath(machine_, path);
    if (!statusOf(native, status)) return noAttributes;
    Long attributes = S_ISDIR(status.st_mode) ? attributeDirectory : attributeArchive;
    if (isReadOnly(status.st_mode)) attributes |= attributeReadOnly;
    if (isHidden(native)) attributes |= attributeHidden;
    return attributes;
}

FailureNumber PortableFiles::setAttributes(TextView path, Long attributes) {
    struct stat status = {};
    if (!isName(path)) return fileNotFound;
    const fs::path native = nativePath(machine_, path);
    if (!statusOf(native, status)) return failureOfErrno(errno, /*forReading=*/true);
    const bool readOnly = (attributes & attributeReadOnly) != 0;
    // The mark needs write permission, so that comes first or last.
    if (!readOnly && isReadOnly(status.st_mode) && chmod(native.c_str(), status.st_mode | S_IWUSR) != 0)
        return failureOfErrno(errno, /*forReading=*/true);
    const bool hidden = (attributes & attributeHidden) != 0;
    if (hidden != isHidden(native) && markHidden(native, hidden) != 0) return pathAccessError;
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if (readOnly && chmod(native.c_str(), status.st_mode & ~anyWrite) != 0)
        return failureOfErrno(errno, /*forReading=*/true);
    return noFailure;
}

// No file has a second, short name here.
Text PortableFiles::shortPath(TextView path) {
    return attributes(path) != noAttributes ? Text(path) : Text();
}

FailureNumber PortableFiles::makeFolder(TextView path) {
    if (onMakeFolder)
        if (const FailureNumber failure = onMakeFolder(path)) return failure;
    if (!isName(path)) return badFileNameOrNumber;
    if (mkdir(nativePath(machine_, path).c_str(), newFolderMode) == 0) return noFailure;
    return failureOfErrno(errno, /*forReading=*/false);
}

Long PortableFiles::makeFolderTree(TextView path) {
    if (onMakeFolderTree)
        if (const Long status = onMakeFolderTree(path)) return status;
    if (!isName(path)) return shellPathNotFound;
    struct stat status = {};
    const bool hasDrive = path.size() >= 2 && path[1] == u':';
    if (hasDrive && !statusOf(nativePath(machine_, Text(path.substr(0, 2)) + u'\\'), status))
        return shellPathNotFound;  // a drive is not made on the way
    const fs::path folder = withoutTrailingSeparator(nativePath(machine_, path));
    if (statusOf(folder, status)) return shellAlreadyExists;
    const int error = makeFolders(folder);
    if (error == 0) return 0;
    const FailureNumber failure = failureOfErrno(error, /*forReading=*/false);
    return failure == pathNotFound ? shellPathNotFound
           : failure == diskFull   ? shellDiskFull
                                   : shellAccessDenied;
}

FailureNumber PortableFiles::remove(TextView path) {
    struct stat status = {};
    if (!isName(path)) return fileNotFound;
    const fs::path native = nativePath(machine_, path);
    if (!statusOf(native, status)) return failureOfErrno(errno, /*forReading=*/true);
    if (S_ISDIR(status.st_mode) || isReadOnly(status.st_mode)) return pathAccessError;
    return unlink(native.c_str()) == 0 ? noFailure : failureOfErrno(errno, /*forReading=*/true);
}

std::unique_ptr<Files> makeFiles(Machine& machine) {
    return std::make_unique<PortableFiles>(machine);
}

}  // namespace ovno2::platform::portable
