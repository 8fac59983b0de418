#include "host/files/fetcher.h"

#include <algorithm>

#include "host/driver/result_messages.h"
#include "host/files/file_report.h"
#include "host/files/local_name.h"
#include "host/files/phone_path.h"
#include "host/output/console.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t classicPathLimit = 260;  // of Windows

}  // namespace

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

std::string arrivalObstacle(const fs::path& folder) {
    const std::string path = console::textOf(folder);
    if (path.find_first_of(isWindows ? "?" : "?\\\"") == std::string::npos) return {};
    return "\"" + path +
           "\": the phone driver cannot write to a folder with such a name. Choose another one.";
}

bool hasSizeAndTime(const fs::path& file, const PhoneEntry& entry) {
    constexpr std::chrono::seconds timeTolerance{2};  // what memory cards round times to
    std::error_code error;
    if (fs::file_size(file, error) != entry.size || error) return false;
    if (!entry.changed) return true;
    const auto time = fs::last_write_time(file, error);
    if (error) return false;
    const auto changed = std::chrono::floor<std::chrono::seconds>(std::chrono::file_clock::to_sys(time));
    return std::chrono::abs(changed - *entry.changed) <= timeTolerance;
}

std::string Fetcher::fetch(const PhoneEntry& entry, fs::path& file) {
    const std::string path = toUtf8(entry.path);
    if (const char* obstacle = fetchingObstacle(entry.name, isWindows))
        return path + " cannot be copied: " + obstacle + ". Rename it on the phone.";
    if (incoming_)
        incoming_->clear();
    else
        incoming_ = std::make_unique<Incoming>(folder_);
    if (isWindows && incoming_->path().native().size() + 1 + entry.name.size() >= classicPathLimit)
        return path +
               " cannot be copied: its path here would be too long. Choose a folder with a shorter path.";
    const Long result = phone_.ask([&](PhoneDriver& driver) {
        return driver.getFile(modulePath(entry.path), console::textOf(incoming_->path()));
    });
    if (result < 0) {
        requireConnection(phone_);
        return resultMessage(Operation::getFile, result, phone_.phoneTitle(), path);
    }
    file = incoming_->arrived();
    if (file.empty())
        return path + " cannot be written to \"" + console::textOf(folder_) +
               "\". Is there room on the disk?";
    if (const std::uint64_t size = fs::file_size(file); size != entry.size)
        return path + " arrived with " + sizeText(size) + " instead of " + sizeText(entry.size) +
               ". It may have changed meanwhile, or the disk is full; retry.";
    if (entry.changed) fs::last_write_time(file, std::chrono::file_clock::from_sys(*entry.changed));
    return {};
}

}  // namespace ovno2::host
