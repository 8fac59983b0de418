// Messages and notes as the host knows them, out of the lines that the driver reads.
#pragma once

#include <optional>
#include <vector>

#include "host/driver/driver.h"

namespace ovno2::host {

struct Message {
    // Whence it came or where it goes, as far as its folder says.
    enum class Direction { received, sent, waiting, draft, unknown };

    DataStore store = DataStore::messages;
    Text folder;  // its name; one that every phone has under a name for people
    Text folderId;
    Direction direction = Direction::unknown;
    Text time;  // local, ISO 8601: "2008-01-05T10:30:00"; empty = none
    Text uid;
    std::vector<Text> addresses;  // of who sent it, or of who gets it
    Text text;
};

struct Note {
    Text uid;
    Text text;
};

// None for a line that holds no message. Parts may hold "|": what lies between the folder's id and the UID
// tells where the others stand.
std::optional<Message> messageOf(TextView line, DataStore store);
std::optional<Note> noteOf(TextView line);

// "received", "sent", "waiting", "draft"; empty for one that is not known.
const char* nameOf(Message::Direction direction);

}  // namespace ovno2::host
