#include "host/output/change_report.h"

#include <map>

#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/json.h"

namespace ovno2::host {

namespace {

using Result = ReportedItem::Result;

std::string resultOf(const ReportedItem& item, bool dryRun) {
    constexpr const char* names[] = {"unchanged", "added", "changed", "removed", "failed"};
    const bool isTrial = dryRun && item.result != Result::unchanged && item.result != Result::failed;
    return std::string(isTrial ? "would be " : "") + names[static_cast<std::size_t>(item.result)];
}

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : "; ") + part;
    return text;
}

}  // namespace

void writeChangesAsJson(std::span<const ReportedItem> items, bool dryRun) {
    JsonLines lines([](std::string_view piece) { writeData(piece); });
    for (const ReportedItem& item : items) {
        JsonLine& line = lines.next();
        line.StartObject();
        line.member("name", std::string_view(item.title));
        if (!item.uid.empty()) line.member("uid", TextView(item.uid));
        line.member("result", std::string_view(resultOf(item, dryRun)));
        if (!item.fields.empty()) line.member("fields", std::string_view(item.fields));
        if (!item.message.empty()) line.member("message", std::string_view(item.message));
        if (!item.unplaced.empty()) {
            line.key("unplaced");
            line.StartArray();
            for (const std::string& property : item.unplaced)
                line.text(fromUtf8(property));
            line.EndArray();
        }
        line.EndObject();
    }
    lines.end();
}

void reportChanges(std::span<const ReportedItem> items, const ReportOptions& wanted) {
    if (wanted.asJson) return writeChangesAsJson(items, wanted.dryRun);
    std::map<std::string, std::size_t> counts;
    for (const ReportedItem& item : items) {
        const std::string result = resultOf(item, wanted.dryRun), title = forPerson(item.title);
        ++counts[result];
        if (item.result == Result::failed) {
            note("ovphone: " + title + ": " + forPerson(item.message));
        } else if ((wanted.verbose || wanted.dryRun) && !isQuiet()) {
            std::string line = result;
            line.append(": ").append(title);
            if (!item.fields.empty()) line.append(" (").append(item.fields).append(")");
            if (item.result != Result::unchanged || wanted.verbose) write(line + "\n");
        }
        if (!item.unplaced.empty())
            note("ovphone: " + title + ": the phone has no place for " + forPerson(joined(item.unplaced)));
    }
    if (isQuiet()) return;
    std::string line;
    for (const char* const result : {"added", "changed", "removed", "would be added", "would be changed",
                                     "would be removed", "unchanged", "failed"})
        if (counts[result] != 0)
            line += (line.empty() ? "" : ", ") + std::to_string(counts[result]) + " " + result;
    write((line.empty() ? "nothing to do" : line) + "\n");
}

void failAll(std::span<ReportedItem> items, const std::string& message) {
    for (ReportedItem& item : items)
        if (item.result != Result::unchanged && item.result != Result::failed) {
            item.result = Result::failed;
            item.message = message;
        }
}

}  // namespace ovno2::host
