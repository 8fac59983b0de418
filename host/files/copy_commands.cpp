// `ovphone files get`, `cat` and `put`
#include <algorithm>
#include <array>
#include <fstream>

#include "host/files/download.h"
#include "host/files/files_session.h"
#include "host/files/phone_path.h"
#include "host/files/upload.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr const char* standardOutput = "-";

bool endsInSeparator(const std::string& typed) {
    return typed.ends_with('/') || typed.ends_with('\\');
}

fs::path absolutePath(const std::string& typed) {
    fs::path path = fs::absolute(console::pathOf(typed)).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

// The local files and folders that a word of the line means. A shell has expanded wildcards already; where it
// does not, the last part of the path may have some.
std::vector<fs::path> localPaths(const std::string& typed) {
    const fs::path path = absolutePath(typed);
    std::error_code error;
    if (fs::exists(path, error)) return {path};
    std::vector<fs::path> found;
    const Text pattern = fromUtf8(console::textOf(path.filename()));
    if (hasWildcard(pattern))
        for (const auto& entry : fs::directory_iterator(path.parent_path(), error))
            if (matchesWildcard(pattern, fromUtf8(console::textOf(entry.path().filename()))))
                found.push_back(entry.path());
    if (found.empty()) throw CommandFailure{failed, "There is no file or folder \"" + typed + "\"."};
    std::ranges::sort(found);
    return found;
}

std::string summaryOf(const FilesSession& session, const FileReport& report, std::size_t wanted,
                      const TransferProgress& progress) {
    const std::size_t copied = report.count(FileOutcome::success), equal = report.count(FileOutcome::equal);
    const std::size_t missing = wanted - std::min(wanted, copied + equal);
    const std::size_t others =
        report.count(FileOutcome::failure) - std::min(report.count(FileOutcome::failure), missing);
    const std::uint64_t bytes = progress.bytesCopied();
    const double seconds = progress.seconds();
    std::string text = std::to_string(copied);
    if (missing != 0) text += " of " + std::to_string(wanted);
    text += (missing != 0 ? wanted : copied) == 1 ? " file " : " files ";
    text += std::string(session.verb()) + " (" + sizeText(bytes);
    if (bytes != 0 && seconds > 0 && !session.wanted().dryRun)
        text += ", " + sizeText(static_cast<std::uint64_t>(static_cast<double>(bytes) / seconds)) + "/s";
    text += ")";
    if (equal != 0) text += ", " + std::to_string(equal) + " already there";
    if (missing != 0) text += ", " + std::to_string(missing) + " missing";
    if (others != 0)
        text += ", " + std::to_string(others) + (others == 1 ? " other failure" : " other failures");
    return text + ".\n";
}

template <class Transfer>
void transfer(FilesSession& session, Transfer& files) {
    const bool isShown = console::errorIsTerminal() && !session.wanted().quiet && !session.wanted().dryRun;
    TransferProgress progress(files.totalBytes(), isShown);
    FileReport& report = session.report();
    session.show(&progress);
    files.announce(report);
    session.atEnd(
        [&, wanted = report.expectedCount()] {
            if (session.asJson())
                write(report.asJson(session.verb()));
            else if (!session.wanted().quiet)
                write(summaryOf(session, report, wanted, progress));
        },
        [&] { files.drop(); });
    session.finish([&] { files.run(report, progress); });
    session.show(nullptr);
}

// The file that a single source means, when the target names it and not a folder.
bool namesTheCopy(const std::vector<std::string>& sources, const std::string& target,
                  const std::vector<PhoneEntry>& entries) {
    return sources.size() == 1 && !hasWildcard(fromUtf8(sources[0])) && entries.size() == 1 &&
           !entries[0].isFolder && !endsInSeparator(target) && !fs::is_directory(console::pathOf(target));
}

void getInto(FilesSession& session, Download& download, const std::vector<PhoneEntry>& entries) {
    for (const PhoneEntry& entry : entries)
        session.each(toUtf8(entry.path), [&] {
            session.requireRecursive(entry, "gets");
            download.add(entry);
        });
    transfer(session, download);
}

void writeToOutput(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::array<char, 65536> piece;
    do {
        stream.read(piece.data(), piece.size());
        writeData({piece.data(), static_cast<std::size_t>(stream.gcount())});
    } while (stream);
    if (stream.bad()) throw CommandFailure{failed, "\"" + console::textOf(file) + "\" cannot be read."};
}

void showFiles(FilesSession& session, const std::vector<std::string>& typed) {
    if (session.asJson())
        throw CommandFailure{wrongUsage, "A file's content is no JSON; leave --format out."};
    const std::vector<PhoneEntry> entries = session.meant(typed);
    Fetcher fetcher(session.phone(), fs::temp_directory_path());
    session.atEnd([] {}, [&] { fetcher.drop(); });
    for (const PhoneEntry& entry : entries)
        session.each(toUtf8(entry.path), [&] {
            if (entry.isFolder) throw CommandFailure{failed, session.titleOf(entry) + " is a folder."};
            if (session.wanted().dryRun) return;
            fs::path file;
            if (const std::string wrong = fetcher.fetch(entry, file); !wrong.empty())
                throw CommandFailure{failed, wrong};
            writeToOutput(file);
        });
}

// Where on the phone files go: a folder, or a folder and the name that the one file gets in it.
struct PhoneTarget {
    PhoneEntry folder;
    std::optional<Text> name;
};

PhoneTarget phoneTarget(const PhoneFiles& phone, const std::string& typed, bool mayBeName) {
    const std::vector<Text> parts = partsOfPhonePath(typed);
    PhoneTarget target;
    try {
        target.folder = phone.findOne(typed);
    } catch (const CommandFailure&) {
        if (!mayBeName || parts.size() < 2 || hasWildcard(parts.back())) throw;
        target.name = parts.back();
    }
    if (!target.name && !target.folder.isFolder) {
        if (!mayBeName)
            throw CommandFailure{
                failed, toUtf8(target.folder.path) + " is a file; name the folder that the files go to."};
        target.name = target.folder.name;
    }
    if (target.name) {
        target.folder = phone.findOne(typed.substr(0, typed.find_last_of("/\\")));
        if (!target.folder.isFolder)
            throw CommandFailure{failed, toUtf8(target.folder.path) + " is a file and holds no others."};
    }
    if (target.folder.isPhone())
        throw CommandFailure{failed,
                             "Files go to a drive or a folder on it; \"ovphone files ls\" shows the drives."};
    return target;
}

}  // namespace

