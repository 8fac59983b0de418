#include "simulator/images/phone_image.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "simulator/images/content_image.h"
#include "simulator/images/files_image.h"
#include "simulator/images/json_text.h"

namespace ovno2::simulator {
namespace {

struct MediumName {
    Word medium;
    const char* name;
};
constexpr MediumName mediumNames[] = {{library::mediumUsb, "usb"},
                                      {library::mediumBluetooth, "bluetooth"},
                                      {library::mediumCable, "cable"},
                                      {library::mediumInfrared, "infrared"}};

constexpr long behindAllNumbered = std::numeric_limits<long>::max();

// A phone is listed by the name of its connection: one that is not given is made of what the phone is called.
std::optional<std::u16string> readDeviceName(const JsonNode& connection, const Phone& phone,
                                             std::u16string_view folder) {
    if (const auto given = connection.optionalMember("deviceName")) return given->textOrNull();
    for (const auto& name : {phone.model, phone.friendlyName, phone.typeName}) {
        if (name && !name->empty()) return name;
    }
    return folder.empty() ? std::nullopt : std::optional<std::u16string>(folder);
}

void readConnections(const JsonNode& list, std::u16string_view folder, Phone& phone) {
    if (list.arraySize() == 0) list.fail("at least one connection");
    list.forEachElement([&](const JsonNode& node, std::size_t) {
        node.expectMembers({"deviceNumber", "medium", "deviceName", "address", "state"});
        Connection connection;
        connection.deviceNumber = node.word("deviceNumber", 0);
        connection.medium = readMedium(node.member("medium"));
        connection.deviceName = readDeviceName(node, phone, folder);
        connection.address = node.optionalText("address");
        connection.state = node.word("state", 0);
        phone.connections.push_back(std::move(connection));
    });
}

void readVersions(const JsonNode& node, Versions& versions) {
    node.expectMembers({"connectivity", "deviceManagement", "contentAccess", "fileSystem"});
    versions.connectivity = node.word("connectivity", versions.connectivity);
    versions.deviceManagement = node.word("deviceManagement", versions.deviceManagement);
    versions.contentAccess = node.word("contentAccess", versions.contentAccess);
    versions.fileSystem = node.word("fileSystem", versions.fileSystem);
}

void readRecordSizes(const JsonNode& node, RecordSizes& sizes) {
    node.expectMembers({"dataItem", "folder", "calendar", "date"});
    const auto read = [&](std::string_view name, Word& size) {
        if (const auto member = node.optionalMember(name)) size = readRecordSize(name, *member);
    };
    read("dataItem", sizes.dataItem);
    read("folder", sizes.folder);
    read("calendar", sizes.calendar);
    read("date", sizes.date);
}

void readRefusals(const JsonNode& node, Phone& phone) {
    node.expectMembers({"content", "files"});
    if (const auto content = node.optionalMember("content")) phone.contentRefused = readStatus(*content);
    if (const auto files = node.optionalMember("files")) phone.filesRefused = readStatus(*files);
}

}  // namespace

Word readRecordSize(std::string_view name, const JsonNode& node) {
    if (name == "date") return node.wordBetween(0, 255);
    const Word larger = name == "dataItem" ? 20 : name == "folder" ? 48 : 112;
    const Word smaller = name == "dataItem" ? 16 : name == "folder" ? 32 : 104;
    const Word value = node.word();
    if (value != smaller && value != larger)
        node.fail(std::to_string(smaller) + " or " + std::to_string(larger));
    return value;
}

Word readMedium(const JsonNode& node) {
    const auto* const found =
        std::ranges::find_if(mediumNames, [&](const MediumName& one) { return node.is(one.name); });
    if (found == std::end(mediumNames)) node.fail("\"usb\", \"bluetooth\", \"cable\" or \"infrared\"");
    return found->medium;
}

const char* nameOfMedium(Word medium) {
    return std::ranges::find(mediumNames, medium, &MediumName::medium)->name;
}

Status readStatus(const JsonNode& node) {
    const std::optional<Word> status = node.optionalWord();
    if (!status || (*status & 0x80000000) == 0)
        node.fail("a status with the top bit set, such as \"0x80100014\"");
    return *status;
}

std::shared_ptr<Phone> readIdentity(const JsonNode& root, std::u16string_view folder) {
    root.expectFormat();
    root.expectMembers({"format", "order", "serialNumber", "friendlyName", "model", "manufacturer",
                        "typeName", "platform", "connections", "versions", "recordSizes", "refuses"});
    auto phone = std::make_shared<Phone>();
    phone->order = behindAllNumbered;
    if (const auto order = root.optionalMember("order"))
        phone->order = static_cast<long>(order->wordBetween(0, 1000000));
    phone->serialNumber = root.optionalText("serialNumber");
    phone->friendlyName = root.optionalText("friendlyName");
    phone->model = root.optionalText("model");
    phone->manufacturer = root.optionalText("manufacturer");
    phone->typeName = root.optionalText("typeName");
    if (const auto platform = root.optionalMember("platform"); platform && !platform->isNull()) {
        platform->expectMembers({"code", "level"});
        phone->platform = Platform{platform->member("code").word(), platform->member("level").word()};
    }
    readConnections(root.member("connections"), folder, *phone);
    if (const auto versions = root.optionalMember("versions")) readVersions(*versions, phone->versions);
    if (const auto sizes = root.optionalMember("recordSizes")) readRecordSizes(*sizes, phone->sizes);
    if (const auto refuses = root.optionalMember("refuses")) readRefusals(*refuses, *phone);
    return phone;
}

void readStores(Phone& phone, const std::filesystem::path& image) {
    const system::FolderLock lock = lockImage(image);
    removeLeftovers(image);
    phone.image = image;
    for (const ContentKindInfo& content : contentKinds)
        readContentImage(phone, content.kind);
    readFilesImage(phone);
}

std::shared_ptr<Phone> readPhoneImage(const std::filesystem::path& image) {
    JsonText identity(image / "phone.json");
    std::shared_ptr<Phone> phone = readIdentity(identity.parse(), image.filename().u16string());
    readStores(*phone, image);
    return phone;
}

}  // namespace ovno2::simulator
