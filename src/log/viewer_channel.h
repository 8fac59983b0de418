// The way of a log line to the viewer's window: by window messages alone, or through shared memory.
#pragma once

#include <memory>

#include "log/mapped_file.h"

namespace ovno2::DebugLog {

inline constexpr std::uint32_t chunkMessage = 29797;     // eight ANSI codes of a line
inline constexpr std::uint32_t greetingMessage = 29798;  // asks whether the viewer wants lines
inline constexpr std::uint32_t sharedMessage = 29799;  // byte offset and length of a line in the shared area
inline constexpr Long greetingAnswer = 815;
inline constexpr Long nothingSent = -1;
inline constexpr TextView sharedAreaName = u"OVDebug";

class ViewerChannel {
  public:
    Long window = 0;  // the viewer's handle; 0 = none
    std::unique_ptr<cMemMappedFile> sharedArea;

    // Asks the viewer whether it wants lines.
    bool viewerWantsLines() const;

    // Eight characters a message: the codes of the first four, lowest byte first, make the first parameter,
    // the next four the second; codes behind the line's end are 0. The last answer, or `nothingSent`.
    Long DebugSendChunks(TextView line) const;

    // Through the shared area; by chunks where there is none or it cannot be written. The last answer, or
    // `nothingSent`.
    Long DebugSendShared(TextView line);

  private:
    void send(std::uint32_t message, std::uint32_t first, std::uint32_t second, Long& answer) const;
};

}  // namespace ovno2::DebugLog
