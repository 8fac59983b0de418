#include "host/archive/archive_run.h"

#include "host/archive/archive_times.h"
#include "host/files/fetcher.h"

namespace ovno2::host {

std::string ArchiveRun::startedText() const {
    return utcText(started);
}

void ArchiveRun::goOnOrEnd() const {
    if (interruption.signal() != 0) throw BrokenOff{128 + interruption.signal(), interrupted};
}

void ArchiveRun::lose(const char* section, std::string item, std::string what) {
    losses.push_back({section, /*isUnread=*/false, std::move(item), std::move(what)});
}

// Where the driver hands texts over through a code page, what that lacks becomes "?".
void ArchiveRun::looseCharacters(const char* section, const std::string& item, std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    if (text.find(replacement) != std::string_view::npos)
        lose(section, item, "A character of it is none, and stands as \xEF\xBF\xBD.");
    else if (isWindows && text.find('?') != std::string_view::npos)
        lose(section, item, "A \"?\" in it may stand for a character that this system's code page lacks.");
}

}  // namespace ovno2::host
