// Messages and notes as records.
#include <cstring>

#include "simulator/calls/caller_memory.h"
#include "simulator/calls/item_form.h"
#include "simulator/calls/record_builder.h"
#include "simulator/world/message.h"

namespace ovno2::simulator {
namespace {

using library::MessageAddressRecord;
using library::MessageRecord;
using library::NoteRecord;

constexpr std::size_t longestMessage = 16 << 20;  // bytes

class MessageForm : public ItemForm {
  public:
    std::string_view name() const override { return "message"; }
    std::size_t bytes(const RecordSizes&) const override { return sizeof(MessageRecord); }

    // The addresses, their texts, then the data with a terminator of its own.
    void build(World& world, const Phone&, const RecordSizes& sizes, const ContentItem& item,
               void* record) const override {
        const auto& message = static_cast<const Message&>(item);
        MessageRecord built{};
        built.size = sizeof built;
        built.info = message.info;
        built.dataLength = static_cast<Word>(message.data.size());
        built.addressCount = static_cast<Word>(message.addresses.size());
        built.date = message.date;
        built.date.size = sizes.date;
        constexpr std::size_t addressWords = sizeof(MessageAddressRecord) / sizeof(Word);
        RecordBuilder builder;
        builder.addWords(message.addresses.size() * addressWords);
        for (std::size_t i = 0; i < message.addresses.size(); ++i) {
            const std::size_t at = i * sizeof(MessageAddressRecord);
            builder.setWord(at, 0, sizeof(MessageAddressRecord));
            builder.setWord(at, 1, message.addresses[i].info);
            builder.setText(at, 2, message.addresses[i].text);
        }
        const std::size_t data = builder.addBytes(message.data);
        builder.addText({});  // a terminator that the length does not count
        char* const block = builder.finish(world, BlockKind::item);
        built.data = addressOf(block + data);
        if (built.addressCount != 0) built.addresses = addressOf(block);
        std::memcpy(record, &built, sizeof built);
    }

    std::shared_ptr<ContentItem> read(World& world, const Phone&, const void* record,
                                      const ContentItem*) const override {
        MessageRecord written{};
        std::memcpy(&written, record, sizeof written);
        const CallerMemory memory(world);
        auto message = std::make_shared<Message>();
        message->info = written.info;
        message->date = written.date;
        requireDate(message->date);
        if (written.dataLength > longestMessage) throw Refused{status::invalidParameter};
        message->data.resize(written.dataLength);
        if (written.dataLength != 0) memory.take(written.data, written.dataLength, message->data.data());
        for (Word i = 0; i < (written.addressCount & 0xFF); ++i) {
            MessageAddressRecord address{};
            memory.take(static_cast<Address>(written.addresses + i * sizeof address), sizeof address,
                        &address);
            if (address.size != sizeof address) throw Refused{status::wrongRecordSize};
            message->addresses.push_back({address.info, memory.readText(address.text)});
        }
        return message;
    }

    RecordParts parts(const void* record, const RecordSizes&) const override {
        MessageRecord message{};
        std::memcpy(&message, record, sizeof message);
        RecordParts parts;
        parts.add({"address", 0, message.addresses, message.addressCount & 0xFF, sizeof(MessageAddressRecord),
                   true});
        parts.add({"data", 0, message.data, 1, message.dataLength, false});
        return parts;
    }
};

class NoteForm : public ItemForm {
  public:
    std::string_view name() const override { return "note"; }
    std::size_t bytes(const RecordSizes&) const override { return sizeof(NoteRecord); }

    void build(World& world, const Phone&, const RecordSizes&, const ContentItem& item,
               void* record) const override {
        const auto& note = static_cast<const Note&>(item);
        NoteRecord built{sizeof built, 0};
        if (note.text) {
            RecordBuilder builder;
            builder.addText(*note.text);
            built.text = addressOf(builder.finish(world, BlockKind::item));
        }
        std::memcpy(record, &built, sizeof built);
    }

    std::shared_ptr<ContentItem> read(World& world, const Phone&, const void* record,
                                      const ContentItem*) const override {
        NoteRecord written{};
        std::memcpy(&written, record, sizeof written);
        auto note = std::make_shared<Note>();
        note->text = CallerMemory(world).readText(written.text);
        return note;
    }

    RecordParts parts(const void* record, const RecordSizes&) const override {
        NoteRecord note{};
        std::memcpy(&note, record, sizeof note);
        RecordParts parts;
        parts.add({"text", 0, note.text, 1, 0, false});
        return parts;
    }
};

const MessageForm theMessageForm;
const NoteForm theNoteForm;

}  // namespace

const ItemForm& messageForm = theMessageForm;
const ItemForm& noteForm = theNoteForm;

}  // namespace ovno2::simulator
