#include "platform/processes.h"

// clang-format off
#define PSAPI_VERSION 1  // the calls of psapi.dll, which every version has
#include <windows.h>
#include <psapi.h>
#include <shellapi.h>
#include <shlobj.h>
#include <tlhelp32.h>
// clang-format on

#include <algorithm>
#include <utility>

#include "base/values.h"
#include "platform/win32/search_path.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

constexpr std::size_t folderPathSize = 520;
constexpr DWORD longestPath = 32768;
constexpr DWORD pollInterval = 10;  // milliseconds between two looks into a pipe

// A kernel handle that closes itself; null = none.
class Handle {
  public:
    explicit Handle(HANDLE handle = nullptr) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~Handle() { close(); }
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    HANDLE get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }
    void close() {
        if (handle_) CloseHandle(std::exchange(handle_, nullptr));
    }

  private:
    HANDLE handle_;
};

std::string ansi(const Text& text) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_ACP, 0, wide(text), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(std::max(size, 0)), '\0');
    WideCharToMultiByte(CP_ACP, 0, wide(text), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

FailureNumber startFailure(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return fileNotFound;
        case ERROR_ACCESS_DENIED:
            return permissionDenied;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return outOfMemory;
        default:
            return invalidProcedureCall;
    }
}

// The command line with its program's full path where it had only a name; empty when there is no such
// program.
Text withProgramPath(TextView line) {
    while (line.starts_with(u' ') || line.starts_with(u'\t'))
        line.remove_prefix(1);
    const bool quoted = line.starts_with(u'"');
    // Without quotes every blank may end the name.
    bool first = true;
    for (std::size_t end = 0; end < line.size(); first = false) {
        end = std::min(line.find_first_of(quoted ? u"\"" : u" \t", end + 1), line.size());
        const TextView name = line.substr(quoted ? 1 : 0, end - (quoted ? 1 : 0));
        if (!isBareName(name)) return first ? Text(line) : Text();
        if (const Text program = findNamed(name, L".exe"); !program.empty())
            return (u'"' + program + u'"').append(line.substr(std::min(end + (quoted ? 1 : 0), line.size())));
        if (quoted) break;
    }
    return {};
}

// What the registry names as the place of a program that lies in none of the folders.
bool isRegistered(const Text& name) {
    const Text path = u"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\" + name;
    const Text withExtension = path + u".exe";
    for (const Text* const key : {&path, &withExtension})
        for (const HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
            HKEY opened = nullptr;
            if (RegOpenKeyExW(hive, wide(*key), 0, KEY_READ, &opened) != ERROR_SUCCESS) continue;
            RegCloseKey(opened);
            return true;
        }
    return false;
}

// While it lives, the command interpreter keeps away from the current folder, too, with what it starts.
class GuardedInterpreter {
  public:
    explicit GuardedInterpreter(const Text& program) {
        const bool interpreter = equalsIgnoringCase(program.substr(program.rfind(u'\\') + 1), u"cmd.exe");
        if (interpreter && GetEnvironmentVariableW(mark, nullptr, 0) == 0)
            set_ = SetEnvironmentVariableW(mark, L"1") != FALSE;
    }
    ~GuardedInterpreter() {
        if (set_) SetEnvironmentVariableW(mark, nullptr);
    }
    GuardedInterpreter(const GuardedInterpreter&) = delete;
    GuardedInterpreter& operator=(const GuardedInterpreter&) = delete;

  private:
    static constexpr const wchar_t* mark = L"NoDefaultCurrentDirectoryInExePath";
    bool set_ = false;
};

class PipedCommand : public CapturedCommand {
  public:
    explicit PipedCommand(Handle pipe) : pipe_(std::move(pipe)) {}

    Outcome read(std::string& bytes, std::size_t limit, std::uint32_t milliseconds) override {
        bytes.clear();
        const DWORD start = GetTickCount();
        for (;;) {
            DWORD available = 0;
            if (!PeekNamedPipe(pipe_.get(), nullptr, 0, nullptr, &available, nullptr)) return Outcome::end;
            if (available > 0) {
                bytes.resize(std::min<std::size_t>(limit, available));
                DWORD got = 0;
                const BOOL done =
                    ReadFile(pipe_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr);
                bytes.resize(done ? got : 0);
                return bytes.empty() ? Outcome::end : Outcome::data;
            }
            const DWORD waited = GetTickCount() - start;
            if (waited >= milliseconds) return Outcome::timedOut;
            Sleep(std::min<DWORD>(pollInterval, milliseconds - waited));
        }
    }

