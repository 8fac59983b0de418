// contacts.json: reading it into a ContactStore and writing one back.
//
// Contacts are taken out of the file one by one, so that a phone book of 100,000 contacts costs no more than
// its own size. No state. A damaged file is an ImageError.
#pragma once

#include "simulator/images/json_node.h"
#include "simulator/world/phone.h"

namespace ovno2::simulator {

// Reads the image's contacts.json into `phone.contacts`; without such a file the phone has no phone book.
void readContactsImage(Phone& phone);

// Reads it again when the file is another one than last time. Under the image's lock.
void refreshContacts(Phone& phone);

// Makes `store` the phone's phone book, under the image's lock. In an image the pictures that are new go to
// files first, then contacts.json is replaced, then the pictures nobody names any more go: a process killed
// at any moment leaves the old or the new phone book. Throws std::system_error, with the old one in place,
// when the image cannot be written.
void replaceContacts(Phone& phone, std::shared_ptr<ContactStore> store);

// A phone book from a file, or from values as such a file has them; `image` is where the pictures are.
std::shared_ptr<ContactStore> readContacts(const std::filesystem::path& file,
                                           const std::filesystem::path& image);
std::shared_ptr<ContactStore> readContacts(const JsonNode& root, const std::filesystem::path& image);

}  // namespace ovno2::simulator
