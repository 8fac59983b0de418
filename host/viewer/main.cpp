#include "host/output/console.h"
#include "host/viewer/window.h"

int main(int argc, char** argv) {
    using namespace ovno2::host;
    CommandLineAnswer answer;
    const std::optional<ViewerOptions> options = parseViewerOptions(console::arguments(argc, argv), answer);
    if (options) return showLog(*options);
    say(answer.text, answer.exitStatus != 0);
    return answer.exitStatus;
}
