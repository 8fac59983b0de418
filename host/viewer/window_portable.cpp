#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <fcntl.h>
#include <iostream>
#include <mutex>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "core/current_platform.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/text.h"
#include "host/viewer/log_receiver.h"
#include "host/viewer/routine_filter.h"
#include "host/viewer/window.h"
#include "platform/portable/machine.h"
#include "platform/portable/spawn.h"
#include "platform/portable/window_endpoint.h"

namespace ovno2::host {

namespace {

using platform::portable::Descriptor;
using platform::portable::WindowEndpoint;

volatile std::sig_atomic_t ended = 0;

// The first signal ends the viewer in order; a second one ends it at once.
void endOnSignals() {
    struct sigaction action = {};
    action.sa_handler = [](int) { ended = 1; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

// The signals are the main thread's, whose output they interrupt. A thread that is made meanwhile keeps out.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t signals;
        sigfillset(&signals);
        pthread_sigmask(SIG_BLOCK, &signals, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_{};
};

// From the window's thread to the one that writes. Without bound: a pager that waits for its user must not
// make the logging program wait.
class LineQueue {
  public:
    void add(TextView line) {
        const std::lock_guard guard(mutex_);
        lines_.emplace_back(line);
        arrived_.notify_one();
    }
    // All lines that are there; waits a moment for the first.
    std::deque<Text> take() {
        constexpr std::chrono::milliseconds patience(100);  // how long a signal may go unnoticed
        std::unique_lock lock(mutex_);
        arrived_.wait_for(lock, patience, [this] { return !lines_.empty(); });
        return std::exchange(lines_, {});
    }

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<Text> lines_;
};

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) return false;
        if (written < 0 && ended) return false;
        if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

class Output {
  public:
    Output(const ViewerOptions& options, Descriptor saved)
        : filter_(fromUtf8(options.routine)), saveFile_(options.saveFile), saved_(std::move(saved)) {}

    // False when nobody reads the output any more.
    bool show(const std::deque<Text>& lines) {
        std::string bytes;
        for (const Text& line : lines)
            if (filter_.shows(line)) bytes += toUtf8(line) + '\n';
        if (saved_ && !writeAll(saved_.get(), bytes)) {
            say(saveFile_ + ": " + std::generic_category().message(errno), /*isError=*/true);
            saved_ = Descriptor();
            savingFailed_ = true;
        }
        return writeAll(STDOUT_FILENO, bytes);
    }
    bool savingFailed() const { return savingFailed_; }

  private:
    RoutineFilter filter_;
    std::string saveFile_;
    Descriptor saved_;
    bool savingFailed_ = false;
};

}  // namespace

void say(const std::string& text, bool isError) {
    if (isError)
        std::cerr << (text.starts_with("ovviewer: ") ? "" : "ovviewer: ") << text
                  << (text.ends_with('\n') ? "" : "\n");
    else
        std::cout << text;
}

int showLog(const ViewerOptions& options) {
    if (runningViewer() != 0) {
        say("A viewer of the log is running already.", /*isError=*/true);
        return failed;
    }
    Descriptor saved;
    if (!options.saveFile.empty()) {
        constexpr mode_t everybodyByMask = 0666;
        saved = Descriptor(
            open(options.saveFile.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, everybodyByMask));
        if (!saved) {
            say(options.saveFile + ": " + std::generic_category().message(errno), /*isError=*/true);
            return failed;
        }
    }
    endOnSignals();
    LineQueue lines;
    Output output(options, std::move(saved));
    try {
        LogReceiver receiver([&](TextView line) { lines.add(line); });
        const auto& machine = dynamic_cast<platform::portable::Machine&>(currentPlatform());
        WindowEndpoint endpoint(
            machine.profileFolder(), u"ovviewer",
            {.message = [&](std::uint32_t message, std::uint32_t first,
                            std::uint32_t second) { return receiver.receive(message, first, second); },
             .activated = {},
             .keys = {}});
        {
            const SignalsBlocked blocked;
            endpoint.serveInBackground();
        }
        const PublishedViewer published(endpoint.number(), options.mode, options.level);
        if (!published.isPublished()) {
            say("The registry does not take the viewer's values.", /*isError=*/true);
            return failed;
        }
        if (console::errorIsTerminal()) std::cerr << "Waiting for the log's lines; Ctrl-C ends.\n";
        while (!ended && output.show(lines.take())) {
        }
    } catch (const std::system_error& error) {
        say(error.what(), /*isError=*/true);
        return failed;
    }
    output.show(lines.take());
    return output.savingFailed() ? failed : done;
}

}  // namespace ovno2::host
