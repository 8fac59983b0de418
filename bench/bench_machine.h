// The portable machine of a benchmark, in a folder that goes away with it.
#pragma once

#include <cstdlib>
#include <filesystem>

#include "core/current_platform.h"
#include "log/debug_log.h"
#include "platform/portable/machine.h"

namespace ovno2 {

class BenchMachine {
  public:
    BenchMachine() {
        resetThreadState();
        usePlatform(machine);
        DebugLog::connect();
    }
    ~BenchMachine() {
        resetThreadState();
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    BenchMachine(const BenchMachine&) = delete;
    BenchMachine& operator=(const BenchMachine&) = delete;

    void writeRegistry(TextView key, TextView name, const Text& text) {
        std::unique_ptr<platform::RegistryKey> opened;
        machine.registry().create(platform::currentUser, key, opened);
        opened->write(name, {.type = 1, .text = text, .bytes = {}, .number = 0});
    }
    void switchLogOn() {
        writeRegistry(u"Software\\Tessaline\\Debug", u"DebugFile", (folder / "log.txt").u16string());
        writeRegistry(u"Software\\Tessaline\\Debug", u"On", u"1");
        DebugLog::DebugInit();
    }

    const std::filesystem::path folder = makeFolder();
    platform::portable::Machine machine{folder};

  private:
    static std::filesystem::path makeFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ovno2-bench-XXXXXX").string();
        return mkdtemp(pattern.data());
    }
};

}  // namespace ovno2
