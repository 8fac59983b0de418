// `ovphone files` and its commands: browses the files of the chosen phone, copies and changes them.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>

#include "host/driver/result_messages.h"
#include "host/files/commands.h"
#include "host/files/download.h"
#include "host/files/files_output.h"
#include "host/files/phone_path.h"
#include "host/files/upload.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"
#include "host/phones/attached_phones.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

std::string counted(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " file" : " files");
}

// The local files and folders that a word of the line means. A shell has expanded wildcards already; where it
// does not, the last part of the path may have some.
std::vector<fs::path> localPaths(const std::string& typed) {
    fs::path path = fs::absolute(console::pathOf(typed)).lexically_normal();
    if (!path.has_filename()) path = path.parent_path();
    if (fs::exists(path)) return {path};
    std::vector<fs::path> found;
    const Text pattern = fromUtf8(console::textOf(path.filename()));
    if (hasWildcard(pattern) && fs::is_directory(path.parent_path()))
        for (const auto& entry : fs::directory_iterator(path.parent_path()))
            if (matchesWildcard(pattern, fromUtf8(console::textOf(entry.path().filename()))))
                found.push_back(entry.path());
    if (found.empty()) throw CommandFailure{failed, "There is no file or folder \"" + typed + "\"."};
    std::ranges::sort(found);
    return found;
}

struct FilesOptions {
    std::vector<std::string> paths;  // in the order of the line
    std::string renamed;             // a path, and what it is called from now on
    std::string newName;
    bool recursive = false;
    bool force = false;
    bool parents = false;  // a new folder's missing folders are made, too
};

class FilesCommand {
  public:
    FilesCommand(const Context& context, const FilesOptions& wanted, Purpose purpose)
        : asJson_(context.asJson()),
          wanted_(wanted),
          phones_(context),
          phone_(phones_.driver(), phones_.all(), phones_.chosen(purpose)) {}

    // Of a folder that was gone through something could not be listed.
    bool isIncomplete() const { return phone_.isIncomplete(); }

    void list() {
        std::vector<PhoneEntry> all;
        Text from;
        bool wholePaths = pathsOr("/").size() > 1;
        for (const std::string& typed : pathsOr("/")) {
            const std::vector<PhoneEntry> found = phone_.find(typed);
            const bool goesIn = found.size() == 1 && found[0].isFolder;
            wholePaths = wholePaths || !goesIn;
            for (const PhoneEntry& entry : found) {
                if (!goesIn) all.push_back(entry);
                if (!entry.isFolder || (!goesIn && !wanted_.recursive)) continue;
                from = entry.path;
                if (wanted_.recursive)
                    phone_.walk(entry,
                                [&](const PhoneEntry& below, std::size_t, bool) { all.push_back(below); });
                else
                    std::ranges::move(phone_.list(entry.path), std::back_inserter(all));
            }
        }
        if (asJson_)
            write(entriesAsJson(all));
        else if (all.empty())
            note("The folder is empty.");
        else
            writeTable(entriesAsTable(all, from, wholePaths));
    }

    void tree() {
        std::vector<std::string> trees;
        for (const std::string& typed : pathsOr("/"))
            for (const PhoneEntry& top : phone_.find(typed))
                trees.push_back(asJson_ ? treeAsJson(phone_, top) : treeAsText(phone_, top));
        const bool isArray = asJson_ && trees.size() > 1;
        std::string text = isArray ? "[\n" : "";
        for (std::size_t i = 0; i < trees.size(); ++i)
            text += (i == 0 ? "" : isArray ? ",\n" : "\n") + trees[i];
        write(text + (isArray ? "]\n" : ""));
    }

    void get() {
        std::vector<std::string> sources = wanted_.paths;
        std::string target = ".";
        if (sources.size() > 1) {
            target = sources.back();
            sources.pop_back();
        }
        std::vector<PhoneEntry> entries;
        for (const std::string& typed : sources)
            std::ranges::move(phone_.find(typed), std::back_inserter(entries));
        requireRecursive(entries, "gets");
        Download download(phone_, fs::absolute(console::pathOf(target)).lexically_normal(), wanted_.force);
        for (const PhoneEntry& entry : entries)
            download.add(entry);
        transfer(download);
    }

    void put() {
        const PhoneEntry target = phone_.findOne(wanted_.paths.back());
        if (!target.isFolder)
            throw CommandFailure{failed,
                                 toUtf8(target.path) + " is a file; name the folder that the files go to."};
        if (target.isPhone())
            throw CommandFailure{
                failed, "Files go to a drive or a folder on it; \"ovphone files ls\" shows the drives."};
        Upload upload(phone_, target, wanted_.force);
        for (std::size_t i = 0; i + 1 < wanted_.paths.size(); ++i)
            for (const fs::path& local : localPaths(wanted_.paths[i])) {
                if (fs::is_directory(local) && !wanted_.recursive)
                    throw CommandFailure{failed, "\"" + console::textOf(local) +
                                                     "\" is a folder; -r puts it with all that is in it."};
                upload.add(local);
            }
        transfer(upload);
    }

