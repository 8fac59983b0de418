// The two halves of a contact's form: contact_records.cpp hands contacts out, contact_reader.cpp reads what a
// caller wrote.
#pragma once

#include "simulator/calls/item_form.h"
#include "simulator/world/contact.h"

namespace ovno2::simulator {

std::shared_ptr<Contact> contactFromItem(World& world, const Phone& phone,
                                         const library::ContactRecord& record, const Contact* previous);

}  // namespace ovno2::simulator
