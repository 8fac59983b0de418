// Contacts as the library's records: building the item that a read hands out, and reading one that a caller
// wrote. No state.
#pragma once

#include "simulator/calls/serve.h"

namespace ovno2::simulator {

// Hands a contact out as one block; `record` gets size, counts and addresses. A contact without fields takes
// no memory. Pictures are read from the image here.
void buildItem(World& world, const Phone& phone, const Contact& contact, library::ContactRecord& record);

// The block that an item record's addresses lead into.
LowMemory::Block itemBlock(const World& world, const library::ContactRecord& record);

// A contact out of a caller's item record; uid, position and folder stay empty. `previous`, when there is
// one, tells the kinds of fields that only the phone knows. Every address is checked before it is followed; a
// bad one refuses the call and counts as misuse.
std::shared_ptr<Contact> contactFromItem(World& world, const Phone& phone,
                                         const library::ContactRecord& record, const Contact* previous);

// Copies bytes from an address that a caller gave; false when they cannot be read or belong to nobody.
bool copyFrom(const World& world, Address from, std::size_t bytes, void* to);

// The uid of an identifier; refuses one that cannot be read.
std::string uidOf(World& world, const library::ItemIdRecord* id);

}  // namespace ovno2::simulator
