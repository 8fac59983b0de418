// A content operation: reads go straight to the phone book, changes wait here until they are committed.
#pragma once

#include <algorithm>

#include "simulator/world/content_changes.h"
#include "simulator/world/sessions.h"

namespace ovno2::simulator {

struct ContentOperation : Session {
    static constexpr SessionKind ownKind = SessionKind::operation;
    ContentOperation(std::shared_ptr<Phone> ofPhone, Handle connection)
        : Session(ownKind, std::move(ofPhone)) {
        parent = connection;
    }
    // The queued contact that a caller names by its temporary id, or the end.
    std::vector<ContentChange>::iterator findNew(Word temporaryId) {
        if (temporaryId == 0) return changes.end();
        return std::find_if(changes.begin(), changes.end(), [=](const ContentChange& change) {
            return change.kind == ContentChange::Kind::write && change.uid.empty() &&
                   change.temporaryId == temporaryId;
        });
    }

    std::vector<ContentChange> changes;
    Word lastTemporaryId = 0;
    std::size_t nextRead = 0;  // place of the contact that a read in the phone's order takes next
};

}  // namespace ovno2::simulator
