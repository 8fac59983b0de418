// A window natively: an endpoint that receives messages and answers them.
//
// Whoever owns one, in this process or another, is reached by its number from every machine on the same
// profile folder: there `windows/<number>` is a local socket. Messages arrive as packets, each answered by
// one packet; a sender waits for its answer. The log's viewer owns one, and so do tests.
#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "base/types.h"
#include "platform/portable/spawn.h"

namespace ovno2::platform::portable {

class WindowEndpoint {
  public:
    // What the owner does with what arrives; each may be empty. Called from `serve`, or from the background.
    struct Handlers {
        std::function<Long(std::uint32_t message, std::uint32_t first, std::uint32_t second)> message;
        std::function<void()> activated;
        std::function<void(TextView keys)> keys;
    };

    // A visible window. Throws std::system_error when the profile folder does not allow one.
    WindowEndpoint(const std::filesystem::path& profileFolder, Text title, Handlers handlers);
    ~WindowEndpoint();
    WindowEndpoint(const WindowEndpoint&) = delete;
    WindowEndpoint& operator=(const WindowEndpoint&) = delete;

    Long number() const { return number_; }
    void setVisible(bool visible) { visible_ = visible; }
    void setTitle(Text title);

    // Waits for at most `milliseconds` (-1 = without end) and answers what has arrived; false when nothing
    // had.
    bool serve(int milliseconds);
    // Serves on a thread of its own until the endpoint ends. `serve` is then not to be called.
    void serveInBackground();

  private:
    void listen(const std::filesystem::path& profileFolder);
    bool answerOne(const Descriptor& connection);

    std::mutex mutex_;  // guards the title
    Text title_;
    Handlers handlers_;
    std::atomic<bool> visible_ = true;
    Long number_ = 0;
    std::filesystem::path socketPath_;
    Descriptor listener_;
    Descriptor wakeUp_;  // readable when the background is to end
    std::vector<Descriptor> connections_;
    std::thread background_;
    std::atomic<bool> ending_ = false;
};

struct WindowRequest;
struct WindowReply;

// The sender's side of one connection. Not for several threads at once.
class WindowConnection {
  public:
    struct State {
        bool visible = false;
        Text title;
    };
    enum class Outcome { answered, gone, timedOut };

    WindowConnection(std::filesystem::path profileFolder, Long number)
        : profileFolder_(std::move(profileFolder)), number_(number) {}

    Outcome send(std::uint32_t message, std::uint32_t first, std::uint32_t second, Long& answer);
    Outcome query(State& state);
    Outcome activate();
    Outcome sendKeys(TextView keys);

  private:
    Outcome exchange(const WindowRequest& request, TextView text, WindowReply& reply, Text* replyText);
    Outcome exchangeOnce(const std::string& packet, WindowReply& reply, Text* replyText);

    std::filesystem::path profileFolder_;
    Long number_;
    Descriptor socket_;
};

// The numbers of all endpoints on a profile folder, also of those whose owner has gone.
std::vector<Long> endpointNumbers(const std::filesystem::path& profileFolder);

}  // namespace ovno2::platform::portable
