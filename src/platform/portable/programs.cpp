#include "platform/portable/programs.h"

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

#include "base/utf8.h"
#include "base/values.h"
#include "platform/portable/paths.h"
#include "platform/portable/process_table.h"
#include "platform/portable/spawn.h"

namespace ovno2::platform::portable {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestProgramPath = 4096;

bool isFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

bool isProgram(const fs::path& path) {
    return isFile(path) && access(path.c_str(), X_OK) == 0;
}

bool isPath(TextView name) {
    return name.find_first_of(u"\\/:") != TextView::npos;
}

bool hasExtension(TextView name) {
    const std::size_t dot = name.find_last_of(u".\\/:");
    return dot != TextView::npos && name[dot] == u'.';
}

Text baseName(TextView name) {
    const bool exe = name.size() > 4 && equalsIgnoringCase(name.substr(name.size() - 4), u".exe");
    return Text(exe ? name.substr(0, name.size() - 4) : name);
}

std::optional<fs::path> registeredProgram(Machine& machine, TextView name) {
    const Text path = Text(u"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\").append(name);
    for (const Long hive : {currentUser, localMachine}) {
        std::unique_ptr<RegistryKey> key;
        RegistryValue value;
        if (machine.registry().open(hive, path, /*view64=*/false, key) != registryOk ||
            key->read(/*name=*/{}, value) != registryOk)
            continue;
        fs::path file = nativePath(machine, removeAll(removeAll(value.text, u'\0'), u'"'));
        if (isFile(file)) return file;
    }
    return std::nullopt;
}

// In the folder of the running program, then in PATH; never in the current folder, where anybody may have put
// something.
std::optional<fs::path> programBesideOrInPath(TextView name) {
    std::error_code error;
    std::vector<Text> folders = {fromUtf8(fs::read_symlink("/proc/self/exe", error).parent_path().native())};
    const char* const path = std::getenv("PATH");
    for (Text& folder : split(fromUtf8(path ? path : "/usr/bin:/bin"), u':'))
        folders.push_back(std::move(folder));
    for (const Text& folder : folders) {
        for (const Text& file : {Text(name), baseName(name)}) {
            fs::path program = fs::path(toUtf8(folder)) / toUtf8(file);
            if (program.is_absolute() && isProgram(program)) return program;
        }
    }
    return std::nullopt;
}

TextView withoutLeadingBlanks(TextView text) {
    const std::size_t first = text.find_first_not_of(u" \t");
    return first == TextView::npos ? TextView() : text.substr(first);
}

bool startsWithWord(TextView text, TextView word) {
    return equalsIgnoringCase(text.substr(0, word.size()), word) &&
           (text.size() == word.size() || text[word.size()] == u' ');
}

Command programCommand(fs::path program, TextView name, TextView rest) {
    Command command;
    command.program = std::move(program);
    command.arguments.push_back(toUtf8(name));
    for (const Text& argument : splitArguments(rest))
        command.arguments.push_back(toUtf8(argument));
    return command;
}

// What follows the interpreter's /c or /k is a command of its own. One that names a program by a path with
// "\" is started as it is; the system's shell, to which such a path means nothing, gets all others.
Command interpreterCommand(Machine& machine, TextView rest) {
    rest = withoutLeadingBlanks(rest);
    while (rest.starts_with(u'/')) {
        const bool last =
            rest.size() > 1 && (rest[1] == u'c' || rest[1] == u'C' || rest[1] == u'k' || rest[1] == u'K');
        const std::size_t end = std::min(rest.find(u' '), rest.size());
        rest = withoutLeadingBlanks(rest.substr(end));
        if (last) break;
    }
    const bool detached = startsWithWord(rest, u"start");
    if (detached) rest = withoutLeadingBlanks(rest.substr(5));
    std::optional<Command> command;
    if (rest.substr(0, rest.find(u' ')).find(u'\\') != TextView::npos) command = findCommand(machine, rest);
    if (!command)
        command = Command{.program = "/bin/sh", .arguments = {"sh", "-c", toUtf8(rest)}, .detached = false};
    command->detached = detached;
    return *command;
}

std::optional<Command> ownProgram(Machine& machine, TextView name, TextView rest) {
    if (isPath(name)) return std::nullopt;
    const Text base = baseName(name);
    if (equalsIgnoringCase(base, u"cmd")) return interpreterCommand(machine, rest);
    if (equalsIgnoringCase(base, u"taskkill")) return programCommand({}, name, rest);
    return std::nullopt;
}

std::optional<Command> commandOf(Machine& machine, TextView name, TextView rest) {
    if (auto program = findProgram(machine, name)) return programCommand(std::move(*program), name, rest);
    return ownProgram(machine, name, rest);
}

}  // namespace

std::optional<fs::path> findProgram(Machine& machine, TextView name) {
    if (name.empty() || name.find(u'\0') != TextView::npos) return std::nullopt;
    const Text withExtension = hasExtension(name) ? Text(name) : Text(name) + u".exe";
    if (isPath(name)) {
        for (const TextView file : {name, TextView(withExtension)})
            if (fs::path path = nativePath(machine, file); isFile(path)) return path;
        return std::nullopt;
    }
    if (auto program = registeredProgram(machine, withExtension)) return program;
    return programBesideOrInPath(name);
}

std::optional<Command> findCommand(Machine& machine, TextView commandLine) {
    const TextView line = withoutLeadingBlanks(commandLine);
    if (line.starts_with(u'"')) {
        const std::size_t end = std::min(line.find(u'"', 1), line.size());
        return commandOf(machine, line.substr(1, end - 1), line.substr(std::min(end + 1, line.size())));
    }
    // Without quotes every blank may end the program's path.
    for (std::size_t end = 0; end < line.size() && end < longestProgramPath;) {
        end = std::min(line.find(u' ', end + 1), line.size());
        if (auto command = commandOf(machine, line.substr(0, end), line.substr(end))) return command;
    }
    return std::nullopt;
}

std::string runTaskkill(const std::vector<std::string>& arguments) {
    int ending = SIGTERM;
    Text image;
    pid_t wanted = 0;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const Text option = lowerCase(fromUtf8(arguments[i]));
        const std::string value = i + 1 < arguments.size() ? arguments[i + 1] : std::string();
        if (option == u"/f") ending = SIGKILL;
        if (option == u"/im") image = fromUtf8(value);
        if (option == u"/pid") std::from_chars(value.data(), value.data() + value.size(), wanted);
    }
    std::string said;
    std::vector<SystemProcess> processes;
    systemProcesses(processes);
    for (const SystemProcess& process : processes) {
        const std::string name =
            process.program.empty() ? process.shortName : process.program.filename().string();
        const bool meant = image.empty() ? process.id == wanted : equalsIgnoringCase(fromUtf8(name), image);
        if (!meant || !process.ownedByUser || process.id == getpid() || process.id <= 1) continue;
        const std::string id = std::to_string(process.id);
        const bool ended = kill(process.id, ending) == 0;
        said.append(ended ? "SUCCESS: The process \"" : "ERROR: The process \"").append(name);
        said.append("\" with PID ").append(id);
        said.append(ended ? " has been terminated.\r\n" : " could not be terminated.\r\n");
    }
    if (said.empty()) {
        const std::string what = image.empty() ? std::to_string(wanted) : toUtf8(image);
        said = "ERROR: The process \"" + what + "\" not found.\r\n";
    }
    return said;
}

}  // namespace ovno2::platform::portable
