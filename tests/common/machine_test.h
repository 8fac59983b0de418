// What most tests stand on: a machine of their own, natively the portable one on a profile folder, and a
// fresh thread state. Tests that script the portable machine beyond what this header shows stay native.
#pragma once

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "common/file_content.h"
#include "core/current_platform.h"
#include "core/log_front.h"

#ifdef _WIN32
#include <process.h>

#include "common/windows_machine.h"
#else
#include <sys/mman.h>

#include "platform/portable/clock.h"
#include "platform/portable/machine.h"
#include "platform/portable/processes.h"
#include "platform/portable/registry.h"
#include "platform/portable/windows.h"
#endif

namespace ovno2 {

// A folder that is removed with everything in it.
class TemporaryFolder {
  public:
    TemporaryFolder() {
#ifdef _WIN32
        static int count = 0;
        path_ = std::filesystem::temp_directory_path() /
                ("ovno2-" + std::to_string(_getpid()) + "-" + std::to_string(++count));
        std::filesystem::create_directories(path_);
#else
        std::string pattern = (std::filesystem::temp_directory_path() / "ovno2-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
#endif
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::filesystem::path& path() const {
        return path_;
    }

  private:
    std::filesystem::path path_;
};

#ifdef _WIN32
using TestMachine = WindowsMachine;
using TestClock = ChosenClock;
using TestProcesses = ChosenProcesses;
inline void makeQuick(TestMachine&) {}
#else
using TestMachine = platform::portable::Machine;
using TestClock = platform::portable::PortableClock;
using TestProcesses = platform::portable::PortableProcesses;
// A page of 4096 readable bytes with nothing readable behind it. It stays until the program ends.
inline void* pageBeforeNothing() {
    constexpr std::size_t page = 4096;
    void* const pages =
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, /*fd=*/-1, /*offset=*/0);
    mprotect(static_cast<char*>(pages) + page, page, PROT_NONE);
    return pages;
}
inline void makeQuick(TestMachine& machine) {
    static_cast<platform::portable::PortableRegistry&>(machine.registry()).waitsForDisk = false;
}
#endif

class MachineTest : public ::testing::Test {
  protected:
    MachineTest() : machine(folder.path()) {
        resetThreadState();
        usePlatform(machine);
        makeQuick(machine);
    }
    ~MachineTest() override { resetThreadState(); }

    TestClock& clock() { return static_cast<TestClock&>(machine.clock()); }
    TestProcesses& processes() { return static_cast<TestProcesses&>(machine.processes()); }

    // Stores a text value (type 1, with its terminating NUL) in the machine's registry.
    void setRegistryText(Long hive, TextView key, TextView name, TextView text) {
        writeRegistry(hive, key, name, {.type = 1, .text = Text(text) + u'\0', .bytes = {}, .number = 0});
    }
    void setRegistryNumber(Long hive, TextView key, TextView name, std::uint32_t number) {
        writeRegistry(hive, key, name, {.type = 4, .text = {}, .bytes = {}, .number = number});
    }
    void setRegistryBytes(Long hive, TextView key, TextView name, const std::string& bytes) {
        writeRegistry(hive, key, name, {.type = 3, .text = {}, .bytes = bytes, .number = 0});
    }

    TemporaryFolder folder;
    TestMachine machine;

  private:
    void writeRegistry(Long hive, TextView key, TextView name, const platform::RegistryValue& value) {
        std::unique_ptr<platform::RegistryKey> opened;
        ASSERT_EQ(0, machine.registry().create(hive, key, opened));
        ASSERT_EQ(0, opened->write(name, value));
    }
};

}  // namespace ovno2
