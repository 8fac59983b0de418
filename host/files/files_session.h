// What the commands of `ovphone files` share: the phone, what the line says, the report, and how a command
// ends.
//
// Whatever ends a command, its results are written once: what was done, and, where it was known beforehand,
// what was not. A failure is told at once and the rest goes on.
#pragma once

#include <functional>
#include <optional>

#include "host/files/file_report.h"
#include "host/output/command_output.h"
#include "host/output/interruption.h"
#include "host/phones/attached_phones.h"

namespace ovno2::host {

struct FilesOptions {
    std::vector<std::string> paths;  // in the order of the line
    std::string renamed;             // a path, and what it is called from now on
    std::string newName;
    bool recursive = false;
    bool force = false;
    bool parents = false;  // a new folder's missing folders are made, too
    bool dryRun = false;   // nothing is changed, here or on the phone
    bool quiet = false;
    bool verbose = false;
};

class FilesSession {
  public:
    // Throws CommandFailure without a phone.
    FilesSession(const Context& context, const FilesOptions& wanted, Purpose purpose);

    const FilesOptions& wanted() const { return wanted_; }
    bool asJson() const { return asJson_; }
    const PhoneFiles& phone() const { return phone_; }
    FileReport& report() { return report_; }

    // Does the whole command. Throws CommandFailure when any of it failed.
    void carryOut(void (*command)(FilesSession&));

    // For commands that change something: `made` and `planned` say what, in the past tense and for a dry run.
    void begin(const char* made, const char* planned);
    const char* verb() const { return verb_; }
    // `writeResults` is called once at the end, `drop` when the program ends in the middle of a call.
    void atEnd(
        std::function<void()> writeResults, std::function<void()> drop = [] {});
    void show(TransferProgress* progress);  // null = none any more
    // Does the last of a command's work and ends it.
    template <class Work>
    void finish(Work&& work) {
        try {
            work();
        } catch (const BrokenOff& reason) {
            end(reason.message);
            throw;
        } catch (...) {
            end("The command failed.");
            throw;
        }
        end({});
    }

    // What typed phone paths mean; one that means nothing is a failure.
    std::vector<PhoneEntry> meant(const std::vector<std::string>& typed);
    // Calls `work` and makes a failure of `typed` of a CommandFailure.
    template <class Work>
    void each(const std::string& typed, Work&& work) {
        phone_.goOnOrEnd();
        try {
            work();
        } catch (const CommandFailure& failure) {
            report_.fail(typed, failure.message);
        }
    }

    std::string titleOf(const PhoneEntry& entry) const;
    // Throws CommandFailure for a folder when the line does not ask for folders; `does` says what -r would
    // do.
    void requireRecursive(const PhoneEntry& entry, const char* does) const;

  private:
    void end(const std::string& why);

    const bool asJson_;
    const FilesOptions& wanted_;
    AttachedPhones phones_;
    FileReport report_;
    PhoneFiles phone_;
    TransferProgress* progress_ = nullptr;
    const char* verb_ = "done";
    bool ended_ = false;
    std::function<void()> writeResults_ = [] {};
    std::function<void()> drop_ = [] {};
    Interruption interruption_;
};

// The commands, in three sources: listing_commands.cpp, copy_commands.cpp, change_commands.cpp.
void listFiles(FilesSession& session);
void drawTree(FilesSession& session);
void getFiles(FilesSession& session);
void catFiles(FilesSession& session);
void putFiles(FilesSession& session);
void renameFile(FilesSession& session);
void removeFiles(FilesSession& session);
void makeFolders(FilesSession& session);
void removeFolders(FilesSession& session);

}  // namespace ovno2::host
