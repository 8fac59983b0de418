// The machine of a fuzz program, in a folder of its own that goes with the process.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "core/current_platform.h"
#include "dates/iso_date.h"
#include "platform/portable/machine.h"

namespace ovno2 {

struct FuzzHome {
    FuzzHome() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ovno2-fuzz-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        machine = std::make_unique<platform::portable::Machine>(folder);
        resetThreadState();
        usePlatform(*machine);
        ISODate::DateTimeInit();
    }
    ~FuzzHome() { std::filesystem::remove_all(folder); }

    std::filesystem::path folder;
    std::unique_ptr<platform::portable::Machine> machine;
};

}  // namespace ovno2
