#include "host/viewer/log_receiver.h"

#include <algorithm>

#include "core/attempt.h"
#include "core/current_platform.h"
#include "host/output/display_width.h"
#include "log/viewer_channel.h"

namespace ovno2::host {

namespace {

constexpr Long taken = 1;
constexpr Long notTaken = 0;
// A line that never ends is shown in parts of this many characters.
constexpr std::size_t longestLine = 0x10000;
constexpr TextView lineEnd = u"\r\n";
constexpr TextView unreadable = u"(a line could not be read from the shared area)";

}  // namespace

LogReceiver::LogReceiver(std::function<void(TextView)> line) : line_(std::move(line)) {
    area_.MemName = DebugLog::sharedAreaName;
}

Long LogReceiver::receive(std::uint32_t message, std::uint32_t first, std::uint32_t second) {
    switch (message) {
        case DebugLog::greetingMessage:
            return DebugLog::greetingAnswer;
        case DebugLog::chunkMessage:
            takeChunk(first);
            takeChunk(second);
            return taken;
        case DebugLog::sharedMessage:
            return takeShared(static_cast<Long>(first), static_cast<Long>(second)) ? taken : notTaken;
        default:
            return notTaken;
    }
}

// Code 0 fills up a line's last chunk.
void LogReceiver::takeChunk(std::uint32_t codes) {
    for (; codes != 0; codes >>= 8) {
        const char code = static_cast<char>(codes & 0xFF);
        if (code == '\0') continue;
        unfinished_.push_back(code);
        if (unfinished_.ends_with("\r\n")) {
            unfinished_.resize(unfinished_.size() - lineEnd.size());
            endLine();
        }
        if (unfinished_.size() >= longestLine) endLine();
    }
}

void LogReceiver::endLine() {
    line_(singleLine(currentPlatform().codePages().fromAnsi(unfinished_)));
    unfinished_.clear();
}

// The area is given back when it cannot be read: the next piece may lie in another of that name.
bool LogReceiver::takeShared(Long offset, Long length) {
    Text text;
    if (area_.MemRead(offset, length, text) != cMemMappedFile::done) {
        area_.MemClose();
        clearPendingFailure();
        line_(unreadable);
        return false;
    }
    for (TextView rest = text; !rest.empty();) {
        const std::size_t end = std::min(rest.find(lineEnd), rest.size());
        line_(singleLine(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + lineEnd.size(), rest.size()));
    }
    return true;
}

}  // namespace ovno2::host
