#include "platform/portable/processes.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <unistd.h>

#include "base/utf8.h"
#include "base/values.h"
#include "platform/portable/paths.h"
#include "platform/portable/process_table.h"
#include "platform/portable/programs.h"
#include "platform/portable/spawn.h"
#include "platform/portable/user_folders.h"
#include "platform/portable/version_resource.h"

extern char** environ;

namespace ovno2::platform::portable {

namespace fs = std::filesystem;

namespace {

// The shell's answers.
constexpr Long shellStarted = 42;
constexpr Long shellNotFound = 2;
constexpr Long shellRefused = 5;
constexpr Long shellOutOfMemory = 8;
constexpr Long shellBadFormat = 11;
constexpr Long shellNothingOpensIt = 31;

constexpr TextView rootDevice = u"\\Device\\HostRoot";
constexpr TextView driveDevice = u"\\Device\\HostDrive";

Long shellAnswer(int failure) {
    switch (failure) {
        case 0:
            return shellStarted;
        case ENOENT:
        case ENOTDIR:
            return shellNotFound;
        case EAGAIN:
        case ENOMEM:
            return shellOutOfMemory;
        case ENOEXEC:
            return shellBadFormat;
        default:
            return shellRefused;
    }
}

FailureNumber startFailure(int failure) {
    switch (failure) {
        case 0:
            return noFailure;
        case ENOENT:
        case ENOTDIR:
            return fileNotFound;
        case EACCES:
        case EPERM:
            return permissionDenied;
        case EAGAIN:
        case ENOMEM:
            return outOfMemory;
        default:
            return invalidProcedureCall;
    }
}

// Output that comes through a pipe.
class PipedCommand : public CapturedCommand {
  public:
    explicit PipedCommand(Descriptor pipe) : pipe_(std::move(pipe)) {}

    Outcome read(std::string& bytes, std::size_t limit, std::uint32_t milliseconds) override {
        using namespace std::chrono;
        bytes.clear();
        const auto deadline = steady_clock::now() + std::chrono::milliseconds(milliseconds);
        for (;;) {
            const auto left = ceil<std::chrono::milliseconds>(deadline - steady_clock::now()).count();
            pollfd wanted{.fd = pipe_.get(), .events = POLLIN, .revents = 0};
            const int ready =
                poll(&wanted, 1, static_cast<int>(std::clamp<std::int64_t>(left, 0, INT32_MAX)));
            if (ready == 0) return Outcome::timedOut;
            if (ready > 0) break;
            if (errno != EINTR) return Outcome::end;
        }
        bytes.resize(limit);
        ssize_t got = 0;
        do {
            got = ::read(pipe_.get(), bytes.data(), bytes.size());
        } while (got < 0 && errno == EINTR);
        bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return got > 0 ? Outcome::data : Outcome::end;
    }

  private:
    Descriptor pipe_;
};

// Output of a program that is the machine's own and has already run.
class FinishedCommand : public CapturedCommand {
  public:
    explicit FinishedCommand(std::string output) : output_(std::move(output)) {}

    Outcome read(std::string& bytes, std::size_t limit, std::uint32_t) override {
        bytes = output_.substr(0, limit);
        output_.erase(0, limit);
        return bytes.empty() ? Outcome::end : Outcome::data;
    }

