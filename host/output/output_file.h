// A file that a command writes for its user: whole or not at all, and for the user alone.
#pragma once

#include <fstream>
#include <memory>

#include "host/output/incoming.h"

namespace ovno2::host {

class OutputFile {
  public:
    // "-" is standard output. Throws CommandFailure for a file that is there, unless it `overwrites`, and for
    // a folder that cannot be written.
    OutputFile(const std::string& name, bool overwrites);

    // Throw CommandFailure where the bytes find no room; nothing is left behind then.
    void write(std::string_view bytes);
    void finish();  // what has been written is in its place now

  private:
    [[noreturn]] void fail(const std::string& why) const;

    std::string name_;
    bool overwrites_;
    std::filesystem::path place_;         // empty = standard output
    std::unique_ptr<Incoming> incoming_;  // where it is written
    std::ofstream file_;
};

}  // namespace ovno2::host
