#include "devices/devices.h"

#include <algorithm>

#include "core/settings.h"
#include "devices/current_phone.h"
#include "devices/session.h"
#include "library/library_memory.h"
#include "pc/registry_access.h"

namespace ovno2::Devices {

namespace {

using library::codePageText;
using library::ConnectionRecord;
using library::DeviceRecord;
using library::is;
using library::isAddress;
using library::Word;

constexpr Long detailLevel = 4;
constexpr std::size_t serialLimit = 256;  // bytes of a serial number in the code page
constexpr int sameAsHops = 10;
constexpr Word mostConnections = 100;  // of one phone; a library that claims more is not believed

// ReDim Preserve from index 0: entries below `index` are kept, the entry at `index` is new.
template <class Element>
void extend(HostArray<Element>& array, Long index) {
    if (array.hasElements() && array.lowerBound() != 0) throw RuntimeFailure(subscriptOutOfRange);
    array.extendTo(index);
    array.at(index) = Element();
}

template <class Element>
void setEntry(HostArray<Element>& array, Long index, const Element& value) {
    attempt([&] { array.at(index) = value; });
}

// Asks for one information record and copies it; the library gets its own back at once.
template <class Record>
bool deviceInformation(const DeviceRecord& device, Word option, Long& status, Record& record,
                       Text* typeName) {
    Address address = 0;
    status =
        library::CONAGetDeviceInfo
            .tried(Session::handle(), static_cast<const char16_t*>(library::pointerTo(device.serialNumber)),
                   option, &address)
            .valueOr(status);
    if (!isAddress(address)) return false;
    const bool copied = attempt([&] { library::copyRecord(address, record); }) == noFailure;
    if constexpr (std::is_same_v<Record, library::GeneralInformationRecord>) {
        if (copied) attempt([&] { *typeName = codePageText(record.typeName); });
    } else {
        static_cast<void>(typeName);
    }
    library::CONAFreeDeviceInfoStructure.tried(option, library::pointerTo(address));
    return copied;
}

void logStep(TextView step) {
    DebugWrite(step, plainLine, detailLevel);
}

bool nameIsLeftOut(TextView name) {
    for (TextView maker : {u"sony", u"motorola", u"siemens", u"benq"})
        if (containsIgnoringCase(name, maker)) return true;
    return name.empty();
}

bool isEmptyRecord(const ConnectionRecord& connection, TextView deviceName) {
    return connection.deviceNumber == 0 && connection.medium == 0 && connection.state == 0 &&
           deviceName.empty();
}

// What the naming rules know of one connection.
struct Naming {
    Text name;
    Text address;
    Text deviceName;
    Text lastRead;  // the text read last from the library, the type name apart

