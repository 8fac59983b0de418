#include "simulator/world/world.h"

#include <algorithm>
#include <atomic>

namespace ovno2::simulator {
namespace {

// A number for the calling thread that no later thread gets again.
unsigned long threadNumber() {
    static std::atomic<unsigned long> last{0};
    thread_local const unsigned long own = ++last;
    return own;
}

}  // namespace

const char* nameOf(Group group) {
    static constexpr const char* names[groups] = {"connectivity", "deviceManagement", "media", "fileSystem",
                                                  "content"};
    return names[static_cast<std::size_t>(group)];
}

std::vector<Medium> allMediaOn() {
    return {{library::mediumInfrared, u"Infrared", true},
            {library::mediumCable, u"Serial cable", true},
            {library::mediumBluetooth, u"Bluetooth", true},
            {library::mediumUsb, u"USB", true}};
}

World::World() : media(allMediaOn()) {}

void World::reset() {
    sessions.closeAll();
    plan.clear();
    plan.shape = {};
    journal = {};
    phones.clear();
    imageErrors.clear();
    found.clear();
    media = allMediaOn();
    phonesFolder.clear();
    misuse.clear();
    releasedParts.clear();
    startedByThread.clear();
    memory.releaseAll();
}

bool World::add(std::shared_ptr<Phone> phone) {
    for (const auto& other : phones) {
        if (phone->serialNumber && other->serialNumber == phone->serialNumber) return false;
    }
    const auto place =
        std::upper_bound(phones.begin(), phones.end(), phone,
                         [](const auto& left, const auto& right) { return left->order < right->order; });
    phones.insert(place, std::move(phone));
    return true;
}

std::shared_ptr<Phone> World::find(const std::u16string& serial) const {
    for (const auto& phone : phones) {
        if (!phone->gone && phone->serialNumber == serial) return phone;
    }
    return nullptr;
}

bool World::isOn(Word medium) const {
    return std::any_of(media.begin(), media.end(),
                       [medium](const Medium& one) { return one.medium == medium && one.on; });
}

bool World::isUp(const Connection& connection) const {
    if (!isOn(connection.medium)) return false;
    if (connection.medium != library::mediumBluetooth || !connection.address) return true;
    return std::none_of(found.begin(), found.end(), [&](const FoundDevice& device) {
        return device.address == *connection.address && !device.paired;
    });
}

std::vector<const Connection*> World::attachedBy(const Phone& phone) const {
    std::vector<const Connection*> up;
    if (phone.gone) return up;
    for (const Connection& connection : phone.connections) {
        if (isUp(connection)) up.push_back(&connection);
    }
    return up;
}

Versions World::versions() const {
    Versions highest{0, 0, 0, 0};
    for (const auto& phone : phones) {
        highest.connectivity = std::max(highest.connectivity, phone->versions.connectivity);
        highest.deviceManagement = std::max(highest.deviceManagement, phone->versions.deviceManagement);
        highest.contentAccess = std::max(highest.contentAccess, phone->versions.contentAccess);
        highest.fileSystem = std::max(highest.fileSystem, phone->versions.fileSystem);
    }
    if (phones.empty()) highest = {};
    const Shape& shape = plan.shape;
    return {shape.connectivity.value_or(highest.connectivity),
            shape.deviceManagement.value_or(highest.deviceManagement),
            shape.contentAccess.value_or(highest.contentAccess),
            shape.fileSystem.value_or(highest.fileSystem)};
}

RecordSizes World::sizesOf(const Phone& phone) const {
    const Shape& shape = plan.shape;
    return {shape.dataItem.value_or(phone.sizes.dataItem), shape.folder.value_or(phone.sizes.folder),
            shape.calendar.value_or(phone.sizes.calendar), shape.date.value_or(phone.sizes.date)};
}

unsigned& World::started(Group group) {
    return startedByThread[threadNumber()][static_cast<std::size_t>(group)];
}

std::array<std::uint64_t, groups> World::startedByAll() const {
    std::array<std::uint64_t, groups> sums{};
    for (const auto& [thread, counts] : startedByThread) {
        for (std::size_t i = 0; i < groups; ++i)
            sums[i] += counts[i];
    }
    return sums;
}

void World::breakSessions(const Phone& phone, Status status) {
    sessions.forEach([&](Session& session) {
        if (session.phone.get() == &phone) session.broken = status;
    });
}

}  // namespace ovno2::simulator
