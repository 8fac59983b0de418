// The clock natively: the system's, in the machine's time zone; tests set it.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

// Local time follows the bias that the machine's registry states as in force now, and the system's own time
// zone where it states none.
class PortableClock : public Clock {
  public:
    explicit PortableClock(Machine& machine) : machine_(machine) {}

    SystemTime localTime() override;
    Single secondsSinceMidnight() override;
    void sleep(std::uint32_t milliseconds) override;
    bool fileTimeToSystemTime(std::uint64_t fileTime, SystemTime& time) override;

    // For tests. `set` stops the clock at a local time; from then on only `sleep`, which no longer waits, and
    // `advance` move it. `run` lets it go again. `sleeps` are those since `set`, in milliseconds.
    void set(const SystemTime& local);
    void advance(std::chrono::milliseconds time);
    void run();
    std::vector<std::uint32_t> sleeps() const;

  private:
    using Moment = std::chrono::local_time<std::chrono::milliseconds>;
    Moment now() const;

    Machine& machine_;
    mutable std::mutex mutex_;  // guards what follows
    std::optional<Moment> stoppedAt_;
    std::vector<std::uint32_t> sleeps_;
};

}  // namespace ovno2::platform::portable
