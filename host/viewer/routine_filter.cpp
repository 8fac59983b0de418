#include "host/viewer/routine_filter.h"

#include "host/output/text.h"

namespace ovno2::host {

namespace {

enum class Mark { none, entry, exit };

struct Parts {
    std::size_t indent = 0;
    Mark mark = Mark::none;
    TextView routine;
};

// "[ovNo2]   <GetDevices>_", perhaps behind the time and ": ".
Parts partsOf(TextView line) {
    constexpr TextView tagEnd = u"] ";
    Parts parts;
    if (const std::size_t tag = line.find(tagEnd); tag != TextView::npos)
        line.remove_prefix(tag + tagEnd.size());
    parts.indent = std::min(line.find_first_not_of(u' '), line.size());
    line.remove_prefix(parts.indent);
    if (line.starts_with(u"</") && line.ends_with(u">")) {
        parts.mark = Mark::exit;
        parts.routine = line.substr(2, line.size() - 3);
    } else if (line.starts_with(u"<") && line.ends_with(u">_")) {
        parts.mark = Mark::entry;
        parts.routine = line.substr(1, line.size() - 3);
    }
    return parts;
}

}  // namespace

RoutineFilter::RoutineFilter(TextView routine) : routine_(lowerCase(routine)) {}

bool RoutineFilter::shows(TextView line) {
    if (routine_.empty()) return true;
    const Parts parts = partsOf(line);
    if (parts.mark == Mark::none || lowerCase(parts.routine) != routine_) return open_ > 0;
    if (parts.mark == Mark::exit) {
        const bool shown = open_ > 0;
        if (shown) --open_;
        return shown;
    }
    if (open_ == 0 || parts.indent <= outermost_) {
        open_ = 0;
        outermost_ = parts.indent;
    }
    ++open_;
    return true;
}

}  // namespace ovno2::host
