// Libraries by name: `lib<Name>.so` in the folder that the registry's PlatformPath names, else beside the
// program.
#pragma once

#include <filesystem>
#include <set>
#include <string>

#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

class PortableLibraries : public Libraries {
  public:
    explicit PortableLibraries(Machine& machine) : machine_(machine) {}

    std::unique_ptr<Library> load(TextView name) override;
    Text moduleFolder() override;
    Text moduleName() override { return u"ovNo2"; }

    // Looks in this folder only; empty = the registry decides.
    void searchOnlyIn(std::filesystem::path folder) { folder_ = std::move(folder); }
    // What the machine pretends not to have: library names as in `load`, function names as in `symbol`.
    std::set<Text> missingLibraries;
    std::set<std::string, std::less<>> missingFunctions;
    // The folder that counts as the module's own; empty = the running program's.
    std::filesystem::path moduleFolderOverride;

  private:
    Machine& machine_;
    std::filesystem::path folder_;
};

}  // namespace ovno2::platform::portable
