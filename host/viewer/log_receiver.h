// The viewer's end of the log's two channels: turns the messages that its window receives into lines.
//
// Lines come in chunks of eight ANSI characters, or as an offset and a length in the shared area. A sender
// waits for the answer, so every message is dealt with at once. Messages do not say who sent them: lines that
// two programs send in chunks at the same moment run into each other. Belongs to the thread of the window.
#pragma once

#include <functional>
#include <string>

#include "log/mapped_file.h"

namespace ovno2::host {

class LogReceiver {
  public:
    // `line` is given each line as it is complete, without its end and safe to show: only CR LF ends a line,
    // and what else of control characters a phone's name has is shown as a picture.
    explicit LogReceiver(std::function<void(TextView line)> line);

    // Takes a message of the log's and says what the window answers to it; to any other message 0.
    Long receive(std::uint32_t message, std::uint32_t first, std::uint32_t second);

  private:
    void takeChunk(std::uint32_t codes);
    void endLine();
    bool takeShared(Long offset, Long length);

    std::function<void(TextView)> line_;
    std::string unfinished_;  // what has come in chunks of a line, ANSI
    cMemMappedFile area_;
};

}  // namespace ovno2::host
