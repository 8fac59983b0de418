// What the module's result codes mean to the person at the keyboard, and what that person can do about it.
#pragma once

#include <string>

#include "host/output/text.h"

namespace ovno2::host {

enum class Operation {
    listPhones,
    switchMedia,
    searchBluetooth,
    pairPhone,
    trustPhone,
    readContacts,
    readMessages,
    readNotes,
    writeMessages,
    writeContact,
    deleteContact,
    endContacts,
    readCalendar,
    writeCalendar,
    changeCalendars,
    openFiles,
    listFolder,
    getFile,
    putFile,
    renameEntry,
    deleteFile,
    createFolder,
    deleteFolder
};

// For a result below 0; `phone` names the phone in messages about one, `subject` the file, folder
// or contact in messages about one. UTF-8, without a line break at the end.
std::string resultMessage(Operation operation, Long result, const std::string& phone = {},
                          const std::string& subject = {});

}  // namespace ovno2::host