    void rename() {
        const PhoneEntry entry = phone_.findOne(wanted_.renamed);
        requireNoDrive(entry);
        const std::string& typed = wanted_.newName;
        const std::vector<Text> parts = partsOfPhonePath(typed);
        if (parts.empty()) throw CommandFailure{wrongUsage, "The new name is empty."};
        const Text& name = parts.back();
        // A whole path may stand for the name as long as it stays in the folder.
        if (parts.size() > 1) {
            const PhoneEntry folder = phone_.findOne(typed.substr(0, typed.find_last_of("/\\")));
            if (folder.path != folderOf(entry.path))
                throw CommandFailure{failed,
                                     "A phone renames within a folder only. Use get, put and rm to move " +
                                         toUtf8(entry.path) + "."};
        }
        for (const PhoneEntry& other : phone_.list(folderOf(entry.path)))
            if (equalsIgnoringCase(other.name, name) && other.path != entry.path)
                throw CommandFailure{
                    failed, toUtf8(other.path) + " is there already. Delete it or choose another name."};
        const Text path = modulePath(entry.path);
        Long result = entry.isFolder ? phone_.driver().renameFolder(path, name)
                                     : phone_.driver().renameFile(path, name);
        // For a folder the driver passes on the library's own status, which says nothing that a person knows.
        if (result != 0 && result != -1) result = -2;
        FileReport report;
        tell(entry, Operation::renameEntry, result, report);
        if (asJson_) write(report.asJson("renamed"));
        if (result < 0) throw CommandFailure{failed, {}};
    }

    void remove() { change("deleted", &FilesCommand::removeMeant); }
    void makeFolders() { change("made", &FilesCommand::makeOneFolder); }
    void removeFolders() { change("deleted", &FilesCommand::removeFoldersMeant); }

  private:
    std::vector<std::string> pathsOr(const char* none) const {
        return wanted_.paths.empty() ? std::vector<std::string>{none} : wanted_.paths;
    }

    void requireRecursive(const std::vector<PhoneEntry>& entries, const char* does) const {
        for (const PhoneEntry& entry : entries)
            if (entry.isFolder && !wanted_.recursive)
                throw CommandFailure{failed, (entry.isPhone() ? phone_.phoneTitle() : toUtf8(entry.path)) +
                                                 " is a folder; -r " + does + " it with all that is in it."};
    }

    template <class Transfer>
    void transfer(Transfer& files) {
        std::string lost;
        TransferProgress progress(files.totalBytes(), console::errorIsTerminal());
        FileReport report(&progress);
        try {
            files.run(report, progress);
        } catch (const ConnectionLost& failure) {
            lost = failure.message;
        }
        progress.hide();
        const double seconds = progress.seconds();
        const std::uint64_t bytes = progress.bytesCopied();
        if (asJson_) {
            write(report.asJson("copied"));
        } else {
            std::string text = counted(report.count(FileOutcome::success)) + " copied (" + sizeText(bytes);
            if (bytes != 0 && seconds > 0)
                text +=
                    ", " + sizeText(static_cast<std::uint64_t>(static_cast<double>(bytes) / seconds)) + "/s";
            text += ")";
            if (const std::size_t equal = report.count(FileOutcome::equal))
                text += ", " + std::to_string(equal) + " already there";
            if (const std::size_t wrong = report.count(FileOutcome::failure))
                text += ", " + std::to_string(wrong) + " failed";
            write(text + ".\n");
        }
        if (!lost.empty()) throw CommandFailure{failed, lost};
        if (report.count(FileOutcome::failure) != 0) throw CommandFailure{failed, {}};
    }

    // Carries out one change for every path of the line.
    void change(const char* verb, void (FilesCommand::*carryOut)(const std::string&, FileReport&)) {
        FileReport report;
        std::string lost;
        try {
            for (const std::string& typed : wanted_.paths) {
                try {
                    (this->*carryOut)(typed, report);
                } catch (const CommandFailure& failure) {
                    if (failure.status != failed) throw;
                    report.add({typed, {}, FileOutcome::failure, 0, failure.message});
                }
            }
        } catch (const ConnectionLost& failure) {
            lost = failure.message;
        }
        if (asJson_) write(report.asJson(verb));
        if (!lost.empty()) throw CommandFailure{failed, lost};
        if (report.count(FileOutcome::failure) != 0) throw CommandFailure{failed, {}};
    }

