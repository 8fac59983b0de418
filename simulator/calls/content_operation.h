// A content operation: reads go straight to the phone book, changes wait here until they are committed.
#pragma once

#include "simulator/world/content_changes.h"
#include "simulator/world/sessions.h"

namespace ovno2::simulator {

struct ContentOperation : Session {
    static constexpr SessionKind ownKind = SessionKind::operation;
    ContentOperation(std::shared_ptr<Phone> ofPhone, Handle connection)
        : Session(ownKind, std::move(ofPhone)) {
        parent = connection;
    }
    std::vector<ContentChange> changes;
    Word lastTemporaryId = 0;
    std::size_t nextRead = 0;  // place of the contact that a read in the phone's order takes next
};

}  // namespace ovno2::simulator
