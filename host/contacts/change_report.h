// What a command has done to a phone's contacts, for people and as JSON.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/contacts/contact_changes.h"

namespace ovno2::host {

struct ReportedContact {
    std::string title;
    std::size_t change = none;          // in the list of changes; `none` = the phone has it as it is
    std::vector<std::string> unplaced;  // what the phone has no place for

    static constexpr std::size_t none = static_cast<std::size_t>(-1);
};

struct ReportOptions {
    bool asJson = false;
    bool dryRun = false;
    bool verbose = false;  // every contact by name
};

// For people: what failed and what found no place on standard error, and on standard output one line with
// the numbers. JSON is an array with an object a contact: "name", "result" ("added", "changed", "removed",
// "unchanged", "failed", or "would be added" and so on), "fields" that change, "message", "unplaced".
void reportChanges(std::span<const ReportedContact> contacts, std::span<const ContactChange> changes,
                   const ReportOptions& wanted);

}  // namespace ovno2::host
