// The frame around every call of the library: the world's lock, the plan's faults, the journal, and no
// exception that leaves it.
//
// A call is served as serve({"NAME", session}, arguments, body). `arguments` fills an ArgumentText and runs
// only while the journal is on, before the body. The body returns a status or throws Refused.
#pragma once

#include <mutex>
#include <new>
#include <string>
#include <system_error>
#include <type_traits>

#include "simulator/base/refused.h"
#include "simulator/base/status.h"
#include "simulator/base/text.h"
#include "simulator/calls/the_world.h"
#include "simulator/images/image_file.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {

struct CallSite {
    const char* name;
    Handle session = 0;  // the handle the call is made on; 0 = none
    bool releases =
        false;  // a closing or freeing call: a planned failure is reported, the release happens all the same
};

// What the plan has in store for this call: the status it must give, if any.
std::optional<Status> plannedStatus(World& world, const CallSite& site);

template <typename Body>
Status statusOf(World& world, Body& body) {
    try {
        return body(world);
    } catch (const Refused& refused) {
        return refused.status;
    } catch (const std::bad_alloc&) {
        return status::outOfMemory;
    } catch (const ImageError& error) {
        tell(world, error.what());
        return status::storeFailed;
    } catch (const std::exception&) {
        return status::storeFailed;
    }
}

// `shown(status)` is what the journal puts behind the call.
template <typename Arguments, typename Body, typename Shown>
Status serveShowing(const CallSite& site, Arguments arguments, Body body, Shown shown) {
    const system::LastErrorKeeper keeper;
    World& world = theWorld();
    const std::lock_guard guard(world.lock);
    ArgumentText text;
    if (world.journal.on()) arguments(text);
    std::optional<Status> planned;
    if (world.plan.watching()) planned = plannedStatus(world, site);
    Status status = library::statusOk;
    if (!planned || site.releases) status = statusOf(world, body);
    if (planned) status = *planned;
    if (world.journal.on()) world.journal.add(site.name, text.all(), shown(status));
    return status;
}

template <typename Arguments, typename Body>
Status serve(const CallSite& site, Arguments arguments, Body body) {
    return serveShowing(site, arguments, body, [](Status status) { return hexNumber(status); });
}

// For the calls that return a version or an address: 0 in place of a planned failure. The journal shows a
// version as it is, and of an address whether there is one.
template <typename Result, typename Arguments, typename Body>
Result serveValue(const CallSite& site, Arguments arguments, Body body) {
    Result result{};
    const auto keep = [&](World& world) {
        result = body(world);
        return library::statusOk;
    };
    serveShowing(site, arguments, keep, [&](Status) -> std::string {
        if constexpr (std::is_pointer_v<Result>) {
            return result == nullptr ? "null" : "block";
        } else {
            return std::to_string(result);
        }
    });
    return result;
}

// The open session behind a handle; refuses a handle of another kind and a lost connection.
template <typename Kind>
Kind& require(World& world, Handle handle) {
    Kind* const session = world.sessions.find<Kind>(handle);
    if (session == nullptr) throw Refused{status::invalidHandle};
    if (session->broken != library::statusOk) throw Refused{session->broken};
    return *session;
}

// Closes the session behind a handle, also one whose connection is lost.
template <typename Kind>
Status closeSession(World& world, Handle handle) {
    if (world.sessions.find<Kind>(handle) == nullptr) return status::invalidHandle;
    world.sessions.close(handle);
    return library::statusOk;
}

inline void requireStarted(World& world, Group group) {
    if (world.started(group) == 0) throw Refused{status::notStarted};
}

// Refuses a null pointer where the caller must pass one.
template <typename... Pointers>
void requireGiven(Pointers*... pointers) {
    if (((pointers == nullptr) || ...)) throw Refused{status::invalidParameter};
}

inline char* takeMemory(World& world, std::size_t bytes, BlockKind kind) {
    char* const block = world.memory.allocate(bytes, kind);
    if (block == nullptr) throw Refused{status::outOfMemory};
    return block;
}

// The phone that a session is opened to, over a medium in the library's numbering or 1 for any.
std::shared_ptr<Phone> reachPhone(World& world, const char16_t* serial, Word medium);
inline constexpr Word anyMedium = 1;

}  // namespace ovno2::simulator
