#include "host/files/upload.h"

#include <algorithm>
#include <fstream>

#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

Text nameOf(const fs::path& local) {
    return fromUtf8(console::textOf(local.filename()));
}

Text joined(const Text& folder, const Text& name) {
    return folder + u"/" + name;
}

std::string quoted(const fs::path& path) {
    return "\"" + console::textOf(path) + "\"";
}

std::uint64_t sizeOf(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

template <class Entries>
Entries byName(std::vector<PhoneEntry> listed) {
    Entries entries;
    for (PhoneEntry& entry : listed) {
        const Text key = lowerCase(entry.name);
        entries.emplace(key, std::move(entry));
    }
    return entries;
}

}  // namespace

Upload::Upload(const PhoneFiles& phone, PhoneEntry target, bool overwrite, bool isTrial, Naming naming)
    : phone_(phone),
      target_(std::move(target)),
      overwrite_(overwrite),
      isTrial_(isTrial),
      naming_(naming ? std::move(naming)
                     : [](const fs::path& local) { return std::optional(nameOf(local)); }),
      sentFiles_(phone.phoneSerial()),
      fetcher_(phone, fs::temp_directory_path()) {}

void Upload::add(const fs::path& local) {
    const std::optional<Text> name = naming_(local);
    if (!name) return;
    if (!fs::is_directory(local)) return add(local, *name);
    Folder folder{.local = local, .name = *name, .files = {}, .folders = {}, .others = {}, .wrong = {}};
    fill(folder);
    top_.folders.push_back(std::move(folder));
}

void Upload::addAllIn(const fs::path& folder) {
    top_.local = folder;
    fill(top_);
    top_.local.clear();
}

void Upload::add(const fs::path& file, const Text& name) {
    top_.files.push_back({file, name, sizeOf(file)});
    total_ += top_.files.back().size;
}

// Links to folders are not followed: they may lead in circles.
void Upload::fill(Folder& folder) {
    std::error_code error;
    std::vector<fs::path> entries;
    for (fs::directory_iterator one(folder.local, error), end; !error && one != end; one.increment(error))
        entries.push_back(one->path());
    if (error) folder.wrong = quoted(folder.local) + " cannot be read: " + error.message() + ".";
    std::ranges::sort(entries);
    for (const fs::path& entry : entries) {
        const std::optional<Text> name = naming_(entry);
        if (!name) continue;
        if (fs::is_directory(fs::symlink_status(entry, error))) {
            Folder below{
                .local = entry, .name = *name, .files = {}, .folders = {}, .others = {}, .wrong = {}};
            fill(below);
            folder.folders.push_back(std::move(below));
        } else if (fs::is_regular_file(fs::status(entry, error))) {
            folder.files.push_back({entry, *name, sizeOf(entry)});
            total_ += folder.files.back().size;
        } else {
            folder.others.push_back(entry);
        }
    }
}

void Upload::announce(const Folder& folder, const Text& path, FileReport& report) const {
    for (const File& file : folder.files)
        report.expect(
            {toUtf8(joined(path, file.name)), console::textOf(file.local), FileOutcome::failure, 0, {}});
    for (const Folder& below : folder.folders)
        announce(below, joined(path, below.name), report);
}

void Upload::run(FileReport& report, TransferProgress& progress) {
    report_ = &report;
    progress_ = &progress;
    copyFolder(top_, target_.path, /*isNew=*/false);
    drop();
}

void Upload::drop() {
    fetcher_.drop();
    renamed_.reset();
}

void Upload::copyFolder(const Folder& folder, const Text& path, bool isNew) {
    if (!folder.wrong.empty()) report_->fail(toUtf8(path), folder.wrong);
    Entries there;
    if (!isNew) {
        try {
            there = byName<Entries>(phone_.list(path));
        } catch (const CommandFailure& failure) {
            requireConnection(phone_);
            report_->fail(toUtf8(path), failure.message);
            return leaveOut(folder, path, "what " + toUtf8(path) + " holds is not known");
        }
    }
    copyFiles(folder, path, there);
    for (const fs::path& other : folder.others)
        report_->add({toUtf8(path), console::textOf(other), FileOutcome::failure, 0,
                      quoted(other) + " is neither a file nor a folder."});
    for (const Folder& below : folder.folders) {
        const std::size_t known = there.size();
        Text actual = joined(path, below.name);
        if (makeFolder(below, there, actual))
            copyFolder(below, actual, there.size() != known);
        else
            leaveOut(below, actual, "its folder could not be made");
    }
}

