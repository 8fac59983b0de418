#include "host/messages/message_store.h"

#include <algorithm>

#include "host/contacts/phone_book.h"
#include "host/driver/result_messages.h"
#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"
#include "host/output/progress.h"

namespace ovno2::host {

namespace {

constexpr std::size_t stepsOfAnItem = 2;  // of the progress control
constexpr Long noSuchStore = -3;          // of the module's results

struct StoreKind {
    DataStore store;
    Operation operation;
    const char* items;
};
constexpr StoreKind messageStore{DataStore::messages, Operation::readMessages, "messages"};
constexpr StoreKind otherMessageStore{DataStore::otherMessages, Operation::readMessages, "messages"};
constexpr StoreKind noteStore{DataStore::notes, Operation::readNotes, "notes"};

// Appends what one store holds. The result is the module's.
template <class Item, class Read>
Long readStore(const AttachedPhones& phones, const ListedPhone& phone, const StoreKind& kind,
               ItemList<Item>& list, Read&& itemOf) {
    ListedItems listed(stepsOfAnItem);
    std::vector<Text> lines;
    Long result = 0;
    {
        ProgressBar progress(std::string("the ") + kind.items + " of " + titleOf(phone),
                             console::errorIsTerminal() && !isQuiet());
        result = phones.driver().readData(
            phone, kind.store,
            [&](Long value) {
                progress.advanceTo(value);
                listed.advanceTo(value);
            },
            lines);
    }
    if (result < 0) return result;
    const std::size_t before = list.items.size();
    for (const Text& line : lines)
        if (std::optional<Item> item = itemOf(line)) list.items.push_back(std::move(*item));
    const std::size_t read = list.items.size() - before;
    const std::size_t named = std::max(listed.count(), lines.size());
    list.listed += named;
    const std::string items = std::string(kind.items) + " of " + titleOf(phone);
    std::string trouble;
    if (read < named)
        trouble = std::to_string(read) + " of " + std::to_string(named) + " " + items + " could be read.";
    if (!listed.anyFolder())
        trouble = "The " + items + " could not be listed.";
    else if (listed.notOpened() != 0)
        trouble += std::string(trouble.empty() ? "" : " ") + std::to_string(listed.notOpened()) +
                   " folders with " + items + " could not be opened.";
    if (!trouble.empty())
        list.missing.push_back(trouble + whatToDo(phones.driver(), phone));
    else if (!isAttached(phones.driver(), phone))
        list.missing.push_back(titleOf(phone) + " was lost while its " + kind.items +
                               " were read: whether these are all is not known. Attach it again and give the "
                               "command again.");
    return result;
}

template <class Item>
bool areTheSame(const ItemList<Item>& a, const ItemList<Item>& b) {
    return a.listed == b.listed && std::ranges::equal(a.items, b.items, {}, &Item::uid, &Item::uid);
}

template <class Item>
void compare(const ListedPhone& phone, const char* items, ItemList<Item>& first,
             const ItemList<Item>& second) {
    if (areTheSame(first, second)) return;
    first.missing.push_back(changedBetweenReads(std::string(items) + " of " + titleOf(phone)));
}

}  // namespace

ItemList<Message> readMessages(const AttachedPhones& phones, const ListedPhone& phone) {
    ItemList<Message> list;
    const auto read = [&](const StoreKind& kind) {
        return readStore(phones, phone, kind, list,
                         [&](const Text& line) { return messageOf(line, kind.store); });
    };
    if (const Long result = read(messageStore); result < 0)
        throw CommandFailure{failed, resultMessage(Operation::readMessages, result, titleOf(phone))};
    const Long others = read(otherMessageStore);
    if (others == noSuchStore)
        list.remark = titleOf(phone) + " has one store of messages, or opens no other.";
    else if (others < 0)
        list.missing.push_back(resultMessage(Operation::readMessages, others, titleOf(phone)));
    return list;
}

ItemList<Note> readNotes(const AttachedPhones& phones, const ListedPhone& phone) {
    ItemList<Note> list;
    const Long result = readStore(phones, phone, noteStore, list, noteOf);
    if (result < 0) {
        const CommandFailure failure{failed, resultMessage(Operation::readNotes, result, titleOf(phone))};
        if (result == noSuchStore) throw NoSuchStore{failure};
        throw failure;
    }
    return list;
}

void readAgain(const AttachedPhones& phones, const ListedPhone& phone, ItemList<Message>& first) {
    compare(phone, messageStore.items, first, readMessages(phones, phone));
}

void readAgain(const AttachedPhones& phones, const ListedPhone& phone, ItemList<Note>& first) {
    compare(phone, noteStore.items, first, readNotes(phones, phone));
}

NameBook readNames(const AttachedPhones& phones, const ListedPhone& phone) {
    try {
        PictureFolder pictures;
        return NameBook(readPhoneBook(phones, phone, pictures).contacts);
    } catch (const CommandFailure& failure) {
        remark("ovphone: no names: " + failure.message);
        return {};
    }
}

}  // namespace ovno2::host
