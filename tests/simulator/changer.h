// Another process that is killed in the midst of its work.
#pragma once

#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "simulator/library.h"

namespace simulator_tests {

// Another process that changes things until it is killed. `change` gets 1, 2, 3, ... and says whether it
// worked.
class Changer {
  public:
    explicit Changer(const std::function<bool(int)>& change) {
        int pipe[2];
        EXPECT_EQ(::pipe(pipe), 0);
        child = ::fork();
        if (child == 0) {
            for (int n = 1; change(n); ++n) {
                if (n == 1 && ::write(pipe[1], "x", 1) != 1) break;
            }
            std::_Exit(1);
        }
        ::close(pipe[1]);
        char started = 0;
        EXPECT_EQ(::read(pipe[0], &started, 1), 1);
        ::close(pipe[0]);
    }
    // Kills it that long after, somewhere in the midst of a change.
    void killAfter(std::chrono::microseconds delay) const {
        std::this_thread::sleep_for(delay);
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "a change failed";
    }

  private:
    pid_t child = 0;
};

}  // namespace simulator_tests
