#include "simulator/world/world.h"

#include <algorithm>
#include <atomic>
#include <iostream>

#include "simulator/images/phone_image.h"
#include "simulator/images/surroundings_image.h"
#include "simulator/instruments/control_commands.h"
#include "simulator/system/system.h"
#include "simulator/text.h"

namespace ovno2::simulator {
namespace {

// A number for the calling thread that no later thread gets again.
unsigned long threadNumber() {
    static std::atomic<unsigned long> last{0};
    thread_local const unsigned long own = ++last;
    return own;
}

std::filesystem::path pathOf(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

void loadDefaultPhones(World& world) {
    const std::optional<std::string> list = system::environment("OVNO2_PHONES");
    if (!list) {
        const std::filesystem::path beside = system::libraryFolder() / "phones";
        std::error_code ignored;
        if (std::filesystem::is_directory(beside, ignored)) world.load(beside);
        return;
    }
    for (std::size_t at = 0; at < list->size();) {
        const std::size_t end = std::min(list->find(system::pathListSeparator, at), list->size());
        if (end > at) world.load(pathOf(list->substr(at, end - at)));
        at = end + 1;
    }
}

// A plan from a file: one command of the control interface, or a list of them.
void runPlanFile(World& world, const std::filesystem::path& file) {
    try {
        const nlohmann::json plan = parseJsonFile(file);
        const nlohmann::json commands = plan.is_array() ? plan : nlohmann::json::array({plan});
        for (const nlohmann::json& command : commands) {
            const nlohmann::json answer = runCommand(world, command);
            if (answer.contains("error")) world.imageErrors.push_back(answer["error"].get<std::string>());
        }
    } catch (const std::exception& error) {
        world.imageErrors.emplace_back(error.what());
    }
}

World* begin() {
    auto* const world = new World;  // lives as long as the process: other libraries call it while they unload
    loadDefaultPhones(*world);
    if (const auto plan = system::environment("OVNO2_SIMULATOR_PLAN")) runPlanFile(*world, pathOf(*plan));
    if (const auto journal = system::environment("OVNO2_JOURNAL")) world->journal.writeTo(pathOf(*journal));
    if (system::environment("OVNO2_PHONES_VERBOSE")) {
        for (const std::string& error : world->imageErrors)
            std::cerr << error << '\n';
    }
    return world;
}

}  // namespace

const char* nameOf(Group group) {
    static constexpr const char* names[groups] = {"connectivity", "deviceManagement", "media", "fileSystem",
                                                  "content"};
    return names[static_cast<std::size_t>(group)];
}

World& theWorld() {
    static World& world = *begin();
    return world;
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

void World::load(const std::filesystem::path& folder) {
    for (const auto& phone : readPhones(folder, imageErrors)) {
        if (!add(phone)) {
            imageErrors.emplace_back(ImageError(phone->image / "phone.json", "/serialNumber",
                                                "a serial number that no other phone has")
                                         .what());
        }
    }
    if (!phonesFolder.empty()) return;
    phonesFolder = folder;
    try {
        found = readBluetooth(folder);
        media = readMedia(folder);
    } catch (const std::exception& error) {
        imageErrors.emplace_back(error.what());
    }
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
