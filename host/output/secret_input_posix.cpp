#include <cerrno>
#include <csignal>
#include <iterator>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include "host/output/command_output.h"
#include "host/output/secret_input.h"

namespace ovno2::host::console {

namespace {

constexpr int watchedSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGTTIN, SIGTTOU};

volatile std::sig_atomic_t caught = 0;

void keepSignal(int signal) {
    caught = signal;
}

// While it lives, the watched signals come through only within `waitForInput`, and are kept in `caught`.
class KeptSignals {
  public:
    KeptSignals() {
        caught = 0;
        sigset_t watched;
        sigemptyset(&watched);
        for (const int signal : watchedSignals)
            sigaddset(&watched, signal);
        pthread_sigmask(SIG_BLOCK, &watched, &maskBefore_);
        struct sigaction action {};
        action.sa_handler = keepSignal;
        sigemptyset(&action.sa_mask);
        for (std::size_t i = 0; i < std::size(watchedSignals); ++i) {
            sigaction(watchedSignals[i], nullptr, &before_[i]);
            if (before_[i].sa_handler != SIG_IGN) sigaction(watchedSignals[i], &action, nullptr);
        }
    }
    ~KeptSignals() {
        for (std::size_t i = 0; i < std::size(watchedSignals); ++i)
            sigaction(watchedSignals[i], &before_[i], nullptr);
        pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr);
    }
    KeptSignals(const KeptSignals&) = delete;
    KeptSignals& operator=(const KeptSignals&) = delete;

    // False when a signal came first.
    bool waitForInput() const {
        while (caught == 0) {
            fd_set input;
            FD_ZERO(&input);
            FD_SET(STDIN_FILENO, &input);
            if (pselect(STDIN_FILENO + 1, &input, nullptr, nullptr, nullptr, &maskBefore_) >= 0) return true;
            if (errno != EINTR) return true;  // reading will tell
        }
        return false;
    }

  private:
    sigset_t maskBefore_{};
    struct sigaction before_[std::size(watchedSignals)]{};
};

// While it lives, the terminal shows nothing of what is typed but the line's end.
class HiddenTyping {
  public:
    HiddenTyping() : isTerminal_(tcgetattr(STDIN_FILENO, &before_) == 0) {
        if (!isTerminal_) return;
        termios hidden = before_;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        hidden.c_lflag |= ECHONL;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    ~HiddenTyping() {
        if (isTerminal_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;

  private:
    termios before_{};
    bool isTerminal_;
};

struct Line {
    std::size_t size = 0;
    bool ended = false;  // the input, before any of the line
};

Line readLine(const KeptSignals& signals, std::span<char> line) {
    Line read;
    for (bool any = false; signals.waitForInput(); any = true) {
        char letter = 0;
        const ssize_t got = ::read(STDIN_FILENO, &letter, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            read.ended = !any;
            break;
        }
        if (letter == '\n') break;
        if (read.size < line.size()) line[read.size++] = letter;
    }
    if (read.size != 0 && line[read.size - 1] == '\r') --read.size;
    return read;
}

}  // namespace

bool inputIsTerminal() {
    return isatty(STDIN_FILENO) != 0;
}

std::optional<std::size_t> readSecret(const std::string& prompt, std::span<char> line) {
    for (;;) {
        Line read;
        {
            const KeptSignals signals;
            const HiddenTyping hidden;
            if (inputIsTerminal()) notePrompt(prompt);
            read = readLine(signals, line);
        }
        if (caught == 0) return read.ended ? std::nullopt : std::optional(read.size);
        // Ends the program, or stops it; once it goes on, the user is asked again.
        notePrompt("\n");
        std::raise(caught);
    }
}

}  // namespace ovno2::host::console
