// Files of an archive on their way to a phone, each to where it was.
#include <algorithm>
#include <map>

#include "host/files/upload.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/display_width.h"
#include "host/restore/restore_part.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;
using State = RestoreItem::State;

class FilesPart : public RestorePart {
  public:
    explicit FilesPart(const RestoreTarget& target)
        : RestorePart(target.wanted),
          target_(target),
          phone_(target.phones.driver(), target.phones.all(), target.phone,
                 [this](const Text& path, const std::string& message) {
                     problems_.emplace_back(toUtf8(path), message);
                 }) {}

    const char* name() const override { return "files"; }

    void plan() override {
        for (const RestoreSource::Drive& drive : target_.source.drives) {
            FileReport report;
            report.keepToItself();
            run(
                drive, /*isTrial=*/true, [](const fs::path&) { return true; }, report);
            for (const FileResult& result : report.results())
                add(result);
        }
        for (const auto& [path, message] : problems_)
            items_.push_back({.title = path, .state = State::impossible, .why = message});
    }

    void carryOut() override {
        for (const RestoreSource::Drive& drive : target_.source.drives) {
            FileReport report;
            report.keepToItself();
            const auto isWanted = [&](const fs::path& local) {
                const auto place = places_.find(console::textOf(local));
                return place != places_.end() && isToBeWritten(items_[place->second]);
            };
            const auto enterAll = [&] {
                for (const FileResult& result : report.results())
                    enter(result);
            };
            try {
                run(drive, /*isTrial=*/false, isWanted, report);
            } catch (const BrokenOff& reason) {
                enterAll();
                throw CommandFailure{reason.status, reason.message};
            }
            enterAll();
        }
    }

  private:
    template <class IsWanted>
    void run(const RestoreSource::Drive& drive, bool isTrial, const IsWanted& isWanted, FileReport& report) {
        TransferProgress* shown = nullptr;
        Interruption interruption({.tick =
                                       [&] {
                                           if (shown) shown->tick();
                                       },
                                   .end = [] { note(std::string("ovphone: ") + interrupted); }});
        phone_.lookOn(&interruption);
        const struct LookedOn {
            PhoneFiles& phone;
            ~LookedOn() { phone.lookOn(nullptr); }
        } lookedOn{phone_};
        PhoneEntry folder;
        try {
            folder = phone_.findOne(drive.path);
        } catch (const CommandFailure&) {
            return missDrive(drive, isTrial);
        }
        Upload upload(phone_, folder, wanted_.overwrites && !isTrial, isTrial,
                      [&](const fs::path& local) -> std::optional<Text> {
                          const auto known = target_.source.files.find(local);
                          if (known == target_.source.files.end()) return std::nullopt;
                          std::error_code error;
                          if (!fs::is_directory(local, error) && !isWanted(local)) return std::nullopt;
                          return known->second;
                      });
        upload.addAllIn(drive.folder);
        TransferProgress progress(upload.totalBytes(), console::errorIsTerminal() && !isQuiet() && !isTrial);
        shown = &progress;
        report.setProgress(&progress);
        upload.announce(report);
        upload.run(report, progress);
        report.setProgress(nullptr);
    }

    void missDrive(const RestoreSource::Drive& drive, bool isTrial) {
        if (!isTrial) return;
        for (const auto& [local, name] : target_.source.files) {
            const auto [end, ignored] =
                std::mismatch(drive.folder.begin(), drive.folder.end(), local.begin(), local.end());
            std::error_code error;
            if (end == drive.folder.end() && !fs::is_directory(local, error))
                items_.push_back(
                    {.title = drive.path + "/" + console::textOf(local.lexically_relative(drive.folder)),
                     .state = State::impossible,
                     .why = "the phone has no drive " + drive.path});
        }
    }

    void add(const FileResult& result) {
        RestoreItem item{.title = result.path, .why = result.message};
        item.state = result.outcome == FileOutcome::success ? State::isNew
                     : result.outcome == FileOutcome::equal ? State::equal
                     : result.differs                       ? State::different
                                                            : State::impossible;
        if (item.state == State::different) item.why = "another file is there";
        places_.emplace(result.local, items_.size());
        items_.push_back(std::move(item));
    }

    void enter(const FileResult& result) {
        const auto place = places_.find(result.local);
        if (place == places_.end()) {
            // A folder, of which nothing is said otherwise.
            if (result.outcome == FileOutcome::failure)
                items_.push_back({.title = result.path, .failure = result.message});
            return;
        }
        RestoreItem& item = items_[place->second];
        item.isWritten = result.outcome != FileOutcome::failure;
        if (!item.isWritten) item.failure = result.message;
    }

    const RestoreTarget& target_;
    std::vector<std::pair<std::string, std::string>> problems_;
    PhoneFiles phone_;
    std::map<std::string, std::size_t> places_;  // of the items, by their files here
};

}  // namespace

std::unique_ptr<RestorePart> filesPart(const RestoreTarget& target) {
    return std::make_unique<FilesPart>(target);
}

}  // namespace ovno2::host
