// A log that is on and keeps its lines.
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
        if (kind == plainLine)
            lines.push_back(text);
        else if (kind == routineEntry)
            lines.push_back("<" + text);
        else if (kind == routineExit)
            lines.push_back(text + ">");
        else
            lines.push_back(text + " " + std::to_string(kind));
    }
    void recheckSwitches() noexcept override {}

    std::vector<std::string> lines;
};

}  // namespace ovno2
