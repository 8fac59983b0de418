// The front of the diagnostic log: what every routine calls.
//
// While the log is off a call counts itself and does nothing else; no text is built. The writer behind it
// (src/log) stands above this folder and is hung in by `DebugLog::connect`; until then lines go nowhere.
// The front also keeps the thread's pending failure, which the next written line reports and clears.
#pragma once

#include "base/failure.h"
#include "base/values.h"
#include "platform/thread_state.h"

namespace ovno2 {

// Kinds of log lines; any other number is a numbered step, printed behind the message.
inline constexpr Long plainLine = -1;
inline constexpr Long routineEntry = 0;
inline constexpr Long routineExit = 999;

class LogWriter {
  public:
    virtual ~LogWriter() = default;
    virtual void writeLine(TextView message, Long kind, Long level, TextView tag) noexcept = 0;
    // Every 256th call while the log is off: looks whether it has been switched on.
    virtual void recheckSwitches() noexcept = 0;
};

struct PendingFailure {
    FailureNumber number = noFailure;
    Text description;
};

struct LogFront {
    static constexpr StateSlot slot = StateSlot::logFront;
    static constexpr bool isAlwaysThere = true;  // where failures are kept, nothing may fail
    bool enabled = false;
    Long level = 0;                    // configured detail level, 0 to 15 (-1 writes nothing to the file)
    std::uint32_t callCounter = 0;     // calls while the log is off
    LogWriter* writer = nullptr;       // not owned
    std::uint32_t memoryFailures = 0;  // how often a step found no memory
    PendingFailure pending;
};

inline PendingFailure& pendingFailure() {
    return stateOf<LogFront>().pending;
}
inline void clearPendingFailure() {
    PendingFailure& pending = pendingFailure();
    pending.number = noFailure;
    pending.description.clear();
}

inline bool logIsOn() {
    return stateOf<LogFront>().enabled;
}
// True when the configured detail level is above `level`.
inline bool logsMoreThan(Long level) {
    return stateOf<LogFront>().level > level;
}

namespace detail {
// True when a line must be built; counts the call otherwise.
inline bool lineWanted(LogFront& front) {
    if (front.enabled) return front.writer != nullptr;
    if ((++front.callCounter & 0xFFu) == 0xFFu && front.writer) front.writer->recheckSwitches();
    return false;
}
}  // namespace detail

// Writes one line. `kind` is one of the kinds above or a step number; `level` 0 for ordinary lines, 3 to 5
// for detail.
inline void DebugWrite(TextView message, Long kind = plainLine, Long level = 0) {
    LogFront& front = stateOf<LogFront>();
    if (detail::lineWanted(front)) front.writer->writeLine(message, kind, level, {});
}

// Writes a plain line made of parts: texts as they are, numbers through `decimal`, `spacedDecimal` or `hex`
// (base/values.h). The parts are only put together when the line will be written.
template <class... Parts>
void DebugLine(const Parts&... parts) {
    LogFront& front = stateOf<LogFront>();
    if (!detail::lineWanted(front)) return;
    try {
        Text line;
        (appendPart(line, parts), ...);
        front.writer->writeLine(line, plainLine, /*level=*/0, {});
    } catch (...) {
        // A line that cannot be built is lost; the caller is not affected.
    }
}

// Entry and exit line of a routine.
class RoutineLog {
  public:
    explicit RoutineLog(TextView name, Long level = 0) : name_(name), level_(level) {
        DebugWrite(name_, routineEntry, level_);
    }
    ~RoutineLog() { DebugWrite(name_, routineExit, level_); }
    RoutineLog(const RoutineLog&) = delete;
    RoutineLog& operator=(const RoutineLog&) = delete;

  private:
    TextView name_;
    Long level_;
};

}  // namespace ovno2
