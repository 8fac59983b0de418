#include "host/calendar/calendar_changes.h"

#include <algorithm>
#include <map>
#include <set>

#include "host/calendar/phone_entry.h"
#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

using Kind = CalendarChange::Kind;

class Writing {
  public:
    Writing(const AttachedPhones& phones, const ListedPhone& phone, const PhoneCalendars& calendars)
        : phones_(phones), phone_(phone) {
        for (const CalendarEntry& entry : calendars.entries)
            before_.insert(entry.uid);
    }

    void carryOut(std::span<CalendarChange> changes) {
        std::vector<CalendarChange*> written;
        for (CalendarChange& change : changes)
            if (change.isDone()) written.push_back(&change);
        if (written.empty()) return;
        for (const CalendarChange* const change : written)
            write(*change);
        std::vector<AddedItem> added;
        const Long result = phones_.driver().endCalendar(/*commit=*/true, added);
        for (const AddedItem& item : added)
            uids_[item.temporaryId] = item.uid;
        // A commit that failed is looked at, too: the phone may have taken it and its answer be lost.
        std::string why;
        if (result != 0) {
            drop();
            why = resultMessage(Operation::writeCalendar, result, titleOf(phone_), "It");
            if (!isAttached(phones_.driver(), phone_))
                throw CommandFailure{failed, why + " The connection to " + titleOf(phone_) +
                                                 " is lost: whether it kept the change is not known."};
        }
        check(written);
        const auto isDone = [](const CalendarChange* change) { return change->isDone(); };
        if (result == 0 || std::ranges::all_of(written, isDone)) return;
        const bool anyDone = std::ranges::any_of(written, isDone);
        throw CommandFailure{failed, titleOf(phone_) + " did not take the change; its memory may be full. " +
                                         why + (anyDone ? "" : " Nothing was changed on the phone.")};
    }

  private:
    void drop() {
        std::vector<AddedItem> none;
        phones_.driver().endCalendar(/*commit=*/false, none);
    }

    void write(const CalendarChange& change) {
        PhoneDriver& driver = phones_.driver();
        Text id = change.before.uid;
        Long result = 0;
        bool isLost = false;
        if (change.kind == Kind::remove) {
            result = driver.deleteCalendarItem(phone_, id);
        } else {
            const std::vector<CalendarCell> cells = change.kind == Kind::add
                                                        ? cellsOf(change.after, phone_)
                                                        : changedCells(change.before, change.after, phone_);
            if (!cells.empty()) result = driver.writeCalendarItem(phone_, cells, id);
            // The driver writes an entry that it cannot read as a new one, which would have only what
            // changes.
            const bool moves = std::ranges::count(cells, CalendarCell::calendar, &CalendarCell::field) != 0;
            isLost = change.kind == Kind::change && id != change.before.uid && !moves;
            if (change.kind == Kind::add || moves) ids_[&change] = id;
        }
        if (result == 0 && !isLost) return;
        drop();
        const std::string why = isLost
                                    ? "It could not be read from the phone again."
                                    : resultMessage(Operation::writeCalendar, result, titleOf(phone_), "It");
        throw CommandFailure{failed,
                             titleOf(change.entry()) + ": " + why + " Nothing was changed on the phone."};
    }

    void check(const std::vector<CalendarChange*>& changes) {
        const PhoneCalendars now = readCalendars(phones_, phone_);
        for (const std::string& message : now.missing)
            note("ovphone: " + message);
        std::map<Text, const CalendarEntry*> byUid;
        std::vector<const CalendarEntry*> added;
        for (const CalendarEntry& entry : now.entries) {
            byUid[entry.uid] = &entry;
            if (!before_.contains(entry.uid)) added.push_back(&entry);
        }
        for (CalendarChange* const change : changes)
            change->failure = failureOf(*change, byUid, added, now.missing.empty());
    }

