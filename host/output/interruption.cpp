#include "host/output/interruption.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iterator>

namespace ovno2::host {

namespace {

using namespace std::chrono_literals;
constexpr auto tickTime = 200ms;
constexpr auto patience = 2s;

#ifdef SIGHUP
constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr int ignoredSignals[] = {SIGPIPE, SIGXFSZ};  // writing fails with an error of its own
#else
constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGBREAK};
constexpr std::array<int, 0> ignoredSignals;
#endif

using Handler = void (*)(int);

volatile std::sig_atomic_t received = 0;
Handler endingBefore[std::size(endingSignals)];

// Some systems forget a handler that was called.
void receive(int signal) {
    if (received == 0) {
        received = signal;
        std::signal(signal, receive);
    } else {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
}

}  // namespace

Interruption::Interruption(Hooks hooks) : hooks_(std::move(hooks)) {
    received = 0;
    for (std::size_t i = 0; i < std::size(endingSignals); ++i) {
        endingBefore[i] = std::signal(endingSignals[i], receive);
        if (endingBefore[i] == SIG_IGN) std::signal(endingSignals[i], SIG_IGN);  // as under nohup
    }
    for (const int signal : ignoredSignals)
        std::signal(signal, SIG_IGN);
    working_.lock();
    onlooker_ = std::thread([this] { lookOn(); });
}

Interruption::~Interruption() {
    {
        const std::lock_guard lock(state_);
        isOver_ = true;
    }
    changed_.notify_one();
    onlooker_.join();
    working_.unlock();
    for (std::size_t i = 0; i < std::size(endingSignals); ++i)
        std::signal(endingSignals[i], endingBefore[i]);
}

int Interruption::signal() const {
    return received;
}

void Interruption::lookOn() {
    using Clock = std::chrono::steady_clock;
    Clock::time_point asked{};
    std::unique_lock state(state_);
    while (!changed_.wait_for(state, tickTime, [this] { return isOver_; })) {
        if (received != 0 && asked == Clock::time_point{}) asked = Clock::now();
        const std::unique_lock phoneIsAsked(working_, std::try_to_lock);
        if (!phoneIsAsked) continue;
        if (received != 0 && Clock::now() - asked >= patience) {
            hooks_.end();
            std::_Exit(128 + received);
        }
        hooks_.tick();
    }
}

}  // namespace ovno2::host
