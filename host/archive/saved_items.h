// The messages and notes of an archive, read again from their JSON files.
#pragma once

#include <string>
#include <vector>

#include "host/messages/message.h"

namespace ovno2::host {

struct SavedMessage {
    Message message;
    std::string goneSince;  // empty = it was on the phone in the last run
    std::string line;       // its object as it stands, without what says that it is gone
};

struct SavedNote {
    Note note;
    std::string file;  // its text file, relative to the archive; empty = none
    std::string goneSince;
    std::string line;
};

// Throw CommandFailure for bytes that are no such file; `name` is what messages call it.
std::vector<SavedMessage> readSavedMessages(const std::string& bytes, const std::string& name);
std::vector<SavedNote> readSavedNotes(const std::string& bytes, const std::string& name);

// What makes a message or a note the same in two runs: all but the names in the phone book.
std::string identityOf(const Message& message);
std::string identityOf(const Note& note);

}  // namespace ovno2::host
