#include "platform/portable/native_file.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/portable/spawn.h"

namespace ovno2::platform::portable {

namespace fs = std::filesystem;

namespace {

// Where file servers keep the attributes that this system's files do not have: their bits in hexadecimal.
constexpr const char* attributesName = "user.DOSATTRIB";

constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;

class NativeFile : public OpenFile {
  public:
    explicit NativeFile(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

    FailureNumber size(std::uint64_t& bytes) override {
        struct stat status = {};
        if (fstat(descriptor_.get(), &status) != 0) return failureOfErrno(errno, /*forReading=*/true);
        bytes = static_cast<std::uint64_t>(status.st_size);
        return noFailure;
    }

    FailureNumber seek(std::uint64_t position) override {
        if (lseek(descriptor_.get(), static_cast<off_t>(position), SEEK_SET) < 0)
            return failureOfErrno(errno, /*forReading=*/true);
        return noFailure;
    }

    FailureNumber read(void* to, std::size_t bytes, std::size_t& got) override {
        std::size_t done = 0;
        while (done < bytes) {
            const ssize_t n = ::read(descriptor_.get(), static_cast<char*>(to) + done, bytes - done);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) return failureOfErrno(errno, /*forReading=*/true);
            if (n == 0) break;
            done += static_cast<std::size_t>(n);
        }
        got = done;
        return noFailure;
    }

    FailureNumber write(const void* from, std::size_t bytes) override {
        std::size_t done = 0;
        while (done < bytes) {
            const ssize_t n = ::write(descriptor_.get(), static_cast<const char*>(from) + done, bytes - done);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) {
                failure_ = failureOfErrno(errno, /*forReading=*/false);
                takeBack(done);
                return failure_;
            }
            done += static_cast<std::size_t>(n);
        }
        return noFailure;
    }

    FailureNumber close() override {
        if (descriptor_) {
            // What the system could not store yet, a full quota for instance, is told now.
            const int closed = ::close(descriptor_.release());
            if (closed != 0 && errno != EINTR && failure_ == noFailure)
                failure_ = failureOfErrno(errno, /*forReading=*/false);
        }
        return failure_;
    }

  protected:
    // Removes the `bytes` that a write put down before it failed.
    virtual void takeBack(std::size_t) {}

    Descriptor descriptor_;
    FailureNumber failure_ = noFailure;
};

class AppendedFile : public NativeFile {
  public:
    using NativeFile::NativeFile;

  private:
    void takeBack(std::size_t bytes) override {
        // Only while the part still is the file's end: another program may append at the same time.
        const off_t end = lseek(descriptor_.get(), 0, SEEK_CUR);
        struct stat status = {};
        if (bytes == 0 || fstat(descriptor_.get(), &status) != 0 || status.st_size != end) return;
        [[maybe_unused]] const int cut = ftruncate(descriptor_.get(), end - static_cast<off_t>(bytes));
    }
};

Descriptor openDescriptor(const fs::path& path, int flags) {
    return Descriptor(::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, newFileMode));
}

class Replacement : public NativeFile {
  public:
    explicit Replacement(fs::path target) : NativeFile(Descriptor()), target_(std::move(target)) {}
    ~Replacement() override { discard(); }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    // Makes the new file, under a name that nobody has.
    FailureNumber create() {
        static std::atomic<unsigned> counter = 0;
        do {
            written_ = target_.parent_path() /
                       (".ovno2-" + std::to_string(getpid()) + "-" + std::to_string(++counter));
            descriptor_ = openDescriptor(written_, O_WRONLY | O_CREAT | O_EXCL);
        } while (!descriptor_ && errno == EEXIST);
        if (descriptor_) return noFailure;
        written_.clear();
        return failureOfErrno(errno, /*forReading=*/false);
    }

    void takeOver(const struct stat& old) {
        [[maybe_unused]] const int owned = fchown(descriptor_.get(), old.st_uid, old.st_gid);
        [[maybe_unused]] const int allowed = fchmod(descriptor_.get(), old.st_mode & 07777);
    }

    FailureNumber close() override {
        if (written_.empty()) return failure_;
        if (NativeFile::close() == noFailure) {
            if (rename(written_.c_str(), target_.c_str()) == 0)
                written_.clear();
            else
                failure_ = failureOfErrno(errno, /*forReading=*/false);
        }
        discard();
        return failure_;
    }

  private:
    void discard() {
        if (!written_.empty()) unlink(written_.c_str());
        written_.clear();
    }

