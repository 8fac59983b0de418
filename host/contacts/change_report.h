// What a command has done to a phone's contacts, for people and as JSON.
#pragma once

#include "host/contacts/contact_changes.h"
#include "host/output/change_report.h"

namespace ovno2::host {

struct ReportedContact {
    std::string title;
    std::size_t change = none;          // in the list of changes; `none` = the phone has it as it is
    std::vector<std::string> unplaced;  // what the phone has no place for

    static constexpr std::size_t none = static_cast<std::size_t>(-1);
};

void reportChanges(std::span<const ReportedContact> contacts, std::span<const ContactChange> changes,
                   const ReportOptions& wanted);

}  // namespace ovno2::host
