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
// A folder that holds just what so many of those above it hold is one of them: the phone goes in a circle.
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
    throw CommandFailure{
        failed,
        "Files can only be reached on the first phone " +
            (phone.model.empty() ? "when one tells no model" : "of the model \"" + titleOf(phone) + "\"") +
            ". Detach the one with the serial number " + toUtf8(first->serial) + " and retry."};
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

// The folders that a walk is in, from the top down.
class PhoneFiles::Walk {
  public:
    Walk(const PhoneFiles& phone, const Visitor& visit) : phone_(phone), visit_(visit) {}

    // Gives the level to go on at: the one of `entries`, or a higher one when it led back there.
    std::size_t goInto(const std::vector<PhoneEntry>& entries) {
        const std::size_t depth = levels_.size();
        seen_ += entries.size();
        if (seen_ > mostEntries) giveUp(std::to_string(mostEntries) + " files and folders");
        levels_.push_back(&entries);
        std::size_t level = depth;
        for (const PhoneEntry& entry : entries) {
            visit_(entry, depth, &entry == &entries.back());
            if (!entry.isFolder || !canStandInAPath(entry.name)) continue;
            level = goIntoFolder(entry, depth);
            if (level < depth) break;
        }
        levels_.pop_back();
        return level;
    }

  private:
    std::size_t goIntoFolder(const PhoneEntry& folder, std::size_t depth) {
        phone_.goOnOrEnd();
        if (depth >= deepestFolder || folder.path.size() > longestPath)
            giveUp(std::to_string(deepestFolder) + " folders in each other");
        const Listing below = phone_.tryToList(folder.path);
        if (!below.isComplete && below.entries.empty()) {
            phone_.list({});  // throws when the phone does not answer at all
            phone_.report(folder.path, phone_.phoneTitle() + " did not list " + toUtf8(folder.path) +
                                           "; what is in it is missing.");
            return depth;
        }
        if (!below.isComplete)
            phone_.report(folder.path, phone_.notListed(folder.path, below.entries.size()));
        if (const std::size_t first = firstRepeated(below.entries); first <= depth) {
            phone_.report(folder.path, phone_.phoneTitle() + " leads in circles at " + toUtf8(folder.path) +
                                           "; what it lists there is left out.");
            return first;
        }
        return goInto(below.entries);
    }

    // The first level that holds just this, when too many do.
    std::size_t firstRepeated(const std::vector<PhoneEntry>& entries) const {
        const std::size_t none = levels_.size();
        if (std::ranges::none_of(entries, &PhoneEntry::isFolder)) return none;
        std::size_t first = none, count = 0;
        for (std::size_t level = 0; level < levels_.size(); ++level)
            if (holdsTheSame(*levels_[level], entries) && count++ == 0) first = level;
        return count >= mostRepetitions ? first : none;
    }

    [[noreturn]] void giveUp(const std::string& much) const {
        throw CommandFailure{failed,
                             phone_.phoneTitle() + " lists more than " + much +
                                 ", more than a phone holds. Given up; start the phone anew, or name a "
                                 "folder below."};
    }

    const PhoneFiles& phone_;
    const Visitor& visit_;
    std::size_t seen_ = 0;
    std::vector<const std::vector<PhoneEntry>*> levels_;
};

void PhoneFiles::walk(const PhoneEntry& top, const Visitor& visit) const {
    Walk(*this, visit).goInto(listForReading(top.path));
}

}  // namespace ovno2::host
