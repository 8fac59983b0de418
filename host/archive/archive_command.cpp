// `ovphone archive`: everything off a phone, into a folder of open formats.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "host/archive/archive_names.h"
#include "host/archive/archive_run.h"
#include "host/archive/archive_times.h"
#include "host/archive/archiving.h"
#include "host/archive/commands.h"
#include "host/output/console.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/json.h"
#include "host/output/progress.h"
#include "host/page/page.h"
#include "host/phones/arrival.h"
#include "host/phones/phone_output.h"

namespace ovno2::host {

namespace {

using namespace std::chrono;
using State = SectionReport::State;

struct Part {
    const char* name;
    void (*archive)(ArchiveRun& run, SectionReport& report);
};
constexpr Part parts[] = {{"contacts", archiveContacts},
                          {"calendar", archiveCalendar},
                          {"messages", archiveMessages},
                          {"notes", archiveNotes},
                          {"files", archiveFiles}};

sys_seconds rightNow() {
    return floor<seconds>(system_clock::now());
}

// What a whole run brought about.
struct Outcome {
    Sections sections;
    std::vector<ArchiveLoss> losses;
    std::vector<std::string> goneFiles;  // that an earlier run wrote and somebody took away
    std::string interruption;            // why the run ended before its end; empty = it did not
    int status = done;
    std::size_t filesWritten = 0, filesInAll = 0;

    bool isWhole() const {
        return interruption.empty() && goneFiles.empty() &&
               std::ranges::all_of(sections, [](const auto& one) { return one.second.isWhole(); });
    }
};

class Archiver {
  public:
    Archiver(const Context& context, const ArchiveOptions& wanted)
        : wanted_(wanted),
          phones_(context),
          phone_(phones_.chosen()),
          started_(rightNow()),
          folder_(wanted.folder, phone_, started_, wanted.dryRun),
          earlierLosses_(folder_.read(archive::losses).value_or("")),
          record_(folder_.read(archive::phone).value_or(""), folder_.interruptedRun()),
          interruption_({.tick =
                             [this] {
                                 if (run_.progress) run_.progress->tick();
                             },
                         .end = [] { note(std::string("ovphone: ") + interrupted); }}),
          run_{phones_, phone_, folder_, record_, interruption_, started_, outcome_.losses} {}

    const ListedPhone& phone() const { return phone_; }
    const ArchiveFolder& folder() const { return folder_; }

    Outcome carriedOut() {
        try {
            archiveParts();
        } catch (const BrokenOff& reason) {
            run_.progress = nullptr;
            outcome_.interruption = reason.message;
            outcome_.status = reason.status;
        }
        ProgressBar::setStage({});
        finish();
        return std::move(outcome_);
    }

  private:
    bool isWanted(const char* name) const {
        return wanted_.only.empty() || std::ranges::find(wanted_.only, name) != wanted_.only.end();
    }

    void archiveParts() {
        const auto count =
            std::ranges::count_if(parts, [&](const Part& part) { return isWanted(part.name); });
        int number = 0;
        for (const Part& part : parts) {
            if (!isWanted(part.name)) continue;
            run_.stage = std::to_string(++number) + " of " + std::to_string(count);
            ProgressBar::setStage(run_.stage);
            SectionReport& report = outcome_.sections[part.name];
            if (isLost_) {
                report.fail(titleOf(phone_) + " is no longer attached.");
                continue;
            }
            try {
                part.archive(run_, report);
            } catch (const BrokenOff&) {
                if (report.state != State::partial) report.fail(interrupted);
                throw;
            }
            if (!report.isWhole())
                isLost_ = !interruption_.whileAsking([&] { return isAttached(phones_.driver(), phone_); });
        }
    }