    const Text& read(Text& target, Address source) {
        target = codePageText(source);
        if (isAddress(source)) lastRead = target;
        return target;
    }
};

Naming nameConnection(const DeviceRecord& device, const ConnectionRecord& connection) {
    Naming naming;
    logStep(u"GetPhoneList 1");
    if (isAddress(device.serialNumber)) {
        library::GeneralInformationRecord general{};
        Long status = 0;
        deviceInformation(device, library::generalInformation, status, general, &naming.name);
    }
    logStep(u"GetPhoneList 2");
    attempt([&] { naming.read(naming.address, connection.address); });
    attempt([&] { naming.read(naming.deviceName, connection.deviceName); });
    if (naming.address == naming.deviceName) naming.address.clear();
    logStep(u"GetPhoneList 3");
    if (naming.name.empty() || naming.name == u"Nokia Phone")
        attempt([&] { naming.name = naming.deviceName; });
    logStep(u"GetPhoneList 4");
    if (isAddress(device.friendlyName)) {
        Text friendly;
        attempt([&] { naming.read(friendly, device.friendlyName); });
        const Text lower = lowerCase(naming.deviceName);
        if (lower == u"nokia" || lower.starts_with(u"nokia s60")) {
            naming.deviceName = friendly;
            naming.name = friendly;
        }
    }
    logStep(u"GetPhoneList 5");
    if (naming.name.empty() && isAddress(device.manufacturer)) {
        attempt([&] { naming.read(naming.name, device.manufacturer); });
        if (lowerCase(naming.name) == u"samsung" && isAddress(device.model)) {
            Text model;
            attempt([&] { naming.read(model, device.model); });
            attempt([&] { naming.name += u" " + model; });
        }
    }
    DebugLine(naming.name);
    if (naming.name.find(u'#') != Text::npos)
        attempt([&] { naming.name = removeAll(removeAll(naming.lastRead, u' '), u'\0'); });
    return naming;
}

Text cleanModelName(Text& name) {
    for (char16_t unwanted : {u'\0', u'(', u')'})
        name = removeAll(name, unwanted);
    name = trimBlanks(name);
    Text model = replaceAll(name, u" USB Device", u"");
    const Text lower = lowerCase(name);
    const bool foreign = lower.find(u"motor") != Text::npos || lower.find(u"sony") != Text::npos ||
                         lower.find(u"lg") != Text::npos || lower.find(u"sams") != Text::npos;
    if (!lowerCase(model).starts_with(u"nokia ") && !foreign) model = u"Nokia " + model;
    return model;
}

Long hostMedium(const ConnectionRecord& connection) {
    if ((connection.state & library::stateUsbDrive) != 0) return eMediaUSBDrive;
    switch (connection.medium) {
        case library::mediumInfrared:
            return eMediaIR;
        case library::mediumCable:
            return eMediaCable;
        case library::mediumBluetooth:
            return eMediaBT;
        case library::mediumUsb:
            return eMediaUSB;
        default:
            return eMediaUnknown;
    }
}

void listConnection(const DeviceRecord& device, const ConnectionRecord& connection, Long& index,
                    PhoneList& list) {
    Naming naming = nameConnection(device, connection);
    if (!nameIsLeftOut(naming.name) && !isEmptyRecord(connection, naming.deviceName)) {
        ++index;
        const Long k = index;
        logStep(u"GetPhoneList 6");
        attempt([&] { extend(list.models, k); });
        attempt([&] { extend(list.media, k); });
        attempt([&] { extend(list.deviceIds, k); });
        attempt([&] { extend(list.addresses, k); });
        attempt([&] { extend(list.names, k); });
        attempt([&] { extend(list.types, k); });
        if (isAddress(device.serialNumber)) {
            library::PropertiesRecord properties{};
            Long status = 0;
            const bool copied =
                deviceInformation(device, library::propertiesInformation, status, properties, nullptr);
            DebugLine(u"GetPhoneList 7 ", hex{status});
            if (copied) {
                DebugLine(u"DeviceType:", hex{properties.platformCode}, u" ", hex{properties.platformLevel});
                setEntry(list.types, k, platformTypeOf(properties.platformCode, properties.platformLevel));
            }
        }
        attempt([&] {
            const Text model = cleanModelName(naming.name);
            list.models.at(k) = model;
            DebugLine(model);
        });
        attempt([&] {
            if (isAddress(device.serialNumber))
                list.deviceIds.at(k) = codePageText(device.serialNumber, serialLimit);
        });
        DebugLine(u"State:", decimal{static_cast<Long>(connection.state)});
        setEntry(list.addresses, k, naming.address);
        setEntry(list.names, k, naming.deviceName);
        logStep(u"GetPhoneList 8");
        setEntry(list.media, k, hostMedium(connection));
    }
    logStep(u"GetPhoneList 20");
}

void listDevice(const DeviceRecord& device, Long& index, PhoneList& list) {
    std::vector<ConnectionRecord> connections;
    if (isAddress(device.connections) && device.connectionCount <= mostConnections)
        attempt([&] {
            connections = library::copyBlock<ConnectionRecord>(device.connections, device.connectionCount);
        });
    DebugLine(u" u:", decimal{static_cast<Long>(device.connectionCount)});
    for (const ConnectionRecord& connection : connections)
        listConnection(device, connection, index, list);
}

// Opens the session and asks for the device count, once more after reopening when the library says its list
// is stale. Returns 0 with `count` set, or GetPhoneList's result.
Long countDevices(Word& count) {
    const auto askCount = [&] { return library::CONAGetDeviceCount.tried(Session::handle(), &count).status; };
    clearPendingFailure();
    const Session::OpenResult opened = Session::DMApiInit();
    if (opened.failure == fileNotFound) return -7;
    if (opened.result != 0) return -1;
    const Long status = askCount();
    if (status == 0) return 0;
    if (is(status, library::deviceListStale)) {
        Session::DMApiTerminate();
        const Session::OpenResult reopened = Session::DMApiInit();
        if (reopened.failure == fileNotFound) return -7;
        if (reopened.failure != noFailure) return -2;
    }
    const Long second = askCount();
    DebugLine(u" 1:", hex{second});
    return -2;
}

// Fetches the device records and gives them back. Returns the number of devices or -3.
Long listDevices(Word count, PhoneList& list) {
    DebugWrite(u"GetPhoneList", 2, detailLevel);
    if (count > mostDevices) {
        DebugLine(u" pdwCount:", decimal{static_cast<Long>(count)}, u" !!!");
        return -3;
    }
    std::vector<DeviceRecord> devices;
    Long status = library::notCalled;
    attempt([&] {
        devices.resize(count);
        status = static_cast<Long>(library::CONAGetDevices(Session::handle(), &count, devices.data()));
    });
    if (status != 0) {
        DebugLine(u" 2:", hex{status});
        return -3;
    }
    DebugWrite(u"GetPhoneList", 3, detailLevel);
    DebugLine(u" pdwCount:", decimal{static_cast<Long>(count)});
    count = std::min(count, static_cast<Word>(devices.size()));
    Long index = -1;
    for (std::size_t i = 0; i < count; ++i)
        attempt([&] { listDevice(devices[i], index, list); });
    const Long freed = library::CONAFreeDeviceStructure.tried(count, devices.data()).valueOr(0);
    if (freed != 0) DebugLine(hex{freed});
    return static_cast<Long>(count);
}

bool modelMatches(const Text& model, const Text& listed, bool secondScan) {
    if (model == listed) return true;
    if (secondScan && model == u"Nokia N00") return true;
    if (const std::size_t dash = listed.find(u'-');
        dash != Text::npos && model == TextView(listed).substr(0, dash))
        return true;
    if (const std::size_t dash = model.find(u'-');
        dash != Text::npos && listed == TextView(model).substr(0, dash))
        return true;
    if (listed.size() > 9 && model.starts_with(listed)) return true;
    return model == u"Nokia " + listed || listed == u"Samsung " + model;
}

// One scan for a phone of that model; empty when no match had a serial number.
Text scanForModel(const Text& model, const PhoneList& list, bool secondScan) {
    for (Long i = 0; i <= list.models.upperBound(); ++i) {
        const Text& listed = list.models.at(i);
        const Text& serial = list.deviceIds.at(i);
        DebugLine(listed, u":", serial);
        if (!modelMatches(model, listed, secondScan)) continue;
        setCurrentModel(listed);
        if (!serial.empty()) return serial;
    }
    return {};
}

}  // namespace

Long platformTypeOf(std::uint32_t code, std::uint32_t level) {
    switch (code) {
        case 0x1000001:
            if (level < 500) return eNokiaPhoneS40;
            if (level < 720) return eNokiaPhoneS40_3;
            if (level < 909) return eNokiaPhoneS40_5;
            if (level < 920) return eNokiaPhoneS40_6;
            if (level < 1130) return eNokiaPhoneS40_7;
            return eNokiaPhoneS40_8;
        case 0x2000010:
            return eNokiaPhoneS60_2;
        case 0x2000020:
            if (level < 500) return eNokiaPhoneS60_3;
            if (level < 3000) return eNokiaPhoneS60_5;
            return eNokiaPhoneS60_6;
        case 0:
        case 0x2000100:
            return eNokiaPhoneType;
        default:
            break;
    }
    const std::uint32_t family = code & 0x0FFFFF00;
    return family == 0x1000000 || family == 0x2000100 ? eNokiaPhoneS60_3 : eNokiaPhoneType;
}

Long GetPhoneList(PhoneList& list) {
    const RoutineLog log(u"GetPhoneList");
    Word count = 0;
    Long result = countDevices(count);
    if (result == 0) {
        DebugWrite(u"GetPhoneList", 1, detailLevel);
        list.models.clear();
        list.media.clear();
        if (count > 0) result = listDevices(count, list);
    }
    DebugLine(decimal{result});
    return result;
}

Text GetSerialNumber(const Text& model, const Text& phoneId, bool force) {
    const RoutineLog log(u"GetSerialNumber");
    DebugLine(model);
    const CurrentPhone& current = currentPhone();
    if (!current.serial.empty() && !force && model == current.model) return current.serial;
    PhoneList list;
    GetPhoneList(list);
    Text serial;
    if (model.empty()) {
        attempt([&] { serial = list.deviceIds.at(0); });
        attempt([&] { setCurrentModel(list.models.at(0)); });
        return serial;
    }
    attempt([&] {
        if (!phoneId.empty())
            for (Long i = 0; i <= list.deviceIds.upperBound() && serial.empty(); ++i)
                if (list.deviceIds.at(i) == phoneId) {
                    setCurrentModel(list.models.at(i));
                    serial = phoneId;
                }
    });
    for (const bool secondScan : {false, true})
        if (serial.empty()) attempt([&] { serial = scanForModel(model, list, secondScan); });
    return serial;
}

Long GetPhoneType(const Text& id) {
    const RoutineLog log(u"GetPhoneType");
    PhoneList list;
    GetPhoneList(list);
    Long type = 0;
    attempt([&] {
        for (Long i = 0; i <= list.deviceIds.upperBound(); ++i)
            if (list.deviceIds.at(i) == id) type = list.types.at(i);
    });
    return type;
}

Long platformType() {
    return stateOf<State>().platformType;
}

const Text& phoneModel() {
    return stateOf<State>().phoneModel;
}

const Text& profileSection() {
    return stateOf<State>().profileSection;
}

void PhoneModel_(const Text& model) {
    State& state = stateOf<State>();
    attempt([&] { state.phoneModel = model; });
    const Text& profile = settings().profilePath;
    Text section = model;
    Text type = Registry::GetIniValue(section, u"Type", profile);
    for (int hop = 0; hop < sameAsHops && type.empty(); ++hop) {
        section = Registry::GetIniValue(section, u"SameAs", profile);
        type = Registry::GetIniValue(section, u"Type", profile);
    }
    attempt([&] { state.profileSection = section; });
    state.platformType = eNokiaPhoneType;
    if (type.starts_with(u"S40")) state.platformType = eNokiaPhoneS40;
    if (type.starts_with(u"S60")) state.platformType = eNokiaPhoneS60;
    if (type == u"S60_2") state.platformType = eNokiaPhoneS60_2;
    if (type == u"S60_3") state.platformType = eNokiaPhoneS60_3;
    if (type == u"S60_3_FP1") state.platformType = eNokiaPhoneS60_3_FP1;
}

}  // namespace ovno2::Devices
