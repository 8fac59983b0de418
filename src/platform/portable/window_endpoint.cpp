#include "platform/portable/window_endpoint.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

#include "platform/portable/native_file.h"

namespace ovno2::platform::portable {

namespace {

constexpr Long firstNumber = 0x10000;
constexpr Long numbersPerProcess = 64;
constexpr int answerPatience = 10'000;  // milliseconds; a longer silence counts as hung
constexpr std::size_t largestPacket = 64 * 1024;
constexpr int pendingConnections = 64;

enum class RequestKind : std::uint32_t { message = 1, query = 2, activate = 3, keys = 4 };

std::filesystem::path windowsFolder(const std::filesystem::path& profileFolder) {
    return profileFolder / "windows";
}

// The address of a socket file. A path too long for an address goes through the open folder instead.
class SocketAddress {
  public:
    explicit SocketAddress(const std::filesystem::path& path) {
        address_.sun_family = AF_UNIX;
        std::string name = path.string();
        if (name.size() >= sizeof address_.sun_path) {
            folder_ = Descriptor(open(path.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
            name = "/proc/self/fd/" + std::to_string(folder_.get()) + "/" + path.filename().string();
        }
        std::memcpy(address_.sun_path, name.c_str(), std::min(name.size() + 1, sizeof address_.sun_path - 1));
    }
    int bind(int socket) const { return ::bind(socket, base(), sizeof address_); }
    int connect(int socket) const { return ::connect(socket, base(), sizeof address_); }

  private:
    const sockaddr* base() const { return reinterpret_cast<const sockaddr*>(&address_); }

    sockaddr_un address_{};
    Descriptor folder_;
};

Descriptor newSocket() {
    return Descriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
}

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

template <class Record>
std::string packetOf(const Record& record, TextView text) {
    text = text.substr(0, (largestPacket - sizeof record) / sizeof(char16_t));
    std::string packet(sizeof record + text.size() * sizeof(char16_t), '\0');
    std::memcpy(packet.data(), &record, sizeof record);
    if (!text.empty())
        std::memcpy(packet.data() + sizeof record, text.data(), text.size() * sizeof(char16_t));
    return packet;
}

template <class Record>
bool readPacket(const std::string& packet, Record& record, Text& text) {
    if (packet.size() < sizeof record) return false;
    std::memcpy(&record, packet.data(), sizeof record);
    text.resize((packet.size() - sizeof record) / sizeof(char16_t));
    if (!text.empty())
        std::memcpy(text.data(), packet.data() + sizeof record, text.size() * sizeof(char16_t));
    return true;
}

// Empty when the other side has closed the connection.
std::string receivePacket(int socket) {
    char packet[largestPacket];
    ssize_t size = 0;
    do {
        size = recv(socket, packet, sizeof packet, 0);
    } while (size < 0 && errno == EINTR);
    return std::string(packet, size > 0 ? static_cast<std::size_t>(size) : 0);
}

bool sendPacket(int socket, const std::string& packet) {
    ssize_t size = 0;
    do {
        size = send(socket, packet.data(), packet.size(), MSG_NOSIGNAL);
    } while (size < 0 && errno == EINTR);
    return size == static_cast<ssize_t>(packet.size());
}

}  // namespace

// What goes over the socket; a text follows where the kind has one.
struct WindowRequest {
    RequestKind kind;
    std::uint32_t message = 0, first = 0, second = 0;
};

struct WindowReply {
    Long answer = 0;
    std::uint32_t visible = 0;
};

WindowEndpoint::WindowEndpoint(const std::filesystem::path& profileFolder, Text title, Handlers handlers)
    : title_(std::move(title)),
      handlers_(std::move(handlers)),
      wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!wakeUp_) fail("a window cannot be made");
    const std::filesystem::path folder = windowsFolder(profileFolder);
    errno = makeFolders(folder);
    // An earlier version let others in.
    if (errno != 0 || chmod(folder.c_str(), newFolderMode) != 0) fail(folder.c_str());
    listen(profileFolder);
}

// Numbers start from one that depends on the process, so that processes seldom meet. A socket file whose
// owner has gone is cleared away.
void WindowEndpoint::listen(const std::filesystem::path& profileFolder) {
    Long number = firstNumber + getpid() % 0x4000 * numbersPerProcess;
    for (;; ++number) {
        socketPath_ = windowsFolder(profileFolder) / std::to_string(number);
        const SocketAddress address(socketPath_);
        listener_ = newSocket();
        if (!listener_) fail("a window cannot be made");
        if (address.bind(listener_.get()) == 0 && chmod(socketPath_.c_str(), newFileMode) == 0) break;
        if (errno != EADDRINUSE) fail(socketPath_.c_str());
        const Descriptor probe = newSocket();
        if (probe && address.connect(probe.get()) != 0 && errno == ECONNREFUSED) {
            unlink(socketPath_.c_str());
            --number;
        }
    }
    if (::listen(listener_.get(), pendingConnections) != 0) fail(socketPath_.c_str());
    number_ = number;
}

WindowEndpoint::~WindowEndpoint() {
    ending_ = true;
    eventfd_write(wakeUp_.get(), 1);
    if (background_.joinable()) background_.join();
    unlink(socketPath_.c_str());
}

void WindowEndpoint::setTitle(Text title) {
    const std::lock_guard guard(mutex_);
    title_ = std::move(title);
}

bool WindowEndpoint::serve(int milliseconds) {
    std::vector<pollfd> waiting = {{wakeUp_.get(), POLLIN, 0}, {listener_.get(), POLLIN, 0}};
    for (const Descriptor& connection : connections_)
        waiting.push_back({connection.get(), POLLIN, 0});
    if (poll(waiting.data(), waiting.size(), milliseconds) <= 0 || ending_) return false;
    bool answered = false;
    for (std::size_t i = connections_.size(); i-- > 0;) {
        if (waiting[i + 2].revents == 0) continue;
        if (answerOne(connections_[i]))
            answered = true;
        else
            connections_.erase(connections_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if (waiting[1].revents != 0) {
        Descriptor connection(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (connection) connections_.push_back(std::move(connection));
    }
    return answered;
}

bool WindowEndpoint::answerOne(const Descriptor& connection) {
    WindowRequest request{};
    WindowReply reply;
    Text text;
    const std::string packet = receivePacket(connection.get());
    if (!readPacket(packet, request, text)) return false;
    Text title;
    switch (request.kind) {
        case RequestKind::message:
            if (handlers_.message)
                reply.answer = handlers_.message(request.message, request.first, request.second);
            break;
        case RequestKind::query: {
            const std::lock_guard guard(mutex_);
            title = title_;
            break;
        }
        case RequestKind::activate:
            if (handlers_.activated) handlers_.activated();
            break;
        case RequestKind::keys:
            if (handlers_.keys) handlers_.keys(text);
            break;
    }
    reply.visible = visible_ ? 1 : 0;
    return sendPacket(connection.get(), packetOf(reply, title));
}

void WindowEndpoint::serveInBackground() {
    background_ = std::thread([this] {
        while (!ending_)
            serve(/*milliseconds=*/-1);
    });
}

WindowConnection::Outcome WindowConnection::exchange(const WindowRequest& request, TextView text,
                                                     WindowReply& reply, Text* replyText) {
    const std::string packet = packetOf(request, text);
    const bool wasConnected = static_cast<bool>(socket_);
    Outcome outcome = exchangeOnce(packet, reply, replyText);
    // An owner may have gone and another taken the number since the last message.
    if (outcome == Outcome::gone && wasConnected) outcome = exchangeOnce(packet, reply, replyText);
    return outcome;
}

WindowConnection::Outcome WindowConnection::exchangeOnce(const std::string& packet, WindowReply& reply,
                                                         Text* replyText) {
    if (!socket_) {
        Descriptor connected = newSocket();
        const SocketAddress address(windowsFolder(profileFolder_) / std::to_string(number_));
        if (!connected || address.connect(connected.get()) != 0) return Outcome::gone;
        socket_ = std::move(connected);
    }
    Descriptor socket = std::move(socket_);  // given up unless an answer arrives
    if (!sendPacket(socket.get(), packet)) return Outcome::gone;
    pollfd waiting = {socket.get(), POLLIN, 0};
    int ready = 0;
    do {
        ready = poll(&waiting, 1, answerPatience);
    } while (ready < 0 && errno == EINTR);
    if (ready == 0) return Outcome::timedOut;
    Text text;
    const std::string answer = receivePacket(socket.get());
    if (!readPacket(answer, reply, text)) return Outcome::gone;
    if (replyText) *replyText = std::move(text);
    socket_ = std::move(socket);
    return Outcome::answered;
}

WindowConnection::Outcome WindowConnection::send(std::uint32_t message, std::uint32_t first,
                                                 std::uint32_t second, Long& answer) {
    WindowReply reply;
    const Outcome outcome =
        exchange({RequestKind::message, message, first, second}, {}, reply, /*replyText=*/nullptr);
    answer = outcome == Outcome::answered ? reply.answer : 0;
    return outcome;
}

WindowConnection::Outcome WindowConnection::query(State& state) {
    WindowReply reply;
    const Outcome outcome = exchange({RequestKind::query}, {}, reply, &state.title);
    state.visible = outcome == Outcome::answered && reply.visible != 0;
    return outcome;
}

WindowConnection::Outcome WindowConnection::activate() {
    WindowReply reply;
    return exchange({RequestKind::activate}, {}, reply, /*replyText=*/nullptr);
}

WindowConnection::Outcome WindowConnection::sendKeys(TextView keys) {
    WindowReply reply;
    return exchange({RequestKind::keys}, keys, reply, /*replyText=*/nullptr);
}

std::vector<Long> endpointNumbers(const std::filesystem::path& profileFolder) {
    std::vector<Long> numbers;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(windowsFolder(profileFolder), ignored)) {
        const std::string name = entry.path().filename().string();
        Long number = 0;
        const auto read = std::from_chars(name.data(), name.data() + name.size(), number);
        if (read.ec == std::errc() && read.ptr == name.data() + name.size()) numbers.push_back(number);
    }
    std::ranges::sort(numbers);
    return numbers;
}

}  // namespace ovno2::platform::portable
