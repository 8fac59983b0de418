// What the contacts of a file become on a phone: new ones, changed ones, or what is there already.
#pragma once

#include <vector>

#include "host/contacts/change_report.h"
#include "host/contacts/contact_changes.h"

namespace ovno2::host {

struct ContactImport {
    std::vector<ReportedContact> contacts;  // one a card, in the file's order
    std::vector<ContactChange> changes;
};

// `book` is what the phone has, with its pictures in `pictures`. A contact that the phone has already gets
// what is new (see contact_matching.h); nothing that only the phone has goes. A card that holds nothing for a
// phone is a change with a failure.
ContactImport planImport(std::vector<ContactDraft> cards, const ListedPhone& phone, const PhoneBook& book,
                         const PictureFolder& pictures);

}  // namespace ovno2::host
