#include "log/viewer_channel.h"

#include "core/current_platform.h"
#include "pc/ansi.h"

namespace ovno2::DebugLog {

namespace {

constexpr std::size_t charactersPerParameter = 4;
constexpr std::size_t charactersPerMessage = 2 * charactersPerParameter;

std::uint32_t codesAt(TextView line, std::size_t start) {
    std::uint32_t codes = 0;
    for (std::size_t i = 0; i < charactersPerParameter && start + i < line.size(); ++i) {
        std::uint8_t code = 0;
        ansiCode(line[start + i], code);
        codes |= static_cast<std::uint32_t>(code) << 8 * i;
    }
    return codes;
}

}  // namespace

// A window that has gone away leaves the answer as it was.
void ViewerChannel::send(std::uint32_t message, std::uint32_t first, std::uint32_t second,
                         Long& answer) const {
    Long given = 0;
    if (currentPlatform().windows().send(window, message, first, second, given) == noFailure) answer = given;
}

bool ViewerChannel::viewerWantsLines() const {
    Long answer = 0;
    send(greetingMessage, 0, 0, answer);
    return answer == greetingAnswer;
}

Long ViewerChannel::DebugSendChunks(TextView line) const {
    Long answer = nothingSent;
    for (std::size_t start = 0; start < line.size(); start += charactersPerMessage)
        send(chunkMessage, codesAt(line, start), codesAt(line, start + charactersPerParameter), answer);
    return answer;
}

Long ViewerChannel::DebugSendShared(TextView line) {
    if (!sharedArea || sharedArea->MemWrite(line) != cMemMappedFile::done) return DebugSendChunks(line);
    Long answer = nothingSent;
    send(sharedMessage, static_cast<std::uint32_t>(sharedArea->LastWritePos()),
         static_cast<std::uint32_t>(line.size()), answer);
    return answer;
}

}  // namespace ovno2::DebugLog
