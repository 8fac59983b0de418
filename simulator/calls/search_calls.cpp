// Bluetooth: searching for phones and pairing with them.
#include <algorithm>
#include <chrono>
#include <thread>

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
constexpr Word fewestSteps = 2;  // of a search: its progress is told at 0, 50 and 100 per cent at least
constexpr std::chrono::milliseconds timeoutUnit{100};

// The caller's function as the library calls it.
using Progress = Status(SIMULATOR_STDCALL*)(Word, Word);

// The world without its lock for as long as this lives.
class Unlocked {
  public:
    explicit Unlocked(World& world) : world_(world) { world_.lock.unlock(); }
    ~Unlocked() { world_.lock.lock(); }
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;

  private:
    World& world_;
};

bool canBeFound(const FoundDevice& device, Word timeout) {
    return device.reach != FoundDevice::Reach::never && device.appearsAfter <= timeout;
}

// Lasts until every device has appeared that appears within the timeout. The caller is told how far the
// search is while nobody is kept out: it may run messages, call the library, stop the search, and close its
// session.
Status search(World& world, Handle session, Word timeout, Progress progress) {
    Word lasts = 0;  // timeout units
    for (const FoundDevice& device : world.found)
        if (canBeFound(device, timeout)) lasts = std::max(lasts, device.appearsAfter);
    const Word steps = std::max(lasts, fewestSteps);
    for (Word step = 0; step <= steps; ++step) {
        Status answer = statusOk;
        {
            const Unlocked others(world);
            if (step != 0 && lasts != 0) std::this_thread::sleep_for(lasts * timeoutUnit / steps);
            if (progress != nullptr) answer = progress(step * 100 / steps, 0);
        }
        require<DeviceManagementSession>(world, session);
        if (answer != statusOk) return status::cancelled;
    }
    return statusOk;
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
        if (device.refuses) return *device.refuses;
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
        if (const Status ended = search(world, session, timeout, reinterpret_cast<Progress>(progress));
            ended != statusOk)
            return ended;
        std::vector<const FoundDevice*> devices;
        for (FoundDevice& device : world.found) {
            if (!canBeFound(device, timeout)) continue;
            ++device.searches;
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
        text.number("handle", session).hex("operation", operation).text(address).secret(passkey);
    };
    return serve({"CONAChangeDeviceTrustedState", session}, arguments, [&](World& world) -> Status {
        require<DeviceManagementSession>(world, session);
        requireGiven(address);
        if (!world.isOn(mediumBluetooth)) return mediumOff;
        const system::FolderLock lock = lockImage(world.phonesFolder);
        if (!world.phonesFolder.empty()) refreshBluetooth(world);
        const auto device = std::find_if(world.found.begin(), world.found.end(),
                                         [&](const FoundDevice& one) { return one.address == address; });
        if (device == world.found.end() || !device->isReached()) return phoneNotReached;
        const Status status = changeState(*device, operation, passkey);
        if (status == statusOk && !world.phonesFolder.empty())
            writeBluetooth(world.phonesFolder, world.found);
        return status;
    });
}

SIMULATOR_CHECK(CONASearchDevices);
SIMULATOR_CHECK(CONAChangeDeviceTrustedState);
