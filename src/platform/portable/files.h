// Local files of the portable machine: the system's own, under Windows paths (paths.h).
//
// Read-only is a file without write permission; hidden is an extended attribute, the one that file servers
// use. A path of 260 characters or more can be looked up and read only with "\\?\" in front, as on Windows;
// nothing else minds its length.
//
// Tests script it through the public members.
#pragma once

#include <functional>

#include "platform/file_numbers.h"
#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

class PortableFiles : public Files {
  public:
    explicit PortableFiles(Machine& machine) : machine_(machine) {}

    FailureNumber open(Long number, TextView path, FileAccess access, OpenFile*& file) override;
    void close(Long number) override { numbers_.close(number); }
    FailureNumber openWide(TextView path, std::unique_ptr<OpenFile>& file) override;
    bool pathExists(TextView path) override;
    Long attributes(TextView path) override;
    FailureNumber setAttributes(TextView path, Long attributes) override;
    Text shortPath(TextView path) override;
    FailureNumber makeFolder(TextView path) override;
    Long makeFolderTree(TextView path) override;
    FailureNumber remove(TextView path) override;

    // Asked first by the calls of their name; a failure or status it gives is reported and nothing is done.
    std::function<FailureNumber(Long number, TextView path, FileAccess access)> onOpen;
    std::function<FailureNumber(TextView path)> onMakeFolder;
    std::function<Long(TextView path)> onMakeFolderTree;
    // Given every file that was opened; may put one of its own around it.
    std::function<std::unique_ptr<OpenFile>(std::unique_ptr<OpenFile> file)> onOpened;

  private:
    Machine& machine_;
    FileNumbers numbers_;
};

}  // namespace ovno2::platform::portable
