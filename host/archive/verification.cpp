#include "host/archive/verification.h"

#include <algorithm>
#include <set>

#include "host/archive/archive_names.h"
#include "host/archive/manifest.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/incoming.h"
#include "host/output/input_file.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;
using Trouble = Verification::Trouble;

std::string quoted(const std::string& path) {
    return "\"" + forPerson(path) + "\"";
}

// A run's marks, and where what is on its way lies.
bool isOfARun(const std::string& path) {
    return path == archive::manifest || path == archive::unfinished || path.starts_with(Incoming::prefix);
}

class Verifier {
  public:
    Verifier(const fs::path& folder, bool showsProgress) : folder_(folder), showsProgress_(showsProgress) {}

    Verification verified() {
        readTheManifest();
        std::uint64_t total = 0;
        for (const auto& [path, digest] : manifest_.files) {
            std::error_code missing;
            const std::uintmax_t size = fs::file_size(folder_ / console::pathOf(path), missing);
            total += missing ? 0 : size;
        }
        TransferProgress progress(total, showsProgress_);
        for (const auto& [path, digest] : manifest_.files)
            check(path, digest, progress);
        findOthers();
        std::ranges::stable_sort(result_.findings, {}, [](const Verification::Finding& finding) {
            return std::pair(!finding.path.empty(), std::string_view(finding.path));
        });
        return std::move(result_);
    }

  private:
    void readTheManifest() {
        std::error_code error;
        const std::string name = quoted(console::textOf(folder_));
        if (!fs::is_directory(folder_, error))
            throw CommandFailure{failed,
                                 name + (fs::exists(folder_, error) ? " is no folder." : " is not there.")};
        result_.isUnfinished = isPlainFile(archive::unfinished);
        if (isPlainFile(archive::manifest)) {
            manifest_ = readManifest(readInputFile(console::textOf(folder_ / archive::manifest)));
        } else if (!result_.isUnfinished) {
            throw CommandFailure{failed, name + " is no archive, or its manifest is lost: there is no file " +
                                             archive::manifest + " in it."};
        }
        result_.listed = manifest_.files.size();
        for (const std::string& problem : manifest_.problems)
            result_.findings.push_back({Trouble::wrongLine, {}, problem});
    }

    bool isPlainFile(const std::string& path) const {
        std::error_code error;
        return fs::is_regular_file(fs::symlink_status(folder_ / console::pathOf(path), error));
    }

    // Whether a folder of the archive lies there itself, and no link to another. The last one asked for is
    // remembered: a manifest names the files of a folder one after the other.
    bool isOwnFolder(const std::string& path) {
        if (path.empty() || path == knownFolder_) return true;
        const std::size_t end = path.rfind('/');
        if (!isOwnFolder(end == std::string::npos ? std::string() : path.substr(0, end))) return false;
        std::error_code error;
        if (!fs::is_directory(fs::symlink_status(folder_ / console::pathOf(path), error))) return false;
        knownFolder_ = path;
        return true;
    }

    void check(const std::string& path, const Digest& digest, TransferProgress& progress) {
        const auto add = [&](Trouble trouble, const std::string& message) {
            result_.findings.push_back({trouble, path, quoted(path) + " " + message});
        };
        const fs::path file = folder_ / console::pathOf(path);
        std::error_code error;
        const std::size_t end = path.rfind('/');
        const bool isReached = isOwnFolder(end == std::string::npos ? std::string() : path.substr(0, end));
        const fs::file_status status = isReached ? fs::symlink_status(file, error) : fs::file_status();
        if (!isReached && fs::exists(fs::symlink_status(file, error)))
            return add(Trouble::changed, "is reached through a link; it is not looked at.");
        if (!fs::exists(status)) return add(Trouble::missing, "is missing.");
        if (!fs::is_regular_file(status))
            return add(Trouble::changed, fs::is_symlink(status) ? "has become a link; it is not looked at."
                                                                : "is no file any more.");
        const std::uintmax_t size = fs::file_size(file, error);
        progress.begin(fromUtf8(path), error ? 0 : size);
        const std::optional<Digest> now = digestOfFile(file);
        progress.copied(error ? 0 : size);
        if (!now) return add(Trouble::unreadable, "cannot be read.");
        if (*now != digest) return add(Trouble::changed, "is not as it was written.");
        ++result_.intact;
        result_.bytes += error ? 0 : size;
    }

    // What the manifest does not name.
    void findOthers() {
        std::error_code error;
        fs::recursive_directory_iterator entry(folder_, error);
        for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
            const std::string path = nameBelow(entry->path());
            if (isOfARun(path)) {
                entry.disable_recursion_pending();
                continue;
            }
            const fs::file_status status = entry->symlink_status(error);
            if (fs::is_directory(status) || manifest_.files.contains(path)) continue;
            result_.findings.push_back(
                {Trouble::extra, path,
                 quoted(path) + (fs::is_symlink(status) ? " is a link" : " is there") +
                     (result_.isUnfinished ? " and not in the manifest yet." : " and not in the manifest.")});
        }
        if (error)
            result_.findings.push_back(
                {Trouble::unreadable, "", "Not all of the folder can be listed: " + error.message() + "."});
    }

    std::string nameBelow(const fs::path& path) const {
        std::string name = console::textOf(path.lexically_relative(folder_));
        if constexpr (fs::path::preferred_separator == '\\') std::ranges::replace(name, '\\', '/');
        return name;
    }

    const fs::path& folder_;
    bool showsProgress_;
    Manifest manifest_;
    std::string knownFolder_;
    Verification result_;
};

}  // namespace

const char* nameOf(Trouble trouble) {
    constexpr const char* names[] = {"missing", "changed", "extra", "unreadable", "wrong line"};
    return names[static_cast<std::size_t>(trouble)];
}

Verification verifyArchive(const fs::path& folder, bool showsProgress) {
    return Verifier(folder, showsProgress).verified();
}

}  // namespace ovno2::host
