#include "host/files/phone_files.h"

#include <algorithm>

#include "host/driver/result_messages.h"
#include "host/files/phone_path.h"
#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"
#include "host/phones/attached_phones.h"
#include "host/phones/phone_choice.h"

namespace ovno2::host {

namespace {

// Deeper folders than any phone has; a phone that reports a folder inside itself ends here.
constexpr std::size_t deepestFolder = 64;

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

PhoneFiles::PhoneFiles(PhoneDriver& driver, const std::vector<ListedPhone>& phones, const ListedPhone& phone)
    : driver_(driver), phone_(phone) {
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

std::optional<std::vector<PhoneEntry>> PhoneFiles::tryToList(const Text& folder) const {
    std::vector<FolderEntry> found;
    if (driver_.listFolder(phone_, modulePath(folder), found) < 0) return std::nullopt;
    std::vector<PhoneEntry> entries;
    entries.reserve(found.size());
    for (FolderEntry& one : found) {
        Text path = joined(folder, one.name);
        entries.push_back({std::move(one), std::move(path)});
    }
    return entries;
}

std::vector<PhoneEntry> PhoneFiles::list(const Text& folder) const {
    if (auto entries = tryToList(folder)) return *std::move(entries);
    throw CommandFailure{failed, resultMessage(folder.empty() ? Operation::openFiles : Operation::listFolder,
                                               -1, phoneTitle(), toUtf8(folder))};
}

// The entries of a folder that one part of a typed path means.
std::vector<PhoneEntry> PhoneFiles::matching(const PhoneEntry& folder, const Text& part,
                                             const std::string& typed) const {
    std::vector<PhoneEntry> entries = list(folder.path);
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
    const auto goInto = [&](const auto& self, const std::vector<PhoneEntry>& entries,
                            std::size_t depth) -> void {
        for (const PhoneEntry& entry : entries) {
            visit(entry, depth, &entry == &entries.back());
            if (!entry.isFolder || !canStandInAPath(entry.name)) continue;
            const auto below = depth < deepestFolder ? tryToList(entry.path) : std::nullopt;
            if (below) {
                self(self, *below, depth + 1);
                continue;
            }
            list({});  // throws when the phone does not answer at all
            incomplete_ = true;
            note("ovphone: " + phoneTitle() + " did not list " + toUtf8(singleLine(entry.path)) +
                 "; it is left out.");
        }
    };
    goInto(goInto, list(top.path), 0);
}

}  // namespace ovno2::host
