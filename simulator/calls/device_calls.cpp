// Device management: the attached phones and what is known about them.
#include <algorithm>

#include "simulator/calls/exports.h"
#include "simulator/calls/memory_calls.h"
#include "simulator/calls/record_builder.h"

using namespace ovno2::simulator;
using namespace ovno2::library;

namespace {

constexpr std::size_t deviceWords = sizeof(DeviceRecord) / sizeof(Word);
constexpr std::size_t connectionWords = sizeof(ConnectionRecord) / sizeof(Word);

std::vector<Phone*> attachedPhones(const World& world) {
    std::vector<Phone*> attached;
    for (const auto& phone : world.phones) {
        if (!world.attachedBy(*phone).empty()) attached.push_back(phone.get());
    }
    return attached;
}

LowMemory::Block blockOf(const World& world, const DeviceRecord& device) {
    return blockBehind(
        world, BlockKind::device,
        {device.serialNumber, device.friendlyName, device.model, device.manufacturer, device.connections});
}

void fillConnection(RecordBuilder& builder, std::size_t record, const Connection& connection) {
    builder.setWord(record, 0, connection.deviceNumber);
    builder.setWord(record, 1, connection.medium);
    builder.setText(record, 2, connection.deviceName);
    builder.setText(record, 3, connection.address);
    builder.setWord(record, 4, connection.state);
}

// A device's record and everything it points to, as one block; the record's words are copied out of its
// beginning.
char* buildDevice(World& world, const Phone& phone) {
    const std::vector<const Connection*> connections = world.attachedBy(phone);
    RecordBuilder builder;
    const std::size_t device = builder.addWords(deviceWords);
    const std::size_t list = builder.addWords(connections.size() * connectionWords);
    builder.setText(device, 0, phone.serialNumber);
    builder.setText(device, 1, phone.friendlyName);
    builder.setText(device, 2, phone.model);
    builder.setText(device, 3, phone.manufacturer);
    builder.setWord(device, 4, static_cast<Word>(connections.size()));
    builder.setPointer(device, 5, list);
    for (std::size_t i = 0; i < connections.size(); ++i) {
        fillConnection(builder, list + i * sizeof(ConnectionRecord), *connections[i]);
    }
    return builder.finish(world, BlockKind::device);
}

}  // namespace

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAOpenDM(Handle* session) {
    return serve(
        {"CONAOpenDM"}, [](ArgumentText&) {},
        [&](World& world) -> Status {
            requireGiven(session);
            const bool started =
                world.started(Group::deviceManagement) != 0 || world.started(Group::connectivity) != 0;
            if (!started) return status::notStarted;
            *session = world.sessions.open(std::make_unique<DeviceManagementSession>());
            return statusOk;
        });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONACloseDM(Handle session) {
    return serve(
        {"CONACloseDM", session, /*releases=*/true},
        [&](ArgumentText& text) { text.number("handle", session); },
        [&](World& world) { return closeSession<DeviceManagementSession>(world, session); });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAGetDeviceCount(Handle session, Word* count) {
    return serve(
        {"CONAGetDeviceCount", session}, [&](ArgumentText& text) { text.number("handle", session); },
        [&](World& world) {
            require<DeviceManagementSession>(world, session);
            requireGiven(count);
            *count = static_cast<Word>(attachedPhones(world).size());
            if (world.plan.poking())
                pokeRecords(world, world.plan.pokesOf("CONAGetDeviceCount", nullptr), "count", count,
                            /*count=*/1, /*words=*/1, sizeof(Word));
            return statusOk;
        });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAGetDevices(Handle session, Word* count, DeviceRecord* devices) {
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", session).number("count", count == nullptr ? 0 : *count);
    };
    return serve({"CONAGetDevices", session}, arguments, [&](World& world) {
        require<DeviceManagementSession>(world, session);
        requireGiven(count, devices);
        const std::vector<Phone*> phones = attachedPhones(world);
        const std::size_t filled = std::min<std::size_t>(*count, phones.size());
        std::vector<char*> blocks;
        try {
            for (std::size_t i = 0; i < filled; ++i)
                blocks.push_back(buildDevice(world, *phones[i]));
        } catch (const Refused&) {
            for (char* const block : blocks)
                world.memory.release(block);
            throw;
        }
        for (std::size_t i = 0; i < filled; ++i)
            std::memcpy(&devices[i], blocks[i], sizeof(DeviceRecord));
        if (world.plan.poking()) {
            const auto pokes = world.plan.pokesOf("CONAGetDevices", nullptr);
            for (std::size_t i = 0; i < filled; ++i) {
                pokeRecords(world, pokes, "connection", atAddress<void>(devices[i].connections),
                            devices[i].connectionCount, connectionWords, sizeof(ConnectionRecord));
            }
            pokeRecords(world, pokes, "device", devices, filled, deviceWords, sizeof(DeviceRecord));
            for (std::size_t i = 0; i < filled; ++i) {
                if (!blockOf(world, devices[i]))
                    world.memory.release(blocks[i]);  // nobody could give it back
            }
        }
        *count = static_cast<Word>(filled);
        return statusOk;
    });
}

// Two lists come back here: the caller's own array of device records, and the list that a search handed out.
SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAFreeDeviceStructure(Word count, void* list) {
    return serve(
        {"CONAFreeDeviceStructure", 0, /*releases=*/true},
        [&](ArgumentText& text) { text.number("count", count); },
        [&](World& world) -> Status {
            requireGiven(list);
            const LowMemory::Block found = world.memory.find(list);
            if (found && found.kind == BlockKind::foundDevices) {
                return freeWhole(world, "CONAFreeDeviceStructure", BlockKind::foundDevices, list);
            }
            Status result = statusOk;
            for (Word i = 0; i < count; ++i) {
                DeviceRecord device;
                std::memcpy(&device, static_cast<const char*>(list) + i * sizeof device, sizeof device);
                const LowMemory::Block block = blockOf(world, device);
                if (block) {
                    releaseBlock(world, block.start);
                } else {
                    result = misused(world, "CONAFreeDeviceStructure", "no device record that is handed out",
                                     list);
                }
            }
            return result;
        });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAGetDeviceInfo(Handle session, signature::WideText serial,
                                                            Word option, ovno2::Address* record) {
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", session).text(serial).hex("option", option);
    };
    return serve({"CONAGetDeviceInfo", session}, arguments, [&](World& world) -> Status {
        require<DeviceManagementSession>(world, session);
        requireGiven(serial, record);
        const std::shared_ptr<Phone> phone = world.find(serial);
        if (phone == nullptr) return phoneNotReached;
        RecordBuilder builder;
        const std::size_t info = builder.addWords(4);
        builder.setWord(info, 0, sizeof(PropertiesRecord));
        if (option == generalInformation && phone->typeName) {
            builder.setText(info, 2, phone->typeName);
        } else if (option == propertiesInformation && phone->platform) {
            builder.setWord(info, 2, phone->platform->code);
            builder.setWord(info, 3, phone->platform->level);
        } else {
            return status::notSupported;
        }
        char* const block = builder.finish(world, BlockKind::deviceInfo);
        if (world.plan.poking()) {
            pokeRecords(world, world.plan.pokesOf("CONAGetDeviceInfo", nullptr), "info", block, 1, 4, 0);
        }
        *record = addressOf(block);
        return statusOk;
    });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAFreeDeviceInfoStructure(Word option, void* record) {
    return serve(
        {"CONAFreeDeviceInfoStructure", 0, /*releases=*/true},
        [&](ArgumentText& text) { text.hex("option", option); },
        [&](World& world) {
            return freeWhole(world, "CONAFreeDeviceInfoStructure", BlockKind::deviceInfo, record);
        });
}

SIMULATOR_CHECK(CONAOpenDM);
SIMULATOR_CHECK(CONACloseDM);
SIMULATOR_CHECK(CONAGetDeviceCount);
SIMULATOR_CHECK(CONAGetDevices);
SIMULATOR_CHECK(CONAFreeDeviceStructure);
SIMULATOR_CHECK(CONAGetDeviceInfo);
SIMULATOR_CHECK(CONAFreeDeviceInfoStructure);
