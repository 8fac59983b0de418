// What a restoration is going to do and what it has done, for people and as JSON.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/restore/restore_part.h"

namespace ovno2::host {

struct ReportedRestore {
    std::string source;  // what the user calls it
    const ListedPhone& phone;
    std::span<const std::unique_ptr<RestorePart>> parts;
    std::vector<std::string> problems;               // of the source
    std::map<std::string, std::size_t> goneLeftOut;  // of the source
    std::size_t messagesLeft = 0;                    // that nobody asked for
    bool isTrial = false;
    bool verbose = false;
    std::string interruption = {};  // why it ended before its end

    // Whether all of it is on the phone, or would be.
    bool isComplete() const;
};

// Before anything is written: how much is new and so on; on standard error what is left out, and why.
void tellPlan(const ReportedRestore& restore);
// Afterwards: what was written, and on standard error what was not.
void tellResult(const ReportedRestore& restore);

std::string asJson(const ReportedRestore& restore);

}  // namespace ovno2::host
