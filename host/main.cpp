#include "host/commands.h"
#include "host/console.h"

int main(int argc, char** argv) {
    using namespace ovno2::host;
    int exitStatus = 0;
    const std::optional<Options> options = parseCommandLine(console::arguments(argc, argv), exitStatus);
    return options ? runCommand(*options) : exitStatus;
}
