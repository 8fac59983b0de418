#include "host/archive/saved_items.h"

#include <algorithm>

#include "host/archive/json_reading.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

constexpr Message::Direction directions[] = {Message::Direction::received, Message::Direction::sent,
                                             Message::Direction::waiting, Message::Direction::draft};

Text member(const rapidjson::Value& object, const char* name) {
    return fromUtf8(textMember(object, name));
}

template <class Saved, class Read>
std::vector<Saved> readAll(const std::string& bytes, const std::string& name, Read&& readOne) {
    rapidjson::Document document;
    const bool isArray = readJson(bytes, document) && document.IsArray();
    if (!isArray || !std::ranges::all_of(document.GetArray(), &rapidjson::Value::IsObject))
        throw CommandFailure{failed, "\"" + name +
                                         "\" is damaged: it is no array of objects in JSON. Move it away, "
                                         "or put back what it was."};
    std::vector<Saved> all;
    all.reserve(document.Size());
    for (rapidjson::Value& object : document.GetArray()) {
        Saved saved;
        saved.goneSince = takeGone(object);
        saved.line = asLine(object);
        readOne(object, saved);
        all.push_back(std::move(saved));
    }
    return all;
}

}  // namespace

std::vector<SavedMessage> readSavedMessages(const std::string& bytes, const std::string& name) {
    return readAll<SavedMessage>(bytes, name, [](const rapidjson::Value& object, SavedMessage& saved) {
        Message& message = saved.message;
        message.time = member(object, "time");
        message.folder = member(object, "folder");
        message.text = member(object, "text");
        message.uid = member(object, "uid");
        const std::string direction = textMember(object, "direction");
        for (const Message::Direction one : directions)
            if (direction == nameOf(one)) message.direction = one;
        if (const rapidjson::Value* const addresses = findMember(object, "addresses");
            addresses && addresses->IsArray())
            for (const rapidjson::Value& address : addresses->GetArray())
                if (address.IsString())
                    message.addresses.push_back(fromUtf8({address.GetString(), address.GetStringLength()}));
    });
}

std::vector<SavedNote> readSavedNotes(const std::string& bytes, const std::string& name) {
    return readAll<SavedNote>(bytes, name, [](const rapidjson::Value& object, SavedNote& saved) {
        saved.note = {member(object, "uid"), member(object, "text")};
        saved.file = textMember(object, "file");
    });
}

// No text holds the separator.
std::string identityOf(const Message& message) {
    constexpr char16_t separator = 0;
    Text identity = message.time + separator + fromUtf8(nameOf(message.direction)) + separator +
                    message.folder + separator + message.uid + separator + message.text;
    // Without any address, and with empty ones alone, none is written.
    if (!std::ranges::all_of(message.addresses, &Text::empty))
        for (const Text& address : message.addresses)
            identity.append(1, separator).append(address);
    return toUtf8(identity);
}

std::string identityOf(const Note& note) {
    return toUtf8(note.uid + u' ' + note.text);
}

}  // namespace ovno2::host
