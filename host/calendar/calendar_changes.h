// Changes of a phone's calendar entries: carried out in one session, which the phone keeps whole or not at
// all, and then looked at on the phone.
#pragma once

#include <span>

#include "host/calendar/calendar_store.h"
#include "host/output/change_report.h"

namespace ovno2::host {

struct CalendarChange {
    enum class Kind { add, change, remove };

    Kind kind = Kind::add;
    CalendarEntry before = {};  // as the phone has it; of a new one empty
    CalendarEntry after = {};   // as it is to be
    // What went wrong, for people; empty = done. UTF-8.
    std::string failure = {};

    bool isDone() const { return failure.empty(); }
    const CalendarEntry& entry() const { return kind == Kind::remove ? before : after; }
};

// What messages call an entry: its summary and when it begins. UTF-8.
std::string titleOf(const CalendarEntry& entry);

// What became of it; "fields" are those that differ.
ReportedItem reportedOf(const CalendarChange& change);

// Whether the phone's software keeps the rule of a new entry: libraries that keep weekdays make the weekday
// of the start out of every monthly rule by the day.
bool keepsRule(const AttachedPhones& phones, const CalendarEntry& entry);

// Gives a failure to changes that would reach the phone with another rule.
void refuseWhatIsNotKept(const AttachedPhones& phones, const ListedPhone& phone,
                         std::span<CalendarChange> changes);

// Leaves out changes that have a failure. `calendars` is what the phone had. Throws CommandFailure when the
// phone refuses one of the changes: then it has kept none. What the phone has otherwise afterwards becomes
// the change's failure.
void carryOut(const AttachedPhones& phones, const ListedPhone& phone, const PhoneCalendars& calendars,
              std::span<CalendarChange> changes);

}  // namespace ovno2::host
