// Reading a phone's messages and notes into the host's lines.
//
// Keeps no state of its own; see data_state.h.
#pragma once

#include "base/host_array.h"
#include "content/folders.h"
#include "platform/automation.h"

namespace ovno2::Data {

// Appends one line for each item of the phone's store of kind `what` (data_connection.h), over all its
// folders, of which the first 101 count. Afterwards no connection is open and a write session is given up.
// The result is 0, or
//   -1  the content-access library could not be started
//   -2  no such phone
//   -3  the store could not be opened
//   -4  its folders could not be read
//
// A line has its parts divided by "|". Of a message: folder name (its path where it has none), folder path,
// folder id, local date and time in the user's form, UID, addresses divided by ",", text. A text is the
// message's own through the system's code page, or one character for each byte of 8-bit data; of other data
// it is empty. Of a note: UID and text. "|" inside a text stands as it is.
//
// Items that cannot be read are left out. `Progressbar` may be null. Nothing is thrown.
Long NokiaGetDataItems(const Text& model, const Text& PhoneId, Long what, TextArray& DataItems,
                       const platform::ObjectPointer& Progressbar);

// The same for one folder over the open connection: the highest index of `DataItems`, 0 without elements; -1
// when the items could not be listed, -2 when no operation began.
Long GetDataItems(const Content::FolderEntry& folder, TextArray& DataItems, Long what,
                  const platform::ObjectPointer& Progressbar);

}  // namespace ovno2::Data
