// Reading a phone's messages and notes, and what of them did not arrive.
#pragma once

#include "host/messages/message.h"
#include "host/messages/phone_number.h"
#include "host/output/command_output.h"
#include "host/phones/arrival.h"

namespace ovno2::host {

template <class Item>
struct ItemList {
    std::vector<Item> items;  // those that could be read, in the phone's order
    std::size_t listed = 0;   // as many as the phone named
    // What did not arrive, why, and what to do about it; UTF-8. Empty = all is there, as far as the phone
    // tells.
    std::vector<std::string> missing;
    std::string remark = {};  // on the phone, for those who want everything; UTF-8, mostly empty
};

// The phone has no such store, or does not open it: which of both, it does not tell.
struct NoSuchStore : CommandFailure {};

// Both show how far they have come, and throw CommandFailure when nothing could be read at all.
ItemList<Message> readMessages(const AttachedPhones& phones, const ListedPhone& phone);
ItemList<Note> readNotes(const AttachedPhones& phones, const ListedPhone& phone);

// Reads a second time and says so among the missing when both reads differ: a folder that the phone does not
// list is not missed in one read alone.
void readAgain(const AttachedPhones& phones, const ListedPhone& phone, ItemList<Message>& first);
void readAgain(const AttachedPhones& phones, const ListedPhone& phone, ItemList<Note>& first);

// The names in the phone's phone book. When it cannot be read, the user is told, and there are none.
NameBook readNames(const AttachedPhones& phones, const ListedPhone& phone);

}  // namespace ovno2::host
