// What stands for the scripted machine on Windows: the real platform, with a registry of its own, and with
// connectivity libraries, clock and programs as a test wants them.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace ovno2 {

// The libraries of a folder, less those that the machine pretends not to have.
class ChosenLibraries : public platform::Libraries {
  public:
    std::unique_ptr<platform::Library> load(TextView name) override;
    Text moduleFolder() override { return platform::nativePlatform().libraries().moduleFolder(); }
    Text moduleName() override { return u"ovNo2"; }

    void searchOnlyIn(std::filesystem::path folder) { folder_ = std::move(folder); }
    std::set<Text> missingLibraries;
    std::set<std::string, std::less<>> missingFunctions;

  private:
    std::filesystem::path folder_;
};

// The system's clock, until a test stops it as it stops the portable machine's.
class ChosenClock : public platform::Clock {
  public:
    platform::SystemTime localTime() override;
    Single secondsSinceMidnight() override;
    void sleep(std::uint32_t milliseconds) override;
    bool fileTimeToSystemTime(std::uint64_t fileTime, platform::SystemTime& time) override {
        return native_.fileTimeToSystemTime(fileTime, time);
    }

    void set(const platform::SystemTime& local);
    void advance(std::chrono::milliseconds time);
    std::vector<std::uint32_t> sleeps() const { return sleeps_; }

  private:
    platform::Clock& native_ = platform::nativePlatform().clock();
    std::optional<std::chrono::local_time<std::chrono::milliseconds>> stoppedAt_;
    std::vector<std::uint32_t> sleeps_;
};

// The system's programs, but for what a test does in the place of starting one.
class ChosenProcesses : public platform::Processes {
  public:
    FailureNumber start(TextView commandLine, Long show) override { return native_.start(commandLine, show); }
    Long shellExecute(TextView verb, TextView file, TextView parameters, Long show) override {
        return onShellExecute ? onShellExecute(verb, file, parameters, show)
                              : native_.shellExecute(verb, file, parameters, show);
    }
    std::unique_ptr<platform::CapturedCommand> startCaptured(TextView commandLine) override {
        return onStartCaptured ? onStartCaptured(commandLine) : native_.startCaptured(commandLine);
    }
    Long platformFamily() override { return native_.platformFamily(); }
    bool listByStatus(std::vector<platform::ProcessEntry>& processes) override {
        return native_.listByStatus(processes);
    }
    bool listBySnapshot(std::vector<platform::ProcessEntry>& processes) override {
        return native_.listBySnapshot(processes);
    }
    void visitThreads(const std::function<bool(const platform::ThreadEntry&)>& visit) override {
        native_.visitThreads(visit);
    }
    Text deviceName(TextView drive) override { return native_.deviceName(drive); }
    Text specialFolder(Long id) override { return native_.specialFolder(id); }
    bool fileVersion(TextView path, platform::FileVersion& version) override {
        return native_.fileVersion(path, version);
    }
    Text environment(TextView name) override { return native_.environment(name); }
    Text temporaryFolder() override { return native_.temporaryFolder(); }

    std::function<Long(TextView verb, TextView file, TextView parameters, Long show)> onShellExecute;
    std::function<std::unique_ptr<platform::CapturedCommand>(TextView commandLine)> onStartCaptured;

  private:
    platform::Processes& native_ = platform::nativePlatform().processes();
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
    ChosenProcesses& processes() override { return processes_; }
    platform::Windows& windows() override { return native_.windows(); }
    platform::Locale& locale() override { return native_.locale(); }
    ChosenClock& clock() override { return clock_; }
    platform::CodePages& codePages() override { return native_.codePages(); }
    platform::Memory& memory() override { return native_.memory(); }
    ChosenLibraries& libraries() override { return libraries_; }
    platform::Automation& automation() override { return native_.automation(); }

  private:
    platform::Platform& native_ = platform::nativePlatform();
    std::wstring formats_[2];  // the user's own
    ChosenLibraries libraries_;
    ChosenClock clock_;
    ChosenProcesses processes_;
};

// A page of 4096 readable bytes with nothing readable behind it. It stays until the program ends.
void* pageBeforeNothing();

}  // namespace ovno2