  private:
    std::string output_;
};

int run(const Command& command) {
    if (command.program.empty()) {
        runTaskkill(command.arguments);
        return 0;
    }
    return spawn(command.program, command.arguments, /*output=*/-1, /*ownSession=*/true);
}

// Documents, folders and addresses are the desktop's to open.
Long openWithDesktop(Machine& machine, const std::string& target) {
    const auto opener = findProgram(machine, u"xdg-open");
    if (!opener) return shellNothingOpensIt;
    return shellAnswer(spawn(*opener, {"xdg-open", target}, /*output=*/-1, /*ownSession=*/true));
}

bool isAddress(TextView file) {
    return file.find(u"://") != TextView::npos || equalsIgnoringCase(file.substr(0, 7), u"mailto:");
}

}  // namespace

FailureNumber PortableProcesses::start(TextView commandLine, Long show) {
    if (onStart) return onStart(commandLine, show);
    const auto command = findCommand(machine_, commandLine);
    return command ? startFailure(run(*command)) : fileNotFound;
}

Long PortableProcesses::shellExecute(TextView verb, TextView file, TextView parameters, Long show) {
    if (onShellExecute) return onShellExecute(verb, file, parameters, show);
    if (equalsIgnoringCase(verb, u"runas") && geteuid() != 0) return shellRefused;
    if (isAddress(file)) return openWithDesktop(machine_, toUtf8(file));
    const Text name = removeAll(file, u'"');
    if (name.empty()) return shellNotFound;
    if (auto program = findProgram(machine_, name); program && access(program->c_str(), X_OK) != 0)
        return openWithDesktop(machine_, *program);
    if (const auto command = findCommand(machine_, u"\"" + name + u"\" " + Text(parameters)))
        return shellAnswer(run(*command));
    std::error_code error;
    const fs::path folder = nativePath(machine_, name);
    return fs::is_directory(folder, error) ? openWithDesktop(machine_, folder) : shellNotFound;
}

std::unique_ptr<CapturedCommand> PortableProcesses::startCaptured(TextView commandLine) {
    if (onStartCaptured) return onStartCaptured(commandLine);
    const auto command = findCommand(machine_, commandLine);
    if (!command) return nullptr;
    if (command->program.empty()) return std::make_unique<FinishedCommand>(runTaskkill(command->arguments));
    Descriptor readEnd;
    Descriptor writeEnd;
    if (makePipe(readEnd, writeEnd) != 0) return nullptr;
    const int output = command->detached ? -1 : writeEnd.get();
    if (spawn(command->program, command->arguments, output, command->detached) != 0) return nullptr;
    return std::make_unique<PipedCommand>(std::move(readEnd));
}

template <class PathOf>
bool PortableProcesses::list(std::vector<ProcessEntry>& processes, PathOf&& pathOf) {
    if (running) {
        processes = *running;
        return true;
    }
    processes.clear();
    std::vector<SystemProcess> found;
    const bool listed = systemProcesses(found);
    for (const SystemProcess& process : found)
        processes.push_back({.id = process.id, .path = pathOf(process), .handle = 0});
    return listed;
}

bool PortableProcesses::listByStatus(std::vector<ProcessEntry>& processes) {
    return list(processes, [this](const SystemProcess& process) {
        return process.program.empty() ? Text() : windowsPath(machine_, process.program);
    });
}

bool PortableProcesses::listBySnapshot(std::vector<ProcessEntry>& processes) {
    return list(processes, [this](const SystemProcess& process) {
        if (process.program.empty()) return u"[" + fromUtf8(process.shortName) + u"]";
        Text path = windowsPath(machine_, process.program);
        path.replace(0, 2, deviceName(path.substr(0, 2)));
        return path;
    });
}

void PortableProcesses::visitThreads(const std::function<bool(const ThreadEntry&)>& visit) {
    portable::visitThreads(
        [&](pid_t thread, pid_t process) { return visit({.id = thread, .processId = process}); });
}

Text PortableProcesses::deviceName(TextView drive) {
    if (drive.size() != 2 || drive[1] != u':') return {};
    const Text letter = upperCase(drive.substr(0, 1));
    if (letter == u"Z") return Text(rootDevice);
    std::error_code error;
    return fs::is_directory(nativePath(machine_, drive), error) ? Text(driveDevice) + letter : Text();
}

Text PortableProcesses::specialFolder(Long id) {
    if (const auto scripted = folders.find(id); scripted != folders.end()) return scripted->second;
    return userFolder(machine_, id);
}

bool PortableProcesses::fileVersion(TextView path, FileVersion& version) {
    std::unique_ptr<OpenFile> file;
    return machine_.files().openWide(path, file) == noFailure && readVersionResource(*file, version);
}

Text PortableProcesses::environment(TextView name) {
    const std::string wanted = toUtf8(name);
    for (char** variable = environ; variable && *variable; ++variable) {
        const std::string_view entry(*variable);
        const std::size_t end = entry.find('=');
        if (end == wanted.size() && end != 0 && equalsIgnoringCase(fromUtf8(entry.substr(0, end)), name))
            return fromUtf8(entry.substr(end + 1));
    }
    // The folder of the system on the drive that holds it, when the machine has one.
    return equalsIgnoringCase(name, u"windir") ? specialFolder(/*id=*/36) : Text();
}

Text PortableProcesses::temporaryFolder() {
    std::error_code error;
    const fs::path folder = fs::temp_directory_path(error);
    Text path = windowsPath(machine_, error ? fs::path("/tmp") : folder);
    if (!path.ends_with(u'\\')) path += u'\\';
    return path;
}

std::unique_ptr<Processes> makeProcesses(Machine& machine) {
    return std::make_unique<PortableProcesses>(machine);
}

}  // namespace ovno2::platform::portable