    // All that the archive says of itself; the manifest comes last.
    void finish() {
        for (const auto& [name, report] : outcome_.sections)
            for (const std::string& missing : report.missing)
                if (name != "files" || report.state == State::failed)
                    outcome_.losses.push_back({name, /*isUnread=*/true, {}, missing});
        const std::string losses = lossesAsJson(outcome_.losses, outcome_.sections, earlierLosses_);
        folder_.put(archive::losses, losses);
        folder_.put(pageDataPath("losses"), pageData("losses", losses));
        for (const PageFile& file : pageFiles())
            folder_.put(std::string(file.path), file.bytes);
        const bool isOver = outcome_.interruption.empty();
        const bool isComplete =
            std::ranges::all_of(outcome_.sections, [](const auto& one) { return one.second.isWhole(); });
        const std::string record = record_.withRun(phone_,
                                                   {.started = utcText(started_),
                                                    .finished = isOver ? utcText(rightNow()) : std::string(),
                                                    .result = !isOver      ? "interrupted"
                                                              : isComplete ? "complete"
                                                                           : "incomplete"},
                                                   outcome_.sections);
        folder_.put(archive::phone, record);
        folder_.put(pageDataPath("archive"), pageData("archive", record));
        outcome_.filesWritten = folder_.filesWritten();
        outcome_.goneFiles = folder_.finish(isOver);
        outcome_.filesInAll = folder_.filesInAll();
    }

