#include <system_error>
#include <windows.h>

#include "host/output/incoming_owner.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const char* what, const fs::path& path) {
    throw fs::filesystem_error(what, path,
                               std::error_code(static_cast<int>(GetLastError()), std::system_category()));
}

HANDLE openFolder(const fs::path& folder, DWORD access, DWORD sharing) {
    return CreateFileW(folder.c_str(), access, sharing, /*security=*/nullptr, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                       /*template=*/nullptr);
}

// While it is open nobody can delete the folder.
class HeldFolder : public IncomingOwner {
  public:
    explicit HeldFolder(HANDLE folder) : folder_(folder) {}
    ~HeldFolder() override { CloseHandle(folder_); }
    HeldFolder(const HeldFolder&) = delete;
    HeldFolder& operator=(const HeldFolder&) = delete;

  private:
    HANDLE folder_;
};

}  // namespace

std::unique_ptr<IncomingOwner> IncomingOwner::make(const fs::path& folder) {
    if (!CreateDirectoryW(folder.c_str(), /*security=*/nullptr)) {
        if (GetLastError() == ERROR_ALREADY_EXISTS) return nullptr;
        fail("CreateDirectory", folder);
    }
    const HANDLE open = openFolder(folder, FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE);
    if (open == INVALID_HANDLE_VALUE) return nullptr;
    return std::make_unique<HeldFolder>(open);
}

// A program that begins to hold it just now has nothing in it yet, and keeps it from being removed.
void IncomingOwner::removeAbandoned(const fs::path& folder) {
    const HANDLE open = openFolder(folder, DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    if (open == INVALID_HANDLE_VALUE) return;
    CloseHandle(open);
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

bool IncomingOwner::moveToFreePlace(const fs::path& file, const fs::path& place) {
    if (MoveFileExW(file.c_str(), place.c_str(), /*flags=*/0)) return true;
    if (GetLastError() == ERROR_ALREADY_EXISTS || GetLastError() == ERROR_FILE_EXISTS) return false;
    fail("MoveFile", place);
}

}  // namespace ovno2::host
