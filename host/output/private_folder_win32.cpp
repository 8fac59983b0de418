#include <algorithm>
#include <mutex>
#include <vector>
#include <windows.h>

#include "host/output/console.h"
#include "host/output/private_folder.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

std::mutex mutex;  // guards `folders`: the system calls the handler on a thread of its own
std::vector<fs::path> folders;

BOOL WINAPI endWithoutFolders(DWORD) {
    const std::lock_guard guard(mutex);
    std::error_code ignored;
    for (const fs::path& folder : folders)
        fs::remove_all(folder, ignored);
    return FALSE;  // the program ends as it would have
}

bool isRunning(unsigned long process) {
    const HANDLE handle = OpenProcess(SYNCHRONIZE, /*bInheritHandle=*/FALSE, process);
    if (!handle) return GetLastError() != ERROR_INVALID_PARAMETER;
    const bool runs = WaitForSingleObject(handle, 0) == WAIT_TIMEOUT;
    CloseHandle(handle);
    return runs;
}

void removeLeftFolders(const fs::path& parent) {
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(parent, ignored)) {
        const unsigned long process = processOf(console::textOf(entry.path().filename()));
        if (process != 0 && entry.is_directory(ignored) && !isRunning(process))
            fs::remove_all(entry.path(), ignored);
    }
}

}  // namespace

// The folder is the user's as the profile is in which temporary files lie.
PrivateFolder::PrivateFolder(const fs::path& parent, std::error_code& error) {
    static std::once_flag once;
    std::call_once(once, [] { SetConsoleCtrlHandler(endWithoutFolders, TRUE); });
    removeLeftFolders(parent);
    DWORD wrong = ERROR_SUCCESS;
    for (unsigned number = 0; path_.empty() && wrong == ERROR_SUCCESS; ++number) {
        const fs::path path = parent / privateFolderName(GetCurrentProcessId(), number);
        if (CreateDirectoryW(path.c_str(), nullptr))
            path_ = path;
        else if (GetLastError() != ERROR_ALREADY_EXISTS)
            wrong = GetLastError();
    }
    error = std::error_code(static_cast<int>(wrong), std::system_category());
    const std::lock_guard guard(mutex);
    if (!path_.empty()) folders.push_back(path_);
}

PrivateFolder::~PrivateFolder() {
    const std::lock_guard guard(mutex);
    std::erase(folders, path_);
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
}

}  // namespace ovno2::host
