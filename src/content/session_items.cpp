#include "content/session_items.h"

#include "library/library_memory.h"

namespace ovno2::Content {

namespace {

using library::ItemIdListRecord;
using library::ItemIdRecord;

// A UID that is there and could not be copied.
bool isIncomplete(const ItemIdRecord& record, const Text& uid) {
    return uid.empty() && record.uidLength != 0 && library::isAddress(record.uid) &&
           currentPlatform().memory().readable(library::pointerTo(record.uid), record.uidLength);
}

ItemId fromLibrary(const ItemIdRecord& record) {
    ItemId id;
    id.Size = static_cast<Long>(record.size);
    id.FolderId = static_cast<Long>(record.folderId);
    id.Position = static_cast<Long>(record.position);
    id.UidLength = static_cast<Long>(record.uidLength);
    id.Uid = GetUIDAsString(record);
    if (isIncomplete(record, id.Uid)) throw RuntimeFailure(outOfMemory);
    id.Word5 = static_cast<Long>(record.word5);
    return id;
}

}  // namespace

void SessionItems::clear() {
    items_.clear();
    listed_ = 0;
    byUid_.clear();
    newByTemporaryId_.clear();
    byPosition_.clear();
}

bool SessionItems::takeListed(const ItemIdListRecord& list) {
    if (list.count == 0) return true;
    return noFailure == attempt([&] {
               const auto records = library::copyBlock<ItemIdRecord>(list.items, list.count);
               items_.reserve(items_.size() + records.size());
               byUid_.reserve(items_.size() + records.size());
               for (const ItemIdRecord& record : records)
                   add(fromLibrary(record));
               listed_ = items_.size();
           });
}

ItemId& SessionItems::add(ItemId id) {
    items_.push_back(std::move(id));
    ItemId& added = items_.back();
    const std::size_t place = items_.size() - 1;
    if (!added.Uid.empty()) byUid_.emplace(added.Uid, place);
    if (added.Position != 0) byPosition_.emplace(added.Position, place);
    return added;
}

void SessionItems::nameLast(Long temporaryId) {
    const std::size_t place = items_.size() - 1;
    newByTemporaryId_[decimalText(temporaryId)] = place;
    byPosition_.emplace(temporaryId, place);
}

ItemId* SessionItems::findUid(const Text& uid) {
    const auto found = byUid_.find(uid);
    return found == byUid_.end() ? nullptr : &items_[found->second];
}

ItemId* SessionItems::findNew(const Text& temporaryId) {
    const auto found = newByTemporaryId_.find(temporaryId);
    return found == newByTemporaryId_.end() ? nullptr : &items_[found->second];
}

ItemId* SessionItems::findPosition(Long position) {
    const auto found = byPosition_.find(position);
    return position == 0 || found == byPosition_.end() ? nullptr : &items_[found->second];
}

void tellWritten(const ItemIdListRecord& list, Long extra, TextArray& tempids, TextArray& uids) {
    constexpr library::Word mostUnread = 10000;
    attempt([&] {
        std::vector<ItemIdRecord> records;
        const FailureNumber unread =
            attempt([&] { records = library::copyBlock<ItemIdRecord>(list.items, list.count); });
        if (unread != noFailure && list.count > mostUnread) throw RuntimeFailure(unread);
        records.resize(list.count + static_cast<std::size_t>(extra));
        const Long last = static_cast<Long>(records.size()) - 1;
        tempids.resize(last);
        uids.resize(last);
        for (Long i = 0; i <= last; ++i) {
            const ItemIdRecord& record = records[static_cast<std::size_t>(i)];
            attempt([&] { tempids.at(i) = decimalText(static_cast<Long>(record.position)); });
            attempt([&] { uids.at(i) = GetUIDAsString(record); });
        }
    });
}

}  // namespace ovno2::Content
