#include "platform/portable/machine.h"

#include <cstdlib>
#include <unistd.h>

#include "platform/portable/registry.h"
#include "platform_native/thread_value.h"

namespace ovno2::platform {

namespace portable {

Machine::Machine(std::filesystem::path profileFolder, SystemValues systemValues)
    : profileFolder_(std::move(profileFolder)), systemValues_(systemValues) {
    registry_ = makeRegistry(*this);
    files_ = makeFiles(*this);
    sharedMemory_ = makeSharedMemory(*this);
    processes_ = makeProcesses(*this);
    windows_ = makeWindows(*this);
    locale_ = makeLocale(*this);
    clock_ = makeClock(*this);
    codePages_ = makeCodePages(*this);
    memory_ = makeMemory(*this);
    libraries_ = makeLibraries(*this);
    automation_ = makeAutomation(*this);
}

Machine::~Machine() = default;

namespace {

std::filesystem::path defaultProfileFolder() {
    if (const char* home = std::getenv("OVNO2_HOME"); home && *home) return home;
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && *config)
        return std::filesystem::path(config) / "ovno2";
    if (const char* home = std::getenv("HOME"); home && *home)
        return std::filesystem::path(home) / ".config" / "ovno2";
    return std::filesystem::temp_directory_path() / ("ovno2-" + std::to_string(geteuid()));
}

// Its destructor runs when the thread ends.
struct ReleaseAtThreadEnd {
    ~ReleaseAtThreadEnd() {
        if (!currentStorage.value) return;
        currentStorage.release(currentStorage.value);
        currentStorage.value = nullptr;
    }
};

}  // namespace

constinit thread_local ThreadStorage currentStorage;

}  // namespace portable

Platform& nativePlatform() {
    struct NativeMachine : portable::Machine {
        NativeMachine() : Machine(portable::defaultProfileFolder(), portable::SystemValues::shown) {
            static_cast<portable::PortableRegistry&>(registry()).trustsFileFor = std::chrono::milliseconds(1);
        }
    };
    static NativeMachine machine;
    return machine;
}

ThreadStorage& threadStorage() {
    if (!portable::currentStorage.value) thread_local const portable::ReleaseAtThreadEnd release;
    return portable::currentStorage;
}

}  // namespace ovno2::platform
