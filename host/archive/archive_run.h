// What the sections of an archive share: the phone that they read, the folder that they write, and what
// became of them.
//
// A section is a source with a function of its own. It reads what the phone has first, tells in its report
// what of that did not arrive, and then writes. It throws CommandFailure for a folder that cannot be written,
// and BrokenOff when the user does not want the command any more; both end the run.
#pragma once

#include <optional>

#include "host/archive/archive_folder.h"
#include "host/archive/archive_record.h"
#include "host/archive/page_data.h"
#include "host/files/phone_files.h"
#include "host/files/transfer_progress.h"
#include "host/messages/phone_number.h"
#include "host/output/command_output.h"
#include "host/output/interruption.h"
#include "host/phones/attached_phones.h"

namespace ovno2::host {

struct ArchiveRun {
    const AttachedPhones& phones;
    const ListedPhone& phone;
    ArchiveFolder& folder;
    const ArchiveRecord& record;
    Interruption& interruption;
    std::chrono::sys_seconds started;
    std::vector<ArchiveLoss>& losses;
    // The names in the phone book, once it was read.
    std::optional<NameBook> names = {};
    // Of the files, while they are copied.
    TransferProgress* progress = nullptr;
    // Where the run is: "2 of 5".
    std::string stage = {};

    std::string startedText() const;
    void goOnOrEnd() const;  // throws BrokenOff

    // Calls `read`, which asks the phone; what it throws becomes the section's failure. None then.
    template <class Read>
    auto reading(SectionReport& report, Read&& read) -> std::optional<decltype(read())> {
        goOnOrEnd();
        std::optional<decltype(read())> result;
        try {
            interruption.whileAsking([&] { result = read(); });
        } catch (const CommandFailure& failure) {
            report.fail(failure.message);
        }
        goOnOrEnd();
        return result;
    }

    // Calls `read` until two reads are the same, twice at most: a call that failed once may have left things
    // out or taken them for others. What did not become the same is among the missing.
    template <class Read>
    auto readingTwice(SectionReport& report, Read&& read) -> std::optional<decltype(read())> {
        return reading(report, [&] {
            auto list = read();
            if (isReadAgain(list)) return list;
            try {
                auto anew = read();
                isReadAgain(anew);
                return anew;
            } catch (const CommandFailure&) {
                return list;
            }
        });
    }

    void lose(const char* section, std::string item, std::string what);
    // Of a text that has lost characters on its way.
    void looseCharacters(const char* section, const std::string& item, std::string_view text);

  private:
    // False when a second read is not the same, or there is none: a phone may be lost meanwhile.
    template <class List>
    bool isReadAgain(List& list) const {
        const std::size_t missing = list.missing.size();
        try {
            readAgain(phones, phone, list);
        } catch (const CommandFailure& failure) {
            list.missing.push_back(failure.message);
        }
        return list.missing.size() == missing;
    }
};

void archiveContacts(ArchiveRun& run, SectionReport& report);
void archiveCalendar(ArchiveRun& run, SectionReport& report);
void archiveMessages(ArchiveRun& run, SectionReport& report);
void archiveNotes(ArchiveRun& run, SectionReport& report);
void archiveFiles(ArchiveRun& run, SectionReport& report);

}  // namespace ovno2::host