    // Adds what became of an entry to the report.
    void tell(const PhoneEntry& entry, Operation operation, Long result, FileReport& report) {
        const std::string path = toUtf8(entry.path);
        if (result >= 0) {
            report.add({path, {}, FileOutcome::success, 0, {}});
            return;
        }
        requireConnection(phone_);
        report.add(
            {path, {}, FileOutcome::failure, 0, resultMessage(operation, result, phone_.phoneTitle(), path)});
    }

    void removeEntry(const PhoneEntry& entry, FileReport& report) {
        if (!canStandInAPath(entry.name))
            report.add({toUtf8(entry.path),
                        {},
                        FileOutcome::failure,
                        0,
                        toUtf8(entry.path) + ": no path can name it."});
        else if (entry.isReadOnly)
            report.add({toUtf8(entry.path),
                        {},
                        FileOutcome::failure,
                        0,
                        toUtf8(entry.path) + " is read-only on the phone and stays."});
        else if (entry.isFolder)
            tell(entry, Operation::deleteFolder, phone_.driver().deleteFolder(modulePath(entry.path)),
                 report);
        else
            tell(entry, Operation::deleteFile, phone_.driver().deleteFile(modulePath(entry.path)), report);
    }

    void requireNoDrive(const PhoneEntry& entry) const {
        if (entry.isPhone() || entry.isDrive())
            throw CommandFailure{failed, (entry.isPhone() ? phone_.phoneTitle() : toUtf8(entry.path)) +
                                             " is a drive and stays as it is."};
    }

    void removeMeant(const std::string& typed, FileReport& report) {
        const std::vector<PhoneEntry> found = phone_.find(typed);
        requireRecursive(found, "deletes");
        for (const PhoneEntry& entry : found) {
            requireNoDrive(entry);
            if (!removed_.insert(entry.path).second) continue;
            std::vector<PhoneEntry> all{entry};
            if (entry.isFolder)
                phone_.walk(entry, [&](const PhoneEntry& below, std::size_t, bool) { all.push_back(below); });
            // What is in a folder goes before it; a folder in which something stays does, too.
            std::set<Text> staying;
            for (auto one = all.rbegin(); one != all.rend(); ++one) {
                const std::size_t before = report.count(FileOutcome::failure);
                if (staying.contains(one->path))
                    report.add({toUtf8(one->path),
                                {},
                                FileOutcome::failure,
                                0,
                                toUtf8(one->path) + " is not empty and stays."});
                else
                    removeEntry(*one, report);
                if (report.count(FileOutcome::failure) != before) staying.insert(folderOf(one->path));
            }
        }
    }

    void removeFoldersMeant(const std::string& typed, FileReport& report) {
        for (const PhoneEntry& entry : phone_.find(typed)) {
            requireNoDrive(entry);
            const std::string path = toUtf8(entry.path);
            if (!entry.isFolder)
                report.add({path, {}, FileOutcome::failure, 0, path + " is a file; rm deletes it."});
            else if (!phone_.list(entry.path).empty())
                report.add({path,
                            {},
                            FileOutcome::failure,
                            0,
                            path + " is not empty; rm -r deletes it with all that is in it."});
            else
                removeEntry(entry, report);
        }
    }

    void makeOneFolder(const std::string& typed, FileReport& report) {
        const std::vector<Text> parts = partsOfPhonePath(typed);
        if (parts.size() < 2)
            throw CommandFailure{
                failed, "\"" + typed + "\": new folders are made on a drive, as in \"E:/" + typed + "\"."};
        PhoneEntry folder = phone_.findOne(toUtf8(parts.front()));
        for (std::size_t i = 1; i < parts.size(); ++i) {
            const std::vector<PhoneEntry> entries = phone_.list(folder.path);
            const auto there = std::ranges::find_if(
                entries, [&](const PhoneEntry& entry) { return equalsIgnoringCase(entry.name, parts[i]); });
            const bool isLast = i + 1 == parts.size();
            if (there != entries.end()) {
                if (!there->isFolder || (isLast && !wanted_.parents))
                    throw CommandFailure{failed, toUtf8(there->path) + " is there already" +
                                                     (there->isFolder ? "." : ", as a file.")};
                folder = *there;
                continue;
            }
            if (!isLast && !wanted_.parents)
                throw CommandFailure{failed, "There is no folder " + toUtf8(folder.path + u"/" + parts[i]) +
                                                 "; -p makes it, too."};
            PhoneEntry made;
            made.path = folder.path + u"/" + parts[i];
            made.name = parts[i];
            made.isFolder = true;
            // The driver leaves out what follows the last dot.
            const Text asked = parts[i].find(u'.') == Text::npos ? made.path : made.path + u".";
            const Long result = phone_.driver().createFolder(modulePath(asked));
            tell(made, Operation::createFolder, result, report);
            if (result < 0) return;
            folder = made;
        }
    }

