// Changes of a phone's messages and notes, each of which the phone keeps whole or not at all.
#pragma once

#include <functional>
#include <span>

#include "host/output/change_report.h"
#include "host/phones/attached_phones.h"

namespace ovno2::host {

using DataChange = std::function<Long(PhoneDriver&)>;

// Says what was done with the items: a JSON array (change_report.h), or `text` for people.
void tellDone(bool asJson, std::span<const ReportedItem> items, bool dryRun, const std::string& text);

// Carries out a step with them; the JSON of one that throws CommandFailure says so of each.
void tellFailure(bool asJson, std::span<ReportedItem> items, const std::function<void()>& step);

// Gives those that the phone still has, `uids`, a failure; says how many.
std::size_t failThoseStillThere(std::span<ReportedItem> removed, std::span<const Text> uids);

// The first line of a text, for messages; UTF-8.
std::string beginOf(TextView text);

// Asks for changes of one store, of messages those of one folder, and has the phone keep them. Throws
// CommandFailure when it refuses one of them: then it has kept none.
void carryOut(const AttachedPhones& phones, const ListedPhone& phone, std::span<const DataChange> changes);

// The place of the item whose uid is `wanted`, or the only one whose uid begins with it; letter case does not
// count. Throws CommandFailure without one.
std::size_t placeOf(std::span<const Text> uids, const std::string& wanted, const char* what);

// The words of a line as one text; a single "-" stands for what standard input holds. Throws CommandFailure
// for a text without a character.
Text textFrom(const std::vector<std::string>& words);

}  // namespace ovno2::host
