#include "simulator/commands/control_commands.h"

#include <algorithm>
#include <array>

#include "simulator/base/text.h"
#include "simulator/commands/balance.h"
#include "simulator/commands/synthetic.h"
#include "simulator/images/content_image.h"
#include "simulator/images/json_text.h"
#include "simulator/images/json_writer.h"
#include "simulator/images/phone_image.h"
#include "simulator/images/phones_folder.h"
#include "simulator/images/surroundings_image.h"

namespace ovno2::simulator {
namespace {

std::filesystem::path pathOf(const JsonNode& node) {
    const std::string_view name = node.utf8();
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

ContentKind contentKindOf(const JsonNode& node) {
    const auto* const found =
        std::ranges::find_if(contentKinds, [&](const ContentKindInfo& one) { return node.is(one.name); });
    if (found == contentKinds.end()) node.fail("the name of a kind of content, such as \"calendar\"");
    return found->kind;
}

Occasion occasionOf(const JsonNode& command, bool onwards) {
    Occasion occasion;
    occasion.call = command.member("call").utf8();
    occasion.nth = command.word("nth", 1);
    occasion.onwards = command.flag("onwards", onwards);
    return occasion;
}

void load(World& world, const JsonNode& command, JsonWriter& answer) {
    command.expectMembers({"command", "folder"});
    const std::size_t before = world.imageErrors.size();
    loadPhones(world, pathOf(command.member("folder")));
    answer.member("phones", world.phones.size());
    answer.member("errors",
                  std::vector<std::string>(world.imageErrors.begin() + static_cast<std::ptrdiff_t>(before),
                                           world.imageErrors.end()));
}

void addPhone(World& world, const JsonNode& command, JsonWriter&) {
    command.forEachMember([](std::string_view name, const JsonNode& node) {
        const bool known =
            name == "command" || name == "phone" || name == "image" ||
            std::ranges::find(contentKinds, name, &ContentKindInfo::name) != contentKinds.end();
        if (!known) node.fail("no member of this name");
    });
    std::shared_ptr<Phone> phone = readIdentity(command.member("phone"));
    if (const auto image = command.optionalMember("image")) readStores(*phone, pathOf(*image));
    for (const ContentKindInfo& one : contentKinds) {
        if (const auto content = command.optionalMember(one.name))
            phone->content(one.kind).store = readContent(one.kind, content->asRoot(one.name), phone->image);
    }
    if (!world.add(std::move(phone))) command.fail("a serial number that no other phone has");
}

// A phone that content is made up for, in memory.
Phone& emptyPhoneOf(World& world, const JsonNode& command) {
    Phone& phone = phoneOf(world, command);
    if (!phone.image.empty()) command.fail("a phone without an image");
    return phone;
}

void fillContacts(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers({"command", "serial", "contacts", "fields"});
    emptyPhoneOf(world, command).content(ContentKind::contacts).store =
        syntheticContacts(command.member("contacts").word(), command.member("fields").wordBetween(1, 1020));
}

void fillCalendar(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers({"command", "serial", "entries"});
    emptyPhoneOf(world, command).content(ContentKind::calendar).store =
        syntheticCalendar(command.member("entries").word());
}

void fillMessages(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers({"command", "serial", "messages", "units"});
    emptyPhoneOf(world, command).content(ContentKind::messages).store =
        syntheticMessages(command.member("messages").word(), command.member("units").wordBetween(0, 100000));
}

void listPhones(World& world, const JsonNode&, JsonWriter& answer) {
    answer.Key("phones");
    answer.StartArray();
    for (const auto& phone : world.phones) {
        answer.StartObject();
        answer.member("serial", phone->serialNumber.value_or(u""));
        for (const ContentKindInfo& one : contentKinds) {
            answer.Key(one.name);
            if (const auto& store = phone->content(one.kind).store) {
                answer.value(store->items.size());
            } else {
                answer.Null();
            }
        }
        answer.member("files", phone->files != nullptr);
        answer.member("gone", phone->gone);
        answer.EndObject();
    }
    answer.EndArray();
    answer.member("errors", world.imageErrors);
}

void readJournal(World& world, const JsonNode& command, JsonWriter& answer) {
    command.expectMembers({"command", "clear"});
    answer.member("lines", world.journal.lines());
    if (command.flag("clear", true)) world.journal.clear();
}

void planFault(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers({"command", "call", "nth", "onwards", "status", "allocation", "repeat"});
    Fault fault;
    fault.occasion = occasionOf(command, false);
    if (command.flag("allocation", false)) {
        fault.kind = Fault::Kind::allocation;
    } else if (command.flag("repeat", false)) {
        fault.kind = Fault::Kind::repeat;
    } else {
        fault.status = readStatus(command.member("status"));
    }
    world.plan.add(std::move(fault));
}

void planDrop(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers({"command", "after", "bytes", "status", "serial", "gone"});
    Drop drop;
    drop.after = command.word("after", 0);
    if (const auto bytes = command.optionalMember("bytes")) drop.bytes = bytes->word();
    if (const auto status = command.optionalMember("status")) drop.status = readStatus(*status);
    drop.serial = command.optionalText("serial");
    drop.gone = command.flag("gone", false);
    world.plan.add(std::move(drop));
}

void vanish(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers({"command", "serial", "content", "uid"});
    ContentKind kind = ContentKind::contacts;
    if (const auto content = command.optionalMember("content")) kind = contentKindOf(*content);
    phoneOf(world, command).content(kind).vanished.insert(uidOf(command.member("uid")));
}

std::variant<Word, Poke::Text, Poke::Wild> pokeValue(const JsonNode& node) {
    if (node.isObject()) {
        node.expectMembers({"text"});
        return Poke::Text{node.member("text").text()};
    }
    if (const std::optional<Word> number = node.optionalWord()) return *number;
    if (node.is("unmapped")) return Poke::Wild::unmapped;
    if (node.is("unterminated")) return Poke::Wild::unterminated;
    if (node.is("misaligned")) return Poke::Wild::misaligned;
    node.fail("a number, \"unmapped\", \"unterminated\", \"misaligned\" or {\"text\": ...}");
}

void planPoke(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers(
        {"command", "call", "nth", "onwards", "record", "uid", "pair", "index", "word", "value", "or"});
    Poke poke;
    poke.occasion = occasionOf(command, true);
    poke.record = command.member("record").utf8();
    if (const auto uid = command.optionalMember("uid")) poke.uid = uidOf(*uid);
    if (const auto pair = command.optionalMember("pair")) {
        const std::string_view name = pair->utf8();
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
}

void setShape(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers({"command", "dataItem", "folder", "calendar", "date", "connectivity",
                           "deviceManagement", "contentAccess", "fileSystem", "deleteFolderArguments"});
    Shape& shape = world.plan.shape;
    const auto set = [&](const char* name, std::optional<Word>& value, auto read) {
        const auto node = command.optionalMember(name);
        if (node) value = node->isNull() ? std::nullopt : std::optional<Word>(read(name, *node));
    };
    const auto version = [](const char*, const JsonNode& node) { return node.word(); };
    set("dataItem", shape.dataItem, readRecordSize);
    set("folder", shape.folder, readRecordSize);
    set("calendar", shape.calendar, readRecordSize);
    set("date", shape.date, readRecordSize);
    set("connectivity", shape.connectivity, version);
    set("deviceManagement", shape.deviceManagement, version);
    set("contentAccess", shape.contentAccess, version);
    set("fileSystem", shape.fileSystem, version);
    if (const auto arguments = command.optionalMember("deleteFolderArguments")) {
        shape.deleteFolderTakesFour = arguments->wordBetween(3, 4) == 4;
    }
}

void surroundings(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers({"command", "bluetooth", "media"});
    if (const auto bluetooth = command.optionalMember("bluetooth")) {
        world.found = readBluetooth(bluetooth->asRoot("bluetooth"));
    }
    if (const auto media = command.optionalMember("media")) {
        world.media = readMedia(media->asRoot("media"));
    }
    world.phonesFolder.clear();  // what becomes of these must not be written to a folder that never held them
}

void plug(World& world, const JsonNode& command, JsonWriter&) {
    command.expectMembers({"command", "serial", "attached"});
    Phone& phone = phoneOf(world, command);
    phone.gone = !command.member("attached").boolean();
    if (phone.gone) world.breakSessions(phone, library::connectionLost);
}

struct Command {
    const char* name;
    void (*run)(World&, const JsonNode&, JsonWriter& answer);
};

constexpr Command commands[] = {
    {"reset", [](World& world, const JsonNode&, JsonWriter&) { world.reset(); }},
    {"load", load},
    {"addPhone", addPhone},
    {"fillContacts", fillContacts},
    {"fillCalendar", fillCalendar},
    {"fillMessages", fillMessages},
    {"surroundings", surroundings},
    {"plug", plug},
    {"phones", listPhones},
    {"journal", [](World& world, const JsonNode& command,
                   JsonWriter&) { world.journal.switchOn(command.member("on").boolean()); }},
    {"readJournal", readJournal},
    {"fault", planFault},
    {"drop", planDrop},
    {"vanish", vanish},
    {"poke", planPoke},
    {"clearPlan", [](World& world, const JsonNode&, JsonWriter&) { world.plan.clear(); }},
    {"shape", setShape},
    {"balance", [](World& world, const JsonNode&, JsonWriter& answer) { writeBalance(answer, world); }},
};

std::string textOf(const JsonWriter& writer) {
    return {writer.text().begin(), writer.text().end()};
}

}  // namespace

std::string runCommand(World& world, const JsonNode& command) {
    const JsonNode wanted = command.member("command");
    const auto* const found = std::find_if(std::begin(commands), std::end(commands),
                                           [&](const Command& one) { return wanted.is(one.name); });
    if (found == std::end(commands)) wanted.fail("the name of a command");
    JsonWriter answer;
    answer.StartObject();
    found->run(world, command, answer);
    answer.EndObject();
    return textOf(answer);
}

std::string answerTo(World& world, std::string_view command) {
    try {
        return runCommand(world, JsonText(command, "command").parse());
    } catch (const std::exception& error) {
        JsonWriter answer;
        answer.StartObject();
        answer.member("error", error.what());
        answer.EndObject();
        return textOf(answer);
    }
}

}  // namespace ovno2::simulator
