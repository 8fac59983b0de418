// `ovphone files mv`, `rm`, `mkdir` and `rmdir`
#include <algorithm>
#include <set>

#include "host/driver/result_messages.h"
#include "host/files/files_session.h"
#include "host/files/phone_path.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

// Asks the phone for a change of an entry, unless it is a trial, and reports what became of it. False = it
// failed.
template <class Change>
bool change(FilesSession& session, const PhoneEntry& entry, Operation operation, Change&& ask) {
    const std::string path = toUtf8(entry.path);
    session.phone().goOnOrEnd();
    const Long result = session.wanted().dryRun ? 0 : session.phone().ask(ask);
    if (result < 0) {
        requireConnection(session.phone());
        session.report().fail(path, resultMessage(operation, result, session.phone().phoneTitle(), path));
        return false;
    }
    session.report().add({path, {}, FileOutcome::success, 0, {}});
    return true;
}

void requireNoDrive(const FilesSession& session, const PhoneEntry& entry) {
    if (entry.isPhone() || entry.isDrive())
        throw CommandFailure{failed, session.titleOf(entry) + " is a drive and stays as it is."};
}

// Throws CommandFailure for one that cannot be deleted.
void removeEntry(FilesSession& session, const PhoneEntry& entry) {
    const std::string path = toUtf8(entry.path);
    if (!canStandInAPath(entry.name)) throw CommandFailure{failed, path + ": no path can name it."};
    if (entry.isReadOnly) throw CommandFailure{failed, path + " is read-only on the phone and stays."};
    const Text target = modulePath(entry.path);
    if (entry.isFolder)
        change(session, entry, Operation::deleteFolder,
               [&](PhoneDriver& driver) { return driver.deleteFolder(target); });
    else
        change(session, entry, Operation::deleteFile,
               [&](PhoneDriver& driver) { return driver.deleteFile(target); });
}

// What is in a folder goes before it; a folder in which something stays does, too.
void removeWithAllInIt(FilesSession& session, const PhoneEntry& top) {
    const PhoneFiles& phone = session.phone();
    std::vector<PhoneEntry> all{top};
    if (top.isFolder)
        phone.walk(top, [&](const PhoneEntry& below, std::size_t, bool) { all.push_back(below); });
    std::set<Text> staying;
    for (auto one = all.rbegin(); one != all.rend(); ++one) {
        const std::size_t before = session.report().count(FileOutcome::failure);
        session.each(toUtf8(one->path), [&] {
            if (one->isFolder && !phone.isKnownWhole(one->path))
                throw CommandFailure{failed, toUtf8(one->path) + " stays: what is in it is not known."};
            if (staying.contains(one->path))
                throw CommandFailure{failed, toUtf8(one->path) + " is not empty and stays."};
            removeEntry(session, *one);
        });
        if (session.report().count(FileOutcome::failure) != before) staying.insert(folderOf(one->path));
    }
}

void makeOneFolder(FilesSession& session, const std::string& typed) {
    const PhoneFiles& phone = session.phone();
    const bool parents = session.wanted().parents;
    const std::vector<Text> parts = partsOfPhonePath(typed);
    if (parts.size() < 2)
        throw CommandFailure{
            failed, "\"" + typed + "\": new folders are made on a drive, as in \"E:/" + typed + "\"."};
    PhoneEntry folder = phone.findOne(toUtf8(parts.front()));
    bool isNew = false;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const std::vector<PhoneEntry> entries = isNew ? std::vector<PhoneEntry>() : phone.list(folder.path);
        const auto there = std::ranges::find_if(
            entries, [&](const PhoneEntry& entry) { return equalsIgnoringCase(entry.name, parts[i]); });
        const bool isLast = i + 1 == parts.size();
        if (there != entries.end()) {
            if (!there->isFolder || (isLast && !parents))
                throw CommandFailure{failed, toUtf8(there->path) + " is there already" +
                                                 (there->isFolder ? "." : ", as a file.")};
            folder = *there;
            continue;
        }
        if (!isLast && !parents)
            throw CommandFailure{failed, "There is no folder " + toUtf8(folder.path + u"/" + parts[i]) +
                                             "; -p makes it, too."};
        PhoneEntry made;
        made.path = folder.path + u"/" + parts[i];
        made.name = parts[i];
        made.isFolder = isNew = true;
        // The driver leaves out what follows the last dot.
        const Text asked = parts[i].find(u'.') == Text::npos ? made.path : made.path + u".";
        if (!change(session, made, Operation::createFolder,
                    [&](PhoneDriver& driver) { return driver.createFolder(modulePath(asked)); }))
            return;
        folder = made;
    }
}

}  // namespace

void renameFile(FilesSession& session) {
    const PhoneFiles& phone = session.phone();
    session.begin("renamed", "would be renamed");
    const std::string& typed = session.wanted().newName;
    const std::vector<Text> parts = partsOfPhonePath(typed);
    if (parts.empty()) throw CommandFailure{wrongUsage, "The new name is empty."};
    const Text& name = parts.back();
    const PhoneEntry entry = phone.findOne(session.wanted().renamed);
    requireNoDrive(session, entry);
    // A whole path may stand for the name as long as it stays in the folder.
    if (parts.size() > 1) {
        const PhoneEntry folder = phone.findOne(typed.substr(0, typed.find_last_of("/\\")));
        if (folder.path != folderOf(entry.path))
            throw CommandFailure{failed,
                                 "A phone renames within a folder only. Use get, put and rm to move " +
                                     toUtf8(entry.path) + "."};
    }
    for (const PhoneEntry& other : phone.list(folderOf(entry.path)))
        if (equalsIgnoringCase(other.name, name) && other.path != entry.path)
            throw CommandFailure{failed,
                                 toUtf8(other.path) + " is there already. Delete it or choose another name."};
    const Text path = modulePath(entry.path);
    change(session, entry, Operation::renameEntry, [&](PhoneDriver& driver) {
        const Long result = entry.isFolder ? driver.renameFolder(path, name) : driver.renameFile(path, name);
        // For a folder the driver passes on the library's own status, which says nothing that a person knows.
        return result == 0 || result == -1 ? result : -2;
    });
}

void removeFiles(FilesSession& session) {
    session.begin("deleted", "would be deleted");
    std::set<Text> removed;
    for (const PhoneEntry& entry : session.meant(session.wanted().paths))
        session.each(toUtf8(entry.path), [&] {
            session.requireRecursive(entry, "deletes");
            requireNoDrive(session, entry);
            if (removed.insert(entry.path).second) removeWithAllInIt(session, entry);
        });
}

void makeFolders(FilesSession& session) {
    session.begin("made", "would be made");
    for (const std::string& typed : session.wanted().paths)
        partsOfPhonePath(typed);
    for (const std::string& typed : session.wanted().paths)
        session.each(typed, [&] { makeOneFolder(session, typed); });
}

void removeFolders(FilesSession& session) {
    session.begin("deleted", "would be deleted");
    for (const PhoneEntry& entry : session.meant(session.wanted().paths))
        session.each(toUtf8(entry.path), [&] {
            requireNoDrive(session, entry);
            const std::string path = toUtf8(entry.path);
            if (!entry.isFolder) throw CommandFailure{failed, path + " is a file; rm deletes it."};
            if (!session.phone().list(entry.path).empty())
                throw CommandFailure{failed,
                                     path + " is not empty; rm -r deletes it with all that is in it."};
            removeEntry(session, entry);
        });
}

}  // namespace ovno2::host
