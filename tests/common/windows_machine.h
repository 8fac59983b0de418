// What stands for the scripted machine on Windows: the real platform, with a registry of its own and the
// connectivity libraries as a test wants them.
#pragma once

#include <filesystem>
#include <set>
#include <string>

#include "platform/platform.h"

namespace ovno2 {

// The libraries of a folder, less those that the machine pretends not to have.
class ChosenLibraries : public platform::Libraries {
  public:
    std::unique_ptr<platform::Library> load(TextView name) override;
    Text moduleFolder() override;
    Text moduleName() override { return u"ovNo2"; }

    void searchOnlyIn(std::filesystem::path folder) { folder_ = std::move(folder); }
    std::set<Text> missingLibraries;
    std::set<std::string> missingFunctions;
    std::filesystem::path moduleFolderOverride;  // empty = the running program's

  private:
    std::filesystem::path folder_;
};

class WindowsMachine : public platform::Platform {
  public:
    // As long as it lives, the machine's and the user's part of the registry are empty for this process, and
    // the user has the date and time formats of the portable machine.
    explicit WindowsMachine(const std::filesystem::path&);
    ~WindowsMachine() override;
    WindowsMachine(const WindowsMachine&) = delete;
    WindowsMachine& operator=(const WindowsMachine&) = delete;

    platform::Registry& registry() override { return native_.registry(); }
    platform::Files& files() override { return native_.files(); }
    platform::SharedMemory& sharedMemory() override { return native_.sharedMemory(); }
    platform::Processes& processes() override { return native_.processes(); }
    platform::Windows& windows() override { return native_.windows(); }
    platform::Locale& locale() override { return native_.locale(); }
    platform::Clock& clock() override { return native_.clock(); }
    platform::CodePages& codePages() override { return native_.codePages(); }
    platform::Memory& memory() override { return native_.memory(); }
    ChosenLibraries& libraries() override { return libraries_; }
    platform::Automation& automation() override { return native_.automation(); }

  private:
    platform::Platform& native_ = platform::nativePlatform();
    std::wstring formats_[2];  // the user's own
    ChosenLibraries libraries_;
};

// A page of 4096 readable bytes with nothing readable behind it. It stays until the program ends.
void* pageBeforeNothing();

}  // namespace ovno2
