// What became of every file that a command worked on. Failures are told at once; the command goes on.
#pragma once

#include <array>
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
    bool differs = false;  // the phone has another file there
};

class FileReport {
  public:
    // Messages go to the user in between the drawings of `progress`, which may be null.
    void setProgress(TransferProgress* progress) { progress_ = progress; }
    // Tells of every file, not of failures only; `verb` says what was done to it.
    void tellAll(const char* verb) { verb_ = verb; }

    // Tells nothing at all.
    void keepToItself() { tells_ = false; }

    // A file whose result will be added, known by what this computer calls it.
    void expect(FileResult planned) { expected_.push_back(std::move(planned)); }
    std::size_t expectedCount() const { return expected_.size(); }
    void add(FileResult result);
    void fail(std::string path, std::string message);
    void say(const std::string& message);  // no failure, yet worth knowing
    // Makes failures of what is expected still, without a message for each.
    void giveUpTheRest(const std::string& message);

    const std::vector<FileResult>& results() const { return results_; }
    std::size_t count(FileOutcome outcome) const { return counts_[static_cast<std::size_t>(outcome)]; }

    // An array with one object a file.
    std::string asJson(const char* verb) const;

  private:
    void tell(const FileResult& result);
    void store(FileResult result);

    TransferProgress* progress_ = nullptr;
    const char* verb_ = nullptr;
    bool tells_ = true;
    std::vector<FileResult> expected_;
    std::vector<FileResult> results_;
    std::array<std::size_t, 3> counts_{};  // by outcome
};

// After a failure: throws BrokenOff when the phone does not even list its drives any more.
void requireConnection(const PhoneFiles& phone);

}  // namespace ovno2::host
