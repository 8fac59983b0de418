// What the viewer's command line can ask for.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/viewer/published_viewer.h"

namespace CLI {
class App;
}

namespace ovno2::host {

struct ViewerOptions {
    LogMode mode = LogMode::shared;
    std::optional<Long> level;  // 0 to 15
    std::string routine;        // empty = all lines
    std::string saveFile;       // empty = none
};

// What to say instead of starting: the help, or what is wrong.
struct CommandLineAnswer {
    std::string text;
    int exitStatus;
};

// The program's options and help texts; they go to `options`, which must live as long.
std::unique_ptr<CLI::App> makeViewerCommandLine(ViewerOptions& options);

// `arguments` begin with the program's name. Without options `answer` holds what to say.
std::optional<ViewerOptions> parseViewerOptions(const std::vector<std::string>& arguments,
                                                CommandLineAnswer& answer);

}  // namespace ovno2::host
