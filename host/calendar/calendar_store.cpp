#include "host/calendar/calendar_store.h"

#include <algorithm>

#include "host/calendar/phone_entry.h"
#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/progress.h"

namespace ovno2::host {

namespace {

constexpr std::size_t mostFolders = 100;  // that the driver reads; the root is one of them
constexpr std::size_t stepsOfAnEntry = 1;

std::string entriesOf(const ListedPhone& phone) {
    return "calendar entries of " + titleOf(phone);
}

}  // namespace

std::vector<Text> readCalendarNames(const AttachedPhones& phones, const ListedPhone& phone) {
    std::vector<Text> names;
    const Long result = phones.driver().listCalendars(phone, names);
    if (result != 0)
        throw CommandFailure{failed, resultMessage(Operation::readCalendar, result, titleOf(phone))};
    if (!names.empty()) names.erase(names.begin());
    return names;
}

PhoneCalendars readCalendars(const AttachedPhones& phones, const ListedPhone& phone) {
    PhoneCalendars list;
    list.names = readCalendarNames(phones, phone);
    ListedItems listed(stepsOfAnEntry);
    std::vector<CalendarItem> items;
    Long result = 0;
    {
        ProgressBar progress("the calendar of " + titleOf(phone), console::errorIsTerminal() && !isQuiet());
        result = phones.driver().readCalendar(
            phone,
            [&](Long value) {
                progress.advanceTo(value);
                listed.advanceTo(value);
            },
            items);
    }
    const std::string trouble =
        result < 0 ? resultMessage(Operation::readCalendar, result, titleOf(phone)) : std::string();
    if (result < 0 && items.empty()) throw CommandFailure{failed, trouble};
    for (const CalendarItem& item : items)
        if (std::optional<CalendarEntry> entry = entryOf(item, phone))
            list.entries.push_back(std::move(*entry));

    const std::size_t folders = std::min(list.names.size() + 1, mostFolders);
    list.listed = std::max(listed.count(folders), items.size());
    if (result < 0)
        list.missing.push_back("Only " + std::to_string(list.entries.size()) + " " + entriesOf(phone) +
                               " could be read. " + trouble);
    else if (list.entries.size() < list.listed)
        list.missing.push_back(std::to_string(list.entries.size()) + " of " + std::to_string(list.listed) +
                               " " + entriesOf(phone) + " could be read." + whatToDo(phones.driver(), phone));
    else if (!isAttached(phones.driver(), phone))
        list.missing.push_back(titleOf(phone) +
                               " was lost while its calendar was read: whether these are all entries is not "
                               "known. Attach it again and give the command again.");
    if (list.names.size() + 1 > mostFolders)
        list.missing.push_back(titleOf(phone) + " has " + std::to_string(list.names.size()) +
                               " calendars; only the first " + std::to_string(mostFolders - 1) +
                               " can be read.");
    return list;
}

void readAgain(const AttachedPhones& phones, const ListedPhone& phone, PhoneCalendars& first) {
    const PhoneCalendars second = readCalendars(phones, phone);
    if (first.listed == second.listed &&
        std::ranges::equal(first.entries, second.entries, {}, &CalendarEntry::uid, &CalendarEntry::uid))
        return;
    first.missing.push_back(changedBetweenReads(entriesOf(phone)));
}

void sortByStart(std::vector<CalendarEntry>& entries) {
    const auto begin = [](const CalendarEntry& entry) -> const Text& {
        return entry.start.empty() ? entry.due : entry.start;
    };
    std::ranges::stable_sort(entries, [&](const CalendarEntry& a, const CalendarEntry& b) {
        return begin(b).empty() ? !begin(a).empty() : !begin(a).empty() && begin(a) < begin(b);
    });
}

}  // namespace ovno2::host
