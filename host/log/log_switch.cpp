#include "host/log/log_switch.h"

#include <algorithm>
#include <fstream>

#include "host/driver/driver.h"
#include "host/output/console.h"
#include "host/output/display_width.h"
#include "host/output/text.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;
using computer::machineValue;
using computer::userValue;

constexpr TextView debugKey = u"Software\\Tessaline\\Debug";
constexpr TextView hostKey = u"Software\\Marrowind\\Orvanta";
constexpr TextView viewerKey = u"Software\\Marrowind\\Orvanta\\Debug";

// Only this ends a line; what a phone's name has of either stands within one.
constexpr std::string_view lineEnd = "\r\n";

constexpr Long levelBits = 15;
constexpr Long timestampBit = 16;

}  // namespace

LogState logState() {
    LogState state;
    Text file = userValue(debugKey, u"DebugFile");
    for (const TextView key : {hostKey, debugKey})
        if (file.empty()) file = machineValue(key, u"DebugFile");
    if (!file.empty()) state.file = pathOfModuleText(file);
    Long level = numericLong(userValue(viewerKey, u"Level")) & levelBits;
    if (level == 0) level = numericLong(userValue(debugKey, u"Level"));
    if (level == 0) level = numericLong(machineValue(debugKey, u"Level"));
    state.level = level & levelBits;
    state.timestamps = (level & timestampBit) != 0;
    state.on = numericLong(userValue(debugKey, u"On")) > 0;
    return state;
}

bool switchLogOn() {
    return computer::setUserValue(debugKey, u"On", u"1");
}

bool switchLogOff() {
    const bool viewer = computer::setUserValue(viewerKey, u"On", u"");
    return computer::setUserValue(debugKey, u"On", u"") && viewer;
}

bool setLogFile(const fs::path& file) {
    return computer::setUserValue(debugKey, u"DebugFile", fromUtf8(console::textOf(file)));
}

// Only the value of this key may switch timestamps on; another one that comes before it has to go.
bool setLogLevel(Long level, bool timestamps) {
    const Long number = (level & levelBits) + (timestamps ? timestampBit : 0);
    const bool viewer = computer::setUserValue(viewerKey, u"Level", u"");
    return computer::setUserValue(debugKey, u"Level", number == 0 ? Text() : decimalText(number)) && viewer;
}

LogFollower::LogFollower(fs::path file, std::size_t lines) : file_(std::move(file)) {
    std::ifstream stream(file_, std::ios::binary);
    std::string line;
    std::vector<std::uintmax_t> starts = {0};
    for (std::uintmax_t end = 0; std::getline(stream, line);) {
        end += line.size() + (stream.eof() ? 0 : 1);
        if (line.ends_with('\r') || stream.eof()) starts.push_back(end);
    }
    position_ = starts[starts.size() - 1 - std::min(lines, starts.size() - 1)];
}

std::string LogFollower::more() {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file_, error);
    if (error || size == position_) return {};
    if (size < position_) position_ = 0;
    std::ifstream stream(file_, std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(position_));
    std::string bytes(std::istreambuf_iterator<char>(stream), {});
    // The line that is being written comes with the next look.
    const std::size_t whole = bytes.rfind(lineEnd);
    bytes.resize(whole == std::string::npos ? 0 : whole + lineEnd.size());
    position_ += bytes.size();
    std::string shown;
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t end = bytes.find(lineEnd, start);
        const Text line = computer::fromCodePage(std::string_view(bytes).substr(start, end - start));
        shown += toUtf8(singleLine(line)) + '\n';
        start = end + lineEnd.size();
    }
    return shown;
}

}  // namespace ovno2::host
