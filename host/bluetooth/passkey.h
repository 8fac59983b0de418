// The passkey that a phone is paired with. It is on the computer only for as long as this lives: its memory
// is overwritten at the end, and no copy of it is made.
#pragma once

#include <string>

#include "host/output/text.h"

namespace ovno2::host {

class Passkey {
  public:
    // From the terminal, not shown, after the prompt; with `fromInput` the first line of standard input,
    // which need not be a terminal. Throws CommandFailure when it cannot be asked for, or is none: 1 to 16
    // letters, digits or signs.
    Passkey(const std::string& prompt, bool fromInput);
    ~Passkey();
    Passkey(const Passkey&) = delete;
    Passkey& operator=(const Passkey&) = delete;

    const Text& text() const { return text_; }

  private:
    Text text_;
};

}  // namespace ovno2::host
