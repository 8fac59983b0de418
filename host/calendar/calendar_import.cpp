#include "host/calendar/calendar_import.h"

#include <algorithm>
#include <utility>

#include "host/calendar/phone_entry.h"
#include "host/contacts/contact_files.h"

namespace ovno2::host {

namespace {

Text lookOf(const CalendarEntry& entry) {
    return entry.start + u"\n" + entry.due + u"\n" + trimBlanks(entry.summary);
}

// What a file's entry repeats by and no phone can hold: without it the entry would be another.
bool losesRepeats(const CalendarEntry& entry) {
    return std::ranges::any_of(entry.unplaced, [](const std::string& property) {
        return property.starts_with("RRULE") || property.starts_with("RDATE") ||
               property.starts_with("EXRULE");
    });
}

}  // namespace

KnownEntries::KnownEntries(const std::vector<CalendarEntry>& entries, const Text& serial) {
    for (const CalendarEntry& entry : entries) {
        byLook_.emplace(lookOf(entry), &entry);
        byUid_.emplace(exportedUid(serial, entry.uid), &entry);
    }
}

bool KnownEntries::takeSame(const CalendarEntry& wanted) {
    const auto found = findSame(wanted);
    if (found == byLook_.end()) return false;
    byLook_.erase(found);
    return true;
}

const CalendarEntry* KnownEntries::withUid(const Text& uid) const {
    const auto found = uid.empty() ? byUid_.end() : byUid_.find(uid);
    return found == byUid_.end() ? nullptr : found->second;
}

KnownEntries::ByLook::const_iterator KnownEntries::findSame(const CalendarEntry& wanted) const {
    const auto [first, last] = byLook_.equal_range(lookOf(wanted));
    const auto found =
        std::find_if(first, last, [&](const auto& one) { return differences(wanted, *one.second).empty(); });
    return found == last ? byLook_.end() : found;
}

CalendarImport planImport(std::vector<CalendarEntry> entries, const AttachedPhones& phones,
                          const ListedPhone& phone, const PhoneCalendars& calendars) {
    KnownEntries known(calendars.entries, phone.serial);
    CalendarImport import;
    import.entries.reserve(entries.size());
    for (CalendarEntry& entry : entries) {
        ImportedEntry& imported = import.entries.emplace_back();
        imported.title = titleOf(entry);
        imported.unplaced = entry.unplaced;
        imported.hasWideRule = entry.wideRule.has_value();
        if (losesRepeats(entry)) {
            imported.refusal = "not written, since it would repeat otherwise there.";
            continue;
        }
        if (std::ranges::find(calendars.names, entry.calendar) == calendars.names.end())
            import.homeless.insert(std::exchange(entry.calendar, {}));
        if (known.takeSame(asPhonesKeepIt(entry))) continue;
        const CalendarEntry* const before = known.withUid(entry.uid);
        if (entry.calendar.empty())
            entry.calendar = before                    ? before->calendar
                             : calendars.names.empty() ? Text()
                                                       : calendars.names[0];
        CalendarChange change{.kind = before ? CalendarChange::Kind::change : CalendarChange::Kind::add};
        if (before) change.before = *before;
        change.after = std::move(entry);
        change.after.uid = change.before.uid;
        imported.change = import.changes.size();
        import.changes.push_back(std::move(change));
    }
    import.homeless.erase(Text());
    refuseWhatIsNotKept(phones, phone, import.changes);
    return import;
}

}  // namespace ovno2::host
