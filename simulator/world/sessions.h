// The handles that callers hold: sessions of device management, media, files and content, and what lives
// inside one (file searches, content operations).
//
// A handle is a number that is never given out twice, so a closed one is told from an open one. Closing a
// session closes what lives inside it and releases the memory it held for its caller. Owned and guarded by
// the World.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "simulator/memory/low_memory.h"
#include "simulator/world/phone.h"

namespace ovno2::simulator {

using library::Handle;

enum class SessionKind : std::uint8_t { deviceManagement, media, fileSystem, search, content, operation };
inline constexpr std::size_t sessionKinds = 6;
const char* nameOf(SessionKind kind);

struct Session {
    Session(SessionKind ofKind, std::shared_ptr<Phone> ofPhone) : kind(ofKind), phone(std::move(ofPhone)) {}
    virtual ~Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const SessionKind kind;
    const std::shared_ptr<Phone> phone;  // null where no phone belongs to it
    Handle parent = 0;                   // the session that this one lives in
    Status broken = library::statusOk;   // what every call gives once the connection is lost
    std::vector<char*> held;             // blocks that go when the session goes
};

struct DeviceManagementSession : Session {
    static constexpr SessionKind ownKind = SessionKind::deviceManagement;
    DeviceManagementSession() : Session(ownKind, nullptr) {}
};

struct MediaSession : Session {
    static constexpr SessionKind ownKind = SessionKind::media;
    MediaSession() : Session(ownKind, nullptr) {}
};

struct ContentConnection : Session {
    static constexpr SessionKind ownKind = SessionKind::content;
    ContentConnection(std::shared_ptr<Phone> ofPhone, ContentKind toContent)
        : Session(ownKind, std::move(ofPhone)), content(toContent) {}
    const ContentKind content;
};

class Sessions {
  public:
    explicit Sessions(LowMemory& lowMemory) : memory(lowMemory) {}

    Handle open(std::unique_ptr<Session> session);

    // The open session of this kind, or null.
    template <typename Kind>
    Kind* find(Handle handle) const {
        const auto found = open_.find(handle);
        if (found == open_.end() || found->second->kind != Kind::ownKind) return nullptr;
        return static_cast<Kind*>(found->second.get());
    }
    Session* findAny(Handle handle) const;

    void close(Handle handle);
    void closeAll();
    std::uint64_t count(SessionKind kind) const;
    std::uint64_t closedInside() const { return closedInside_; }  // closed only because their session was

    void forEach(const std::function<void(Session&)>& visit);

  private:
    LowMemory& memory;
    std::unordered_map<Handle, std::unique_ptr<Session>> open_;
    Handle last = 0;
    std::uint64_t closedInside_ = 0;
};

}  // namespace ovno2::simulator
