// Ctrl-C and its like while a command works on a phone.
//
// A call into the phone's driver may take minutes, tells nothing while it runs, and cannot be broken off.
// While an instance lives, a thread beside it looks on: every now and then during such a call it calls
// `tick`, so that something moves on the screen. A signal that asks the program to end is kept; the command
// looks for it between two calls and ends in order. When a call does not return within two seconds of it,
// `end` is called, and the program ends with 128 and the signal's number. A second signal ends the program at
// once.
//
// One instance at a time. `tick` and `end` run while the command waits for the phone, never beside its own
// work.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace ovno2::host {

class Interruption {
  public:
    struct Hooks {
        std::function<void()> tick;
        std::function<void()> end;
    };
    explicit Interruption(Hooks hooks);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    // The signal that asked the program to end; 0 = none.
    int signal() const;

    // Calls into the phone's driver.
    template <class Call>
    auto whileAsking(Call&& call) {
        const Released asking(working_);
        return call();
    }

  private:
    struct Released {
        explicit Released(std::mutex& held) : mutex(held) { mutex.unlock(); }
        ~Released() { mutex.lock(); }
        Released(const Released&) = delete;
        Released& operator=(const Released&) = delete;
        std::mutex& mutex;
    };

    void lookOn();

    Hooks hooks_;
    std::mutex working_;  // the command's, except while it asks the phone
    std::mutex state_;
    std::condition_variable changed_;
    bool isOver_ = false;
    std::thread onlooker_;
};

}  // namespace ovno2::host
