#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

#include "host/output/incoming_owner.h"
#include "platform/portable/spawn.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

using platform::portable::Descriptor;

Descriptor openFolder(const fs::path& folder) {
    return Descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool isStillThere(const Descriptor& open, const fs::path& folder) {
    struct stat held = {}, named = {};
    return fstat(open.get(), &held) == 0 && lstat(folder.c_str(), &named) == 0 &&
           held.st_ino == named.st_ino && held.st_dev == named.st_dev;
}

// A process of its own that takes the folder away when this program has ended, however it did: it waits for
// the end of a pipe that this program holds open. No signal of the terminal reaches it.
pid_t watchOver(const fs::path& folder, const Descriptor& pipeEnd) {
    const pid_t watcher = fork();
    if (watcher != 0) return watcher;
    setsid();
    for (int signal = 1; signal < NSIG; ++signal)
        std::signal(signal, SIG_IGN);
    const int end = dup2(pipeEnd.get(), 0);
    close_range(1, ~0U, 0);
    char byte = 0;
    while (read(end, &byte, 1) < 0 && errno == EINTR) {
    }
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    _exit(0);
}

// Other programs see the lock on the folder. It is held by this program and by the watcher alike, and goes
// with the last of them.
class LockedFolder : public IncomingOwner {
  public:
    LockedFolder(Descriptor folder, const fs::path& path) : folder_(std::move(folder)) {
        Descriptor theirs;
        if (platform::portable::makePipe(theirs, ours_) != 0) return;  // then the next program takes it away
        watcher_ = watchOver(path, theirs);
    }
    ~LockedFolder() override {
        ours_.close();
        while (watcher_ > 0 && waitpid(watcher_, /*status=*/nullptr, /*options=*/0) < 0 && errno == EINTR) {
        }
    }
    LockedFolder(const LockedFolder&) = delete;
    LockedFolder& operator=(const LockedFolder&) = delete;

  private:
    Descriptor folder_;
    Descriptor ours_;
    pid_t watcher_ = -1;
};

}  // namespace

std::unique_ptr<IncomingOwner> IncomingOwner::make(const fs::path& folder) {
    constexpr mode_t forTheUser = 0700;
    if (mkdir(folder.c_str(), forTheUser) != 0) {
        if (errno == EEXIST) return nullptr;
        throw fs::filesystem_error("mkdir", folder, std::error_code(errno, std::generic_category()));
    }
    Descriptor open = openFolder(folder);
    // Where there are no locks, nobody takes it away either.
    if (!open || (flock(open.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)) return nullptr;
    if (!isStillThere(open, folder)) return nullptr;
    return std::make_unique<LockedFolder>(std::move(open), folder);
}

// Under the lock, so that nobody begins to hold the folder meanwhile.
void IncomingOwner::removeAbandoned(const fs::path& folder) {
    const Descriptor open = openFolder(folder);
    if (!open || flock(open.get(), LOCK_EX | LOCK_NB) != 0) return;
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

bool IncomingOwner::moveToFreePlace(const fs::path& file, const fs::path& place) {
    if (renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, place.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno == EEXIST) return false;
    // Not every file system knows of it; one that knows links does.
    if (link(file.c_str(), place.c_str()) == 0) return unlink(file.c_str()) == 0;
    if (errno == EEXIST) return false;
    if (fs::exists(fs::symlink_status(place))) return false;
    fs::rename(file, place);
    return true;
}

}  // namespace ovno2::host
