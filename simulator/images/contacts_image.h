// contacts.json: reading it into a ContactStore and writing one back.
//
// Reading is a stream over the file, so that a phone book of 100,000 contacts costs no more than its own
// size. No state. A damaged file is an ImageError.
#pragma once

#include <string>
#include <string_view>

#include "simulator/world/phone.h"

namespace ovno2::simulator {

// Reads the image's contacts.json into `phone.contacts`; without such a file the phone has no phone book.
void readContactsImage(Phone& phone);

// Reads it again when the file is another one than last time.
void refreshContacts(Phone& phone);

// Makes `store` the phone's phone book. In an image the pictures that are new go to files first, then
// contacts.json is replaced, then the pictures nobody names any more go: a process killed at any moment
// leaves the old or the new phone book. Throws std::system_error, with the old one in place, when the image
// cannot be written.
void replaceContacts(Phone& phone, std::shared_ptr<ContactStore> store);

// A phone book from text; `file` is only named in errors, `image` is where the pictures are.
std::shared_ptr<ContactStore> parseContacts(const std::string& json, const std::filesystem::path& file,
                                            const std::filesystem::path& image);

// The text of contacts.json for this store. Pictures must be in files.
std::string contactsJson(const ContactStore& store);

}  // namespace ovno2::simulator
