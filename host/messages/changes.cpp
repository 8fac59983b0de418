#include "host/messages/changes.h"

#include <iostream>
#include <iterator>
#include <set>

#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

void tellDone(bool asJson, std::span<const ReportedItem> items, bool dryRun, const std::string& text) {
    if (asJson)
        writeChangesAsJson(items, dryRun);
    else
        note(text);
}

void tellFailure(bool asJson, std::span<ReportedItem> items, const std::function<void()>& step) {
    try {
        step();
    } catch (const CommandFailure& failure) {
        failAll(items, failure.message);
        if (asJson) writeChangesAsJson(items, /*dryRun=*/false);
        throw;
    }
}

std::size_t failThoseStillThere(std::span<ReportedItem> removed, std::span<const Text> uids) {
    const std::set<TextView> there(uids.begin(), uids.end());
    std::size_t staying = 0;
    for (ReportedItem& item : removed)
        if (there.contains(item.uid)) {
            item.result = ReportedItem::Result::failed;
            item.message = "It is still there.";
            ++staying;
        }
    return staying;
}

std::string beginOf(TextView text) {
    constexpr std::size_t longest = 40;
    const TextView line = text.substr(0, text.find_first_of(u"\r\n"));
    return toUtf8(line.substr(0, longest)) +
           (line.size() < text.size() || line.size() > longest ? "..." : "");
}

void carryOut(const AttachedPhones& phones, const ListedPhone& phone, std::span<const DataChange> changes) {
    PhoneDriver& driver = phones.driver();
    Long result = 0;
    for (const DataChange& change : changes)
        if (result = change(driver); result != 0) break;
    if (result == 0) {
        result = driver.endData(/*commit=*/true);
        if (result == 0) return;
    }
    driver.endData(/*commit=*/false);
    throw CommandFailure{failed, resultMessage(Operation::writeMessages, result, titleOf(phone)) +
                                     " Nothing was changed on the phone."};
}

std::size_t placeOf(std::span<const Text> uids, const std::string& wanted, const char* what) {
    const Text uid = upperCase(fromUtf8(wanted));
    std::size_t found = uids.size();
    for (std::size_t i = 0; i < uids.size() && !uid.empty(); ++i) {
        if (uids[i] == uid) return i;
        if (!uids[i].starts_with(uid)) continue;
        if (found != uids.size())
            throw CommandFailure{
                failed, "\"" + wanted + "\" begins the ids of several " + what + "s: give more of it."};
        found = i;
    }
    if (found == uids.size())
        throw CommandFailure{failed, std::string("There is no ") + what + " with the id \"" + wanted +
                                         "\"; --verbose shows the ids."};
    return found;
}

Text textFrom(const std::vector<std::string>& words) {
    std::string text;
    if (words.size() == 1 && words.front() == "-") {
        text.assign(std::istreambuf_iterator<char>(std::cin), {});
        while (text.ends_with('\n') || text.ends_with('\r'))
            text.pop_back();
    } else {
        for (const std::string& word : words)
            text += (text.empty() ? "" : " ") + word;
    }
    if (text.find_first_not_of(" \t\r\n") == std::string::npos)
        throw CommandFailure{wrongUsage, "The text is empty."};
    return fromUtf8(text);
}

}  // namespace ovno2::host