    std::string failureOf(const CalendarChange& change, const std::map<Text, const CalendarEntry*>& byUid,
                          std::vector<const CalendarEntry*>& added, bool isWhole) const {
        const std::string title = titleOf(phone_);
        const CalendarEntry wanted = asPhonesKeepIt(change.after);
        const auto id = ids_.find(&change);
        const auto uid = id == ids_.end() ? uids_.end() : uids_.find(id->second);
        const auto found = byUid.find(uid == uids_.end() ? change.before.uid : uid->second);
        const CalendarEntry* there = found == byUid.end() ? nullptr : found->second;
        if (change.kind == Kind::remove) {
            if (there) return title + " still has it.";
            if (!isWhole)
                return "Whether " + title +
                       " still has it is not known, since not all entries could be read.";
        } else if (!there) {
            // A new entry whose uid was not told is known by what it holds.
            const auto equal = std::ranges::find_if(
                added, [&](const CalendarEntry* one) { return differences(wanted, *one).empty(); });
            if (equal == added.end())
                return isWhole ? title + " does not have it."
                               : "Whether " + title +
                                     " has it is not known, since not all entries could be read.";
            added.erase(equal);
        } else {
            std::string names;
            for (const std::string& name : differences(wanted, *there))
                names += (names.empty() ? "" : ", ") + name;
            if (!names.empty())
                return title + " has it, but did not keep all of it; missing or different there: " + names +
                       ".";
        }
        return {};
    }

    const AttachedPhones& phones_;
    const ListedPhone& phone_;
    std::set<Text> before_;                      // the uids that the phone had
    std::map<const CalendarChange*, Text> ids_;  // of new entries
    std::map<Text, Text> uids_;                  // by the ids
};

}  // namespace

std::string titleOf(const CalendarEntry& entry) {
    Text title = entry.summary.empty() ? Text(u"(no summary)") : entry.summary;
    Text when = entry.start.empty() ? entry.due : entry.start;
    std::ranges::replace(title, u'\n', u' ');
    std::ranges::replace(when, u'T', u' ');
    constexpr std::size_t minutes = 16;
    if (!when.empty()) title += u" (" + when.substr(0, minutes) + u")";
    return toUtf8(title);
}

ReportedItem reportedOf(const CalendarChange& change) {
    using Result = ReportedItem::Result;
    constexpr Result results[] = {Result::added, Result::changed, Result::removed};
    ReportedItem item{
        .title = titleOf(change.entry()),
        .result = change.isDone() ? results[static_cast<std::size_t>(change.kind)] : Result::failed,
        .uid = change.before.uid,
        .message = change.failure};
    if (change.kind == Kind::change)
        for (const std::string& name : differences(asPhonesKeepIt(change.after), change.before))
            item.fields += (item.fields.empty() ? "" : ", ") + name;
    return item;
}

bool keepsRule(const AttachedPhones& phones, const CalendarEntry& entry) {
    constexpr Single firstVersionWithWeekdays = 36;
    return !entry.rule.starts_with(u"MD") ||
           phones.driver().software().contentVersion < firstVersionWithWeekdays;
}

void refuseWhatIsNotKept(const AttachedPhones& phones, const ListedPhone& phone,
                         std::span<CalendarChange> changes) {
    for (CalendarChange& change : changes) {
        if (change.kind == Kind::remove || keepsRule(phones, change.after)) continue;
        const std::vector<CalendarCell> cells = change.kind == Kind::add
                                                    ? cellsOf(change.after, phone)
                                                    : changedCells(change.before, change.after, phone);
        if (std::ranges::count(cells, CalendarCell::rule, &CalendarCell::field) != 0)
            change.failure = "It repeats on a day of the month, which " + titleOf(phone) +
                             " would take for a weekday. It was not written.";
    }
}

void carryOut(const AttachedPhones& phones, const ListedPhone& phone, const PhoneCalendars& calendars,
              std::span<CalendarChange> changes) {
    if (!changes.empty()) Writing(phones, phone, calendars).carryOut(changes);
}

}  // namespace ovno2::host
