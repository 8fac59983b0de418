// A log that is on and keeps its lines, and the registry for the layers below the frame.
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "support/log_front.h"
#include "support/utf8.h"

namespace ovno2 {

class RecordingServices : public FrameServices {
  public:
    RecordingServices() {
        LogFront& front = stateOf<LogFront>();
        front.services = this;
        front.enabled = true;
    }
    ~RecordingServices() override {
        LogFront& front = stateOf<LogFront>();
        front.services = nullptr;
        front.enabled = false;
    }
    RecordingServices(const RecordingServices&) = delete;
    RecordingServices& operator=(const RecordingServices&) = delete;

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
    Text registryValue(Long hive, TextView key, TextView name) noexcept override {
        const auto found = registry.find({hive, Text(key), Text(name)});
        return found == registry.end() ? Text() : found->second;
    }

    std::vector<std::string> lines;
    std::map<std::tuple<Long, Text, Text>, Text> registry;
};

}  // namespace ovno2
