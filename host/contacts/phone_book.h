// Reading a phone's contacts.
#pragma once

#include <string>
#include <vector>

#include "host/contacts/picture_folder.h"
#include "host/driver/driver.h"
#include "host/phones/arrival.h"

namespace ovno2::host {

struct PhoneBook {
    std::vector<Contact> contacts;  // those that could be read, in the phone's order
    std::size_t listed = 0;         // as many as the phone named
    // What did not arrive, why, and what to do about it; UTF-8. Empty = all is there.
    std::vector<std::string> missing;
};

// Shows how far it has come. Throws CommandFailure when nothing could be read at all.
PhoneBook readPhoneBook(const AttachedPhones& phones, const ListedPhone& phone, PictureFolder& pictures);

// Reads a second time and says so among the missing when both reads differ. Pictures are not compared.
void readAgain(const AttachedPhones& phones, const ListedPhone& phone, PhoneBook& first);

// To be called once what has arrived is written: tells what is missing and throws CommandFailure for it.
void requireWhole(const PhoneBook& book);

}  // namespace ovno2::host
