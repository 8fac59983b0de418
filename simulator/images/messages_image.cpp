// The items of messages.json, otherMessages.json and notes.json.
#include "simulator/base/text.h"
#include "simulator/images/date_text.h"
#include "simulator/images/item_image.h"
#include "simulator/world/message.h"

namespace ovno2::simulator {
namespace {

std::string bytesOf(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

// The text in a message's bytes, when they are nothing but one.
std::optional<std::u16string> textOf(const Message& message) {
    if (message.format() != Message::textFormat || message.data.size() % sizeof(char16_t) != 0) return {};
    std::u16string text(message.data.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), message.data.data(), message.data.size());
    std::u16string back;
    if (!appendUtf16(back, toUtf8(text)) || back != text) return {};  // with half of a character
    return text;
}

class MessagesImage : public ItemImage {
  public:
    std::shared_ptr<ContentItem> read(const JsonNode& node, Word position) override {
        auto message = std::make_shared<Message>();
        message->position = position;
        bool hasInfo = false, hasData = false;
        Word usualInfo = Message::textFormat;
        node.forEachMember([&](std::string_view name, const JsonNode& value) {
            if (readItemMember(name, value, *message)) return;
            if (isName(name, "date")) {
                readDate(value, message->date);
            } else if (isName(name, "addresses")) {
                value.forEachElement([&](const JsonNode& address, std::size_t) {
                    message->addresses.push_back(readAddress(address));
                });
            } else if (isName(name, "info")) {
                message->info = value.word();
                hasInfo = true;
            } else if (isName(name, "text") || isName(name, "bytes")) {
                if (hasData) value.fail("one of \"text\" and \"bytes\"");
                hasData = true;
                if (isName(name, "text")) {
                    message->data = bytesOf(readMessageText(value));
                } else {
                    if (!value.isText() || !fromHex(value.utf8(), message->data))
                        value.fail("pairs of hexadecimal digits");
                    usualInfo = Message::bytesFormat;
                }
            } else {
                value.fail("no member of this name");
            }
        });
        if (!hasInfo) message->info = usualInfo;
        if (message->addresses.size() > mostMessageAddresses) node.fail("at most 255 addresses");
        return message;
    }

    void write(JsonWriter& writer, const ContentItem& item) const override {
        const auto& message = static_cast<const Message&>(item);
        writeItemMember(writer, "date", dateTextWithOffsets(message.date));
        const std::optional<std::u16string> text = textOf(message);
        if (message.info != (text ? Message::textFormat : Message::bytesFormat))
            writeItemMember(writer, "info", message.info);
        if (!message.addresses.empty()) writeAddresses(writer, message);
        if (text) {
            writeItemMember(writer, "text", *text);
        } else {
            writeItemMember(writer, "bytes", toHex(message.data));
        }
    }

  private:
    static std::u16string readMessageText(const JsonNode& node) {
        std::u16string text;
        if (!appendUtf16(text, node.utf8())) node.fail("UTF-8 text");
        return text;
    }

    static Message::Address readAddress(const JsonNode& node) {
        Message::Address address;
        if (!node.isObject()) {
            address.text = readItemText(node);
            return address;
        }
        node.expectMembers({"text", "info"});
        address.text = readItemText(node.member("text"));
        address.info = node.word("info", address.info);
        return address;
    }

    static void writeAddresses(JsonWriter& writer, const Message& message) {
        writer.layout(", \"addresses\": [");
        const char* separator = "";
        for (const Message::Address& address : message.addresses) {
            writer.layout(separator);
            separator = ", ";
            if (address.info != Message::usualAddressInfo) {
                writer.layout("{\"info\": " + std::to_string(address.info));
                writeItemMember(writer, "text", address.text);
                writer.layout("}");
            } else if (address.text) {
                writer.value(*address.text);
            } else {
                writer.layout("null");
            }
        }
        writer.layout("]");
    }
};

class NotesImage : public ItemImage {
  public:
    std::shared_ptr<ContentItem> read(const JsonNode& node, Word position) override {
        auto note = std::make_shared<Note>();
        note->position = position;
        node.forEachMember([&](std::string_view name, const JsonNode& value) {
            if (isName(name, "text")) {
                note->text = readItemText(value);
            } else if (!readItemMember(name, value, *note)) {
                value.fail("no member of this name");
            }
        });
        return note;
    }

    void write(JsonWriter& writer, const ContentItem& item) const override {
        writeItemMember(writer, "text", static_cast<const Note&>(item).text);
    }
};

}  // namespace

std::unique_ptr<ItemImage> messagesForm() {
    return std::make_unique<MessagesImage>();
}

std::unique_ptr<ItemImage> notesForm() {
    return std::make_unique<NotesImage>();
}

}  // namespace ovno2::simulator
