// What an archive says of itself: phone.json, with the phone's details, the runs and the state of each
// section, and losses.json.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

// What became of a kind of things in a run.
struct SectionReport {
    // `notSupported`: the phone does not hand out any of the kind.
    enum class State { leftOut, complete, partial, failed, notSupported };

    State state = State::leftOut;
    std::size_t listed = 0;     // as many as the phone named
    std::size_t saved = 0;      // of them
    std::size_t count = 0;      // in the archive, with those that are gone from the phone
    std::size_t gone = 0;       // of them
    std::size_t newlyGone = 0;  // of them, since the last run
    // What did not arrive, why, and what to do about it; UTF-8.
    std::vector<std::string> missing;
    // Of files: what was fetched, and what the archive had already.
    std::size_t fetched = 0, equal = 0, replaced = 0;
    std::uint64_t bytes = 0;  // of those fetched

    // All that the phone handed out is there.
    bool isWhole() const { return state == State::complete || state == State::notSupported; }
    // What came of a read: `number` of those listed, and why the others did not.
    void arrived(std::size_t number, std::size_t ofListed, const std::vector<std::string>& notArrived);
    void fail(const std::string& why);
    void lose(const std::string& what);  // a part of it
};

const char* nameOf(SectionReport::State state);

inline constexpr const char* sectionNames[] = {"contacts", "calendar", "messages", "notes", "files"};
using Sections = std::map<std::string, SectionReport>;  // those of the run, by name

// Something that the archive does not hold.
struct ArchiveLoss {
    std::string section;
    bool isUnread = false;  // it could not be read; else no format here holds it
    std::string item;       // whose loss it is; empty = the whole section's
    std::string what;       // a sentence for people
};

// The text of losses.json. Of sections that are none of this run what `earlier` says stays.
std::string lossesAsJson(const std::vector<ArchiveLoss>& losses, const Sections& sections,
                         const std::string& earlier);

class ArchiveRecord {
  public:
    // `earlier` is the text of phone.json; empty = the first run. `interruptedRun` as ArchiveFolder has it.
    ArchiveRecord(const std::string& earlier, const std::string& interruptedRun);

    // When each of the `count` blocks that are gone was first missed, in the order in which they stand.
    std::vector<std::string> goneSince(const std::string& section, std::size_t count,
                                       const std::string& now) const;

    struct Run {
        std::string started, finished;  // the second empty of one that was interrupted
        const char* result;
    };
    // The text of phone.json after a run.
    std::string withRun(const ListedPhone& phone, const Run& run, const Sections& sections) const;

  private:
    std::vector<std::string> runs_;                // as they stand, a line each
    std::map<std::string, std::string> sections_;  // likewise
    struct Missed {
        std::string time;
        std::size_t count;
    };
    std::map<std::string, std::vector<Missed>> missed_;  // by section
};

}  // namespace ovno2::host
