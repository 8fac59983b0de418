// Windows, messages, the user and the host's callback.
#pragma once

#include "base/failure.h"
#include "base/types.h"

namespace ovno2::platform {

inline constexpr Long invalidWindowHandle = 1400;

class Windows {
  public:
    virtual ~Windows() = default;
    virtual bool isVisible(Long window) = 0;
    // Sends a message and waits for its answer. The result is the platform's error code: 0, or
    // `invalidWindowHandle` when the window is gone, or another where the platform knows why nobody answered;
    // then `answer` is 0.
    virtual Long send(Long window, std::uint32_t message, std::uint32_t first, std::uint32_t second,
                      Long& answer) = 0;
    virtual void processPendingMessages() = 0;
    // Activates the visible top-level window whose title equals `title`, else begins with it, without regard
    // to case; 5 when there is none.
    virtual FailureNumber activate(TextView title) = 0;
    // Sends keystrokes ("{Esc}" is the Escape key) to the active window and waits until they are processed.
    virtual FailureNumber sendKeys(TextView keys) = 0;
    // Calls the host function at `procedure` with four words; 5 when there is no such function.
    virtual FailureNumber callProcedure(Long procedure, Long first, Long second, Long third, Long fourth,
                                        Long& answer) = 0;
    virtual Long messageBox(TextView text, Long style) = 0;  // the button pressed
};

}  // namespace ovno2::platform