// Whatever ends it, what was sent is looked at.
void Upload::copyFiles(const Folder& folder, const Text& path, Entries& there) {
    std::vector<Sent> sent;
    try {
        for (const File& file : folder.files) {
            phone_.goOnOrEnd();
            const std::size_t before = sent.size();
            FileResult result = copyFile(file, path, there, sent);
            if (sent.size() == before) report_->add(std::move(result));
        }
    } catch (const BrokenOff&) {
        if (!sent.empty()) check(path, sent);
        throw;
    }
    if (!sent.empty()) check(path, sent);
}

// Sees to it that the folder is there; `actual` becomes its path as the phone has it.
bool Upload::makeFolder(const Folder& folder, Entries& there, Text& actual) {
    const fs::path& local = folder.local;
    const Text& name = folder.name;
    const auto known = there.find(lowerCase(name));
    std::string wrong;
    if (known != there.end()) {
        actual = known->second.path;
        if (known->second.isFolder) return true;
        wrong = toUtf8(actual) + " is a file; the folder " + quoted(local) + " cannot take its place.";
    } else {
        phone_.goOnOrEnd();
        // The driver leaves out what follows the last dot.
        const Text asked = name.find(u'.') == Text::npos ? actual : actual + u".";
        const Long result = isTrial_ ? 0 : phone_.ask([&](PhoneDriver& driver) {
            return driver.createFolder(modulePath(asked));
        });
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

void Upload::leaveOut(const Folder& folder, const Text& path, const std::string& why) {
    for (const File& file : folder.files) {
        progress_->left(file.size);
        report_->add({toUtf8(joined(path, file.name)), console::textOf(file.local), FileOutcome::failure, 0,
                      quoted(file.local) + " was left out: " + why + "."});
    }
    for (const Folder& below : folder.folders)
        leaveOut(below, joined(path, nameOf(below.local)), why);
}

// Why a file cannot go to the phone, whatever it holds; empty = it can.
std::string Upload::obstacle(const File& file, const std::string& path, const Entries& there) const {
    const auto known = there.find(lowerCase(file.name));
    if (file.name.find_first_of(u"\\\"") != Text::npos)
        return quoted(file.local) + " cannot be copied: no phone takes such a name. Rename it.";
    if (known == there.end()) return {};
    if (known->second.isFolder)
        return path + " is a folder; " + quoted(file.local) + " cannot take its place.";
    if (known->second.path.empty())
        return quoted(file.local) +
               ": another file of that name was copied just now; phones know no difference between upper and "
               "lower "
               "case.";
    return {};
}

// A file that is to be overwritten in any case is not fetched.
Upload::Likeness Upload::compare(const Content& content, const File& file, const PhoneEntry& there) {
    const SentFile* sent = sentFiles_.find(there.path);
    if (sent && there.changed && sent->phoneSize == there.size && sent->phoneTime == *there.changed)
        return sent->sent == content ? Likeness::equal : Likeness::different;
    if (goesAsText(file.local)) return Likeness::unknown;
    if (overwrite_ || there.size != content.size) return Likeness::different;
    fs::path fetched;
    try {
        if (!fetcher_.fetch(there, fetched).empty()) return Likeness::unknown;
    } catch (const fs::filesystem_error&) {
        return Likeness::unknown;
    }
    const std::optional<Content> onPhone = contentOf(fetched);
    if (!onPhone) return Likeness::unknown;
    if (*onPhone != content) return Likeness::different;
    if (there.changed && !isTrial_) sentFiles_.remember(there.path, {content, there.size, *there.changed});
    return Likeness::equal;
}

// The driver sends a file by the name that it has here.
Long Upload::send(const File& file, const Text& folder) {
    fs::path local = file.local;
    if (nameOf(local) != file.name) {
        renamed_ = std::make_unique<Incoming>(fs::temp_directory_path());
        local = renamed_->path() / console::pathOf(toUtf8(file.name));
        std::error_code noLinks;
        fs::create_symlink(file.local, local, noLinks);
        if (noLinks) fs::copy_file(file.local, local);
    }
    return phone_.ask(
        [&](PhoneDriver& driver) { return driver.putFile(console::textOf(local), modulePath(folder)); });
}

FileResult Upload::copyFile(const File& file, const Text& folder, Entries& there, std::vector<Sent>& sent) {
    const std::string path = toUtf8(joined(folder, file.name));
    FileResult result{path, console::textOf(file.local), FileOutcome::failure, file.size, {}};
    const auto failure = [&](std::string message) {
        progress_->left(file.size);
        result.message = std::move(message);
        return result;
    };
    if (std::string wrong = obstacle(file, path, there); !wrong.empty()) return failure(std::move(wrong));
    progress_->begin(file.name, file.size);
    const std::optional<Content> content = contentOf(file.local);
    if (!content) return failure(quoted(file.local) + " cannot be read.");
    if (const auto known = there.find(lowerCase(file.name)); known != there.end()) {
        const Likeness likeness = compare(*content, file, known->second);
        if (likeness == Likeness::equal) {
            result.outcome = FileOutcome::equal;
            progress_->left(file.size);
            return result;
        }
        if (known->second.isReadOnly) return failure(path + " is read-only on the phone and stays as it is.");
        result.differs = likeness == Likeness::different;
        if (likeness == Likeness::different && !overwrite_)
            return failure(path + " is on the phone and differs from " + quoted(file.local) +
                           "; --force overwrites it.");
        if (likeness == Likeness::unknown && !overwrite_)
            report_->say(path + " is on the phone and cannot be compared; it is written anew.");
    }
    if (!overwrite_ && losesCharacters(file.local))
        return failure(quoted(file.local) +
                       " is a text in UTF-16 with characters that the system's code page has not; on the "
                       "phone they would be "
                       "lost. Save it in UTF-8 without a mark; --force sends it as it can be.");
    Long status = 0;
    try {
        if (!isTrial_) status = send(file, folder);
    } catch (const fs::filesystem_error& error) {
        return failure(quoted(file.local) + " cannot get its new name: " + error.code().message() + ".");
    }
    if (status < 0) {
        if (!std::ifstream(file.local)) return failure(quoted(file.local) + " cannot be read.");
        requireConnection(phone_);
        return failure(resultMessage(Operation::putFile, status, phone_.phoneTitle(), path));
    }
    result.outcome = FileOutcome::success;
    progress_->copied(file.size);
    there[lowerCase(file.name)] = {};  // without a path: it came just now
    if (!isTrial_) sent.push_back({result, file, *content});
    return result;
}

// Looks at what has arrived.
void Upload::check(const Text& folder, std::vector<Sent>& sent) {
    const Listing listing = phone_.tryToList(folder);
    const auto there = byName<Entries>(listing.entries);
    for (auto& [result, file, content] : sent) {
        const auto found = there.find(lowerCase(file.name));
        const bool asText = goesAsText(file.local);
        if (found == there.end() && !listing.isComplete) {
            result.outcome = FileOutcome::failure;
            result.message = result.path + " was sent, but " + phone_.phoneTitle() +
                             " does not list it, so that nobody knows whether it arrived; retry.";
        } else if (found == there.end() || (found->second.size != content.size && !asText)) {
            result.outcome = FileOutcome::failure;
            result.message = result.path + " did not arrive whole; retry.";
        } else {
            if (found->second.changed)
                sentFiles_.remember(found->second.path,
                                    {content, found->second.size, *found->second.changed});
            if (asText) {
                result.message = result.path + " went to the phone as text in the system's code page.";
                report_->say(result.message);
            }
        }
        report_->add(std::move(result));
    }
}

}  // namespace ovno2::host
