// Files of an image: reading one whole, the error that names what is wrong with one, and how one is changed:
// under the image's lock, by a file that is written beside the old one and moved over it. No state.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "simulator/system/system.h"

namespace ovno2::simulator {

// "FILE: PLACE: expected WHAT"; without a place when it is about all of it.
struct ImageError : std::runtime_error {
    ImageError(const std::filesystem::path& file, std::string_view place, std::string_view expected);
};

// The bytes of a file, with a NUL behind them.
struct FileBytes {
    std::unique_ptr<char[]> data;
    std::size_t size = 0;

    operator std::string_view() const { return {data.get(), size}; }
};

// Throws ImageError when it is no file or cannot be read.
FileBytes readWhole(const std::filesystem::path& file);

// Keeps every other process out of an image or a phones folder while its stores are read or changed; a phone
// without an image (an empty name) needs none. Throws ImageError when the folder cannot be read or its turn
// never comes.
system::FolderLock lockImage(const std::filesystem::path& folder);

// Removes what a process that was killed has left of its work. Under the folder's lock.
void removeLeftovers(const std::filesystem::path& folder);

// New bytes for a file of the image `folder`, safely on disk beside what they will replace. Under the image's
// lock; goes with the object unless it has been moved. Failures are std::system_error.
class IncomingFile {
  public:
    IncomingFile(const std::filesystem::path& folder, std::span<const char> bytes);
    ~IncomingFile();
    IncomingFile(const IncomingFile&) = delete;
    IncomingFile& operator=(const IncomingFile&) = delete;

    // In one step, and on disk when it returns. Whoever could read the old file can read the new one; without
    // an old one that is the owner alone.
    void moveTo(const std::filesystem::path& target);

  private:
    void remove() const;

    std::filesystem::path name;
};

}  // namespace ovno2::simulator
