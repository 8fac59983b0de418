#include "simulator/images/surroundings_image.h"

#include "simulator/base/text.h"
#include "simulator/images/phone_image.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* reachNames[] = {"always", "afterSearch", "never"};

FoundDevice::Reach readReach(const JsonNode& node) {
    const std::string name = node.json().is_string() ? node.utf8() : std::string();
    for (std::size_t i = 0; i < std::size(reachNames); ++i) {
        if (name == reachNames[i]) return static_cast<FoundDevice::Reach>(i);
    }
    node.fail("\"always\", \"afterSearch\" or \"never\"");
}

bool optionalFlag(const JsonNode& node, const char* name) {
    const auto child = node.optionalMember(name);
    return child && child->boolean();
}

}  // namespace

std::vector<FoundDevice> readBluetooth(const JsonNode& root) {
    root.expectFormat();
    root.expectMembers({"format", "found"});
    std::vector<FoundDevice> found;
    root.member("found").forEachElement([&](const JsonNode& node, std::size_t) {
        node.expectMembers(
            {"deviceNumber", "deviceName", "address", "state", "passkey", "reach", "paired", "trusted"});
        FoundDevice device;
        device.deviceNumber = node.word("deviceNumber", 0);
        device.deviceName = node.member("deviceName").text();
        device.address = node.member("address").text();
        device.state = node.word("state", 0);
        device.passkey = node.optionalText("passkey");
        if (const auto reach = node.optionalMember("reach")) device.reach = readReach(*reach);
        device.paired = optionalFlag(node, "paired");
        device.trusted = optionalFlag(node, "trusted");
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
        const std::string name = state.json().is_string() ? state.utf8() : std::string();
        if (name != "on" && name != "off") state.fail("\"on\" or \"off\"");
        medium.on = name == "on";
        media.push_back(std::move(medium));
    });
    return media;
}

std::vector<FoundDevice> readBluetooth(const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / "bluetooth.json";
    std::error_code failed;
    if (!std::filesystem::exists(file, failed)) return {};
    const nlohmann::json text = parseJsonFile(file);
    return readBluetooth(JsonNode(text, file));
}

std::vector<Medium> readMedia(const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / "media.json";
    std::error_code failed;
    if (!std::filesystem::exists(file, failed)) return allMediaOn();
    const nlohmann::json text = parseJsonFile(file);
    return readMedia(JsonNode(text, file));
}

void writeBluetooth(const std::filesystem::path& folder, const std::vector<FoundDevice>& found) {
    Json list = Json::array();
    for (const FoundDevice& device : found) {
        Json node = {{"deviceNumber", device.deviceNumber},
                     {"deviceName", toUtf8(device.deviceName)},
                     {"address", toUtf8(device.address)},
                     {"state", device.state},
                     {"reach", reachNames[static_cast<std::size_t>(device.reach)]},
                     {"paired", device.paired},
                     {"trusted", device.trusted}};
        if (device.passkey) node["passkey"] = toUtf8(*device.passkey);
        list.push_back(std::move(node));
    }
    const Json root = {{"format", 1}, {"found", std::move(list)}};
    const std::filesystem::path incoming = folder / ".incoming-bluetooth.json";
    system::writeDurably(incoming, root.dump(2) + "\n");
    system::replaceDurably(incoming, folder / "bluetooth.json");
}

}  // namespace ovno2::simulator
