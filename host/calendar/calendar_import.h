// What the entries of a file become on a phone: new ones, changed ones, or what is there already.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/calendar/calendar_changes.h"

namespace ovno2::host {

// The phone's entries by what tells them apart at a glance. They must outlive it.
class KnownEntries {
  public:
    KnownEntries(const std::vector<CalendarEntry>& entries, const Text& serial);

    bool hasSame(const CalendarEntry& wanted) const { return findSame(wanted) != byLook_.end(); }
    // The same is not given twice.
    bool takeSame(const CalendarEntry& wanted);
    // The one that the file's entry was once exported from; null = none.
    const CalendarEntry* withUid(const Text& uid) const;

  private:
    using ByLook = std::multimap<Text, const CalendarEntry*>;

    ByLook::const_iterator findSame(const CalendarEntry& wanted) const;

    ByLook byLook_;
    std::map<Text, const CalendarEntry*> byUid_;
};

struct ImportedEntry {
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    std::string title;                  // UTF-8
    std::size_t change = none;          // in the list of changes
    std::vector<std::string> unplaced;  // what the phone has no place for
    std::string refusal;                // why it is not to be written; else, without a change, it is there
    bool hasWideRule = false;           // single entries can be made of it

    bool isThere() const { return change == none && refusal.empty(); }
};

struct CalendarImport {
    std::vector<ImportedEntry> entries;  // in the file's order
    std::vector<CalendarChange> changes;
    std::set<Text> homeless;  // calendars that the phone has not got: their new entries go to the first one
};

// What the phone has already stays; an entry that was once exported from the phone and is another now becomes
// a change. One that repeats in a way that no phone can hold is refused: it would be another there.
CalendarImport planImport(std::vector<CalendarEntry> entries, const AttachedPhones& phones,
                          const ListedPhone& phone, const PhoneCalendars& calendars);

}  // namespace ovno2::host
