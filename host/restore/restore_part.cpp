#include "host/restore/restore_part.h"

#include <algorithm>

#include "host/output/command_output.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

std::size_t RestorePart::count(RestoreItem::State state) const {
    return static_cast<std::size_t>(std::ranges::count(items_, state, &RestoreItem::state));
}

void RestorePart::giveUp(const std::string& why) {
    for (RestoreItem& item : items_)
        if (isToBeWritten(item) && !item.isWritten && item.failure.empty()) item.failure = why;
}

void requireKnown(const std::vector<std::string>& missing) {
    if (missing.empty()) return;
    std::string all = "Nothing is written: what the phone has must be known first.";
    for (const std::string& message : missing)
        all += " " + message;
    throw CommandFailure{failed, all};
}

}  // namespace ovno2::host
