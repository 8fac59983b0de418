// What is to go to a phone: an archive's contents, or those of card and calendar files.
//
// Everything is read before a phone is asked. What is damaged is left out and named; the rest stays usable.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "host/calendar/calendar_entry.h"
#include "host/contacts/contact_draft.h"
#include "host/messages/message.h"

namespace ovno2::host {

struct RestoreSource {
    // A drive's files in an archive.
    struct Drive {
        std::string path;              // on the phone: "E:"
        std::filesystem::path folder;  // here
    };
    // The phone's own names of the files and folders that are to go back, by their places here.
    using PhoneNames = std::map<std::filesystem::path, Text>;

    std::vector<ContactDraft> contacts;
    std::vector<CalendarEntry> entries;  // `calendar` names where they go; empty = the phone's first calendar
    std::vector<Note> notes;
    std::vector<Message> messages;
    std::vector<Drive> drives;
    PhoneNames files;
    std::size_t fileCount = 0;  // without folders

    // What could not be read, and is therefore not restored, for people; UTF-8.
    std::vector<std::string> problems;
    // What an archive holds and its phone no longer had, by kind, and was left out.
    std::map<std::string, std::size_t> goneLeftOut;
};

struct SourceOptions {
    bool withGone = false;  // also what the archive's phone no longer had
};

// An archive (a folder with its marks), a card or calendar file, or a folder with such files somewhere in it.
// Throws CommandFailure for anything else, and for an archive that does not say what it holds.
RestoreSource readSource(const std::string& path, const SourceOptions& wanted);

// The archive in a folder; false where there is none.
bool isArchive(const std::filesystem::path& folder);
void readArchive(const std::filesystem::path& folder, const SourceOptions& wanted, RestoreSource& source);

}  // namespace ovno2::host