void getFiles(FilesSession& session) {
    std::vector<std::string> sources = session.wanted().paths;
    std::string target = ".";
    if (sources.size() > 1) {
        target = sources.back();
        sources.pop_back();
    }
    if (target == standardOutput) return showFiles(session, sources);
    session.begin("copied", "would be copied");
    const std::vector<PhoneEntry> entries = session.meant(sources);
    const fs::path place = absolutePath(target);
    const bool overwrite = session.wanted().force, isTrial = session.wanted().dryRun;
    if (namesTheCopy(sources, target, entries)) {
        if (!fs::is_directory(place.parent_path()))
            throw CommandFailure{failed, "\"" + target + "\": there is no folder \"" +
                                             console::textOf(place.parent_path()) + "\"."};
        Download download(session.phone(), place.parent_path(), overwrite, isTrial);
        download.add(entries[0], place.filename());
        transfer(session, download);
        return;
    }
    Download download(session.phone(), place, overwrite, isTrial);
    getInto(session, download, entries);
}

void catFiles(FilesSession& session) {
    showFiles(session, session.wanted().paths);
}

void putFiles(FilesSession& session) {
    session.begin("copied", "would be copied");
    const std::span<const std::string> typed = session.wanted().paths;
    const std::string& target = typed.back();
    partsOfPhonePath(target);
    std::vector<fs::path> locals;
    for (const std::string& source : typed.first(typed.size() - 1))
        session.each(source, [&] {
            for (const fs::path& local : localPaths(source)) {
                if (!fs::is_directory(local) || session.wanted().recursive)
                    locals.push_back(local);
                else
                    session.report().fail(source, "\"" + console::textOf(local) +
                                                      "\" is a folder; -r puts it with all that is in it.");
            }
        });
    const bool isOneFile = typed.size() == 2 && locals.size() == 1 && !fs::is_directory(locals[0]);
    const PhoneTarget place = phoneTarget(session.phone(), target, isOneFile && !endsInSeparator(target));
    Upload upload(session.phone(), place.folder, session.wanted().force, session.wanted().dryRun);
    for (const fs::path& local : locals) {
        if (place.name)
            upload.add(local, *place.name);
        else
            upload.add(local);
    }
    transfer(session, upload);
}

}  // namespace ovno2::host
