// Named shared memory on POSIX shared memory, one name space for each user and profile.
//
// An area lives as long as somebody holds it, as on Windows: each holder has a shared lock on it, and whoever
// gets the exclusive lock is the last one and removes the name. What a killed program left behind is
// recognised the same way by the next one that looks.

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/utf8.h"
#include "platform/portable/machine.h"
#include "platform/portable/spawn.h"

namespace ovno2::platform::portable {

namespace {

constexpr mode_t ownerOnly = 0600;
constexpr std::size_t longestName = 255;

int lock(const Descriptor& area, int operation) {
    int status = 0;
    do {
        status = flock(area.get(), operation);
    } while (status != 0 && errno == EINTR);
    return status;
}

// The name still leads to this area.
bool hasName(const Descriptor& area) {
    struct stat status = {};
    return fstat(area.get(), &status) == 0 && status.st_nlink > 0;
}

// Removes the name when nobody else holds the area. The lock is gone or exclusive afterwards.
bool removeIfLast(const Descriptor& area, const std::string& name) {
    if (lock(area, LOCK_EX | LOCK_NB) != 0) return false;
    if (hasName(area)) shm_unlink(name.c_str());
    return true;
}

// Gives the area its size, with memory behind it.
bool claim(const Descriptor& area, std::size_t size) {
    int status = 0;
    do {
        status = posix_fallocate(area.get(), 0, static_cast<off_t>(size));
    } while (status == EINTR);
    return status == 0;
}

class PosixArea : public SharedArea {
  public:
    PosixArea(Descriptor descriptor, std::string name, bool writable)
        : descriptor_(std::move(descriptor)), name_(std::move(name)), writable_(writable) {}
    ~PosixArea() override {
        PosixArea::unmap();
        removeIfLast(descriptor_, name_);
    }
    PosixArea(const PosixArea&) = delete;
    PosixArea& operator=(const PosixArea&) = delete;

    std::byte* map(std::size_t size) override {
        if (view_) return size <= size_ ? view_ : nullptr;
        struct stat status = {};
        // Beyond the area's end every access would fault.
        if (size == 0 || fstat(descriptor_.get(), &status) != 0 ||
            static_cast<std::uint64_t>(status.st_size) < size)
            return nullptr;
        void* const view = mmap(nullptr, size, writable_ ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED,
                                descriptor_.get(), 0);
        if (view == MAP_FAILED) return nullptr;
        size_ = size;
        view_ = static_cast<std::byte*>(view);
        return view_;
    }

    void unmap() override {
        if (view_) munmap(view_, size_);
        view_ = nullptr;
        size_ = 0;
    }

  private:
    Descriptor descriptor_;
    std::string name_;
    bool writable_;
    std::byte* view_ = nullptr;
    std::size_t size_ = 0;
};

class PosixSharedMemory : public SharedMemory {
  public:
    explicit PosixSharedMemory(Machine& machine) : machine_(machine) {}

    std::unique_ptr<SharedArea> open(TextView name, bool forWriting) override {
        const std::string systemName = nameOf(name);
        while (!systemName.empty()) {
            Descriptor area(shm_open(systemName.c_str(), forWriting ? O_RDWR : O_RDONLY, ownerOnly));
            if (!area || removeIfLast(area, systemName)) return nullptr;
            if (lock(area, LOCK_SH) != 0) return nullptr;
            if (hasName(area)) return std::make_unique<PosixArea>(std::move(area), systemName, forWriting);
        }
        return nullptr;
    }

    std::unique_ptr<SharedArea> create(TextView name, std::size_t size) override {
        const std::string systemName = nameOf(name);
        while (size > 0 && !systemName.empty()) {
            // An area that is there already is taken as it is.
            if (std::unique_ptr<SharedArea> existing = open(name, /*forWriting=*/true)) return existing;
            Descriptor area(shm_open(systemName.c_str(), O_RDWR | O_CREAT | O_EXCL, ownerOnly));
            if (!area && errno == EEXIST) continue;
            if (!area || lock(area, LOCK_EX) != 0) return nullptr;
            // Its memory is claimed now: later there would be no way to say that there is none.
            if (hasName(area) && !claim(area, size)) {
                shm_unlink(systemName.c_str());
                return nullptr;
            }
            // In between another program may have taken the area for a forgotten one.
            if (lock(area, LOCK_SH) == 0 && hasName(area))
                return std::make_unique<PosixArea>(std::move(area), systemName, /*writable=*/true);
        }
        return nullptr;
    }

  private:
    // "/ovno2-USER-PROFILE-NAME"; empty for a name that cannot be one.
    std::string nameOf(TextView name) const {
        std::error_code error;
        const auto profile = std::filesystem::weakly_canonical(machine_.profileFolder(), error);
        std::string text = "/ovno2-" + std::to_string(getuid()) + "-" +
                           std::to_string(std::hash<std::string>()(profile.native())) + "-";
        if (name.empty()) return {};
        for (const char c : toUtf8(name)) {
            constexpr std::string_view hexDigits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(c);
            if (byte > ' ' && byte < 0x7F && c != '/' && c != '%')
                text += c;
            else
                text.append({'%', hexDigits[byte >> 4], hexDigits[byte & 15]});
        }
        return text.size() <= longestName ? text : std::string();
    }

    Machine& machine_;
};

}  // namespace

std::unique_ptr<SharedMemory> makeSharedMemory(Machine& machine) {
    return std::make_unique<PosixSharedMemory>(machine);
}

}  // namespace ovno2::platform::portable
