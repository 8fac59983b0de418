// Local files on 32-bit Windows.

#include <atomic>
#include <shlobj.h>
#include <shlwapi.h>
#include <utility>
#include <windows.h>

#include "platform/file_numbers.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

constexpr DWORD sharedWithAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

// No platform call sees what stands behind a NUL, so such a path would name another file.
bool isName(TextView path) {
    return !path.empty() && path.find(u'\0') == TextView::npos;
}

FailureNumber failureOf(DWORD error) {
    switch (error) {
        case ERROR_SUCCESS:
            return noFailure;
        case ERROR_FILE_NOT_FOUND:
            return fileNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_FILENAME_EXCED_RANGE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
            return pathNotFound;
        case ERROR_ACCESS_DENIED:
        case ERROR_ALREADY_EXISTS:
        case ERROR_FILE_EXISTS:
        case ERROR_WRITE_PROTECT:
        case ERROR_NOT_READY:
            return pathAccessError;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return permissionDenied;
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_DIRECTORY:
            return badFileNameOrNumber;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return diskFull;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return outOfMemory;
        default:
            return deviceIoError;
    }
}

FailureNumber lastFailure() {
    const FailureNumber failure = failureOf(GetLastError());
    return failure == noFailure ? deviceIoError : failure;
}

class FileHandle {
  public:
    FileHandle() = default;
    explicit FileHandle(HANDLE handle) : handle_(handle) {}
    ~FileHandle() { close(); }
    FileHandle(FileHandle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    FileHandle& operator=(FileHandle&& other) noexcept {
        close();
        handle_ = std::exchange(other.handle_, INVALID_HANDLE_VALUE);
        return *this;
    }
    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }
    bool close() {
        const HANDLE handle = std::exchange(handle_, INVALID_HANDLE_VALUE);
        return handle == INVALID_HANDLE_VALUE || CloseHandle(handle) != 0;
    }

