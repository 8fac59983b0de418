// Waiting for a call that takes its time: what is done, and for how long, stands on one line of standard
// error meanwhile, where that is a terminal. Ctrl-C ends the command (see interruption.h).
#pragma once

#include <chrono>
#include <string>

#include "host/output/interruption.h"
#include "host/output/status_line.h"

namespace ovno2::host {

class Waiting {
  public:
    // `what` as in "Searching for phones"; `ifInterrupted` tells the user what became of it. Both UTF-8, one
    // line. One instance at a time.
    Waiting(std::string what, std::string ifInterrupted);

    // Throws CommandFailure with 128 and the signal's number once the call has returned, when a signal asked
    // the program to end.
    template <class Call>
    auto during(Call&& call) {
        auto result = interruption_.whileAsking(std::forward<Call>(call));
        finish();
        return result;
    }

  private:
    void tick();
    void finish();

    std::string what_;
    std::string ifInterrupted_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    StatusLine line_;
    Interruption interruption_;  // the last, because its thread uses the others
};

}  // namespace ovno2::host