    fs::path target_;
    fs::path written_;  // empty when it is in its place or gone
};

}  // namespace

FailureNumber failureOfErrno(int error, bool forReading) {
    switch (error) {
        case ENOENT:
            return forReading ? fileNotFound : pathNotFound;
        case ENOTDIR:
        case ELOOP:
            return pathNotFound;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR:
        case EEXIST:
            return pathAccessError;
        case ETXTBSY:
        case EBUSY:
            return permissionDenied;
        case ENAMETOOLONG:
        case EINVAL:
            return badFileNameOrNumber;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return diskFull;
        case ENOMEM:
            return outOfMemory;
        default:
            return deviceIoError;
    }
}

int makeFolders(const fs::path& folder) {
    std::error_code ignored;
    if (fs::is_directory(folder, ignored)) return 0;
    const fs::path above = folder.parent_path();
    if (!above.empty() && above != folder)
        if (const int error = makeFolders(above)) return error;
    if (mkdir(folder.c_str(), newFolderMode) == 0) return 0;
    const int error = errno;
    return fs::is_directory(folder, ignored) ? 0 : error;  // another may have been quicker
}

bool isReadOnly(unsigned mode) {
    return (mode & anyWrite) == 0;
}

bool isHidden(const fs::path& path) {
    char text[32] = {};
    if (getxattr(path.c_str(), attributesName, text, sizeof text - 1) <= 0) return false;
    return (std::strtoul(text, nullptr, /*base=*/16) & attributeHidden) != 0;
}

int markHidden(const fs::path& path, bool hidden) {
    constexpr std::string_view hiddenOnly = "0x2";
    const int status = hidden
                           ? setxattr(path.c_str(), attributesName, hiddenOnly.data(), hiddenOnly.size(), 0)
                           : removexattr(path.c_str(), attributesName);
    return status == 0 || (!hidden && (errno == ENODATA || errno == ENOTSUP)) ? 0 : errno;
}

FailureNumber openForReading(const fs::path& path, std::unique_ptr<OpenFile>& file) {
    // Without waiting: a pipe that nobody writes to is an empty file.
    Descriptor descriptor = openDescriptor(path, O_RDONLY | O_NONBLOCK);
    if (!descriptor) return failureOfErrno(errno, /*forReading=*/true);
    struct stat status = {};
    if (fstat(descriptor.get(), &status) != 0) return failureOfErrno(errno, /*forReading=*/true);
    if (S_ISDIR(status.st_mode)) return pathAccessError;
    file = std::make_unique<NativeFile>(std::move(descriptor));
    return noFailure;
}

FailureNumber openForAppending(const fs::path& path, std::unique_ptr<OpenFile>& file) {
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && isReadOnly(status.st_mode)) return pathAccessError;
    Descriptor descriptor = openDescriptor(path, O_WRONLY | O_APPEND | O_CREAT);
    if (!descriptor) return failureOfErrno(errno, /*forReading=*/false);
    file = std::make_unique<AppendedFile>(std::move(descriptor));
    return noFailure;
}

FailureNumber openForReplacing(const fs::path& path, std::unique_ptr<OpenFile>& file) {
    struct stat status = {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) return failureOfErrno(errno, /*forReading=*/false);
    fs::path target = path;
    if (exists) {
        if (S_ISDIR(status.st_mode) || isReadOnly(status.st_mode) || isHidden(path)) return pathAccessError;
        if (access(path.c_str(), W_OK) != 0) return failureOfErrno(errno, /*forReading=*/false);
        if (!S_ISREG(status.st_mode)) {
            Descriptor device = openDescriptor(path, O_WRONLY | O_NONBLOCK);
            if (!device) return failureOfErrno(errno, /*forReading=*/false);
            fcntl(device.get(), F_SETFL, O_WRONLY);  // opened without waiting, written to with
            file = std::make_unique<NativeFile>(std::move(device));
            return noFailure;
        }
        std::error_code error;
        target = fs::canonical(path, error);  // a link stays, what it leads to is replaced
        if (error) return failureOfErrno(error.value(), /*forReading=*/false);
    } else if (!path.has_filename()) {
        return pathNotFound;
    }
    auto replacement = std::make_unique<Replacement>(std::move(target));
    const FailureNumber failure = replacement->create();
    if (failure != noFailure) return failure;
    if (exists) replacement->takeOver(status);
    file = std::move(replacement);
    return noFailure;
}

}  // namespace ovno2::platform::portable
