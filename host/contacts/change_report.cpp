#include "host/contacts/change_report.h"

#include <algorithm>
#include <map>

#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/json.h"

namespace ovno2::host {

namespace {

const char* verbOf(ContactChange::Kind kind) {
    switch (kind) {
        case ContactChange::Kind::add:
            return "added";
        case ContactChange::Kind::change:
            return "changed";
        default:
            return "removed";
    }
}

std::string resultOf(const ContactChange* change, bool dryRun) {
    if (!change) return "unchanged";
    if (!change->isDone()) return "failed";
    return std::string(dryRun ? "would be " : "") + verbOf(change->kind);
}

// The labels of what differs.
std::string fieldsOf(const ContactChange& change) {
    const ContactContent before = contentOf(change.before), after = contentOf(change.after);
    ContactContent differs = lacking(after, before);
    std::ranges::move(lacking(before, after), std::back_inserter(differs));
    std::ranges::sort(differs);
    return labelsOf(differs);
}

void writeJson(std::span<const ReportedContact> contacts, std::span<const ContactChange> changes,
               bool dryRun) {
    JsonLines lines([](std::string_view piece) { writeData(piece); });
    for (const ReportedContact& contact : contacts) {
        const ContactChange* const change =
            contact.change == ReportedContact::none ? nullptr : &changes[contact.change];
        JsonLine& line = lines.next();
        line.StartObject();
        line.member("name", contact.title);
        line.member("result", std::string_view(resultOf(change, dryRun)));
        if (change && change->kind == ContactChange::Kind::change)
            line.member("fields", std::string_view(fieldsOf(*change)));
        if (change && !change->isDone()) line.member("message", std::string_view(change->failure));
        if (!contact.unplaced.empty()) {
            line.key("unplaced");
            line.StartArray();
            for (const std::string& property : contact.unplaced)
                line.text(fromUtf8(property));
            line.EndArray();
        }
        line.EndObject();
    }
    lines.end();
}

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : "; ") + part;
    return text;
}

}  // namespace

void reportChanges(std::span<const ReportedContact> contacts, std::span<const ContactChange> changes,
                   const ReportOptions& wanted) {
    if (wanted.asJson) return writeJson(contacts, changes, wanted.dryRun);
    std::map<std::string, std::size_t> counts;
    for (const ReportedContact& contact : contacts) {
        const ContactChange* const change =
            contact.change == ReportedContact::none ? nullptr : &changes[contact.change];
        const std::string result = resultOf(change, wanted.dryRun), title = forPerson(contact.title);
        ++counts[result];
        if (change && !change->isDone()) {
            note("ovphone: " + title + ": " + forPerson(change->failure));
        } else if ((wanted.verbose || wanted.dryRun) && !isQuiet()) {
            std::string line = result;
            line.append(": ").append(title);
            if (change && change->kind == ContactChange::Kind::change)
                line.append(" (").append(fieldsOf(*change)).append(")");
            if (change || wanted.verbose) write(line + "\n");
        }
        if (!contact.unplaced.empty())
            note("ovphone: " + title + ": the phone has no place for " + forPerson(joined(contact.unplaced)));
    }
    if (isQuiet()) return;
    std::string line;
    for (const char* const result : {"added", "changed", "removed", "would be added", "would be changed",
                                     "would be removed", "unchanged", "failed"})
        if (counts[result] != 0)
            line += (line.empty() ? "" : ", ") + std::to_string(counts[result]) + " " + result;
    write((line.empty() ? "nothing to do" : line) + "\n");
}

}  // namespace ovno2::host
