// Open files of the portable machine, on the system's own calls.
#pragma once

#include <filesystem>
#include <memory>

#include "platform/files.h"

namespace ovno2::platform::portable {

// The failure number of an errno value; `forReading` decides what a missing file is.
FailureNumber failureOfErrno(int error, bool forReading);

// What the machine makes is for its owner alone: a phone's content, logs, the profile.
inline constexpr unsigned newFileMode = 0600;
inline constexpr unsigned newFolderMode = 0700;

// Makes a folder and all that are missing above it, for the owner alone. 0, also when it is there, or an
// errno value.
int makeFolders(const std::filesystem::path& folder);

// True for a file that no one may write (no write permission at all), or that bears the hidden mark.
bool isReadOnly(unsigned mode);
bool isHidden(const std::filesystem::path& path);
// Sets or clears the hidden mark; 0 or an errno value (file systems without extended attributes have none).
int markHidden(const std::filesystem::path& path, bool hidden);

FailureNumber openForReading(const std::filesystem::path& path, std::unique_ptr<OpenFile>& file);
FailureNumber openForAppending(const std::filesystem::path& path, std::unique_ptr<OpenFile>& file);
// The new content goes into a file beside the target and takes its place, permissions and owner when it is
// closed. What is no ordinary file (a device, a pipe) is written to directly.
FailureNumber openForReplacing(const std::filesystem::path& path, std::unique_ptr<OpenFile>& file);

}  // namespace ovno2::platform::portable
