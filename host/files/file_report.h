// What became of every file that a command worked on. Failures are told at once; the command goes on.
#pragma once

#include <string>
#include <vector>

#include "host/files/phone_files.h"
#include "host/files/transfer_progress.h"

namespace ovno2::host {

enum class FileOutcome { success, equal, failure };

struct FileResult {
    std::string path;   // on the phone; UTF-8
    std::string local;  // on this computer; empty when that plays no part
    FileOutcome outcome = FileOutcome::success;
    std::uint64_t bytes = 0;
    std::string message;
};

class FileReport {
  public:
    // Messages go to the user in between the drawings of `progress`, which may be null.
    explicit FileReport(TransferProgress* progress = nullptr) : progress_(progress) {}

    void add(FileResult result);
    void say(const std::string& message);  // no failure, yet worth knowing

    const std::vector<FileResult>& results() const { return results_; }
    std::size_t count(FileOutcome outcome) const;

    // An array with one object a file.
    std::string asJson(const char* verb) const;

  private:
    TransferProgress* progress_;
    std::vector<FileResult> results_;
};

// A message about entries whose names the phone has made up: safe to show in a terminal.
std::string safeMessage(const std::string& message);

// Ends a command: the phone does not answer any more.
struct ConnectionLost {
    std::string message;
};

// After a failure: throws ConnectionLost when the phone does not even list its drives any more.
void requireConnection(const PhoneFiles& phone);

}  // namespace ovno2::host
