#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "host/output/private_folder.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

// The folders that a signal takes away; what the handler reads needs no lock.
struct Slot {
    volatile std::sig_atomic_t isTaken = 0;
    char path[PATH_MAX] = {};
};
std::array<Slot, 4> slots;

// Nothing but system calls: the signal may have come in the middle of an allocation.
void removeFlatFolder(const char* path) {
    struct Entry {
        ino64_t number;
        off64_t next;
        unsigned short size;
        unsigned char kind;
        char name[1];
    };
    const int folder = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) return;
    alignas(Entry) char entries[4096];
    for (long size = 0; (size = syscall(SYS_getdents64, folder, entries, sizeof entries)) > 0;)
        for (long at = 0; at < size;) {
            const auto* const entry = reinterpret_cast<const Entry*>(entries + at);
            unlinkat(folder, entry->name, 0);
            at += entry->size;
        }
    close(folder);
    rmdir(path);
}

void endWithoutFolders(int signal) {
    for (const Slot& slot : slots)
        if (slot.isTaken) removeFlatFolder(slot.path);
    std::signal(signal, SIG_DFL);
    std::raise(signal);  // comes once this handler has returned
}

// A signal that is ignored, or that somebody else takes, stays as it is.
void takeSignals() {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGUSR1, SIGUSR2, SIGXCPU,
                             SIGXFSZ, SIGVTALRM}) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
        action.sa_handler = endWithoutFolders;
        sigfillset(&action.sa_mask);
        sigaction(signal, &action, nullptr);
    }
}

void removeLeftFolders(const fs::path& parent) {
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(parent, ignored)) {
        const unsigned long process = processOf(entry.path().filename().string());
        struct stat state {};
        if (process == 0 || lstat(entry.path().c_str(), &state) != 0 || state.st_uid != geteuid() ||
            !S_ISDIR(state.st_mode) || kill(static_cast<pid_t>(process), 0) == 0 || errno != ESRCH)
            continue;
        fs::remove_all(entry.path(), ignored);
    }
}

}  // namespace

PrivateFolder::PrivateFolder(const fs::path& parent, std::error_code& error) {
    static std::once_flag once;
    std::call_once(once, takeSignals);
    removeLeftFolders(parent);
    for (unsigned number = 0; path_.empty(); ++number) {
        const fs::path path = parent / privateFolderName(static_cast<unsigned long>(getpid()), number);
        if (mkdir(path.c_str(), S_IRWXU) == 0)
            path_ = path;
        else if (errno != EEXIST)
            break;
    }
    error = path_.empty() ? std::error_code(errno, std::generic_category()) : std::error_code();
    for (Slot& slot : slots)
        if (!path_.empty() && !slot.isTaken && path_.native().size() < sizeof slot.path) {
            std::strcpy(slot.path, path_.c_str());
            slot.isTaken = 1;
            break;
        }
}

PrivateFolder::~PrivateFolder() {
    if (path_.empty()) return;
    std::error_code ignored;
    fs::remove_all(path_, ignored);
    for (Slot& slot : slots)
        if (slot.isTaken && path_ == slot.path) slot.isTaken = 0;
}

}  // namespace ovno2::host
