#include <algorithm>
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <windows.h>

#include "host/output/console.h"
#include "host/output/text.h"

namespace ovno2::host::console {

namespace {

std::wstring wide(const std::string& utf8) {
    const Text text = fromUtf8(utf8);
    return {text.begin(), text.end()};
}

std::string narrow(const std::wstring& text) {
    return toUtf8(Text(text.begin(), text.end()));
}

}  // namespace

std::vector<std::string> arguments(int argc, char** argv) {
    SetConsoleOutputCP(CP_UTF8);
    // Lines end as everywhere else; the console takes that as well.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    int count = 0;
    wchar_t** texts = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!texts) return {argv, argv + argc};
    std::vector<std::string> list;
    for (int i = 0; i < count; ++i)
        list.push_back(narrow(texts[i]));
    LocalFree(texts);
    return list;
}

void useLargePages() {}

bool outputIsTerminal() {
    return _isatty(_fileno(stdout)) != 0;
}

bool errorIsTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}

std::size_t terminalWidth() {
    if (const wchar_t* columns = _wgetenv(L"COLUMNS"))
        if (const long width = wcstol(columns, nullptr, 10); width > 0)
            return static_cast<std::size_t>(width);
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return 80;
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

std::string environment(const std::string& name) {
    std::wstring value(32768, L'\0');
    value.resize(GetEnvironmentVariableW(wide(name).c_str(), value.data(), static_cast<DWORD>(value.size())));
    return narrow(value);
}

void setEnvironment(const std::string& name, const std::string& value) {
    SetEnvironmentVariableW(wide(name).c_str(), value.empty() ? nullptr : wide(value).c_str());
}

bool hasEnvironment(const std::string& name) {
    return GetEnvironmentVariableW(wide(name).c_str(), nullptr, 0) > 1;
}

std::chrono::local_seconds localTime(std::chrono::sys_seconds time) {
    // 100 ns since 1601.
    constexpr std::int64_t unit = 10'000'000, epoch = 11'644'473'600;
    const std::int64_t there = time.time_since_epoch().count();
    ULARGE_INTEGER number;
    number.QuadPart = static_cast<ULONGLONG>((there + epoch) * unit);
    FILETIME fileTime{number.LowPart, number.HighPart};
    SYSTEMTIME universal{}, local{};
    if (!FileTimeToSystemTime(&fileTime, &universal) ||
        !SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) ||
        !SystemTimeToFileTime(&local, &fileTime))
        return std::chrono::local_seconds(time.time_since_epoch());
    number.LowPart = fileTime.dwLowDateTime;
    number.HighPart = fileTime.dwHighDateTime;
    return std::chrono::local_seconds(
        std::chrono::seconds(static_cast<std::int64_t>(number.QuadPart) / unit - epoch));
}

std::filesystem::path programFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

std::filesystem::path userFolder() {
    const wchar_t* profile = _wgetenv(L"USERPROFILE");
    return profile && *profile ? std::filesystem::path(profile) : std::filesystem::temp_directory_path();
}

std::filesystem::path stateFolder() {
    const wchar_t* folder = _wgetenv(L"LOCALAPPDATA");
    return (folder && *folder ? std::filesystem::path(folder) : userFolder()) / "ovphone";
}

std::filesystem::path pathOf(const std::string& utf8) {
    return wide(utf8);
}

std::string textOf(const std::filesystem::path& path) {
    return narrow(path.wstring());
}

}  // namespace ovno2::host::console
