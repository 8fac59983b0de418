#include "simulator/commands/control_commands.h"

#include <algorithm>
#include <array>

#include "simulator/base/text.h"
#include "simulator/commands/balance.h"
#include "simulator/commands/synthetic.h"
#include "simulator/images/contacts_image.h"
#include "simulator/images/files_image.h"
#include "simulator/images/phone_image.h"
#include "simulator/images/phones_folder.h"
#include "simulator/images/surroundings_image.h"

namespace ovno2::simulator {
namespace {

using nlohmann::json;

std::filesystem::path pathOf(const JsonNode& node) {
    const std::string name = node.utf8();
    return std::filesystem::path(std::u8string(name.begin(), name.end()));
}

Phone& phoneOf(World& world, const JsonNode& command) {
    const JsonNode node = command.member("serial");
    const std::u16string serial = node.text();
    for (const auto& phone : world.phones) {
        if (phone->serialNumber == serial) return *phone;
    }
    node.fail("the serial number of a phone");
}

std::string uidOf(const JsonNode& node) {
    std::string uid;
    if (!fromHex(node.utf8(), uid)) node.fail("a uid in hexadecimal digits");
    return uid;
}

bool flagOf(const JsonNode& command, const char* name, bool otherwise) {
    const auto node = command.optionalMember(name);
    return node ? node->boolean() : otherwise;
}

Occasion occasionOf(const JsonNode& command, bool onwards) {
    Occasion occasion;
    occasion.call = command.member("call").utf8();
    occasion.nth = command.word("nth", 1);
    occasion.onwards = flagOf(command, "onwards", onwards);
    return occasion;
}

json load(World& world, const JsonNode& command) {
    command.expectMembers({"command", "folder"});
    const std::size_t before = world.imageErrors.size();
    loadPhones(world, pathOf(command.member("folder")));
    return {
        {"phones", world.phones.size()},
        {"errors", std::vector<std::string>(world.imageErrors.begin() + static_cast<std::ptrdiff_t>(before),
                                            world.imageErrors.end())}};
}

json addPhone(World& world, const JsonNode& command) {
    command.expectMembers({"command", "phone", "contacts", "image"});
    std::shared_ptr<Phone> phone = readIdentity(command.member("phone"));
    if (const auto image = command.optionalMember("image")) {
        phone->image = pathOf(*image);
        readContactsImage(*phone);
        readFilesImage(*phone);
    }
    if (const auto contacts = command.optionalMember("contacts")) {
        phone->contacts = parseContacts(contacts->json().dump(), "contacts", phone->image);
    }
    if (!world.add(std::move(phone))) command.fail("a serial number that no other phone has");
    return json::object();
}

json fillContacts(World& world, const JsonNode& command) {
    command.expectMembers({"command", "serial", "contacts", "fields"});
    Phone& phone = phoneOf(world, command);
    if (!phone.image.empty()) command.fail("a phone without an image");
    phone.contacts =
        syntheticContacts(command.member("contacts").word(), command.member("fields").wordBetween(1, 1020));
    return json::object();
}

json listPhones(World& world, const JsonNode&) {
    json phones = json::array();
    for (const auto& phone : world.phones) {
        phones.push_back(
            {{"serial", toUtf8(phone->serialNumber.value_or(u""))},
             {"contacts", phone->contacts ? json(phone->contacts->contacts.size()) : json(nullptr)},
             {"files", phone->files != nullptr},
             {"gone", phone->gone}});
    }
    return {{"phones", std::move(phones)}, {"errors", world.imageErrors}};
}

json readJournal(World& world, const JsonNode& command) {
    command.expectMembers({"command", "clear"});
    json answer = {{"lines", world.journal.lines()}};
    if (flagOf(command, "clear", true)) world.journal.clear();
    return answer;
}

json planFault(World& world, const JsonNode& command) {
    command.expectMembers({"command", "call", "nth", "onwards", "status", "allocation", "repeat"});
    Fault fault;
    fault.occasion = occasionOf(command, false);
    if (flagOf(command, "allocation", false)) {
        fault.kind = Fault::Kind::allocation;
    } else if (flagOf(command, "repeat", false)) {
        fault.kind = Fault::Kind::repeat;
    } else {
        fault.status = readStatus(command.member("status"));
    }
    world.plan.add(std::move(fault));
    return json::object();
}

json planDrop(World& world, const JsonNode& command) {
    command.expectMembers({"command", "after", "bytes", "status", "serial", "gone"});
    Drop drop;
    drop.after = command.word("after", 0);
    if (const auto bytes = command.optionalMember("bytes")) drop.bytes = bytes->word();
    if (const auto status = command.optionalMember("status")) drop.status = readStatus(*status);
    drop.serial = command.optionalText("serial");
    drop.gone = flagOf(command, "gone", false);
    world.plan.add(std::move(drop));
    return json::object();
}

json vanish(World& world, const JsonNode& command) {
    command.expectMembers({"command", "serial", "uid"});
    phoneOf(world, command).vanished.insert(uidOf(command.member("uid")));
    return json::object();
}

std::variant<Word, Poke::Text, Poke::Wild> pokeValue(const JsonNode& node) {
    if (node.json().is_object()) {
        node.expectMembers({"text"});
        return Poke::Text{node.member("text").text()};
    }
    if (const std::optional<Word> number = wordOf(node.json())) return *number;
    const std::string name = node.json().is_string() ? node.utf8() : std::string();
    if (name == "unmapped") return Poke::Wild::unmapped;
    if (name == "unterminated") return Poke::Wild::unterminated;
    if (name == "misaligned") return Poke::Wild::misaligned;
    node.fail("a number, \"unmapped\", \"unterminated\", \"misaligned\" or {\"text\": ...}");
}

json planPoke(World& world, const JsonNode& command) {
    command.expectMembers(
        {"command", "call", "nth", "onwards", "record", "uid", "pair", "index", "word", "value", "or"});
    Poke poke;
    poke.occasion = occasionOf(command, true);
    poke.record = command.member("record").utf8();
    if (const auto uid = command.optionalMember("uid")) poke.uid = uidOf(*uid);
    if (const auto pair = command.optionalMember("pair")) {
        const std::string name = pair->utf8();
        if (name.size() != 1 || name[0] < 'a' || name[0] > 'd') pair->fail("\"a\", \"b\", \"c\" or \"d\"");
        poke.pair = static_cast<std::uint8_t>(name[0] - 'a');
    }
    poke.index = command.word("index", 0);
    poke.word = command.member("word").word();
    if (const auto mask = command.optionalMember("or")) {
        poke.orMask = mask->word();
    } else {
        poke.value = pokeValue(command.member("value"));
    }
    world.plan.add(std::move(poke));
    return json::object();
}

json setShape(World& world, const JsonNode& command) {
    command.expectMembers({"command", "dataItem", "folder", "calendar", "date", "connectivity",
                           "deviceManagement", "contentAccess", "fileSystem", "deleteFolderArguments"});
    Shape& shape = world.plan.shape;
    const auto set = [&](const char* name, std::optional<Word>& value) {
        if (const auto node = command.optionalMember(name)) {
            value = node->json().is_null() ? std::nullopt : std::optional<Word>(node->word());
        }
    };
    json sizes = json::object();
    for (const char* const name : {"dataItem", "folder", "calendar", "date"}) {
        const auto node = command.optionalMember(name);
        if (node && !node->json().is_null()) sizes[name] = node->json();
    }
    RecordSizes checked;
    readRecordSizes(JsonNode(sizes, "shape"), checked);
    set("dataItem", shape.dataItem);
    set("folder", shape.folder);
    set("calendar", shape.calendar);
    set("date", shape.date);
    set("connectivity", shape.connectivity);
    set("deviceManagement", shape.deviceManagement);
    set("contentAccess", shape.contentAccess);
    set("fileSystem", shape.fileSystem);
    if (const auto arguments = command.optionalMember("deleteFolderArguments")) {
        shape.deleteFolderTakesFour = arguments->wordBetween(3, 4) == 4;
    }
    return json::object();
}

json surroundings(World& world, const JsonNode& command) {
    command.expectMembers({"command", "bluetooth", "media"});
    if (const auto bluetooth = command.optionalMember("bluetooth")) {
        world.found = readBluetooth(JsonNode(bluetooth->json(), "bluetooth"));
        world.phonesFolder.clear();  // pairing must not be written to a folder that never held these
    }
    if (const auto media = command.optionalMember("media")) {
        world.media = readMedia(JsonNode(media->json(), "media"));
    }
    return json::object();
}

json plug(World& world, const JsonNode& command) {
    command.expectMembers({"command", "serial", "attached"});
    Phone& phone = phoneOf(world, command);
    phone.gone = !command.member("attached").boolean();
    if (phone.gone) world.breakSessions(phone, library::connectionLost);
    return json::object();
}

struct Command {
    const char* name;
    json (*run)(World&, const JsonNode&);
};

constexpr Command commands[] = {
    {"reset", [](World& world, const JsonNode&) { return world.reset(), json::object(); }},
    {"load", load},
    {"addPhone", addPhone},
    {"fillContacts", fillContacts},
    {"surroundings", surroundings},
    {"plug", plug},
    {"phones", listPhones},
    {"journal",
     [](World& world, const JsonNode& command) {
         world.journal.switchOn(command.member("on").boolean());
         return json::object();
     }},
    {"readJournal", readJournal},
    {"fault", planFault},
    {"drop", planDrop},
    {"vanish", vanish},
    {"poke", planPoke},
    {"clearPlan", [](World& world, const JsonNode&) { return world.plan.clear(), json::object(); }},
    {"shape", setShape},
    {"balance", [](World& world, const JsonNode&) { return balanceOf(world); }},
};

}  // namespace

json runCommand(World& world, const json& text) {
    static const std::filesystem::path name = "command";
    try {
        const JsonNode command(text, name);
        const JsonNode which = command.member("command");
        const std::string wanted = which.utf8();
        const auto* const found = std::find_if(std::begin(commands), std::end(commands),
                                               [&](const Command& one) { return wanted == one.name; });
        if (found == std::end(commands)) which.fail("the name of a command");
        return found->run(world, command);
    } catch (const std::exception& error) {
        return {{"error", error.what()}};
    }
}

}  // namespace ovno2::simulator
