// Contacts as JSON for programs and as a table for people.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "host/contacts/contact_draft.h"
#include "host/driver/driver.h"
#include "host/output/json.h"
#include "host/output/table.h"

namespace ovno2::host {

// An array with one object a contact, one a line; `write` gets it piece by piece. The keys are those of the
// field table in its order, then "location" and "uid"; what is absent is left out. A value is a text where
// its row holds one, otherwise an array of texts; birthdays are ISO 8601 dates. With `notes` an object ends
// with an array "notes" on what the record could not hold ("fields", "lost"). Always valid UTF-8.
void writeContactsAsJson(std::span<const Contact> contacts, bool notes,
                         const std::function<void(std::string_view)>& write);

// The members of a contact that lies outside a phone, without pictures: its values and its uid.
void writeDraft(JsonLine& line, const ContactDraft& contact);

// One row a contact: the name, then the fields that any of the contacts has, those that most have first, long
// texts last.
Table contactsAsTable(std::span<const Contact> contacts);

// What a contact may have had on the phone that its record could not hold, as far as can be known: the rows
// of one kind of loss with what is lost.
struct Loss {
    const char* lost;
    std::vector<std::size_t> rows;
};
std::vector<Loss> lossesOf(const Contact& contact);

// One person as a card: a line with the name, then a line a value, none wider than `width` where words can be
// parted. UTF-8.
std::string asCard(const Contact& contact, std::size_t width, bool verbose);

}  // namespace ovno2::host
