#include "host/all_commands.h"
#include "host/output/console.h"

int main(int argc, char** argv) {
    using namespace ovno2::host;
    console::useLargePages();
    return runCommandLine(console::arguments(argc, argv), allCommands);
}
