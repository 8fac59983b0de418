#include "platform/portable/process_table.h"

#include <charconv>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace ovno2::platform::portable {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t shortNameLength = 15;  // the kernel's own limit

std::string fileText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text;
    char piece[4096];
    while (file.read(piece, sizeof piece) || file.gcount() > 0)
        text.append(piece, static_cast<std::size_t>(file.gcount()));
    return text;
}

// The number that a folder of /proc has as its name; 0 for its other entries.
pid_t numberOf(const fs::path& path) {
    const std::string name = path.filename().native();
    pid_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return error == std::errc() && end == name.data() + name.size() ? number : 0;
}

// The state letter behind the name, which is in parentheses and may hold any character itself.
bool hasEnded(const fs::path& folder) {
    const std::string status = fileText(folder / "stat");
    const std::size_t nameEnd = status.rfind(')');
    return nameEnd == std::string::npos || nameEnd + 2 >= status.size() || status[nameEnd + 2] == 'Z' ||
           status[nameEnd + 2] == 'X';
}

// An interpreter that runs a script carries the script's name and has its path among its first arguments.
fs::path scriptOf(const fs::path& folder, const std::string& shortName) {
    const std::string arguments = fileText(folder / "cmdline");
    std::size_t start = arguments.find('\0');
    for (int i = 1; i <= 2 && start != std::string::npos; ++i) {
        const std::size_t end = arguments.find('\0', ++start);
        const fs::path argument = arguments.substr(start, end == std::string::npos ? end : end - start);
        if (argument.filename().native().substr(0, shortNameLength) == shortName) {
            std::error_code error;
            const fs::path current = fs::read_symlink(folder / "cwd", error);
            return error && argument.is_relative() ? fs::path() : (current / argument).lexically_normal();
        }
        start = end;
    }
    return {};
}

fs::path programOf(const fs::path& folder, const std::string& shortName) {
    std::error_code error;
    fs::path program = fs::read_symlink(folder / "exe", error);
    if (error) return {};
    if (program.filename().native().substr(0, shortNameLength) != shortName) {
        fs::path script = scriptOf(folder, shortName);
        if (!script.empty()) return script;
    }
    constexpr std::string_view deleted = " (deleted)";
    const std::string& name = program.native();
    if (name.ends_with(deleted)) program = name.substr(0, name.size() - deleted.size());
    return program;
}

template <class Visit>
bool eachNumbered(const fs::path& folder, Visit&& visit) {
    std::error_code error;
    fs::directory_iterator entries(folder, error);
    if (error) return false;
    for (; entries != fs::directory_iterator(); entries.increment(error)) {
        if (error) break;
        if (const pid_t number = numberOf(entries->path()); number > 0 && !visit(entries->path(), number))
            break;
    }
    return true;
}

}  // namespace

bool systemProcesses(std::vector<SystemProcess>& processes) {
    processes.clear();
    return eachNumbered("/proc", [&](const fs::path& folder, pid_t id) {
        SystemProcess process;
        process.id = id;
        process.shortName = fileText(folder / "comm");
        if (process.shortName.ends_with('\n')) process.shortName.pop_back();
        process.program = programOf(folder, process.shortName);
        struct stat status;
        process.ownedByUser = stat(folder.c_str(), &status) == 0 && status.st_uid == geteuid();
        if (!process.program.empty() || !hasEnded(folder)) processes.push_back(std::move(process));
        return true;
    });
}

void visitThreads(const std::function<bool(pid_t, pid_t)>& visit) {
    bool more = true;
    eachNumbered("/proc", [&](const fs::path& folder, pid_t process) {
        eachNumbered(folder / "task",
                     [&](const fs::path&, pid_t thread) { return more = visit(thread, process); });
        return more;
    });
}

}  // namespace ovno2::platform::portable
