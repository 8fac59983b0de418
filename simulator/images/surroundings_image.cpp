#include "simulator/images/surroundings_image.h"

#include <algorithm>

#include "simulator/images/image_file.h"
#include "simulator/images/json_text.h"
#include "simulator/images/json_writer.h"
#include "simulator/images/phone_image.h"

namespace ovno2::simulator {
namespace {

constexpr Word longestSearch = 6000;  // tenths of a second

constexpr const char* reachNames[] = {"always", "afterSearch", "afterTwoSearches", "never"};

FoundDevice::Reach readReach(const JsonNode& node) {
    for (std::size_t i = 0; i < std::size(reachNames); ++i) {
        if (node.is(reachNames[i])) return static_cast<FoundDevice::Reach>(i);
    }
    node.fail("\"always\", \"afterSearch\", \"afterTwoSearches\" or \"never\"");
}

}  // namespace

std::vector<FoundDevice> readBluetooth(const JsonNode& root) {
    root.expectFormat();
    root.expectMembers({"format", "found"});
    std::vector<FoundDevice> found;
    root.member("found").forEachElement([&](const JsonNode& node, std::size_t) {
        node.expectMembers({"deviceNumber", "deviceName", "address", "state", "passkey", "refuses", "reach",
                            "appearsAfter", "paired", "trusted"});
        FoundDevice device;
        device.deviceNumber = node.word("deviceNumber", 0);
        device.deviceName = node.member("deviceName").text();
        device.address = node.member("address").text();
        device.state = node.word("state", 0);
        device.passkey = node.optionalText("passkey");
        if (const auto refuses = node.optionalMember("refuses")) device.refuses = readStatus(*refuses);
        if (const auto after = node.optionalMember("appearsAfter"))
            device.appearsAfter = after->wordBetween(0, longestSearch);
        if (const auto reach = node.optionalMember("reach")) device.reach = readReach(*reach);
        device.paired = node.flag("paired", false);
        device.trusted = node.flag("trusted", false);
        found.push_back(std::move(device));
    });
    return found;
}

std::vector<Medium> readMedia(const JsonNode& root) {
    root.expectFormat();
    root.expectMembers({"format", "media"});
    std::vector<Medium> media;
    root.member("media").forEachElement([&](const JsonNode& node, std::size_t) {
        node.expectMembers({"medium", "description", "state"});
        Medium medium;
        medium.medium = readMedium(node.member("medium"));
        medium.description = node.optionalText("description").value_or(u"");
        const JsonNode state = node.member("state");
        medium.on = state.is("on");
        if (!medium.on && !state.is("off")) state.fail("\"on\" or \"off\"");
        media.push_back(std::move(medium));
    });
    return media;
}

std::vector<FoundDevice> readBluetooth(const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / "bluetooth.json";
    std::error_code failed;
    if (!std::filesystem::exists(file, failed)) return {};
    return readBluetooth(JsonText(file).parse());
}

std::vector<Medium> readMedia(const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / "media.json";
    std::error_code failed;
    if (!std::filesystem::exists(file, failed)) return allMediaOn();
    return readMedia(JsonText(file).parse());
}

void refreshBluetooth(World& world) {
    std::vector<FoundDevice> found = readBluetooth(world.phonesFolder);
    for (FoundDevice& device : found) {
        const auto known = std::ranges::find(world.found, device.address, &FoundDevice::address);
        if (known != world.found.end()) device.searches = known->searches;
    }
    world.found = std::move(found);
}

void writeBluetooth(const std::filesystem::path& folder, const std::vector<FoundDevice>& found) {
    PrettyJsonWriter writer;
    writer.StartObject();
    writer.member("format", 1);
    writer.Key("found");
    writer.StartArray();
    for (const FoundDevice& device : found) {
        writer.StartObject();
        writer.member("deviceNumber", device.deviceNumber);
        writer.member("deviceName", device.deviceName);
        writer.member("address", device.address);
        writer.member("state", device.state);
        writer.member("reach", reachNames[static_cast<std::size_t>(device.reach)]);
        if (device.appearsAfter != 0) writer.member("appearsAfter", device.appearsAfter);
        if (device.refuses) writer.member("refuses", "0x" + hexNumber(*device.refuses));
        writer.member("paired", device.paired);
        writer.member("trusted", device.trusted);
        if (device.passkey) writer.member("passkey", *device.passkey);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    writer.layout("\n");
    IncomingFile(folder, writer.text()).moveTo(folder / "bluetooth.json");
}

void writeMedia(const std::filesystem::path& folder, const std::vector<Medium>& media) {
    PrettyJsonWriter writer;
    writer.StartObject();
    writer.member("format", 1);
    writer.Key("media");
    writer.StartArray();
    for (const Medium& medium : media) {
        writer.StartObject();
        writer.member("medium", nameOfMedium(medium.medium));
        writer.member("description", medium.description);
        writer.member("state", medium.on ? "on" : "off");
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    writer.layout("\n");
    IncomingFile(folder, writer.text()).moveTo(folder / "media.json");
}

}  // namespace ovno2::simulator
