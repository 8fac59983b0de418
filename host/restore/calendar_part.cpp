// Calendar entries on their way to a phone, with the calendars that it has not got.
#include <algorithm>

#include "host/calendar/calendar_import.h"
#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/phones/arrival.h"
#include "host/restore/in_halves.h"
#include "host/restore/restore_part.h"

namespace ovno2::host {

namespace {

using State = RestoreItem::State;

class CalendarPart : public RestorePart {
  public:
    explicit CalendarPart(const RestoreTarget& target) : RestorePart(target.wanted), target_(target) {}

    const char* name() const override { return "calendar"; }

    void plan() override {
        calendars_ = readCalendars(target_.phones, target_.phone);
        requireKnown(calendars_.missing);
        PhoneCalendars with = calendars_;
        for (const CalendarEntry& entry : target_.source.entries) {
            if (entry.calendar.empty() || std::ranges::count(with.names, entry.calendar) != 0) continue;
            with.names.push_back(entry.calendar);
            newCalendars_.push_back(entry.calendar);
        }
        CalendarImport import =
            planImport(std::move(target_.source.entries), target_.phones, target_.phone, with);
        for (ImportedEntry& entry : import.entries) {
            RestoreItem item{.title = std::move(entry.title), .lost = std::move(entry.unplaced)};
            item.state = State::equal;
            if (!entry.refusal.empty()) {
                item.state = State::impossible;
                item.why = "It repeats in a way that no phone can hold.";
            } else if (entry.change != ImportedEntry::none) {
                CalendarChange& change = import.changes[entry.change];
                describe(change, item);
                if (isToBeWritten(item)) {
                    changes_.push_back(std::move(change));
                    places_.push_back(items_.size());
                }
            }
            items_.push_back(std::move(item));
        }
    }

    void carryOut() override {
        makeCalendars();
        std::vector<CalendarChange*> all;
        for (CalendarChange& change : changes_)
            all.push_back(&change);
        try {
            inHalves<CalendarChange*>(all, [&](std::span<CalendarChange*> some) { return write(some); });
        } catch (...) {
            enter();
            throw;
        }
        enter();
    }

  private:
    static void describe(const CalendarChange& change, RestoreItem& item) {
        if (!change.isDone()) {
            item.state = State::impossible;
            item.why = change.failure;
        } else if (change.kind == CalendarChange::Kind::add) {
            item.state = State::isNew;
        } else {
            item.state = State::different;
            item.why = "it is another on the phone";
        }
    }

    // Entries whose calendar the phone does not make go to its first one.
    void makeCalendars() {
        for (const Text& name : newCalendars_) {
            const auto isIn = [&](const CalendarChange& change) { return change.after.calendar == name; };
            if (std::ranges::none_of(changes_, isIn)) continue;
            const Long result = target_.phones.driver().createCalendar(target_.phone, name);
            std::vector<Text> now;
            if (result >= 0) now = readCalendarNames(target_.phones, target_.phone);
            if (std::ranges::count(now, name) != 0) continue;
            note("ovphone: The phone did not make the calendar \"" + toUtf8(name) +
                 "\": its entries go to the first one." +
                 (result < 0 ? " " + resultMessage(Operation::changeCalendars, result, titleOf(target_.phone))
                             : std::string()));
            for (CalendarChange& change : changes_)
                if (isIn(change))
                    change.after.calendar = calendars_.names.empty() ? Text() : calendars_.names[0];
        }
    }

    // What the phone refuses, it refuses with all that came along; then it has kept nothing.
    std::string write(std::span<CalendarChange*> changes) {
        std::vector<CalendarChange> together;
        together.reserve(changes.size());
        for (CalendarChange* const change : changes)
            together.push_back(*change);
        try {
            const PhoneCalendars now =
                isFirst_ ? std::move(calendars_) : readCalendars(target_.phones, target_.phone);
            isFirst_ = false;
            host::carryOut(target_.phones, target_.phone, now, together);
        } catch (const CommandFailure& failure) {
            if (!isAttached(target_.phones.driver(), target_.phone)) throw;
            if (changes.size() == 1) changes[0]->failure = failure.message;
            return failure.message;
        }
        for (std::size_t i = 0; i < changes.size(); ++i) {
            changes[i]->failure = together[i].failure;
            written_.insert(changes[i]);
        }
        return {};
    }

    void enter() {
        for (std::size_t i = 0; i < changes_.size(); ++i) {
            RestoreItem& item = items_[places_[i]];
            item.failure = changes_[i].failure;
            item.isWritten = changes_[i].isDone() && written_.contains(&changes_[i]);
        }
    }

    const RestoreTarget& target_;
    PhoneCalendars calendars_;
    std::vector<Text> newCalendars_;
    std::vector<CalendarChange> changes_;
    std::vector<std::size_t> places_;  // of their items
    std::set<const CalendarChange*> written_;
    bool isFirst_ = true;
};

}  // namespace

std::unique_ptr<RestorePart> calendarPart(const RestoreTarget& target) {
    return std::make_unique<CalendarPart>(target);
}

}  // namespace ovno2::host
