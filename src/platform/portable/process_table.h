// The system's processes as /proc tells them.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ovno2::platform::portable {

struct SystemProcess {
    pid_t id = 0;
    std::filesystem::path
        program;            // the executable, or the script that an interpreter runs; empty when hidden
    std::string shortName;  // at most 15 bytes of the program's name, known for every process
    bool ownedByUser = false;
};

// False when /proc cannot be read. Processes that have ended and wait for their parent are left out.
bool systemProcesses(std::vector<SystemProcess>& processes);

// Calls `visit` with (thread id, process id) until it returns false.
void visitThreads(const std::function<bool(pid_t, pid_t)>& visit);

}  // namespace ovno2::platform::portable
