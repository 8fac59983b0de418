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
          handle(::CreateFileW(file.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, creation,
                               FILE_ATTRIBUTE_NORMAL, nullptr)) {
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

  private:
    std::filesystem::path name;
    HANDLE handle;
};

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
    const wchar_t* const value = ::_wgetenv(wideName.c_str());
    if (value == nullptr) return std::nullopt;
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
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!::GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data)) return {};
    const auto whole = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
    return {whole(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime),
            whole(data.nFileSizeHigh, data.nFileSizeLow), 0};
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

std::uint64_t processId() {
    return ::GetCurrentProcessId();
}

void setArgumentError() {
    ::SetLastError(ERROR_INVALID_PARAMETER);
}

LastErrorKeeper::LastErrorKeeper() : kept(::GetLastError()) {}

LastErrorKeeper::~LastErrorKeeper() {
    ::SetLastError(kept);
}

}  // namespace ovno2::simulator::system
