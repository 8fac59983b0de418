#include "host/files/files_session.h"

#include <algorithm>
#include <utility>

#include "host/files/phone_path.h"
#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

FilesSession::FilesSession(const Context& context, const FilesOptions& wanted, Purpose purpose)
    : asJson_(context.asJson()),
      wanted_(wanted),
      phones_(context),
      phone_(phones_.driver(), phones_.all(), phones_.chosen(purpose),
             [this](const Text& path, const std::string& message) { report_.fail(toUtf8(path), message); }),
      interruption_({.tick =
                         [this] {
                             if (progress_) progress_->tick();
                         },
                     .end =
                         [this] {
                             end(interrupted);
                             note(std::string("ovphone: ") + interrupted);
                             drop_();
                         }}) {
    phone_.lookOn(&interruption_);
}

void FilesSession::carryOut(void (*command)(FilesSession&)) {
    try {
        finish([&] { command(*this); });
    } catch (const BrokenOff& reason) {
        throw CommandFailure{reason.status, forPerson(reason.message)};
    } catch (const CommandFailure& failure) {
        throw CommandFailure{failure.status, forPerson(failure.message)};
    }
    if (report_.count(FileOutcome::failure) != 0) throw CommandFailure{failed, {}};
}

void FilesSession::begin(const char* made, const char* planned) {
    verb_ = wanted_.dryRun ? planned : made;
    if (!asJson_ && (wanted_.verbose || wanted_.dryRun)) report_.tellAll(verb_);
    atEnd([this] {
        if (asJson_) write(report_.asJson(verb_));
    });
}

void FilesSession::atEnd(std::function<void()> writeResults, std::function<void()> drop) {
    writeResults_ = std::move(writeResults);
    drop_ = std::move(drop);
}

void FilesSession::show(TransferProgress* progress) {
    progress_ = progress;
    report_.setProgress(progress);
}

void FilesSession::end(const std::string& why) {
    if (std::exchange(ended_, true)) return;
    if (progress_) progress_->hide();
    if (!why.empty()) report_.giveUpTheRest(why);
    writeResults_();
    writeResults_ = drop_ = [] {};
}

std::vector<PhoneEntry> FilesSession::meant(const std::vector<std::string>& typed) {
    for (const std::string& path : typed)
        partsOfPhonePath(path);  // a line that is wrong anywhere does nothing at all
    std::vector<PhoneEntry> entries;
    for (const std::string& path : typed)
        each(path, [&] { std::ranges::move(phone_.find(path), std::back_inserter(entries)); });
    return entries;
}

std::string FilesSession::titleOf(const PhoneEntry& entry) const {
    return entry.isPhone() ? phone_.phoneTitle() : toUtf8(entry.path);
}

void FilesSession::requireRecursive(const PhoneEntry& entry, const char* does) const {
    if (entry.isFolder && !wanted_.recursive)
        throw CommandFailure{failed,
                             titleOf(entry) + " is a folder; -r " + does + " it with all that is in it."};
}

}  // namespace ovno2::host
