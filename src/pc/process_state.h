// What the process and shell modules keep on the thread between calls.
#pragma once

#include <vector>

#include "pc/process.h"
#include "platform/thread_state.h"

namespace ovno2 {

struct ProcessState {
    static constexpr StateSlot slot = StateSlot::processes;
    std::vector<Process::Record> list;  // of the last enumeration
    Long platformFamily = 0;            // 1 = Windows 9x, 2 = NT; 0 = not asked yet
    Text lastCommand;                   // of CaptureDos, for a repeat
    Text lastOutput;                    // what it wrote, as returned
};

}  // namespace ovno2