  private:
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

FileHandle openHandle(const Text& path, DWORD access, DWORD sharing, DWORD disposition) {
    return FileHandle(
        CreateFileW(wide(path), access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool setPosition(HANDLE file, std::uint64_t position, DWORD from) {
    LARGE_INTEGER distance;
    distance.QuadPart = static_cast<LONGLONG>(position);
    return SetFilePointerEx(file, distance, nullptr, from) != 0;
}

class NativeFile : public OpenFile {
  public:
    explicit NativeFile(FileHandle handle) : handle_(std::move(handle)) {}

    FailureNumber size(std::uint64_t& bytes) override {
        LARGE_INTEGER size;
        if (!GetFileSizeEx(handle_.get(), &size)) return lastFailure();
        bytes = static_cast<std::uint64_t>(size.QuadPart);
        return noFailure;
    }

    FailureNumber seek(std::uint64_t position) override {
        return setPosition(handle_.get(), position, FILE_BEGIN) ? noFailure : lastFailure();
    }

    FailureNumber read(void* to, std::size_t bytes, std::size_t& got) override {
        std::size_t done = 0;
        while (done < bytes) {
            DWORD n = 0;
            if (!ReadFile(handle_.get(), static_cast<char*>(to) + done, static_cast<DWORD>(bytes - done), &n,
                          nullptr))
                return lastFailure();
            if (n == 0) break;
            done += n;
        }
        got = done;
        return noFailure;
    }

    FailureNumber write(const void* from, std::size_t bytes) override {
        std::size_t done = 0;
        while (done < bytes) {
            DWORD n = 0;
            const bool written = WriteFile(handle_.get(), static_cast<const char*>(from) + done,
                                           static_cast<DWORD>(bytes - done), &n, nullptr) != 0;
            done += n;
            if (!written || n == 0) {
                failure_ = written ? diskFull : lastFailure();
                takeBack(done);
                return failure_;
            }
        }
        return noFailure;
    }

    FailureNumber close() override {
        if (!handle_.close() && failure_ == noFailure) failure_ = lastFailure();
        return failure_;
    }

  protected:
    // Removes the `bytes` that a write put down before it failed.
    virtual void takeBack(std::size_t) {}

    FileHandle handle_;
    FailureNumber failure_ = noFailure;
};

// One writer's turn at the end of a file. The locked byte lies where no content comes, so that nobody who
// reads is held up; a file that may not be read cannot be locked.
class AppendTurn {
  public:
    explicit AppendTurn(HANDLE file) : file_(file) {
        range_.OffsetHigh = 0x7FFFFFFF;
        taken_ = LockFileEx(file_, LOCKFILE_EXCLUSIVE_LOCK, 0, /*low=*/1, /*high=*/0, &range_) != 0;
    }
    ~AppendTurn() {
        if (taken_) UnlockFileEx(file_, 0, /*low=*/1, /*high=*/0, &range_);
    }
    AppendTurn(const AppendTurn&) = delete;
    AppendTurn& operator=(const AppendTurn&) = delete;
    bool taken() const { return taken_; }

  private:
    HANDLE file_;
    OVERLAPPED range_ = {};
    bool taken_;
};

class AppendedFile : public NativeFile {
  public:
    using NativeFile::NativeFile;

    // Every write goes to the end that the file has by then, by the right that the file was opened with. Not
    // every system finds the end and writes there in one step.
    FailureNumber write(const void* from, std::size_t bytes) override {
        const AppendTurn turn(handle_.get());
        knowsEnd_ = turn.taken() && NativeFile::size(end_) == noFailure;
        return NativeFile::write(from, bytes);
    }

  private:
    // Only in the own turn, and only while the part is all that has been added.
    void takeBack(std::size_t bytes) override {
        std::uint64_t now = 0;
        if (bytes == 0 || !knowsEnd_ || NativeFile::size(now) != noFailure || now != end_ + bytes) return;
        const FileHandle cutting(ReOpenFile(handle_.get(), GENERIC_WRITE, sharedWithAll, /*flags=*/0));
        if (cutting && setPosition(cutting.get(), end_, FILE_BEGIN)) SetEndOfFile(cutting.get());
    }

    bool knowsEnd_ = false;
    std::uint64_t end_ = 0;  // before the write
};

class Replacement : public NativeFile {
  public:
    explicit Replacement(Text target) : NativeFile(FileHandle()), target_(std::move(target)) {}
    ~Replacement() override { discard(); }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    // Makes the new file, under a name that nobody has.
    FailureNumber create() {
        static std::atomic<unsigned> counter = 0;
        const std::size_t folder = target_.find_last_of(u"\\/:") + 1;  // 0 without one
        do {
            wchar_t name[40];
            wsprintfW(name, L".ovno2-%x-%x", static_cast<unsigned>(GetCurrentProcessId()), ++counter);
            written_ = target_.substr(0, folder).append(fromWide(name));
            handle_ = openHandle(written_, GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW);
        } while (!handle_ && GetLastError() == ERROR_FILE_EXISTS);
        if (handle_) return noFailure;
        written_.clear();
        return lastFailure();
    }

    FailureNumber close() override {
        if (written_.empty()) return failure_;
        if (NativeFile::close() == noFailure) {
            if (MoveFileExW(wide(written_), wide(target_), MOVEFILE_REPLACE_EXISTING))
                written_.clear();
            else
                failure_ = lastFailure();
        }
        discard();
        return failure_;
    }

  private:
    void discard() {
        handle_.close();
        if (!written_.empty()) DeleteFileW(wide(written_));
        written_.clear();
    }

    Text target_;
    Text written_;  // empty when it is in its place or gone
};

FailureNumber openForReading(const Text& path, DWORD sharing, std::unique_ptr<OpenFile>& file) {
    FileHandle handle = openHandle(path, GENERIC_READ, sharing, OPEN_EXISTING);
    if (!handle) return lastFailure();
    file = std::make_unique<NativeFile>(std::move(handle));
    return noFailure;
}

bool hasAttribute(const Text& path, DWORD bits) {
    const DWORD attributes = GetFileAttributesW(wide(path));
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & bits) != 0;
}

FailureNumber openForAppending(const Text& path, std::unique_ptr<OpenFile>& file) {
    // A file system that is not the platform's own may know the bit and still let the file be opened.
    if (hasAttribute(path, FILE_ATTRIBUTE_READONLY)) return pathAccessError;
    constexpr DWORD appending = FILE_APPEND_DATA | SYNCHRONIZE;
    FileHandle handle = openHandle(path, appending | FILE_READ_DATA, sharedWithAll, OPEN_ALWAYS);
    if (!handle && GetLastError() == ERROR_ACCESS_DENIED)
        handle = openHandle(path, appending, sharedWithAll, OPEN_ALWAYS);
    if (!handle) return lastFailure();
    file = std::make_unique<AppendedFile>(std::move(handle));
    return noFailure;
}

FailureNumber openForReplacing(const Text& path, std::unique_ptr<OpenFile>& file) {
    constexpr DWORD protectedBits =
        FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DIRECTORY;
    if (hasAttribute(path, protectedBits)) return pathAccessError;
    {
        FileHandle present = openHandle(path, GENERIC_WRITE, sharedWithAll, OPEN_EXISTING);
        if (!present && GetLastError() != ERROR_FILE_NOT_FOUND) return lastFailure();
        if (present && GetFileType(present.get()) != FILE_TYPE_DISK) {
            file = std::make_unique<NativeFile>(std::move(present));
            return noFailure;
        }
    }
    auto replacement = std::make_unique<Replacement>(path);
    const FailureNumber failure = replacement->create();
    if (failure != noFailure) return failure;
    file = std::move(replacement);
    return noFailure;
}

class WindowsFiles : public Files {
  public:
    FailureNumber open(Long number, TextView path, FileAccess access, OpenFile*& file) override {
        if (const FailureNumber failure = numbers_.check(number)) return failure;
        if (!isName(path)) return badFileNameOrNumber;
        const Text name(path);
        std::unique_ptr<OpenFile> opened;
        FailureNumber failure = noFailure;
        if (access == FileAccess::append)
            failure = openForAppending(name, opened);
        else if (access == FileAccess::replace)
            failure = openForReplacing(name, opened);
        else
            failure = path.size() < MAX_PATH ? openForReading(name, sharedWithAll, opened) : fileNotFound;
        if (failure == noFailure) file = numbers_.keep(number, std::move(opened));
        return failure;
    }

    void close(Long number) override { numbers_.close(number); }

    FailureNumber openWide(TextView path, std::unique_ptr<OpenFile>& file) override {
        return isName(path) ? openForReading(Text(path), FILE_SHARE_READ, file) : badFileNameOrNumber;
    }

    bool pathExists(TextView path) override { return isName(path) && PathFileExistsW(wide(Text(path))); }

    Long attributes(TextView path) override {
        return isName(path) ? static_cast<Long>(GetFileAttributesW(wide(Text(path)))) : noAttributes;
    }

    FailureNumber setAttributes(TextView path, Long attributes) override {
        if (!isName(path)) return badFileNameOrNumber;
        return SetFileAttributesW(wide(Text(path)), static_cast<DWORD>(attributes)) ? noFailure
                                                                                    : lastFailure();
    }

    Text shortPath(TextView path) override {
        constexpr DWORD capacity = 8192;
        Text buffer(capacity, u'\0');
        const DWORD length = isName(path) ? GetShortPathNameW(wide(Text(path)), wide(buffer), capacity) : 0;
        buffer.resize(length < capacity ? length : 0);
        return buffer;
    }

    FailureNumber makeFolder(TextView path) override {
        if (!isName(path)) return badFileNameOrNumber;
        return CreateDirectoryW(wide(Text(path)), nullptr) ? noFailure : lastFailure();
    }

    Long makeFolderTree(TextView path) override {
        while (path.size() > 1 && (path.back() == u'\\' || path.back() == u'/') &&
               path[path.size() - 2] != u':')
            path.remove_suffix(1);
        if (!isName(path)) return ERROR_PATH_NOT_FOUND;
        return SHCreateDirectoryExW(/*hwnd=*/nullptr, wide(Text(path)), /*psa=*/nullptr);
    }

    FailureNumber remove(TextView path) override {
        if (!isName(path)) return badFileNameOrNumber;
        return DeleteFileW(wide(Text(path))) ? noFailure : lastFailure();
    }

  private:
    FileNumbers numbers_;
};

}  // namespace

std::unique_ptr<Files> makeFiles() {
    return std::make_unique<WindowsFiles>();
}

}  // namespace ovno2::platform::win32
