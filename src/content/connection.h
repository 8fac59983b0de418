// A connection to one kind of a phone's content. Contacts, calendar and messages each have one of their own.
//
// It is kept open for the phone it was opened for. Each area says itself when it checks, opens and closes its
// connection; what they share stands here. Nothing here throws.
#pragma once

#include "library/library.h"

namespace ovno2::Content {

// Media under which a connection is asked for.
inline constexpr library::Word anyMedium = 1;
inline constexpr library::Word usbMedium = 16;

struct Connection {
    library::Handle handle = 0;  // 0 = closed
    Text serial;                 // the phone it belongs to, open or not

    // The last check, and the folder found behind it.
    struct Check {
        Single at = 0;                     // seconds since midnight
        Long status = library::notCalled;  // 0 only while the connection of that check is open
        Long folderId = 0;
    } lastCheck;

    // The write session on the connection; closing the connection ends it.
    struct WriteSession {
        library::Handle operation = 0;
        bool open = false;
    } writeSession;

    // Opens the connection to the phone whose serial number lies in the library's memory at `serialNumber`,
    // over one medium; a failure leaves `handle` alone. Without the text nothing is called.
    library::Answer openOver(library::Word medium, library::Word target, const char16_t* serialNumber);
    // The library's status; 0 when nothing was open.
    Long close();

    // Remembers what a check came to. One that found the connection open is trusted for a second.
    void remember(Long status);
    bool isTrusted(const Text& forSerial) const;
};

// Gives a phone that did not let itself be connected a moment, and the host's windows as well.
void waitToReconnect();

}  // namespace ovno2::Content