    const ArchiveOptions& wanted_;
    AttachedPhones phones_;
    const ListedPhone& phone_;
    sys_seconds started_;
    ArchiveFolder folder_;
    std::string earlierLosses_;
    ArchiveRecord record_;
    Outcome outcome_;
    Interruption interruption_;
    ArchiveRun run_;
    bool isLost_ = false;
};

std::string asJson(const ArchiveOptions& wanted, const Archiver& archiver, const Outcome& outcome) {
    JsonDocument document;
    document.StartObject();
    document.member("archive", wanted.folder);
    document.member("phone", TextView(archiver.phone().model));
    document.member("serialNumber", TextView(archiver.phone().serial));
    if (wanted.dryRun) document.member("dryRun", true);
    document.member("complete", outcome.isWhole());
    document.member("filesWritten", std::uint64_t{outcome.filesWritten});
    document.key("sections");
    document.StartObject();
    for (const auto& [name, report] : outcome.sections) {
        document.key(name);
        document.StartObject();
        document.member("state", nameOf(report.state));
        document.member("listed", std::uint64_t{report.listed});
        document.member("saved", std::uint64_t{report.saved});
        document.member("gone", std::uint64_t{report.gone});
        document.member("newlyGone", std::uint64_t{report.newlyGone});
        if (name == "files") {
            document.member("fetched", std::uint64_t{report.fetched});
            document.member("equal", std::uint64_t{report.equal});
            document.member("replaced", std::uint64_t{report.replaced});
            document.member("bytes", report.bytes);
        }
        document.EndObject();
    }
    document.EndObject();
    document.member("losses", std::uint64_t{outcome.losses.size()});
    document.key("missing");
    document.StartArray();
    for (const auto& [name, report] : outcome.sections)
        for (const std::string& missing : report.missing) {
            document.StartObject();
            document.member("section", name);
            document.member("message", missing);
            document.EndObject();
        }
    document.EndArray();
    if (!outcome.interruption.empty()) document.member("interruption", outcome.interruption);
    document.EndObject();
    return document.finished();
}

std::string lineOf(const Part& part, const SectionReport& report) {
    constexpr std::size_t nameWidth = 10;
    std::string line =
        "  " + std::string(part.name) + std::string(nameWidth - std::string_view(part.name).size(), ' ');
    if (report.state == State::failed) return line + "NOT SAVED\n";
    if (report.state == State::notSupported) return line + "none that the phone hands out\n";
    line += std::to_string(report.saved) + " of " + std::to_string(report.listed);
    if (std::string_view(part.name) == "files") {
        line += " (" + std::to_string(report.fetched) + " fetched, " + sizeText(report.bytes);
        if (report.equal != 0) line += "; " + std::to_string(report.equal) + " were there";
        if (report.replaced != 0)
            line += "; " + std::to_string(report.replaced) + " replaced, the earlier ones kept";
        line += ")";
    }
    if (report.gone != 0)
        line += ", and " + std::to_string(report.gone) + " that the phone no longer has" +
                (report.newlyGone == 0 ? "" : " (" + std::to_string(report.newlyGone) + " of them new)");
    if (report.state == State::partial) line += ", NOT ALL";
    return line + "\n";
}

std::string summaryOf(const ArchiveOptions& wanted, const Archiver& archiver, const Outcome& outcome) {
    const std::string title = titleOf(archiver.phone()), place = "\"" + forPerson(wanted.folder) + "\"";
    std::string text = (wanted.dryRun ? "Would be saved of " : "Saved of ") + title + " in " + place + ":\n";
    for (const Part& part : parts)
        if (const auto section = outcome.sections.find(part.name); section != outcome.sections.end())
            text += lineOf(part, section->second);
    const auto lost = std::ranges::count(outcome.losses, false, &ArchiveLoss::isUnread);
    if (lost != 0)
        text += "Of what was saved " + std::to_string(lost) + (lost == 1 ? " detail has" : " details have") +
                " no place in these formats: losses.json names them.\n";
    if (wanted.dryRun) return text + "Nothing was written.\n";
    if (outcome.isWhole())
        text += wanted.only.empty() ? "Everything that the phone listed is in the archive.\n"
                                    : "Of these kinds everything that the phone listed is in the archive.\n";
    else
        text += "NOT EVERYTHING IS IN THE ARCHIVE. Do not delete anything from the phone.\n";
    const std::string page = console::textOf(console::pathOf(wanted.folder) / "index.html");
    return text + "Open \"" + forPerson(page) + "\" to look at it; \"ovphone verify\" checks it.\n";
}

void archivePhone(const Context& context, const ArchiveOptions& wanted) {
    Archiver archiver(context, wanted);
    const Outcome outcome = archiver.carriedOut();
    for (const auto& [name, report] : outcome.sections)
        for (const std::string& missing : report.missing)
            note("ovphone: " + name + ": " + forPerson(missing));
    for (const std::string& path : outcome.goneFiles)
        note("ovphone: \"" + forPerson(path) +
             "\" was taken out of the archive, and the phone no longer has it.");
    if (context.asJson())
        write(asJson(wanted, archiver, outcome));
    else if (!isQuiet())
        write(summaryOf(wanted, archiver, outcome));
    if (outcome.status != done) throw CommandFailure{outcome.status, outcome.interruption};
    if (!outcome.isWhole()) throw CommandFailure{failed, {}};
}

}  // namespace

std::vector<std::string> savePhone(const Context& context, const ArchiveOptions& wanted) {
    Archiver archiver(context, wanted);
    const Outcome outcome = archiver.carriedOut();
    if (outcome.status != done) throw CommandFailure{outcome.status, outcome.interruption};
    std::vector<std::string> missing;
    for (const auto& [name, report] : outcome.sections)
        for (const std::string& one : report.missing)
            missing.push_back(std::string(name).append(": ").append(one));
    return missing;
}

void registerArchive(CLI::App& app, Context& context) {
    const auto options = std::make_shared<ArchiveOptions>();
    CLI::App& command =
        addCommand(app, "archive", "Save everything that a phone holds in a folder, to keep and to look at",
                   context, [&context, options] { archivePhone(context, *options); });
    command.add_option("DIR", options->folder, "the archive's folder, new or this phone's")
        ->type_name("")
        ->required();
    command
        .add_option("--only", options->only,
                    "of these kinds alone: contacts, calendar, messages, notes, files")
        ->type_name("KIND,...")
        ->delimiter(',')
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(sectionNames), std::end(sectionNames)))
                    .description(""));
    command.add_flag("-n,--dry-run", options->dryRun,
                     "read the phone and say what would be saved; write nothing");
    addPhoneCommandOptions(command, context);
    addJsonFlag(command, context);
    command.footer(
        R"(Contacts become cards and a table, calendars calendar files, messages and notes JSON and texts, and files stay what
they are, with their times. DIR/index.html shows it all in a browser. Given again, the command fetches what has changed;
what the phone no longer has stays and is marked. The archive is for its user alone.

Examples:
  ovphone archive nokia-n95
  ovphone archive --only contacts,messages nokia-n95
  ovphone archive --dry-run nokia-n95            what there is to save)");
}

}  // namespace ovno2::host
