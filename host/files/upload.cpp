#include "host/files/upload.h"

#include <algorithm>
#include <fstream>

#include "host/driver/result_messages.h"
#include "host/output/console.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds timeTolerance{2};  // what memory cards round times to

Text nameOf(const fs::path& local) {
    return fromUtf8(console::textOf(local.filename()));
}

Text joined(const Text& folder, const Text& name) {
    return folder + u"/" + name;
}

std::uint64_t sizeOf(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

bool isEqual(const fs::path& local, const PhoneEntry& there, bool exactly) {
    if (there.size != sizeOf(local) && !goesAsText(local)) return false;
    std::error_code error;
    const auto time = fs::last_write_time(local, error);
    if (error || !there.changed) return !exactly && !error;
    const auto changed = std::chrono::floor<std::chrono::seconds>(std::chrono::file_clock::to_sys(time));
    const auto later = *there.changed - changed;
    return later >= -timeTolerance && (!exactly || later <= timeTolerance);
}

std::vector<fs::path> sortedEntries(const fs::path& folder) {
    std::vector<fs::path> entries;
    for (const auto& entry : fs::directory_iterator(folder))
        entries.push_back(entry.path());
    std::ranges::sort(entries);
    return entries;
}

}  // namespace

void Upload::add(const fs::path& local) {
    if (fs::is_directory(local)) {
        Folder folder{.local = local, .files = {}, .folders = {}, .others = {}};
        fill(folder);
        top_.folders.push_back(std::move(folder));
    } else {
        top_.files.push_back(local);
        total_ += sizeOf(local);
    }
}

// Links to folders are not followed: they may lead in circles.
void Upload::fill(Folder& folder) {
    for (const fs::path& entry : sortedEntries(folder.local)) {
        if (fs::is_directory(fs::symlink_status(entry))) {
            Folder below{.local = entry, .files = {}, .folders = {}, .others = {}};
            fill(below);
            folder.folders.push_back(std::move(below));
        } else if (fs::is_regular_file(entry)) {
            folder.files.push_back(entry);
            total_ += sizeOf(entry);
        } else {
            folder.others.push_back(entry);
        }
    }
}

void Upload::run(FileReport& report, TransferProgress& progress) {
    report_ = &report;
    progress_ = &progress;
    copyFolder(top_, target_.path, /*isNew=*/false);
}

void Upload::copyFolder(const Folder& folder, const Text& path, bool isNew) {
    Entries there;
    if (!isNew)
        for (PhoneEntry& entry : phone_.list(path)) {
            const Text key = lowerCase(entry.name);
            there.emplace(key, std::move(entry));
        }
    std::vector<FileResult> sent;
    for (const fs::path& local : folder.files) {
        bool isSent = false;
        FileResult result = copyFile(local, path, there, isSent);
        if (isSent)
            sent.push_back(std::move(result));
        else
            report_->add(std::move(result));
    }
    if (!sent.empty()) check(path, sent);
    for (const fs::path& other : folder.others)
        report_->add({toUtf8(path), console::textOf(other), FileOutcome::failure, 0,
                      "\"" + console::textOf(other) + "\" is neither a file nor a folder."});
    for (const Folder& below : folder.folders) {
        const std::size_t known = there.size();
        Text actual = joined(path, nameOf(below.local));
        if (makeFolder(below.local, there, actual))
            copyFolder(below, actual, there.size() != known);
        else
            leaveOut(below, actual);
    }
}

// Sees to it that the folder is there; `actual` becomes its path as the phone has it.
bool Upload::makeFolder(const fs::path& local, Entries& there, Text& actual) {
    const Text name = nameOf(local);
    const auto known = there.find(lowerCase(name));
    std::string wrong;
    if (known != there.end()) {
        actual = known->second.path;
        if (known->second.isFolder) return true;
        wrong = toUtf8(actual) + " is a file; the folder \"" + console::textOf(local) +
                "\" cannot take its place.";
    } else {
        // The driver leaves out what follows the last dot.
        const Text asked = name.find(u'.') == Text::npos ? actual : actual + u".";
        const Long result = phone_.driver().createFolder(modulePath(asked));
        if (result >= 0) {
            PhoneEntry made;
            made.path = actual;
            made.name = name;
            made.isFolder = true;
            there.emplace(lowerCase(name), made);
            return true;
        }
        requireConnection(phone_);
        wrong = resultMessage(Operation::createFolder, result, phone_.phoneTitle(), toUtf8(actual));
    }
    report_->add({toUtf8(actual), console::textOf(local), FileOutcome::failure, 0, wrong});
    return false;
}

