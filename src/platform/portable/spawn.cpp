#include "platform/portable/spawn.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace ovno2::platform::portable {

namespace {

constexpr int firstFreeDescriptor = 3;  // above the standard streams, which a child replaces

int aboveStandardStreams(Descriptor& descriptor) {
    if (descriptor.get() >= firstFreeDescriptor) return 0;
    Descriptor moved(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, firstFreeDescriptor));
    if (!moved) return errno;
    descriptor = std::move(moved);
    return 0;
}

// The part between fork and exec: nothing but what is safe there.
[[noreturn]] void becomeProgram(const char* program, char* const* arguments, int output, int report,
                                bool ownSession) {
    if (ownSession) setsid();
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nowhere, STDIN_FILENO);
    dup2(output >= 0 ? output : nowhere, STDOUT_FILENO);
    dup2(output >= 0 ? output : nowhere, STDERR_FILENO);
    // Descriptors that others in this process opened without care stay here.
    close_range(firstFreeDescriptor, ~0u, CLOSE_RANGE_CLOEXEC);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    execv(program, arguments);
    const int failure = errno;
    [[maybe_unused]] const ssize_t told = write(report, &failure, sizeof failure);
    _exit(127);
}

}  // namespace

int Descriptor::release() {
    return std::exchange(descriptor_, -1);
}

void Descriptor::close() {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

int makePipe(Descriptor& readEnd, Descriptor& writeEnd) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return errno;
    Descriptor forReading(ends[0]);
    Descriptor forWriting(ends[1]);
    if (const int failure = aboveStandardStreams(forReading)) return failure;
    if (const int failure = aboveStandardStreams(forWriting)) return failure;
    readEnd = std::move(forReading);
    writeEnd = std::move(forWriting);
    return 0;
}

std::vector<Text> splitArguments(TextView commandLine) {
    std::vector<Text> arguments;
    std::size_t i = 0;
    for (;;) {
        while (i < commandLine.size() && (commandLine[i] == u' ' || commandLine[i] == u'\t'))
            ++i;
        if (i == commandLine.size()) return arguments;
        Text argument;
        bool quoted = false;
        for (; i < commandLine.size(); ++i) {
            const char16_t c = commandLine[i];
            if (!quoted && (c == u' ' || c == u'\t')) break;
            if (c == u'\\') {
                std::size_t end = commandLine.find_first_not_of(u'\\', i);
                if (end == TextView::npos) end = commandLine.size();
                const bool beforeQuote = end < commandLine.size() && commandLine[end] == u'"';
                const std::size_t count = end - i;
                argument.append(beforeQuote ? count / 2 : count, u'\\');
                i = end - 1;
                if (beforeQuote && count % 2 != 0) {
                    argument += u'"';
                    i = end;
                }
            } else if (c == u'"') {
                quoted = !quoted;
            } else {
                argument += c;
            }
        }
        arguments.push_back(std::move(argument));
    }
}

int spawn(const std::filesystem::path& program, const std::vector<std::string>& arguments, int output,
          bool ownSession) {
    Descriptor reportEnd;
    Descriptor report;
    if (const int failure = makePipe(reportEnd, report)) return failure;
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);

    const pid_t child = fork();
    if (child < 0) return errno;
    if (child == 0) {
        const pid_t grandchild = fork();
        if (grandchild == 0)
            becomeProgram(program.c_str(), pointers.data(), output, report.get(), ownSession);
        if (grandchild < 0) {
            const int failure = errno;
            [[maybe_unused]] const ssize_t told = write(report.get(), &failure, sizeof failure);
        }
        _exit(0);
    }
    report.close();
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    int failure = 0;
    ssize_t got = 0;
    do {
        got = read(reportEnd.get(), &failure, sizeof failure);
    } while (got < 0 && errno == EINTR);
    return got == static_cast<ssize_t>(sizeof failure) ? failure : 0;
}

}  // namespace ovno2::platform::portable
