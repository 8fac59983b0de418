// A content operation: reads go straight to the phone, changes wait here until they are committed.
#pragma once

#include <algorithm>

#include "simulator/calls/item_form.h"
#include "simulator/world/content_changes.h"
#include "simulator/world/sessions.h"

namespace ovno2::simulator {

struct ContentOperation : Session {
    static constexpr SessionKind ownKind = SessionKind::operation;
    ContentOperation(const ContentConnection& connection, Handle handle)
        : Session(ownKind, connection.phone), content(connection.content) {
        parent = handle;
    }
    // The queued item that a caller names by its temporary id, or the end.
    std::vector<ContentChange>::iterator findNew(Word temporaryId) {
        if (temporaryId == 0) return changes.end();
        return std::find_if(changes.begin(), changes.end(), [=](const ContentChange& change) {
            return change.kind == ContentChange::Kind::write && change.uid.empty() &&
                   change.temporaryId == temporaryId;
        });
    }

    const ContentKind content;
    std::vector<ContentChange> changes;
    Word lastTemporaryId = 0;
    std::size_t nextRead = 0;  // place of the item that a read in the phone's order takes next
};

// The form of an operation's items; refuses the kind that is only counted.
inline const ItemForm& formOf(const ContentOperation& operation) {
    const ItemForm* const form = formOf(operation.content);
    if (form == nullptr) throw Refused{status::notSupported};
    return *form;
}

// The uid of an identifier; refuses one that cannot be read.
std::string uidOf(World& world, const library::ItemIdRecord* id, const ItemForm& form,
                  const RecordSizes& sizes);

}  // namespace ovno2::simulator