void Upload::leaveOut(const Folder& folder, const Text& path) {
    for (const fs::path& local : folder.files) {
        progress_->left(sizeOf(local));
        report_->add({toUtf8(joined(path, nameOf(local))), console::textOf(local), FileOutcome::failure, 0,
                      "\"" + console::textOf(local) + "\" was left out with its folder."});
    }
    for (const Folder& below : folder.folders)
        leaveOut(below, joined(path, nameOf(below.local)));
}

FileResult Upload::copyFile(const fs::path& local, const Text& folder, Entries& there, bool& sent) {
    const Text name = nameOf(local);
    const std::string path = toUtf8(joined(folder, name));
    const std::uint64_t size = sizeOf(local);
    FileResult result{path, console::textOf(local), FileOutcome::failure, size, {}};
    const auto known = there.find(lowerCase(name));
    if (name.find_first_of(u"\\\"") != Text::npos) {
        result.message = "\"" + result.local + "\" cannot be copied: no phone takes such a name. Rename it.";
    } else if (known != there.end() && known->second.isFolder) {
        result.message = path + " is a folder; \"" + result.local + "\" cannot take its place.";
    } else if (known != there.end() && known->second.path.empty()) {
        result.message = "\"" + result.local +
                         "\": another file of that name was copied just now; phones know no "
                         "difference between upper and lower case.";
    } else if (known != there.end() && isEqual(local, known->second, /*exactly=*/overwrite_)) {
        result.outcome = FileOutcome::equal;
    } else if (known != there.end() && known->second.isReadOnly) {
        result.message = path + " is read-only on the phone and stays as it is.";
    } else if (known != there.end() && !overwrite_) {
        result.message =
            path + " is on the phone and differs from \"" + result.local + "\"; --force overwrites it.";
    } else if (!overwrite_ && losesCharacters(local)) {
        result.message =
            "\"" + result.local +
            "\" is a text in UTF-16 with characters that the system's code page has not; on the phone they "
            "would be lost. Save it in UTF-8 without a mark; --force sends it as it can be.";
    } else {
        progress_->begin(name);
        const Long status = phone_.driver().putFile(result.local, modulePath(folder));
        if (status >= 0) {
            sent = true;
            result.outcome = FileOutcome::success;
            progress_->copied(size);
            there[lowerCase(name)] = {};  // without a path: it came just now
            return result;
        }
        if (!std::ifstream(local)) {
            result.message = "\"" + result.local + "\" cannot be read.";
        } else {
            requireConnection(phone_);
            result.message = resultMessage(Operation::putFile, status, phone_.phoneTitle(), path);
        }
    }
    progress_->left(size);
    return result;
}

// Looks at what has arrived.
void Upload::check(const Text& folder, std::vector<FileResult>& sent) {
    Entries there;
    for (PhoneEntry& entry : phone_.list(folder)) {
        const Text key = lowerCase(entry.name);
        there.emplace(key, std::move(entry));
    }
    for (FileResult& result : sent) {
        const fs::path local = console::pathOf(result.local);
        const auto found = there.find(lowerCase(nameOf(local)));
        const bool asText = goesAsText(local);
        if (found == there.end() || (found->second.size != result.bytes && !asText)) {
            result.outcome = FileOutcome::failure;
            result.message = result.path + " did not arrive whole; retry.";
        } else if (asText) {
            result.message = result.path + " went to the phone as text in the system's code page.";
            report_->say(result.message);
        }
        report_->add(std::move(result));
    }
}

}  // namespace ovno2::host
