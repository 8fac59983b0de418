// Contact pictures as files.
#pragma once

#include "contacts/adr_item.h"

namespace ovno2::Contacts {

// Writes the picture of the record at `picture` to its file and returns the file's path; empty when there is
// no picture. The file is the folder (which ends in "\"; empty = the system temporary folder and "ovpic")
// followed by `uid` (empty = the number in the record's location), "." and the picture's format in lower
// case, "jpg" for JPEG and for none. A file that already holds the same bytes is left alone.
Text savePicture(Address picture, const AdrItem& record, const Text& folder, const Text& uid);

}  // namespace ovno2::Contacts