    const bool asJson_;
    const FilesOptions& wanted_;
    AttachedPhones phones_;
    PhoneFiles phone_;
    std::set<Text> removed_;
};

using Action = void (FilesCommand::*)();

// What could be done is done and written when it fails.
void run(const Context& context, const FilesOptions& wanted, Action action, Purpose purpose) {
    FilesCommand command(context, wanted, purpose);
    try {
        (command.*action)();
        if (command.isIncomplete()) throw CommandFailure{failed, {}};
    } catch (const CommandFailure& failure) {
        throw CommandFailure{failure.status, safeMessage(failure.message)};
    }
}

constexpr const char* help =
    R"(Phone paths begin with a drive or its label: E:/Images, "Memory card/Images"; / is the phone itself. In every
part of a path * stands for any characters and ? for one; quote them, so that the shell leaves them alone.)";

}  // namespace

void registerFiles(CLI::App& app, Context& context) {
    const auto options = std::make_shared<FilesOptions>();
    const auto running = [&context, options](Action action, Purpose purpose = Purpose::read) {
        return [&context, options, action, purpose] { run(context, *options, action, purpose); };
    };
    CLI::App& files = addCommand(
        app, "files", "Browse the files of a phone, copy and change them; alone it shows the drives", context,
        running(&FilesCommand::list));
    files.require_subcommand(0, 1);
    files.footer(help);
    const auto add = [&](const char* name, const char* description, Action action,
                         Purpose purpose = Purpose::read) {
        CLI::App* added = &addCommand(files, name, description, context, running(action, purpose));
        added->footer(help);
        addCommonOptions(*added, context);
        addPhoneOption(*added, context);
        return added;
    };
    const auto addPaths = [&](CLI::App* action, const char* name, const char* description, int fewest) {
        CLI::Option* paths = action->add_option(name, options->paths, description);
        paths->expected(fewest, CLI::detail::expected_max_vector_size);
        paths->type_name("");
        if (fewest > 0) paths->required();
    };
    const auto addRecursive = [&](CLI::App* action, const char* description) {
        action->add_flag("-r,--recursive", options->recursive, description);
    };
    const auto addForce = [&](CLI::App* action) {
        action->add_flag("-f,--force", options->force, "overwrite files that are there and differ");
    };

    CLI::App* list = add("ls", "List folders and files", &FilesCommand::list);
    addPaths(list, "PATH", "what to list (default: the drives)", 0);
    addRecursive(list, "with all that is in the folders");
    addPaths(add("tree", "Draw the tree of folders and files", &FilesCommand::tree), "PATH",
             "where to begin (default: the phone itself)", 0);
    CLI::App* get =
        add("get", "Copy files from the phone; what is there already is skipped", &FilesCommand::get);
    addPaths(get, "PATH",
             "what to get; the last of several is the folder here that it goes to, which is made when it is\n"
             "missing (default: the current folder)",
             1);
    addRecursive(get, "folders with all that is in them");
    addForce(get);
    CLI::App* put = add("put", "Copy files to the phone; what is there already is skipped",
                        &FilesCommand::put, Purpose::change);
    addPaths(put, "FILE", "what to put; the last is the path of the phone's folder that it goes to", 2);
    addRecursive(put, "folders with all that is in them");
    addForce(put);
    CLI::App* rename =
        add("mv", "Give a file or folder another name", &FilesCommand::rename, Purpose::change);
    rename->add_option("PATH", options->renamed, "what to rename")->type_name("")->required();
    rename->add_option("NAME", options->newName, "its new name in the same folder")
        ->type_name("")
        ->required();
    CLI::App* remove = add("rm", "Delete files", &FilesCommand::remove, Purpose::change);
    addPaths(remove, "PATH", "what to delete", 1);
    addRecursive(remove, "folders with all that is in them");
    CLI::App* makeFolder = add("mkdir", "Make folders", &FilesCommand::makeFolders, Purpose::change);
    addPaths(makeFolder, "PATH", "the new folders", 1);
    makeFolder->add_flag("-p,--parents", options->parents,
                         "make the folders above, too; a folder that is there is no failure");
    addPaths(add("rmdir", "Delete empty folders", &FilesCommand::removeFolders, Purpose::change), "PATH",
             "what to delete", 1);
}

}  // namespace ovno2::host
