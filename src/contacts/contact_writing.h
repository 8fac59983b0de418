// Writing one contact into the session. No state of its own; see write_session.h and writing_state.h.
#pragma once

#include "base/host_array.h"

namespace ovno2::Contacts {

// Writes the contact named by `Id`, a UID or the temporary id of one that this session has written, or a new
// one where `isnew` is set, `Id` is empty or nothing is known by it. `elems` has a value for each row of
// `Mobilefields`, divided by tabs; rows it has no value for count as empty. With `isrewrite` only the first
// and the last name are kept. A new contact's temporary id comes back in `Id`.
//
// 0 written, or left out because the host said so; -9 given up because it said so; below 0 what
// `ContactsInitWriteSession` gives, -1 also when there was no memory for the values; else the library's
// status. Nothing is thrown.
Long WriteContact(const Text& model, Text& serial, Text& Id, const Text& elems, const TextTable& Mobilefields,
                  bool isnew, Long isrewrite, Long pCallBack);

}  // namespace ovno2::Contacts
