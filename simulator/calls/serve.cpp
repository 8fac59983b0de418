#include "simulator/calls/serve.h"

namespace ovno2::simulator {

std::optional<Status> plannedStatus(World& world, const CallSite& site) {
    std::optional<Status> planned;
    if (Session* const session = world.sessions.findAny(site.session);
        session != nullptr && session->phone != nullptr) {
        if (const std::optional<Drop> drop = world.plan.dropOn(session->phone->serialNumber.value_or(u""))) {
            session->phone->gone = session->phone->gone || drop->gone;
            world.breakSessions(*session->phone, drop->status);
        }
    }
    world.plan.repeating = false;
    if (const std::optional<Fault> fault = world.plan.arrive(site.name)) {
        if (fault->kind == Fault::Kind::allocation) planned = status::outOfMemory;
        if (fault->kind == Fault::Kind::status) planned = fault->status;
        world.plan.repeating = fault->kind == Fault::Kind::repeat;
    }
    // With this status the session itself is gone: its handle is dead and nobody need close it.
    if (planned == library::deviceListStale && site.session != 0) world.sessions.close(site.session);
    return planned;
}

std::shared_ptr<Phone> reachPhone(World& world, const char16_t* serial, Word medium) {
    requireGiven(serial);
    std::shared_ptr<Phone> phone = world.find(serial);
    if (phone == nullptr) throw Refused{library::phoneNotReached};
    bool switchedOff = false;
    for (const Connection& connection : phone->connections) {
        if (medium != anyMedium && connection.medium != medium) continue;
        if (world.isUp(connection)) return phone;
        switchedOff = switchedOff || !world.isOn(connection.medium);
    }
    throw Refused{switchedOff ? library::mediumOff : library::phoneNotReached};
}

}  // namespace ovno2::simulator
