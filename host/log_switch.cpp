#include "host/log_switch.h"

#include <algorithm>
#include <fstream>

#include "base/utf8.h"
#include "base/values.h"
#include "core/current_platform.h"
#include "host/console.h"
#include "pc/registry_access.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;
using platform::currentUser;
using platform::localMachine;

constexpr TextView debugKey = u"Software\\Tessaline\\Debug";
constexpr TextView hostKey = u"Software\\Marrowind\\Orvanta";
constexpr TextView viewerKey = u"Software\\Marrowind\\Orvanta\\Debug";

constexpr Long levelBits = 15;
constexpr Long timestampBit = 16;
constexpr Long textType = 1;

Long numberIn(Long hive, TextView key, TextView name) {
    return numericLong(Registry::GetRegValue(hive, key, name));
}

// Deleting a value that is not there has done what it should.
bool store(TextView key, TextView name, TextView text) {
    Registry::SetRegValue(currentUser, key, name, text, textType);
    return Registry::GetRegValue(currentUser, key, name) == text;
}

}  // namespace

LogState logState() {
    LogState state;
    for (const auto& [hive, key] : {std::pair(currentUser, debugKey), std::pair(localMachine, hostKey),
                                    std::pair(localMachine, debugKey)})
        if (const Text file = Registry::GetRegValue(hive, key, u"DebugFile"); !file.empty()) {
            state.file = console::pathOfModuleText(file);
            break;
        }
    Long level = numberIn(currentUser, viewerKey, u"Level") & levelBits;
    if (level == 0) level = numberIn(currentUser, debugKey, u"Level");
    if (level == 0) level = numberIn(localMachine, debugKey, u"Level");
    state.level = level & levelBits;
    state.timestamps = (level & timestampBit) != 0;
    state.on = numberIn(currentUser, debugKey, u"On") > 0;
    return state;
}

bool switchLogOn() {
    return store(debugKey, u"On", u"1");
}

bool switchLogOff() {
    const bool viewer = store(viewerKey, u"On", u"");
    return store(debugKey, u"On", u"") && viewer;
}

bool setLogFile(const fs::path& file) {
    return store(debugKey, u"DebugFile", fromUtf8(console::textOf(file)));
}

// Only the value of this key may switch timestamps on; another one that comes before it has to go.
bool setLogLevel(Long level, bool timestamps) {
    const Long number = (level & levelBits) + (timestamps ? timestampBit : 0);
    const bool viewer = store(viewerKey, u"Level", u"");
    return store(debugKey, u"Level", number == 0 ? Text() : decimalText(number)) && viewer;
}

LogFollower::LogFollower(fs::path file, std::size_t lines) : file_(std::move(file)) {
    std::ifstream stream(file_, std::ios::binary);
    std::string line;
    std::vector<std::uintmax_t> starts;
    while (stream) {
        starts.push_back(position_);
        if (!std::getline(stream, line)) break;
        position_ += line.size() + (stream.eof() ? 0 : 1);
    }
    if (!starts.empty()) position_ = starts[starts.size() - 1 - std::min(lines, starts.size() - 1)];
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
    bytes.resize(bytes.rfind('\n') + 1);
    position_ += bytes.size();
    std::erase(bytes, '\r');
    return toUtf8(currentPlatform().codePages().fromAnsi(bytes));
}

}  // namespace ovno2::host
