// What a command has done to a phone's items, for people and as JSON: the same for all kinds of items.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/output/text.h"

namespace ovno2::host {

struct ReportedItem {
    enum class Result { unchanged, added, changed, removed, failed };

    std::string title;  // what messages call it; UTF-8, as are the others
    Result result = Result::unchanged;
    Text uid = {};                           // by which the phone knows it; empty = not known
    std::string fields = {};                 // of one that changes: which
    std::string message = {};                // of one that failed: why
    std::vector<std::string> unplaced = {};  // what the phone has no place for
};

struct ReportOptions {
    bool asJson = false;
    bool dryRun = false;
    bool verbose = false;  // every item by name
};

// For people: what failed and what found no place on standard error, and on standard output one line with the
// numbers. JSON is as in writeChangesAsJson().
void reportChanges(std::span<const ReportedItem> items, const ReportOptions& wanted);

// An array with an object an item: "name", "uid", "result" ("added", "changed", "removed", "unchanged",
// "failed", or "would be added" and so on), "fields" that change, "message", "unplaced".
void writeChangesAsJson(std::span<const ReportedItem> items, bool dryRun);

// Gives those that were to be changed a failure.
void failAll(std::span<ReportedItem> items, const std::string& message);

}  // namespace ovno2::host
