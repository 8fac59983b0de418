// The connection to the phone's contacts, and the folder behind it.
//
// State on the thread: the connection. Reading and writing contacts check it first; `CleanUp` closes it.
// Nothing here throws.
#pragma once

#include "content/connection.h"

namespace ovno2::Contacts {

Content::Connection& connection();

// Opens the contacts connection to the phone with that serial number unless it is open: the library's status,
// -1 when it cannot be called. A check that found it open is trusted for a second.
Long CheckContactsConnection(const Text& serial);
// Closes the contacts connection and the contacts write session on it: the library's status, 0 when nothing
// was open.
Long CloseContactsConnection();

// The id of the phone's contacts folder, 0 when its record could not be read, -1 when the connection could
// not be opened. An empty `serial` becomes the one of the phone of that model.
Long GetContactsFolder(const Text& model, Text& serial);

}  // namespace ovno2::Contacts
