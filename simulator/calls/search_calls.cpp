// Bluetooth: searching for phones and pairing with them.
#include <algorithm>

#include "simulator/calls/exports.h"
#include "simulator/calls/record_builder.h"
#include "simulator/images/surroundings_image.h"

using namespace ovno2::simulator;
using namespace ovno2::library;

namespace {

constexpr std::size_t connectionWords = sizeof(ConnectionRecord) / sizeof(Word);
constexpr Word operationPair = 0x100;
constexpr Word operationTrust = 0x400;
constexpr Word statePaired = 1;  // bits of a found device's state that the simulator keeps
constexpr Word stateTrusted = 2;
constexpr Word progressSteps[] = {0, 50, 100};  // per cent

// The caller's function as the library calls it.
using Progress = Status(SIMULATOR_STDCALL*)(Word, Word);

// Tells the caller how far the search is, without the lock: it may run messages and call the library. False
// when it asks to stop.
bool report(World& world, Progress progress) {
    if (progress == nullptr) return true;
    for (const Word step : progressSteps) {
        world.lock.unlock();
        const Status answer = progress(step, 0);
        world.lock.lock();
        if (answer != statusOk) return false;
    }
    return true;
}

char* buildFound(World& world, const std::vector<const FoundDevice*>& devices) {
    RecordBuilder builder;
    const std::size_t list = builder.addWords(devices.size() * connectionWords);
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const FoundDevice& device = *devices[i];
        const std::size_t record = list + i * sizeof(ConnectionRecord);
        builder.setWord(record, 0, device.deviceNumber);
        builder.setWord(record, 1, mediumBluetooth);
        builder.setText(record, 2, device.deviceName);
        builder.setText(record, 3, device.address);
        builder.setWord(
            record, 4,
            device.state | (device.paired ? statePaired : 0) | (device.trusted ? stateTrusted : 0));
    }
    return builder.finish(world, BlockKind::foundDevices);
}

Status changeState(FoundDevice& device, Word operation, signature::WideText passkey) {
    if (operation == operationPair) {
        requireGiven(passkey);
        if (device.passkey && *device.passkey != passkey) return pairingRefused;
        device.paired = true;
        return statusOk;
    }
    if (operation != operationTrust) return status::invalidParameter;
    device.trusted = true;
    return statusOk;
}

}  // namespace

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONASearchDevices(Handle session, Word option, Word timeout,
                                                            signature::SearchProgress progress, Word* count,
                                                            ovno2::Address* list) {
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", session).hex("option", option).number("timeout", timeout);
    };
    return serve({"CONASearchDevices", session}, arguments, [&](World& world) -> Status {
        require<DeviceManagementSession>(world, session);
        requireGiven(count, list);
        if ((option & mediumBluetooth) == 0) return status::notSupported;
        if (!world.isOn(mediumBluetooth)) return mediumOff;
        if (!report(world, reinterpret_cast<Progress>(progress))) return status::cancelled;
        require<DeviceManagementSession>(world, session);  // the caller may have closed it meanwhile
        std::vector<const FoundDevice*> devices;
        for (FoundDevice& device : world.found) {
            if (device.reach == FoundDevice::Reach::never) continue;
            device.searched = true;
            devices.push_back(&device);
        }
        char* const block = devices.empty() ? nullptr : buildFound(world, devices);
        if (block != nullptr && world.plan.poking()) {
            pokeRecords(world, world.plan.pokesOf("CONASearchDevices", nullptr), "found", block,
                        devices.size(), connectionWords, sizeof(ConnectionRecord));
        }
        *count = static_cast<Word>(devices.size());
        *list = addressOf(block);
        return statusOk;
    });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAChangeDeviceTrustedState(Handle session, Word operation,
                                                                       signature::WideText address,
                                                                       signature::WideText passkey,
                                                                       signature::WideText) {
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", session).hex("operation", operation).text(address).text(passkey);
    };
    return serve({"CONAChangeDeviceTrustedState", session}, arguments, [&](World& world) -> Status {
        require<DeviceManagementSession>(world, session);
        requireGiven(address);
        if (!world.isOn(mediumBluetooth)) return mediumOff;
        const system::FolderLock lock = lockImage(world.phonesFolder);
        if (!world.phonesFolder.empty()) refreshBluetooth(world);
        const auto device = std::find_if(world.found.begin(), world.found.end(),
                                         [&](const FoundDevice& one) { return one.address == address; });
        const bool reached = device != world.found.end() &&
                             (device->reach == FoundDevice::Reach::always ||
                              (device->reach == FoundDevice::Reach::afterSearch && device->searched));
        if (!reached) return phoneNotReached;
        const Status status = changeState(*device, operation, passkey);
        if (status == statusOk && !world.phonesFolder.empty())
            writeBluetooth(world.phonesFolder, world.found);
        return status;
    });
}

SIMULATOR_CHECK(CONASearchDevices);
SIMULATOR_CHECK(CONAChangeDeviceTrustedState);
