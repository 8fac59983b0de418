#include "host/messages/message_output.h"

#include <algorithm>

#include "host/formats/csv.h"
#include "host/output/display_width.h"
#include "host/output/json.h"
#include "host/output/wrapping.h"

namespace ovno2::host {

namespace {

// "2008-01-05 10:30", for people.
Text shownTime(const Message& message) {
    constexpr std::size_t minutes = 16, placeOfT = 10;
    Text time = message.time.substr(0, minutes);
    if (time.size() > placeOfT) time[placeOfT] = u' ';
    return time;
}

Text authorOf(const Conversation& conversation, const Message& message) {
    switch (message.direction) {
        case Message::Direction::received:
            return conversation.title;
        case Message::Direction::sent:
            return u"Me";
        case Message::Direction::waiting:
            return u"Me (waiting in the outbox)";
        case Message::Direction::draft:
            return u"Me (a draft)";
        default:
            return u"In " + message.folder;
    }
}

std::vector<Text> namesOf(const Message& message, const NameBook& names) {
    std::vector<Text> all;
    for (const Text& address : message.addresses)
        all.push_back(names.nameOf(address));
    return all;
}

void writeTexts(JsonLine& line, std::string_view name, const std::vector<Text>& texts) {
    if (std::ranges::all_of(texts, &Text::empty)) return;
    line.key(name);
    line.StartArray();
    for (const Text& text : texts)
        line.text(text);
    line.EndArray();
}

void writeMember(JsonLine& line, std::string_view name, const Text& value) {
    if (!value.empty()) line.member(name, TextView(value));
}

}  // namespace

void writeMessage(JsonLine& line, const Message& message, const NameBook& names) {
    writeMember(line, "time", message.time);
    if (*nameOf(message.direction) != 0) line.member("direction", nameOf(message.direction));
    writeMember(line, "folder", message.folder);
    writeTexts(line, "addresses", message.addresses);
    writeTexts(line, "names", namesOf(message, names));
    line.member("text", TextView(message.text));
    writeMember(line, "uid", message.uid);
}

void writeNote(JsonLine& line, const Note& note) {
    line.member("text", TextView(note.text));
    writeMember(line, "uid", note.uid);
}

void writeMessagesAsJson(const std::vector<Message>& messages, const NameBook& names,
                         const std::function<void(std::string_view)>& write) {
    JsonLines lines(write);
    for (const Message& message : messages) {
        JsonLine& line = lines.next();
        line.StartObject();
        writeMessage(line, message, names);
        line.EndObject();
    }
    lines.end();
}

Table conversationsAsTable(const std::vector<Conversation>& conversations) {
    Table table({u"With", u"Messages", u"Last", u"Text"});
    for (const Conversation& conversation : conversations) {
        const Message& last = *conversation.messages.back();
        table.addRow({conversation.title, decimalText(static_cast<Long>(conversation.messages.size())),
                      shownTime(last), last.text});
    }
    return table;
}

std::string asTalk(const Conversation& conversation, std::size_t width, bool uids) {
    constexpr TextView indent = u"    ";
    Text talk = singleLine(conversation.title);
    const Text addresses = join(conversation.addresses, u',');
    if (!addresses.empty() && addresses != conversation.title) talk += u" (" + singleLine(addresses) + u")";
    talk += u'\n';
    for (const Message* const message : conversation.messages) {
        const Text time = shownTime(*message);
        talk.append(u"\n  ").append(time.empty() ? Text(u"(no time)") : time).append(u"  ");
        talk.append(singleLine(authorOf(conversation, *message)));
        if (uids) talk.append(u"  [").append(message->uid).append(u"]");
        talk += u'\n';
        for (const Text& line : wrapped(message->text, width - indent.size()))
            talk.append(indent).append(line).push_back(u'\n');
    }
    return toUtf8(talk);
}

void writeMessagesAsCsv(const std::vector<Message>& messages, const NameBook& names,
                        const std::function<void(std::string_view)>& write) {
    std::string text;
    addCsvRecord(text, {"time", "direction", "folder", "addresses", "names", "text", "uid"});
    for (const Message& message : messages) {
        std::vector<Text> people = namesOf(message, names);
        std::erase_if(people, [](const Text& name) { return name.empty(); });
        addCsvRecord(text, {toUtf8(message.time), nameOf(message.direction), toUtf8(message.folder),
                            toUtf8(join(message.addresses, u',')), toUtf8(join(people, u',')),
                            toUtf8(message.text), toUtf8(message.uid)});
    }
    write(text);
}

}  // namespace ovno2::host
