// Time zones of calendar files: when which offset from UTC holds, by a file's own VTIMEZONE or by the TZ and
// DAYLIGHT lines of vCalendar 1.0; and a file's times as clocks on this computer show them.
#pragma once

#include <string>
#include <vector>

#include "host/calendar/ical_lines.h"
#include "host/calendar/recurrence_dates.h"

namespace ovno2::host {

class FileZone {
  public:
    FileZone() = default;
    // Of a VTIMEZONE; what cannot be followed leaves only the dates that the file names.
    explicit FileZone(const FileComponent& zone);
    // Of a calendar's lines of the old form; `isKnown` is false when there is no TZ that can be one.
    static FileZone ofOldForm(const FileComponent& calendar);

    bool isKnown() const { return isKnown_; }
    bool hasDaylight() const { return !changes_.empty(); }
    std::chrono::seconds standardOffset() const { return before_; }

    // Of a time that is there twice the first; one that is skipped goes by the offset before.
    std::chrono::sys_seconds utcOf(std::chrono::local_seconds time) const;
    std::chrono::seconds offsetAt(std::chrono::sys_seconds time) const;
    std::chrono::local_seconds localOf(std::chrono::sys_seconds time) const;

    // That from this time on clocks here go by it too, as far as the system is asked.
    bool isOwnSince(std::chrono::sys_seconds time) const;

  private:
    void compareWithHere();

    struct Change {
        std::chrono::sys_seconds time;
        std::chrono::seconds before{0}, after{0};  // east of UTC
    };
    void addObservance(const FileComponent& observance);
    void sort();

    std::vector<Change> changes_;     // in order
    std::chrono::seconds before_{0};  // until the first change
    bool isKnown_ = false;
    bool isOwn_ = false;  // from the first change on
};

// What this computer's clocks show then.
std::chrono::local_seconds localHere(std::chrono::sys_seconds time);

// A time of a file as clocks here show it; null = it floats and stays.
Moment localMoment(const Moment& moment, const FileZone* zone);

}  // namespace ovno2::host
