// Windows natively: messages to endpoints that this or another process owns, host functions by number.
//
// A window handle is the number of an endpoint on the machine's profile folder (window_endpoint.h). There are
// no queues; "pending messages" are the handlers that a host registers. A message box is a line on standard
// error.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/portable/machine.h"
#include "platform/portable/window_endpoint.h"

namespace ovno2::platform::portable {

inline constexpr Long windowDoesNotAnswer = 1460;  // a result of `send` beside `invalidWindowHandle`

class PortableWindows : public Windows {
  public:
    using Procedure = std::function<Long(Long, Long, Long, Long)>;

    explicit PortableWindows(Machine& machine) : profileFolder_(machine.profileFolder()) {}

    bool isVisible(Long window) override;
    Long send(Long window, std::uint32_t message, std::uint32_t first, std::uint32_t second,
              Long& answer) override;
    void processPendingMessages() override;
    FailureNumber activate(TextView title) override;
    FailureNumber sendKeys(TextView keys) override;
    FailureNumber callProcedure(Long procedure, Long first, Long second, Long third, Long fourth,
                                Long& answer) override;
    Long messageBox(TextView text, Long style) override;

    // The number under which `callProcedure` finds a host function.
    Long registerProcedure(Procedure procedure);
    void unregisterProcedure(Long number);
    // Runs at every `processPendingMessages`, on the thread that calls it, for as long as the machine lives.
    void whenMessagesArePending(std::function<void()> handler);
    // Answers message boxes instead of the user. Set before the machine is in use.
    std::function<Long(TextView text, Long style)> answerMessageBox;

  private:
    struct Connection {
        std::mutex mutex;  // one message at a time
        WindowConnection line;
        Connection(const std::filesystem::path& folder, Long number) : line(folder, number) {}
    };

    template <class Exchange>
    WindowConnection::Outcome with(Long window, Exchange&& exchange);

    std::filesystem::path profileFolder_;
    std::mutex mutex_;  // guards what follows
    std::map<Long, std::shared_ptr<Connection>> connections_;
    Long activeWindow_ = 0;
    std::map<Long, Procedure> procedures_;
    Long nextProcedure_ = 0x00401000;
    std::vector<std::function<void()>> pendingHandlers_;
};

}  // namespace ovno2::platform::portable
