#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#ifdef __GLIBC__
#include <malloc.h>
#include <sys/mman.h>
#endif
#include <sys/ioctl.h>
#include <unistd.h>

#include "host/output/console.h"

namespace ovno2::host::console {

std::vector<std::string> arguments(int argc, char** argv) {
    return {argv, argv + argc};
}

void useLargePages() {
#ifdef __GLIBC__
    // The heap reserves at once what a phone book of 10,000 contacts needs, and takes large blocks as well;
    // only what is used of it becomes memory. Where so much cannot be reserved, everything is as usual.
    constexpr int reserve = 64 << 20, laterStep = 1 << 20, largestBlock = 32 << 20;
    mallopt(M_MMAP_THRESHOLD, largestBlock);
    mallopt(M_TRIM_THRESHOLD, 2 * reserve);
    mallopt(M_TOP_PAD, reserve);
    const auto before = reinterpret_cast<std::uintptr_t>(sbrk(0));
    void* volatile block = std::malloc(256 << 10);  // more than a new heap has
    std::free(block);
    mallopt(M_TOP_PAD, laterStep);
    const auto end = reinterpret_cast<std::uintptr_t>(sbrk(0));
    const std::uintptr_t page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t start = (before + page - 1) / page * page;
    if (start < end) madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
#endif
}

bool outputIsTerminal() {
    return isatty(STDOUT_FILENO) != 0;
}

bool errorIsTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

std::size_t terminalWidth() {
    if (const char* columns = std::getenv("COLUMNS"))
        if (const long width = std::strtol(columns, nullptr, 10); width > 0)
            return static_cast<std::size_t>(width);
    winsize size{};
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
        if (ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    return 80;
}

std::string environment(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value ? value : "";
}

void setEnvironment(const std::string& name, const std::string& value) {
    if (value.empty())
        unsetenv(name.c_str());
    else
        setenv(name.c_str(), value.c_str(), /*overwrite=*/1);
}

bool hasEnvironment(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value && *value;
}

std::chrono::local_seconds localTime(std::chrono::sys_seconds time) {
    const std::time_t instant = time.time_since_epoch().count();  // a system_clock ends in 2262
    std::tm fields{};
    localtime_r(&instant, &fields);
    return std::chrono::local_seconds(time.time_since_epoch() + std::chrono::seconds(fields.tm_gmtoff));
}

std::filesystem::path programFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::filesystem::path userFolder() {
    const char* home = std::getenv("HOME");
    return home && *home ? std::filesystem::path(home) : std::filesystem::temp_directory_path();
}

std::filesystem::path stateFolder() {
    if (const char* profile = std::getenv("OVNO2_HOME"); profile && *profile)
        return std::filesystem::path(profile) / "ovphone";
    const char* state = std::getenv("XDG_STATE_HOME");
    return (state && *state ? std::filesystem::path(state) : userFolder() / ".local" / "state") / "ovphone";
}

std::filesystem::path pathOf(const std::string& utf8) {
    return utf8;
}

std::string textOf(const std::filesystem::path& path) {
    return path.string();
}

}  // namespace ovno2::host::console
