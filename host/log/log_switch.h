// The switches of the module's diagnostic log, which are values of the registry, and the log's file as it
// grows.
//
// No state. A module that runs already with its log off notices when it is switched on; any other change
// counts for programs that start afterwards.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "host/output/text.h"

namespace ovno2::host {

struct LogState {
    bool on = false;
    std::filesystem::path file;  // empty = none
    Long level = 0;              // 0 to 15; detail lines above it are not sent to a viewer
    bool timestamps = false;
};

LogState logState();

// Each returns false when the registry cannot be written.
bool switchLogOn();
bool switchLogOff();
bool setLogFile(const std::filesystem::path& file);  // absolute
bool setLogLevel(Long level, bool timestamps);

// What has been added to a log since the last look, as UTF-8. The file may not exist yet, and may begin anew.
class LogFollower {
  public:
    // Begins at the end of what is there, less the last `lines` lines.
    LogFollower(std::filesystem::path file, std::size_t lines);

    std::string more();

  private:
    std::filesystem::path file_;
    std::uintmax_t position_ = 0;
};

}  // namespace ovno2::host
