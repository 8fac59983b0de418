// The portable machine: a small, real implementation of the seam for every system that is not 32-bit Windows.
//
// It keeps its state in a profile folder (OVNO2_HOME, else the user's configuration folder): the registry as
// a standard .reg file. Each family stands in a file of its own; they reach each other through the machine.
// One machine serves all threads of the process. Tests make machines of their own on a temporary profile
// folder, put them in place with `usePlatform`, and script them through the public members of the families.
#pragma once

#include <filesystem>
#include <memory>

#include "platform/platform.h"

namespace ovno2::platform::portable {

// Whether locale and time-zone values that the registry does not hold come from the system. Hidden, a machine
// is the same everywhere, as tests need it.
enum class SystemValues { hidden, shown };

class Machine : public Platform {
  public:
    explicit Machine(std::filesystem::path profileFolder, SystemValues systemValues = SystemValues::hidden);
    ~Machine() override;
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    const std::filesystem::path& profileFolder() const { return profileFolder_; }
    bool answersFromSystem() const { return systemValues_ == SystemValues::shown; }

    Registry& registry() override { return *registry_; }
    Files& files() override { return *files_; }
    SharedMemory& sharedMemory() override { return *sharedMemory_; }
    Processes& processes() override { return *processes_; }
    Windows& windows() override { return *windows_; }
    Locale& locale() override { return *locale_; }
    Clock& clock() override { return *clock_; }
    CodePages& codePages() override { return *codePages_; }
    Memory& memory() override { return *memory_; }
    Libraries& libraries() override { return *libraries_; }
    Automation& automation() override { return *automation_; }

  private:
    std::filesystem::path profileFolder_;
    SystemValues systemValues_;
    std::unique_ptr<Registry> registry_;
    std::unique_ptr<Files> files_;
    std::unique_ptr<SharedMemory> sharedMemory_;
    std::unique_ptr<Processes> processes_;
    std::unique_ptr<Windows> windows_;
    std::unique_ptr<Locale> locale_;
    std::unique_ptr<Clock> clock_;
    std::unique_ptr<CodePages> codePages_;
    std::unique_ptr<Memory> memory_;
    std::unique_ptr<Libraries> libraries_;
    std::unique_ptr<Automation> automation_;
};

// The families, each made by its own file. A family may keep the reference to its machine.
std::unique_ptr<Registry> makeRegistry(Machine& machine);
std::unique_ptr<Files> makeFiles(Machine& machine);
std::unique_ptr<SharedMemory> makeSharedMemory(Machine& machine);
std::unique_ptr<Processes> makeProcesses(Machine& machine);
std::unique_ptr<Windows> makeWindows(Machine& machine);
std::unique_ptr<Locale> makeLocale(Machine& machine);
std::unique_ptr<Clock> makeClock(Machine& machine);
std::unique_ptr<CodePages> makeCodePages(Machine& machine);
std::unique_ptr<Memory> makeMemory(Machine& machine);
std::unique_ptr<Libraries> makeLibraries(Machine& machine);
std::unique_ptr<Automation> makeAutomation(Machine& machine);

}  // namespace ovno2::platform::portable
