// Programs, processes and folders of the portable machine: the system's own, seen with the module's eyes.
//
// Tests script it through the public members; each replaces what the system would say or do.
#pragma once

#include <functional>
#include <map>
#include <optional>

#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

class PortableProcesses : public Processes {
  public:
    explicit PortableProcesses(Machine& machine) : machine_(machine) {}

    FailureNumber start(TextView commandLine, Long show) override;
    Long shellExecute(TextView verb, TextView file, TextView parameters, Long show) override;
    std::unique_ptr<CapturedCommand> startCaptured(TextView commandLine) override;
    Long platformFamily() override { return family; }
    bool listByStatus(std::vector<ProcessEntry>& processes) override;
    bool listBySnapshot(std::vector<ProcessEntry>& processes) override;
    void visitThreads(const std::function<bool(const ThreadEntry&)>& visit) override;
    Text deviceName(TextView drive) override;
    Text specialFolder(Long id) override;
    bool fileVersion(TextView path, FileVersion& version) override;
    Text environment(TextView name) override;
    Text temporaryFolder() override;

    // Called instead of starting anything.
    std::function<FailureNumber(TextView commandLine, Long show)> onStart;
    std::function<Long(TextView verb, TextView file, TextView parameters, Long show)> onShellExecute;
    std::function<std::unique_ptr<CapturedCommand>(TextView commandLine)> onStartCaptured;
    // Listed by both methods instead of the system's processes.
    std::optional<std::vector<ProcessEntry>> running;
    // Special folders by id instead of the user's; an empty one is unknown.
    std::map<Long, Text> folders;
    Long family = 2;

  private:
    template <class PathOf>
    bool list(std::vector<ProcessEntry>& processes, PathOf&& pathOf);

    Machine& machine_;
};

}  // namespace ovno2::platform::portable
