// Waiting for what another process or thread does.
#pragma once

#include <chrono>
#include <thread>

namespace ovno2 {

// True when the condition holds within ten seconds.
template <class Condition>
bool soon(Condition condition) {
    constexpr int tries = 1000;
    for (int i = 0; i < tries; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace ovno2
