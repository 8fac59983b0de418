// This computer's time zone as a VTIMEZONE: its changes are found by asking the system what clocks show.
#pragma once

#include <string>
#include <vector>

#include "host/calendar/recurrence_dates.h"
#include "host/formats/content_lines.h"

namespace ovno2::host {

class OwnZone {
  public:
    static constexpr int firstYear = 1902;  // earlier times have no zone that two systems agree on

    // For the years `first` to `last`; the system is asked up to 2037 at most. The last rules go on.
    OwnZone(int first, int last);

    const std::string& name() const { return name_; }  // its TZID
    void write(ContentLineWriter& lines) const;

    // The time in UTC at which clocks here show it: the earlier of two; of none the one by the offset before.
    std::chrono::sys_seconds utcOf(std::chrono::local_seconds time) const;

  private:
    // Changes of one year after the other, on the same weekday of the same month.
    struct Rule {
        std::chrono::seconds before{0}, after{0};
        std::chrono::local_seconds first{}, last{};  // by the clock before
        int position = 0;                            // 1 to 5 while all agree, else 0
        bool isLastOfMonth = true;
        bool isOpen = false;  // goes on

        bool takes(const Rule& next);
    };
    void addChange(std::chrono::sys_seconds time, std::chrono::seconds before, std::chrono::seconds after);
    static void writeRule(ContentLineWriter& lines, const Rule& rule, const std::string& from);

    std::vector<Rule> rules_;
    std::chrono::local_seconds start_;
    std::chrono::seconds base_{0};
    std::string name_;
};

}  // namespace ovno2::host
