// What the simulator needs from the system it runs on: pages of memory, the environment, its own place, and
// files that survive a killed process.
//
// One source a platform (system_portable.cpp, system_win32.cpp). No state. Called by every part of the
// simulator; failures of the file functions are exceptions of type std::system_error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ovno2::simulator::system {

// Pages come in units of this many bytes, aligned to it.
inline constexpr std::size_t pageUnit = 65536;

// Readable and writable zeroed memory of `bytes` (a multiple of pageUnit) whose addresses fit in 31 bits.
// Null when there is none.
void* takePages(std::size_t bytes);
void givePages(void* pages, std::size_t bytes);

// For memory of any kind that is filled in one go: it comes in large pages where the system has them.
void preferLargePages(void* memory, std::size_t bytes);

// Takes the pages' access away: reading them faults from now on.
void protectPages(void* pages, std::size_t bytes);

// Marks memory as not to be touched, for builds with an address checker; otherwise nothing.
void poison(void* memory, std::size_t bytes);
void unpoison(void* memory, std::size_t bytes);

// Whether `bytes` at `memory` can be read without a fault.
bool readable(const void* memory, std::size_t bytes);

// The value of an environment variable as UTF-8.
std::optional<std::string> environment(const char* name);
inline constexpr char pathListSeparator = sizeof(std::filesystem::path::value_type) == 1 ? ':' : ';';

// The folder that holds this library.
std::filesystem::path libraryFolder();

// Writes a new file, its owner's alone, and forces it to disk. Whatever had the name before goes first, so
// that no link leads the bytes elsewhere and no pipe is waited for.
void writeDurably(const std::filesystem::path& file, std::span<const char> bytes);

// Tells one version of a file from the next, or one state of a folder's list of names. All 0 for what is not
// there.
struct FileStamp {
    std::uint64_t time = 0;
    std::uint64_t size = 0;
    std::uint64_t number = 0;  // of the file itself, where the file system has one
    bool operator==(const FileStamp&) const = default;
};
FileStamp stampOf(const std::filesystem::path& file);

// Renames `from` over `to` and forces the change to disk.
void replaceDurably(const std::filesystem::path& from, const std::filesystem::path& to);

// Removes a file or an empty folder, creates a folder; each is on disk when it returns.
void removeDurably(const std::filesystem::path& entry);
void createFolderDurably(const std::filesystem::path& folder);

// Gives a folder the time of now as its time of change, as exactly as the system can keep it. A folder that
// is somebody else's stays as it is.
void touchFolder(const std::filesystem::path& folder);

// Keeps the folder's other users out as long as it lives, if they ask for the same lock. The system takes it
// back from a process that ends in any way, and it leaves nothing in the folder. An empty name locks nothing,
// nor does a file system without locks. Waits for its turn for a minute at most, then throws
// std::system_error (timed_out).
class FolderLock {
  public:
    explicit FolderLock(const std::filesystem::path& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

  private:
    std::intptr_t held;
};

std::uint64_t processId();

// The library stays loaded until the process ends, whoever frees it.
void stayLoaded();

// Sets the platform's last error to "invalid argument".
void setArgumentError();

// Keeps the caller's last-error value over a call of the library.
class LastErrorKeeper {
  public:
    LastErrorKeeper();
    ~LastErrorKeeper();
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

  private:
    unsigned long kept;
};

}  // namespace ovno2::simulator::system
