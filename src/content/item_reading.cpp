#include "content/item_reading.h"

namespace ovno2::Content {

namespace {

// The identifiers of a list; none when they cannot be read.
std::vector<library::ItemIdRecord> copyIds(const library::ItemIdListRecord& list) {
    std::vector<library::ItemIdRecord> ids;
    if (library::isAddress(list.items))
        attempt([&] { ids = library::copyBlock<library::ItemIdRecord>(list.items, list.count); });
    return ids;
}

}  // namespace

Long FolderReader::read(const Connection& connection, Long folderId) {
    library::ItemIdListRecord list{.size = sizeof list, .count = 0, .items = 0};
    const library::Answer asked = library::CAGetIDList.tried(
        connection.handle, static_cast<library::Word>(folderId), /*zero=*/0, &list);
    if (!asked.succeeded()) return notListed(asked.status);
    listed(list.count);
    std::vector<library::ItemIdRecord> ids = copyIds(list);

    library::Handle operation = 0;
    const library::Answer started =
        library::CABeginOperation.tried(connection.handle, /*zero=*/0, &operation);
    if (!started.succeeded()) return notBegun(started.status);
    if (attempt([&] { begun(list.count, ids.size()); }) == noFailure)
        for (library::ItemIdRecord& id : ids)
            attempt([&] { readItem(operation, id); });
    library::CAEndOperation.tried(operation);
    return done();
}

}  // namespace ovno2::Content
