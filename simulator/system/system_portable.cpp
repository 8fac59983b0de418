#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sanitizer/asan_interface.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <system_error>
#include <thread>
#include <unistd.h>

#include "simulator/system/system.h"

namespace ovno2::simulator::system {
namespace {

// Where low pages are looked for: above what a program loaded at a fixed place uses, below the sign bit.
constexpr std::uintptr_t lowest = 0x10000000;
constexpr std::uintptr_t highest = 0x7FF00000;
constexpr std::size_t hugePage = 1 << 21;

[[noreturn]] void raise(const std::filesystem::path& file) {
    throw std::system_error(errno, std::generic_category(), file.string());
}

class Descriptor {
  public:
    Descriptor(const std::filesystem::path& file, int flags)
        : name(file), number(::open(file.c_str(), flags, 0600)) {
        if (number < 0) raise(file);
    }
    ~Descriptor() { ::close(number); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void write(const char* bytes, std::size_t count) const {
        while (count > 0) {
            const ssize_t written = ::write(number, bytes, count);
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) raise(name);
            bytes += written;
            count -= static_cast<std::size_t>(written);
        }
    }
    void sync() const {
        if (::fsync(number) != 0) raise(name);
    }

  private:
    std::filesystem::path name;
    int number;
};

void syncFolder(const std::filesystem::path& folder) {
    Descriptor(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC).sync();
}

}  // namespace

void* takePages(std::size_t bytes) {
    // Callers hold the world's lock. The cursor makes the next request start where the last one ended.
    static std::uintptr_t cursor = lowest;
    const std::uintptr_t start = cursor;
    bool wrapped = false;
    for (;;) {
        if (cursor + bytes > highest) {
            if (wrapped || bytes > highest - lowest) return nullptr;
            cursor = lowest;
            wrapped = true;
        }
        if (wrapped && cursor > start) return nullptr;
        void* const wanted = reinterpret_cast<void*>(cursor);
        void* const pages = ::mmap(wanted, bytes, PROT_READ | PROT_WRITE,
                                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1, 0);
        if (pages == wanted) {
            cursor += bytes;
            preferLargePages(pages, bytes);
            return pages;
        }
        if (pages != MAP_FAILED) ::munmap(pages, bytes);
        cursor += pageUnit;
    }
}

void preferLargePages(void* memory, std::size_t bytes) {
    const auto start = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (start + hugePage - 1) / hugePage * hugePage;
    const std::uintptr_t end = (start + bytes) / hugePage * hugePage;
    if (first < end) ::madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
}

void givePages(void* pages, std::size_t bytes) {
    ::munmap(pages, bytes);
}

void protectPages(void* pages, std::size_t bytes) {
    ::mprotect(pages, bytes, PROT_NONE);
}

void poison(void* memory, std::size_t bytes) {
    ASAN_POISON_MEMORY_REGION(memory, bytes);
}

void unpoison(void* memory, std::size_t bytes) {
    ASAN_UNPOISON_MEMORY_REGION(memory, bytes);
}

bool readable(const void* memory, std::size_t bytes) {
#ifdef __SANITIZE_ADDRESS__
    // What was handed out and has been taken back since, as on a connection that got lost.
    if (__asan_region_is_poisoned(const_cast<void*>(memory), bytes) != nullptr) return false;
#endif
    char buffer[4096];
    const auto* from = static_cast<const char*>(memory);
    while (bytes > 0) {
        const std::size_t part = bytes < sizeof buffer ? bytes : sizeof buffer;
        const iovec local{buffer, part};
        const iovec remote{const_cast<char*>(from), part};
        const ssize_t copied = ::process_vm_readv(::getpid(), &local, 1, &remote, 1, 0);
        if (copied < 0 && errno != EFAULT) return true;  // a sandbox forbids to ask
        if (copied != static_cast<ssize_t>(part)) return false;
        from += part;
        bytes -= part;
    }
    return true;
}

std::optional<std::string> environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::filesystem::path libraryFolder() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<const void*>(&libraryFolder), &info) == 0) return {};
    return std::filesystem::absolute(info.dli_fname).parent_path();
}

void writeDurably(const std::filesystem::path& file, std::span<const char> bytes) {
    if (::unlink(file.c_str()) != 0 && errno != ENOENT) raise(file);
    const Descriptor descriptor(file, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC);
    descriptor.write(bytes.data(), bytes.size());
    descriptor.sync();
}

FileStamp stampOf(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) return {};
    const std::uint64_t time = static_cast<std::uint64_t>(status.st_mtim.tv_sec) * 1000000000U +
                               static_cast<std::uint64_t>(status.st_mtim.tv_nsec);
    return {time, static_cast<std::uint64_t>(status.st_size), static_cast<std::uint64_t>(status.st_ino)};
}

void replaceDurably(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0) raise(to);
    syncFolder(to.parent_path());
}

void removeDurably(const std::filesystem::path& entry) {
    std::filesystem::remove(entry);
    syncFolder(entry.parent_path());
}

void createFolderDurably(const std::filesystem::path& folder) {
    std::filesystem::create_directory(folder);
    syncFolder(folder.parent_path());
}

void touchFolder(const std::filesystem::path& folder) {
    // The system's own idea of now may be some milliseconds old.
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const timespec times[2] = {{0, UTIME_OMIT}, now};
    ::utimensat(AT_FDCWD, folder.c_str(), times, 0);
}

FolderLock::FolderLock(const std::filesystem::path& folder)
    : held(folder.empty() ? -1 : ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (folder.empty()) return;
    if (held < 0) raise(folder);
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (::flock(static_cast<int>(held), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return;
        if (std::chrono::steady_clock::now() > end) {
            ::close(static_cast<int>(held));
            errno = ETIMEDOUT;
            raise(folder);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
}

FolderLock::~FolderLock() {
    if (held >= 0) ::close(static_cast<int>(held));
}

std::uint64_t processId() {
    return static_cast<std::uint64_t>(::getpid());
}

void stayLoaded() {}  // linked so

void setArgumentError() {
    errno = EINVAL;
}

LastErrorKeeper::LastErrorKeeper() : kept(static_cast<unsigned long>(errno)) {}

LastErrorKeeper::~LastErrorKeeper() {
    errno = static_cast<int>(kept);
}

}  // namespace ovno2::simulator::system
