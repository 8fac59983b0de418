// Notes and messages on their way to a phone. Both are texts that the phone takes in sessions and has as they
// are or not at all: one that is there is never changed.
#include <algorithm>
#include <map>

#include "host/messages/changes.h"
#include "host/messages/message_store.h"
#include "host/output/command_output.h"
#include "host/output/display_width.h"
#include "host/phones/arrival.h"
#include "host/restore/in_halves.h"
#include "host/restore/restore_part.h"

namespace ovno2::host {

namespace {

using State = RestoreItem::State;

// A text as it is once it went through the driver, whatever line ends it has.
Text asKept(const Text& text) {
    return replaceAll(replaceAll(text, u"\r", u""), u"\t", u" ");
}

// What makes a note or a message the same on two phones.
Text contentOf(const Note& note) {
    return asKept(note.text);
}
Text contentOf(const Message& message) {
    std::vector<Text> addresses = message.addresses;
    std::ranges::sort(addresses);
    return join(addresses, u',') + u'\n' + asKept(message.text);
}

std::string titleOf(const Text& text) {
    constexpr std::size_t cells = 40;
    const Text title = cutToWidth(singleLine(text), cells);
    return title.empty() ? "(empty)" : "\"" + toUtf8(title) + "\"";
}
std::string titleOf(const Note& note) {
    return titleOf(note.text);
}
std::string titleOf(const Message& message) {
    return titleOf(message.text) + " to " + toUtf8(singleLine(join(message.addresses, u',')));
}

// How often each is there.
using Counts = std::map<Text, std::size_t>;
bool takeOne(Counts& counts, const Text& content) {
    const auto found = counts.find(content);
    if (found == counts.end() || found->second == 0) return false;
    --found->second;
    return true;
}

template <class Item>
class DataPart : public RestorePart {
  public:
    DataPart(const RestoreTarget& target, std::vector<Item>& source)
        : RestorePart(target.wanted), target_(target), source_(source) {}

    void plan() override {
        Counts there = onPhone(/*isForWriting=*/true);
        for (const Item& item : source_) {
            RestoreItem& planned = items_.emplace_back();
            planned.title = titleOf(item);
            planned.why = obstacle(item);
            planned.state = takeOne(there, contentOf(item)) ? State::equal
                            : planned.why.empty()           ? State::isNew
                                                            : State::impossible;
            if (planned.state == State::equal) planned.why.clear();
        }
    }

    void carryOut() override {
        std::vector<std::size_t> places;
        for (std::size_t i = 0; i < items_.size(); ++i)
            if (isToBeWritten(items_[i])) places.push_back(i);
        Counts before = onPhone(/*isForWriting=*/true);
        std::vector<std::size_t> taken;
        inHalves<std::size_t>(places, [&](std::span<std::size_t> some) {
            std::string refusal = write(some);
            if (refusal.empty()) taken.insert(taken.end(), some.begin(), some.end());
            return refusal;
        });
        if (!taken.empty()) lookFor(taken, before);
    }

  protected:
    virtual std::string obstacle(const Item& item) const = 0;  // why no phone takes it; empty = it does
    virtual ItemList<Item> read() const = 0;
    virtual Long writeOne(PhoneDriver& driver, const Item& item) const = 0;

    const RestoreTarget& target_;

  private:
    Counts onPhone(bool isForWriting) const {
        const ItemList<Item> list = read();
        if (isForWriting) requireKnown(list.missing);
        Counts counts;
        for (const Item& item : list.items)
            ++counts[contentOf(item)];
        return counts;
    }

    std::string write(std::span<const std::size_t> places) {
        std::vector<DataChange> changes;
        changes.reserve(places.size());
        for (const std::size_t place : places)
            changes.emplace_back(
                [this, place](PhoneDriver& driver) { return writeOne(driver, source_[place]); });
        try {
            host::carryOut(target_.phones, target_.phone, changes);
        } catch (const CommandFailure& failure) {
            if (!isAttached(target_.phones.driver(), target_.phone)) throw;
            if (places.size() == 1) items_[places[0]].failure = failure.message;
            return failure.message;
        }
        return {};
    }

    void lookFor(const std::vector<std::size_t>& taken, Counts& before) {
        Counts now = onPhone(/*isForWriting=*/false);
        for (const auto& [content, count] : before)
            for (std::size_t i = 0; i < count; ++i)
                takeOne(now, content);
        for (const std::size_t place : taken) {
            items_[place].isWritten = takeOne(now, contentOf(source_[place]));
            if (!items_[place].isWritten)
                items_[place].failure = "It was written, but the phone does not have it so.";
        }
    }

    std::vector<Item>& source_;
};

class NotesPart : public DataPart<Note> {
  public:
    explicit NotesPart(const RestoreTarget& target) : DataPart(target, target.source.notes) {}
    const char* name() const override { return "notes"; }

  private:
    std::string obstacle(const Note& note) const override { return note.text.empty() ? "it is empty" : ""; }
    ItemList<Note> read() const override { return readNotes(target_.phones, target_.phone); }
    Long writeOne(PhoneDriver& driver, const Note& note) const override {
        return driver.writeNote(target_.phone, /*uid=*/{}, note.text);
    }
};

class MessagesPart : public DataPart<Message> {
  public:
    explicit MessagesPart(const RestoreTarget& target) : DataPart(target, target.source.messages) {}
    const char* name() const override { return "messages"; }

  private:
    // A phone takes a message into its outbox alone, from where it goes to its addresses.
    std::string obstacle(const Message& message) const override {
        using Direction = Message::Direction;
        const bool isOwn = message.direction == Direction::sent || message.direction == Direction::waiting ||
                           message.direction == Direction::draft;
        if (!isOwn) return "a phone takes messages into its outbox only, which would send it to who wrote it";
        if (std::ranges::all_of(message.addresses, &Text::empty)) return "it is addressed to nobody";
        return message.text.empty() ? "it has no text" : "";
    }
    ItemList<Message> read() const override { return readMessages(target_.phones, target_.phone); }
    Long writeOne(PhoneDriver& driver, const Message& message) const override {
        return driver.writeMessage(target_.phone, message.addresses, message.text);
    }
};

}  // namespace

std::unique_ptr<RestorePart> notesPart(const RestoreTarget& target) {
    return std::make_unique<NotesPart>(target);
}

std::unique_ptr<RestorePart> messagesPart(const RestoreTarget& target) {
    return std::make_unique<MessagesPart>(target);
}

}  // namespace ovno2::host
