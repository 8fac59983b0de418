#include "platform/win32/windows_platform.h"

namespace ovno2::platform {

namespace win32 {

namespace {

class WindowsPlatform : public Platform {
  public:
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
    std::unique_ptr<Registry> registry_ = makeRegistry();
    std::unique_ptr<Files> files_ = makeFiles();
    std::unique_ptr<SharedMemory> sharedMemory_ = makeSharedMemory();
    std::unique_ptr<Processes> processes_ = makeProcesses();
    std::unique_ptr<Windows> windows_ = makeWindows();
    std::unique_ptr<Locale> locale_ = makeLocale();
    std::unique_ptr<Clock> clock_ = makeClock();
    std::unique_ptr<CodePages> codePages_ = makeCodePages();
    std::unique_ptr<Memory> memory_ = makeMemory();
    std::unique_ptr<Libraries> libraries_ = makeLibraries();
    std::unique_ptr<Automation> automation_ = makeAutomation();
};

}  // namespace

}  // namespace win32

Platform& nativePlatform() {
    static win32::WindowsPlatform platform;
    return platform;
}

}  // namespace ovno2::platform
