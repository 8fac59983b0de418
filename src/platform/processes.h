// Programs, processes, special folders and file versions.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/types.h"

namespace ovno2::platform {

// A console command whose standard output and error are read through a pipe; its input is empty. Destroying
// it closes the handles; the command is left alone.
class CapturedCommand {
  public:
    enum class Outcome { data, end, timedOut };
    virtual ~CapturedCommand() = default;
    // Waits for output for at most `milliseconds`. With `data`, `bytes` holds 1 to `limit` bytes; otherwise
    // it is empty. `end`: the command and whatever it started have closed the pipe.
    virtual Outcome read(std::string& bytes, std::size_t limit, std::uint32_t milliseconds) = 0;
};

struct ProcessEntry {
    Long id = 0;
    // The executable's full path, in drive form or device form ("\\Device\\..."). Empty (status method) or
    // the bare name, in square brackets for a process without an executable (snapshot method), when it is
    // hidden.
    Text path;
    Long handle = 0;  // the handle under which the process was opened while listing; 0 = none
};

struct ThreadEntry {
    Long id = 0;
    Long processId = 0;
};

// The fixed version record of an executable; 16-bit parts, most significant first.
struct FileVersion {
    std::uint16_t file[4] = {};
    std::uint16_t product[4] = {};
};

class Processes {
  public:
    virtual ~Processes() = default;
    // Starts a command line without waiting. 53 when the program is not found; an unquoted program path may
    // hold blanks. `show` is the platform's window show value.
    virtual FailureNumber start(TextView commandLine, Long show) = 0;
    // The shell's open: 33 or more started, 0 to 32 failed (2 not found, 5 refused, 31 nothing opens it).
    // Without parameters the classic ANSI call is made.
    virtual Long shellExecute(TextView verb, TextView file, TextView parameters, Long show) = 0;
    virtual std::unique_ptr<CapturedCommand> startCaptured(TextView commandLine) = 0;  // null: not started
    virtual Long platformFamily() = 0;  // 1 = Windows 9x family, 2 = NT family
    // All processes, also those that cannot be opened; false when there is no list.
    virtual bool listByStatus(std::vector<ProcessEntry>& processes) = 0;    // process-status method
    virtual bool listBySnapshot(std::vector<ProcessEntry>& processes) = 0;  // snapshot method
    // Shows every thread of the system to `visit` until that returns false.
    virtual void visitThreads(const std::function<bool(const ThreadEntry&)>& visit) = 0;
    virtual Text deviceName(TextView drive) = 0;  // the device behind "C:"; empty when there is no such drive
    virtual Text specialFolder(Long id) = 0;      // empty when the platform does not know it
    virtual bool fileVersion(TextView path, FileVersion& version) = 0;
    virtual Text environment(TextView name) = 0;
    virtual Text temporaryFolder() = 0;  // the system temporary folder, ending in "\"
};

}  // namespace ovno2::platform
