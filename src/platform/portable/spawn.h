// Starting programs: command lines taken apart the way the module's platform does, and processes that belong
// to nobody.
//
// A started program is the child of the system's init, not of this process, so that nothing is left to reap
// when its starter forgets it; it inherits the environment and the current folder, and of the open files only
// what it is given.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "base/types.h"

namespace ovno2::platform::portable {

// A file descriptor that closes itself; -1 = none.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : descriptor_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        close();
        descriptor_ = other.release();
        return *this;
    }
    int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    int release();
    void close();

  private:
    int descriptor_ = -1;
};

// Both ends close on exec and lie above the standard streams. Returns 0 or an errno value.
int makePipe(Descriptor& readEnd, Descriptor& writeEnd);

// The arguments of a command line: blanks separate, double quotes hold together, backslashes before a quote
// come in pairs.
std::vector<Text> splitArguments(TextView commandLine);

// Runs `program` with `arguments` (the first is its own name). Its input is empty; its output and errors go
// to `output`, or nowhere when that is -1. `ownSession` takes it off the caller's terminal. Returns 0 once
// the program itself runs, or the errno value with which it could not be run.
int spawn(const std::filesystem::path& program, const std::vector<std::string>& arguments, int output,
          bool ownSession);

}  // namespace ovno2::platform::portable
