#include <algorithm>
#include <cstdio>
#include <system_error>
#include <windows.h>

#include "simulator/system/system.h"

namespace ovno2::simulator::system {
namespace {

[[noreturn]] void raise(const std::filesystem::path& file) {
    throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(),
                            file.u8string().empty() ? std::string() : file.string());
}

class File {
  public:
    File(const std::filesystem::path& file, DWORD access, DWORD creation)
        : name(file),
          handle(::CreateFileW(file.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                               nullptr, creation, FILE_FLAG_BACKUP_SEMANTICS, nullptr)) {
        if (handle == INVALID_HANDLE_VALUE) raise(file);
    }
    ~File() { ::CloseHandle(handle); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    void write(const char* bytes, std::size_t count) const {
        while (count > 0) {
            DWORD written = 0;
            if (!::WriteFile(handle, bytes, static_cast<DWORD>(count), &written, nullptr)) raise(name);
            bytes += written;
            count -= written;
        }
    }
    void sync() const {
        if (!::FlushFileBuffers(handle)) raise(name);
    }
    BY_HANDLE_FILE_INFORMATION information() const {
        BY_HANDLE_FILE_INFORMATION data{};
        if (!::GetFileInformationByHandle(handle, &data)) raise(name);
        return data;
    }
    void setTime(const FILETIME& time) const { ::SetFileTime(handle, nullptr, nullptr, &time); }

  private:
    std::filesystem::path name;
    HANDLE handle;
};

std::uint64_t whole(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

}  // namespace

void* takePages(std::size_t bytes) {
    return ::VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void givePages(void* pages, std::size_t) {
    ::VirtualFree(pages, 0, MEM_RELEASE);
}

void preferLargePages(void*, std::size_t) {}

void protectPages(void* pages, std::size_t bytes) {
    DWORD old = 0;
    ::VirtualProtect(pages, bytes, PAGE_NOACCESS, &old);
}

void poison(void*, std::size_t) {}

void unpoison(void*, std::size_t) {}

bool readable(const void* memory, std::size_t bytes) {
    return !::IsBadReadPtr(memory, bytes);
}

std::optional<std::string> environment(const char* name) {
    const std::wstring wideName(name, name + std::char_traits<char>::length(name));
    // As it is now: the C library keeps the environment with which the program began.
    std::wstring value(32768, L'\0');
    ::SetLastError(ERROR_SUCCESS);
    value.resize(::GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size())));
    if (value.empty() && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
    const std::u8string text = std::filesystem::path(value).u8string();
    return std::string(text.begin(), text.end());
}

std::filesystem::path libraryFolder() {
    HMODULE module = nullptr;
    wchar_t name[32768];
    if (!::GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(&libraryFolder), &module) ||
        ::GetModuleFileNameW(module, name, static_cast<DWORD>(std::size(name))) == 0) {
        return {};
    }
    return std::filesystem::path(name).parent_path();
}

void writeDurably(const std::filesystem::path& file, std::span<const char> bytes) {
    const File opened(file, GENERIC_WRITE, CREATE_ALWAYS);
    opened.write(bytes.data(), bytes.size());
    opened.sync();
}

FileStamp stampOf(const std::filesystem::path& file) {
    try {
        const BY_HANDLE_FILE_INFORMATION data = File(file, FILE_READ_ATTRIBUTES, OPEN_EXISTING).information();
        return {whole(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime),
                whole(data.nFileSizeHigh, data.nFileSizeLow), whole(data.nFileIndexHigh, data.nFileIndexLow)};
    } catch (const std::system_error&) {
        return {};
    }
}

void replaceDurably(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (!::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        raise(to);
}

// The file system's own log makes these last.
void removeDurably(const std::filesystem::path& entry) {
    std::filesystem::remove(entry);
}

void createFolderDurably(const std::filesystem::path& folder) {
    std::filesystem::create_directory(folder);
}

void touchFolder(const std::filesystem::path& folder) {
    try {
        // The system's clock may stand still between two changes.
        const File opened(folder, FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES, OPEN_EXISTING);
        const FILETIME old = opened.information().ftLastWriteTime;
        FILETIME now{};
        ::GetSystemTimeAsFileTime(&now);
        const std::uint64_t time = std::max(whole(now.dwHighDateTime, now.dwLowDateTime),
                                            whole(old.dwHighDateTime, old.dwLowDateTime) + 1);
        opened.setTime({static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)});
    } catch (const std::system_error&) {
    }
}

// A mutex of the system's whose name says which folder it is, by whatever path.
FolderLock::FolderLock(const std::filesystem::path& folder) : held(0) {
    if (folder.empty()) return;
    const BY_HANDLE_FILE_INFORMATION data = File(folder, FILE_READ_ATTRIBUTES, OPEN_EXISTING).information();
    wchar_t name[64];
    std::swprintf(name, std::size(name), L"Local\\ovno2-image-%08lx-%08lx%08lx", data.dwVolumeSerialNumber,
                  data.nFileIndexHigh, data.nFileIndexLow);
    const HANDLE mutex = ::CreateMutexW(nullptr, /*bInitialOwner=*/FALSE, name);
    if (mutex == nullptr) raise(folder);
    const DWORD waited = ::WaitForSingleObject(mutex, 60000);
    if (waited != WAIT_OBJECT_0 && waited != WAIT_ABANDONED) {
        ::CloseHandle(mutex);
        ::SetLastError(WAIT_TIMEOUT);
        raise(folder);
    }
    held = reinterpret_cast<std::intptr_t>(mutex);
}

FolderLock::~FolderLock() {
    if (held == 0) return;
    const auto mutex = reinterpret_cast<HANDLE>(held);
    ::ReleaseMutex(mutex);
    ::CloseHandle(mutex);
}

std::uint64_t processId() {
    return ::GetCurrentProcessId();
}

void stayLoaded() {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                         reinterpret_cast<LPCWSTR>(&stayLoaded), &module);
}

void setArgumentError() {
    ::SetLastError(ERROR_INVALID_PARAMETER);
}

LastErrorKeeper::LastErrorKeeper() : kept(::GetLastError()) {}

LastErrorKeeper::~LastErrorKeeper() {
    ::SetLastError(kept);
}

}  // namespace ovno2::simulator::system