  private:
    Handle pipe_;
};

// The path of a process by its first module; empty when that cannot be read.
Text modulePath(HANDLE process) {
    HMODULE module = nullptr;
    DWORD needed = 0;
    if (!process || !EnumProcessModules(process, &module, sizeof module, &needed)) return {};
    Text path(MAX_PATH, u'\0');
    path.resize(GetModuleFileNameExW(process, module, wide(path), MAX_PATH));
    return path;
}

Handle openProcess(DWORD id) {
    return Handle(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
}

// The full path of a process of a snapshot: in drive form, else in device form, else its bare name.
Text snapshotPath(const PROCESSENTRY32W& entry) {
    if (entry.th32ProcessID != 0) {  // process 0 would mean the calling process
        const Handle modules(CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, entry.th32ProcessID));
        MODULEENTRY32W module = {};
        module.dwSize = sizeof module;
        if (modules && Module32FirstW(modules.get(), &module)) return fromWide(module.szExePath);
        const Handle process = openProcess(entry.th32ProcessID);
        if (Text path = modulePath(process.get()); !path.empty()) return path;
        Text path(MAX_PATH, u'\0');
        path.resize(process ? GetProcessImageFileNameW(process.get(), wide(path), MAX_PATH) : 0);
        if (!path.empty()) return path;
    }
    return fromWide(entry.szExeFile);
}

class WindowsProcesses : public Processes {
  public:
    FailureNumber start(TextView commandLine, Long show) override {
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESHOWWINDOW;
        startup.wShowWindow = static_cast<WORD>(show);
        PROCESS_INFORMATION process = {};
        Text line = withProgramPath(commandLine);  // the call may write into it
        if (line.empty()) return fileNotFound;
        if (!CreateProcessW(nullptr, wide(line), nullptr, nullptr, /*bInheritHandles=*/FALSE,
                            NORMAL_PRIORITY_CLASS, nullptr, nullptr, &startup, &process))
            return startFailure(GetLastError());
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return noFailure;
    }

    Long shellExecute(TextView verb, TextView file, TextView parameters, Long show) override {
        const Text verbText(verb);
        Text fileText(file);
        if (const Text name = removeAll(file, u'"'); isBareName(name)) {
            Text program;
            for (const wchar_t* const extension : {L".exe", L".com", L".bat", L".cmd"})
                if (program.empty()) program = findNamed(name, extension);
            if (program.empty() && !isRegistered(name)) return ERROR_FILE_NOT_FOUND;
            if (!program.empty()) fileText = program;
        }
        const GuardedInterpreter guarded(fileText);
        const Text parameterText(parameters);
        const HINSTANCE answer =
            parameters.empty()
                ? ShellExecuteA(nullptr, ansi(verbText).c_str(), ansi(fileText).c_str(), "", "", show)
                : ShellExecuteW(nullptr, wide(verbText), wide(fileText), wide(parameterText), nullptr, show);
        return static_cast<Long>(reinterpret_cast<INT_PTR>(answer));
    }

