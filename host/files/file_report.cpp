#include "host/files/file_report.h"

#include <set>

#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/json.h"
#include "host/output/text.h"

namespace ovno2::host {

void FileReport::add(FileResult result) {
    if (result.outcome == FileOutcome::failure)
        say(result.message);
    else if (verb_)
        tell(result);
    store(std::move(result));
}

void FileReport::tell(const FileResult& result) {
    if (progress_) progress_->hide();
    std::string line = result.outcome == FileOutcome::equal ? "already there: " : std::string(verb_) + ": ";
    line += forPerson(result.path);
    if (!result.local.empty()) line += ", here " + forPerson(result.local);
    write(line + "\n");
}

void FileReport::fail(std::string path, std::string message) {
    add({std::move(path), {}, FileOutcome::failure, 0, std::move(message)});
}

void FileReport::say(const std::string& message) {
    if (!tells_) return;
    if (progress_) progress_->hide();
    note("ovphone: " + forPerson(message));
}

void FileReport::giveUpTheRest(const std::string& message) {
    std::set<std::string> known;
    for (const FileResult& result : results_)
        known.insert(result.local);
    for (FileResult& planned : expected_) {
        if (known.contains(planned.local)) continue;
        planned.outcome = FileOutcome::failure;
        planned.message = message;
        store(std::move(planned));
    }
    expected_.clear();
}

void FileReport::store(FileResult result) {
    ++counts_[static_cast<std::size_t>(result.outcome)];
    results_.push_back(std::move(result));
}

std::string FileReport::asJson(const char* verb) const {
    std::string text;
    JsonLines lines([&](std::string_view piece) { text += piece; });
    for (const FileResult& result : results_) {
        JsonLine& line = lines.next();
        line.StartObject();
        line.member("path", result.path);
        if (!result.local.empty()) line.member("local", result.local);
        line.member("result", result.outcome == FileOutcome::success ? verb
                              : result.outcome == FileOutcome::equal ? "equal"
                                                                     : "failed");
        if (result.outcome == FileOutcome::success && result.bytes != 0) line.member("bytes", result.bytes);
        if (!result.message.empty()) line.member("message", result.message);
        line.EndObject();
    }
    lines.end();
    return text;
}

void requireConnection(const PhoneFiles& phone) {
    const Listing drives = phone.tryToList({});
    if (drives.isComplete || !drives.entries.empty()) return;
    throw BrokenOff{failed, "The connection to " + phone.phoneTitle() +
                                " was lost. Attach it again and repeat the command."};
}

}  // namespace ovno2::host
