#include "host/restore/restoration.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/phones/arrival.h"
#include "host/restore/restore_report.h"

namespace ovno2::host {

namespace {

constexpr const char* kinds[] = {"contacts", "calendar", "notes", "messages", "files"};

class Restoration {
  public:
    Restoration(const Context& context, const std::string& source, const std::string& called,
                const RestoreCommandOptions& wanted)
        : wanted_(wanted),
          source_(readSource(source, {.withGone = wanted.withGone})),
          phones_(context),
          phone_(phones_.chosen(Purpose::change)),
          options_{.overwrites = wanted.force, .acceptsLosses = wanted.acceptsLosses},
          target_{phones_, phone_, source_, options_},
          asJson_(context.asJson()),
          called_(called) {}

    void run() {
        makeParts();
        ReportedRestore report{.source = called_,
                               .phone = phone_,
                               .parts = parts_,
                               .problems = source_.problems,
                               .goneLeftOut = source_.goneLeftOut,
                               .messagesLeft = wanted_.messages ? 0 : messages_,
                               .isTrial = wanted_.dryRun,
                               .verbose = wanted_.verbose};
        plan();
        if (!asJson_) tellPlan(report);
        int status = failed;
        if (!wanted_.dryRun) status = carryOut(report.interruption);
        if (asJson_)
            writeData(asJson(report));
        else
            tellResult(report);
        if (!report.interruption.empty()) throw CommandFailure{status, report.interruption};
        if (!report.isComplete()) throw CommandFailure{failed, {}};
    }

  private:
    bool isWanted(const char* kind) const {
        return wanted_.only.empty() || std::ranges::count(wanted_.only, kind) != 0;
    }

    void makeParts() {
        if (!source_.contacts.empty() && isWanted("contacts")) parts_.push_back(contactsPart(target_));
        if (!source_.entries.empty() && isWanted("calendar")) parts_.push_back(calendarPart(target_));
        if (!source_.notes.empty() && isWanted("notes")) parts_.push_back(notesPart(target_));
        messages_ = isWanted("messages") ? source_.messages.size() : 0;
        if (messages_ != 0 && wanted_.messages) parts_.push_back(messagesPart(target_));
        if (!source_.drives.empty() && isWanted("files")) parts_.push_back(filesPart(target_));
        if (!parts_.empty() || messages_ != 0) return;
        for (const std::string& problem : source_.problems)
            note("ovphone: " + problem);
        throw CommandFailure{failed, "\"" + called_ + "\" holds nothing that could go to a phone" +
                                         (wanted_.only.empty() ? "." : " of these kinds.")};
    }

    void plan() {
        for (const auto& part : parts_) {
            try {
                part->plan();
            } catch (const CommandFailure& failure) {
                part->planFailure = failure.message;
            }
        }
    }

    // Gives the exit status of an interruption.
    int carryOut(std::string& interruption) {
        for (const auto& part : parts_) {
            if (!part->planFailure.empty()) continue;
            if (!interruption.empty()) {
                part->giveUp(interruption);
                continue;
            }
            try {
                part->carryOut();
                part->giveUp("The phone refused others before it and was not asked any more.");
            } catch (const CommandFailure& failure) {
                part->giveUp(failure.message);
                if (failure.status == failed && isAttached(phones_.driver(), phone_)) continue;
                interruption = failure.message;
                status_ = failure.status;
            }
        }
        return status_;
    }

    const RestoreCommandOptions& wanted_;
    RestoreSource source_;
    AttachedPhones phones_;
    const ListedPhone& phone_;
    RestoreOptions options_;
    RestoreTarget target_;
    bool asJson_;
    std::string called_;
    std::size_t messages_ = 0;
    std::vector<std::unique_ptr<RestorePart>> parts_;
    int status_ = failed;
};

}  // namespace

void addRestoreOptions(CLI::App& command, Context& context, RestoreCommandOptions& options) {
    addCommonOptions(command, context);
    addQuietOption(command);
    command
        .add_option("--only", options.only,
                    "of these kinds alone: contacts, calendar, notes, messages, files")
        ->type_name("KIND,...")
        ->delimiter(',')
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(kinds), std::end(kinds))).description(""));
    command.add_flag("-n,--dry-run", options.dryRun, "only say what would be done");
    command.add_flag("-f,--force", options.force,
                     "change what the phone has in another form: contacts, entries and files");
    command.add_flag(
        "--messages", options.messages,
        "put messages that were written on the phone into the outbox, from where it may send them");
    command.add_flag("--all", options.withGone, "also what an archive's phone no longer had");
    command.add_flag("-v,--verbose", options.verbose, "name everything");
    command.add_flag("--accept-losses", options.acceptsLosses,
                     "change a contact although the phone's old software drops its notes and categories");
}

void restore(const Context& context, const std::string& source, const std::string& called,
             const RestoreCommandOptions& wanted) {
    Restoration(context, source, called, wanted).run();
}

}  // namespace ovno2::host
