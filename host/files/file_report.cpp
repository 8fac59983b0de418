#include "host/files/file_report.h"

#include <algorithm>

#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/json.h"
#include "host/output/text.h"

namespace ovno2::host {

void FileReport::add(FileResult result) {
    if (result.outcome == FileOutcome::failure) say(result.message);
    results_.push_back(std::move(result));
}

void FileReport::say(const std::string& message) {
    if (progress_) progress_->hide();
    note("ovphone: " + safeMessage(message));
}

std::size_t FileReport::count(FileOutcome outcome) const {
    return static_cast<std::size_t>(std::ranges::count(results_, outcome, &FileResult::outcome));
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

std::string safeMessage(const std::string& message) {
    return toUtf8(singleLine(fromUtf8(message)));
}

void requireConnection(const PhoneFiles& phone) {
    if (phone.tryToList({})) return;
    throw ConnectionLost{"The connection to " + phone.phoneTitle() +
                         " was lost. Attach it again and repeat the command."};
}

}  // namespace ovno2::host
