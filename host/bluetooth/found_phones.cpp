#include "host/bluetooth/found_phones.h"

#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/output/exit_status.h"
#include "host/output/json.h"
#include "host/output/waiting.h"
#include "host/phones/phone_choice.h"

namespace ovno2::host {

namespace {

constexpr const char* makeVisible =
    "See that the phone is on and near, that its Bluetooth is on and the phone visible to others (\"Shown to "
    "all\"), and retry.";

bool isHexadecimal(char16_t unit) {
    return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'F') || (unit >= u'a' && unit <= u'f');
}

std::string listOf(std::span<const FoundPhone* const> phones) {
    std::string lines;
    for (const FoundPhone* phone : phones)
        lines += "\n  " + titleOf(*phone);
    return lines;
}

template <class Matches>
std::vector<const FoundPhone*> phonesThat(std::span<const FoundPhone> found, Matches matches) {
    std::vector<const FoundPhone*> phones;
    for (const FoundPhone& phone : found)
        if (matches(phone)) phones.push_back(&phone);
    return phones;
}

std::string notFound(std::span<const FoundPhone> found, TextView wanted) {
    std::string message = "The search found no phone called \"" + forPerson(toUtf8(wanted)) + "\".";
    std::vector<Text> names;
    names.reserve(found.size());
    for (const FoundPhone& phone : found)
        names.push_back(phone.name);
    const std::vector<Text> near = nearestNames(wanted, names, 1);
    if (!near.empty()) return message + " Did you mean \"" + toUtf8(singleLine(near[0])) + "\"?";
    message += std::string(" ") + makeVisible;
    if (found.empty()) return message;
    return message + " These were found:" + listOf(phonesThat(found, [](const FoundPhone&) { return true; }));
}

Text stateOf(const FoundPhone& phone) {
    const bool paired = (phone.state & FoundPhone::paired) != 0;
    const bool trusted = (phone.state & FoundPhone::trusted) != 0;
    return paired ? trusted ? u"paired, trusted" : u"paired" : trusted ? u"trusted" : u"new";
}

}  // namespace

std::optional<Text> bluetoothAddress(TextView typed) {
    constexpr std::size_t digitsOfAddress = 12;
    Text digits;
    for (std::size_t i = 0; i < typed.size(); ++i) {
        const bool dividesPairs = typed.size() == 17 && i % 3 == 2;
        if (dividesPairs ? typed[i] != u':' && typed[i] != u'-' : !isHexadecimal(typed[i])) return {};
        if (!dividesPairs) digits += typed[i];
    }
    if (digits.size() != digitsOfAddress) return {};
    Text address;
    for (std::size_t i = 0; i < digitsOfAddress; ++i) {
        if (i != 0 && i % 2 == 0) address += u':';
        address += digits[i] >= u'a' ? static_cast<char16_t>(digits[i] - u'a' + u'A') : digits[i];
    }
    return address;
}

std::vector<FoundPhone> searchPhones(PhoneDriver& driver) {
    std::vector<FoundPhone> found;
    const Long result = Waiting("Searching for phones", "Interrupted; no phone was changed.").during([&] {
        return driver.searchBluetooth(found);
    });
    if (result >= 0) return found;
    // The search does not say why it failed.
    const Long active = driver.activeMedia();
    const bool isOff = active >= 0 && (active & eMediaBT) == 0;
    throw CommandFailure{failed, isOff
                                     ? "Bluetooth is off on this computer and could not be switched on. Plug "
                                       "its adapter in or switch it on in the system's settings, and retry."
                                     : resultMessage(Operation::searchBluetooth, result)};
}

const FoundPhone& chosenOf(std::span<const FoundPhone> found, TextView wanted) {
    std::vector<const FoundPhone*> phones =
        phonesThat(found, [&](const FoundPhone& phone) { return equalsIgnoringCase(phone.name, wanted); });
    if (phones.empty())
        phones = phonesThat(
            found, [&](const FoundPhone& phone) { return containsIgnoringCase(phone.name, wanted); });
    if (phones.empty()) throw CommandFailure{failed, notFound(found, wanted)};
    if (phones.size() > 1)
        throw CommandFailure{failed, "\"" + forPerson(toUtf8(wanted)) +
                                         "\" fits several phones; name one by its address:" + listOf(phones)};
    return *phones.front();
}

std::string titleOf(const FoundPhone& phone) {
    const std::string address = toUtf8(singleLine(phone.address));
    return phone.name.empty() ? address : toUtf8(singleLine(phone.name)) + " (" + address + ")";
}

void showFound(std::span<const FoundPhone> found, bool asJson) {
    if (asJson) {
        JsonLines lines([](std::string_view piece) { writeData(piece); });
        for (const FoundPhone& phone : found) {
            JsonLine& line = lines.next();
            line.StartObject();
            if (!phone.name.empty()) line.member("name", TextView(phone.name));
            line.member("address", TextView(phone.address));
            line.member("paired", (phone.state & FoundPhone::paired) != 0);
            line.member("trusted", (phone.state & FoundPhone::trusted) != 0);
            line.member("deviceNumber", TextView(phone.deviceNumber));
            line.member("state", phone.state);
            line.EndObject();
        }
        lines.end();
    } else if (found.empty()) {
        note(std::string("No phone was found. ") + makeVisible);
    } else {
        Table table({u"Name", u"Address", u"State"});
        for (const FoundPhone& phone : found)
            table.addRow({phone.name, phone.address, stateOf(phone)});
        writeTable(table);
    }
}

}  // namespace ovno2::host
