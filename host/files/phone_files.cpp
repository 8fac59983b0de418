#include "host/files/phone_files.h"

#include <algorithm>

#include "host/driver/result_messages.h"
#include "host/files/phone_path.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"
#include "host/phones/attached_phones.h"
#include "host/phones/phone_choice.h"

namespace ovno2::host {

namespace {

// No phone has deeper folders, longer paths or more files and folders.
constexpr std::size_t deepestFolder = 64;
constexpr std::size_t longestPath = 1024;
constexpr std::size_t mostEntries = 300000;
// A folder that holds just what the so many above it hold is one of them: the phone goes in a circle.
constexpr std::size_t mostRepetitions = 6;

bool holdsTheSame(const std::vector<PhoneEntry>& a, const std::vector<PhoneEntry>& b) {
    return std::ranges::equal(a, b, [](const PhoneEntry& one, const PhoneEntry& other) {
        return one.name == other.name && one.isFolder == other.isFolder && one.size == other.size &&
               one.changed == other.changed;
    });
}

Text joined(TextView folder, TextView name) {
    Text path(folder);
    if (!path.empty()) path += u'/';
    return path.append(name);
}

PhoneEntry thePhone() {
    PhoneEntry phone;
    phone.isFolder = true;
    return phone;
}

}  // namespace

Text modulePath(TextView path) {
    return replaceAll(path, u"/", u"\\");
}

Text folderOf(TextView path) {
    const std::size_t end = path.rfind(u'/');
    return Text(path.substr(0, end == TextView::npos ? 0 : end));
}

PhoneFiles::PhoneFiles(PhoneDriver& driver, const std::vector<ListedPhone>& phones, const ListedPhone& phone,
                       Problem problem)
    : driver_(driver), phone_(phone), problem_(std::move(problem)) {
    // The module finds the phone by its model, and takes the first.
    const auto first = std::ranges::find_if(phones, [&](const ListedPhone& other) {
        return phone.model.empty() || equalsIgnoringCase(other.model, phone.model);
    });
    if (first == phones.end() || first->serial == phone.serial) return;
    throw CommandFailure{failed, "Files can only be reached on the first phone " +
                                     (phone.model.empty() ? "when one tells no model"
                                                          : "of the model \"" + toUtf8(phone.model) + "\"") +
                                     ". Detach the one with the serial number " + toUtf8(first->serial) +
                                     " and retry."};
}

std::string PhoneFiles::phoneTitle() const {
    return titleOf(phone_);
}

void PhoneFiles::goOnOrEnd() const {
    if (interruption_ && interruption_->signal() != 0)
        throw BrokenOff{128 + interruption_->signal(), interrupted};
}

Listing PhoneFiles::tryToList(const Text& folder) const {
    std::vector<FolderEntry> found;
    Listing listing;
    listing.isComplete =
        ask([&](PhoneDriver& driver) { return driver.listFolder(phone_, modulePath(folder), found); }) >= 0;
    listing.entries.reserve(found.size());
    for (FolderEntry& one : found) {
        Text path = joined(folder, one.name);
        listing.entries.push_back({std::move(one), std::move(path)});
    }
    return listing;
}

std::string PhoneFiles::notListed(const Text& folder, std::size_t count) const {
    if (count == 0)
        return resultMessage(folder.empty() ? Operation::openFiles : Operation::listFolder, -1, phoneTitle(),
                             toUtf8(folder));
    return phoneTitle() + " listed " + (folder.empty() ? "its drives" : toUtf8(folder)) +
           " only in part: after " + std::to_string(count) +
           " of its files and folders it gave up, and the rest is missing. Check the cable or the reception "
           "and "
           "retry.";
}

void PhoneFiles::report(const Text& folder, const std::string& message) const {
    if (listedInPart_.insert(folder).second) problem_(folder, message);
}

std::vector<PhoneEntry> PhoneFiles::list(const Text& folder) const {
    Listing listing = tryToList(folder);
    if (!listing.isComplete) throw CommandFailure{failed, notListed(folder, listing.entries.size())};
    return std::move(listing.entries);
}

std::vector<PhoneEntry> PhoneFiles::listForReading(const Text& folder) const {
    Listing listing = tryToList(folder);
    const std::size_t count = listing.entries.size();
    if (!listing.isComplete && count == 0) throw CommandFailure{failed, notListed(folder, 0)};
    if (!listing.isComplete) report(folder, notListed(folder, count));
    return std::move(listing.entries);
}

// The entries of a folder that one part of a typed path means.
std::vector<PhoneEntry> PhoneFiles::matching(const PhoneEntry& folder, const Text& part,
                                             const std::string& typed) const {
    std::vector<PhoneEntry> entries = listForReading(folder.path);
    std::vector<PhoneEntry> exact;
    std::vector<PhoneEntry> found;
    const Text unbracketed = part.size() > 2 && part.starts_with(u'[') && part.ends_with(u']')
                                 ? part.substr(1, part.size() - 2)
                                 : part;
    for (PhoneEntry& entry : entries) {
        if (equalsIgnoringCase(entry.name, part) ||
            (!entry.label.empty() && equalsIgnoringCase(entry.label, unbracketed)))
            exact.push_back(std::move(entry));
        else if (hasWildcard(part) &&
                 (matchesWildcard(part, entry.name) || matchesWildcard(part, entry.label)))
            found.push_back(std::move(entry));
    }
    if (!exact.empty()) return exact;
    if (!found.empty() || hasWildcard(part)) return found;
    if (!isKnownWhole(folder.path))
        throw CommandFailure{failed, "\"" + typed + "\": no \"" + toUtf8(part) + "\" was listed."};
    std::vector<Text> names;
    for (const PhoneEntry& entry : entries) {
        names.push_back(entry.name);
        if (!entry.label.empty()) names.push_back(entry.label);
    }
    std::string message = "\"" + typed + "\": there is no \"" + toUtf8(part) + "\" " +
                          (folder.isPhone() ? "on " + phoneTitle() : "in " + toUtf8(folder.path)) + ".";
    const std::vector<Text> near = nearestNames(part, names, 1);
    if (!near.empty()) message += " Did you mean \"" + toUtf8(near[0]) + "\"?";
    throw CommandFailure{failed, message};
}

std::vector<PhoneEntry> PhoneFiles::find(const std::string& typed) const {
    std::vector<PhoneEntry> found{thePhone()};
    const std::vector<Text> parts = partsOfPhonePath(typed);
    bool below = false;  // behind a wildcard a folder need not have the rest of the path
    for (const Text& part : parts) {
        std::vector<PhoneEntry> next;
        for (const PhoneEntry& folder : found) {
            if (!folder.isFolder) {
                if (below) continue;
                throw CommandFailure{failed, "\"" + typed + "\": " + toUtf8(folder.path) + " is a file."};
            }
            try {
                for (PhoneEntry& entry : matching(folder, part, typed))
                    next.push_back(std::move(entry));
            } catch (const CommandFailure&) {
                if (!below) throw;
            }
        }
        below = below || hasWildcard(part);
        found = std::move(next);
    }
    if (found.empty())
        throw CommandFailure{failed,
                             "\"" + typed + "\": there is nothing of that name on " + phoneTitle() + "."};
    return found;
}

PhoneEntry PhoneFiles::findOne(const std::string& typed) const {
    std::vector<PhoneEntry> found = find(typed);
    if (found.size() > 1)
        throw CommandFailure{failed, "\"" + typed + "\" means " + std::to_string(found.size()) +
                                         " entries of the phone; name one."};
    return std::move(found.front());
}

void PhoneFiles::walk(const PhoneEntry& top, const Visitor& visit) const {
    std::size_t seen = 0;
    const auto goInto = [&](const auto& self, const std::vector<PhoneEntry>& entries, std::size_t depth,
                            std::size_t repetitions) -> void {
        seen += entries.size();
        if (seen > mostEntries)
            throw CommandFailure{failed,
                                 phoneTitle() + " lists more than " + std::to_string(mostEntries) +
                                     " files and folders, more than a phone holds. Given up; name a folder "
                                     "below, or start the phone anew."};
        for (const PhoneEntry& entry : entries) {
            visit(entry, depth, &entry == &entries.back());
            if (!entry.isFolder || !canStandInAPath(entry.name)) continue;
            if (depth >= deepestFolder || entry.path.size() > longestPath || repetitions >= mostRepetitions) {
                report(entry.path, phoneTitle() + " leads in circles at " + toUtf8(entry.path) +
                                       "; what it lists there is left out.");
                continue;
            }
            goOnOrEnd();
            const Listing below = tryToList(entry.path);
            if (!below.isComplete && below.entries.empty()) {
                list({});  // throws when the phone does not answer at all
                report(entry.path,
                       phoneTitle() + " did not list " + toUtf8(entry.path) + "; what is in it is missing.");
            } else {
                if (!below.isComplete) report(entry.path, notListed(entry.path, below.entries.size()));
                self(self, below.entries, depth + 1,
                     holdsTheSame(entries, below.entries) ? repetitions + 1 : 0);
            }
        }
    };
    goInto(goInto, listForReading(top.path), 0, 0);
}

}  // namespace ovno2::host
