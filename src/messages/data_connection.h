// The connection to a phone's messages or notes, and the folders behind it.
//
// One connection serves one phone and one kind of data at a time; asking for another closes it. Texts longer
// than a line of code call these things "data items", as the host does. Nothing here throws.
#pragma once

#include <vector>

#include "content/connection.h"
#include "content/folders.h"

namespace ovno2::Data {

// Kinds of data, the host's `what`; any other kind has no store.
inline constexpr Long messages = 1;
inline constexpr Long otherMessages = 2;
inline constexpr Long notes = 4;
inline constexpr Long countedItems = 5;  // listed, never read

inline bool areMessages(Long what) {
    return what == messages || what == otherMessages;
}

Content::Connection& connection();

// Opens the store of that kind: 0, or -1 when it could not be opened.
Long CheckDatasConnection(const Text& serial, Long what);
// Ends a write session, too. Always 0.
Long CloseDatasConnection();

// The root folder's id, -1 when it could not be read. `list` gets the root and the folders below it, unless
// the folders of this phone were the last to be read and `what` names no messages: then it stays as it is. An
// empty `serial` stands for the phone of that model.
Long GetDataFolders(const Text& model, const Text& serial, Long what,
                    std::vector<Content::FolderEntry>& list);

// The folder that takes messages without one: the last that is an outbox; 0 without any.
Long outboxOf(const std::vector<Content::FolderEntry>& folders);

}  // namespace ovno2::Data