    std::unique_ptr<CapturedCommand> startCaptured(TextView commandLine) override {
        SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        if (!CreatePipe(&readEnd, &writeEnd, &inheritable, 0)) return nullptr;
        Handle output(readEnd);
        const Handle input(writeEnd);
        SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);  // the module's end is not the command's
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESHOWWINDOW | STARTF_USESTDHANDLES;
        startup.wShowWindow = SW_HIDE;
        startup.hStdOutput = writeEnd;
        startup.hStdError = writeEnd;
        PROCESS_INFORMATION process = {};
        std::string line = ansi(withProgramPath(commandLine));
        if (line.empty()) return nullptr;
        if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, /*bInheritHandles=*/TRUE,
                            NORMAL_PRIORITY_CLASS, nullptr, nullptr, &startup, &process))
            return nullptr;
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return std::make_unique<PipedCommand>(std::move(output));
    }

    Long platformFamily() override {
        OSVERSIONINFOA version = {};
        version.dwOSVersionInfoSize = sizeof version;
        return GetVersionExA(&version) ? static_cast<Long>(version.dwPlatformId) : 0;
    }

    bool listByStatus(std::vector<ProcessEntry>& processes) override {
        std::vector<DWORD> ids(1024);
        DWORD bytes = 0;
        for (;;) {
            const DWORD size = static_cast<DWORD>(ids.size() * sizeof(DWORD));
            if (!EnumProcesses(ids.data(), size, &bytes)) return false;
            if (bytes < size) break;
            ids.resize(ids.size() * 2);
        }
        ids.resize(bytes / sizeof(DWORD));
        processes.clear();
        for (const DWORD id : ids) {
            const Handle process = openProcess(id);
            processes.push_back({.id = static_cast<Long>(id),
                                 .path = modulePath(process.get()),
                                 .handle = static_cast<Long>(reinterpret_cast<INT_PTR>(process.get()))});
        }
        return true;
    }

    bool listBySnapshot(std::vector<ProcessEntry>& processes) override {
        const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
        PROCESSENTRY32W entry = {};
        entry.dwSize = sizeof entry;
        if (!snapshot || !Process32FirstW(snapshot.get(), &entry)) return false;
        processes.clear();
        do {
            processes.push_back(
                {.id = static_cast<Long>(entry.th32ProcessID), .path = snapshotPath(entry), .handle = 0});
        } while (Process32NextW(snapshot.get(), &entry));
        return true;
    }

    void visitThreads(const std::function<bool(const ThreadEntry&)>& visit) override {
        const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
        THREADENTRY32 entry = {};
        entry.dwSize = sizeof entry;
        if (!snapshot || !Thread32First(snapshot.get(), &entry)) return;
        while (visit({.id = static_cast<Long>(entry.th32ThreadID),
                      .processId = static_cast<Long>(entry.th32OwnerProcessID)}) &&
               Thread32Next(snapshot.get(), &entry)) {
        }
    }

    Text deviceName(TextView drive) override {
        Text names(longestPath, u'\0');
        if (QueryDosDeviceW(wide(Text(drive)), wide(names), longestPath) == 0) return {};
        return fromWide(wide(names));  // the first of the names is the one in force
    }

    Text specialFolder(Long id) override {
        wchar_t path[folderPathSize] = {};
        return SUCCEEDED(SHGetFolderPathW(nullptr, id, nullptr, SHGFP_TYPE_CURRENT, path)) ? fromWide(path)
                                                                                           : Text();
    }

    bool fileVersion(TextView path, FileVersion& version) override {
        const Text file(path);
        DWORD ignored = 0;
        const DWORD size = GetFileVersionInfoSizeW(wide(file), &ignored);
        if (size == 0) return false;
        std::vector<unsigned char> block(size);
        void* data = nullptr;
        UINT length = 0;
        if (!GetFileVersionInfoW(wide(file), 0, size, block.data()) ||
            !VerQueryValueW(block.data(), L"\\", &data, &length) || length < sizeof(VS_FIXEDFILEINFO))
            return false;
        const auto* const fixed = static_cast<const VS_FIXEDFILEINFO*>(data);
        const DWORD words[] = {fixed->dwFileVersionMS, fixed->dwFileVersionLS, fixed->dwProductVersionMS,
                               fixed->dwProductVersionLS};
        for (std::size_t i = 0; i < 2; ++i) {
            version.file[2 * i] = HIWORD(words[i]);
            version.file[2 * i + 1] = LOWORD(words[i]);
            version.product[2 * i] = HIWORD(words[i + 2]);
            version.product[2 * i + 1] = LOWORD(words[i + 2]);
        }
        return true;
    }

    Text environment(TextView name) override {
        const Text variable(name);
        Text value;
        // The value may grow between asking for its size and reading it.
        for (DWORD size = GetEnvironmentVariableW(wide(variable), nullptr, 0); size > value.size();
             size = GetEnvironmentVariableW(wide(variable), wide(value), static_cast<DWORD>(value.size())))
            value.assign(size, u'\0');
        return fromWide(wide(value));
    }

    Text temporaryFolder() override {
        wchar_t path[MAX_PATH + 1] = {};
        return fromWide(path, std::min<DWORD>(GetTempPathW(MAX_PATH + 1, path), MAX_PATH));
    }
};

}  // namespace

std::unique_ptr<Processes> makeProcesses() {
    return std::make_unique<WindowsProcesses>();
}

}  // namespace ovno2::platform::win32
