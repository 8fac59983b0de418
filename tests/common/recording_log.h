// A log that is on, keeps its lines and, as every written line does, takes the pending failure away.
#pragma once

#include <string>
#include <vector>

#include "base/utf8.h"
#include "core/log_front.h"

namespace ovno2 {

class RecordingLog : public LogWriter {
  public:
    RecordingLog() {
        LogFront& front = stateOf<LogFront>();
        front.writer = this;
        front.enabled = true;
    }
    ~RecordingLog() override {
        LogFront& front = stateOf<LogFront>();
        front.writer = nullptr;
        front.enabled = false;
    }
    RecordingLog(const RecordingLog&) = delete;
    RecordingLog& operator=(const RecordingLog&) = delete;

    // "<name", "name>" for entry and exit, "text" for plain lines, "text 3" for numbered steps.
    void writeLine(TextView message, Long kind, Long, TextView) noexcept override {
        const std::string text = toUtf8(message);
        const std::string step = kind == plainLine || kind == routineExit ? "" : " " + std::to_string(kind);
        lines.push_back(kind == routineEntry ? "<" + text : text + (kind == routineExit ? ">" : step));
        clearPendingFailure();
    }
    void recheckSwitches() noexcept override {}

    std::vector<std::string> lines;
};

}  // namespace ovno2
