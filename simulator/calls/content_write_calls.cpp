// Content access, the writing half. Changes are checked and queued in their operation; the commit carries all
// of them out at once or none.
#include <algorithm>

#include "simulator/calls/caller_memory.h"
#include "simulator/calls/content_functions.h"
#include "simulator/calls/content_operation.h"
#include "simulator/images/content_image.h"

namespace ovno2::simulator::content {
namespace {

const ContentItem& requireItem(const ContentOperation& operation, const std::string& uid) {
    const Content& content = operation.phone->content(operation.content);
    const ContentItem* const item = content.store->find(uid);
    if (item == nullptr || content.vanished.contains(uid)) throw Refused{status::itemNotFound};
    return *item;
}

// What a new item is known by until the commit. Contacts are numbered for themselves; elsewhere no item that
// the phone lists has the number.
Word nextTemporaryId(ContentOperation& operation) {
    const ContentStore& store = *operation.phone->content(operation.content).store;
    if (operation.lastTemporaryId == 0 && !store.numbered) operation.lastTemporaryId = store.lastPosition();
    return ++operation.lastTemporaryId;
}

Status changeFolder(const char* call, ContentChange::Kind kind, Handle handle, const void* folderRecord,
                    const char16_t* name) {
    Word words[2] = {0, 0};  // size and folder id
    const auto arguments = [&](ArgumentText& text) {
        if (folderRecord != nullptr) std::memcpy(words, folderRecord, sizeof words);
        text.number("handle", handle).number("folder", words[1]);
        if (kind != ContentChange::Kind::deleteFolder) text.text(name);
    };
    return serve({call, handle}, arguments, [&](World& world) -> Status {
        auto& operation = require<ContentOperation>(world, handle);
        requireGiven(folderRecord);
        requireStarted(world, Group::content);
        std::memcpy(words, folderRecord, sizeof words);
        if (words[0] != 32 && words[0] != 48) return status::wrongRecordSize;
        ContentChange change;
        change.kind = kind;
        change.folderId = words[1];
        if (kind != ContentChange::Kind::deleteFolder) {
            requireGiven(name);
            change.name = name;
            if (change.name.empty() || change.name.find(u'\\') != std::u16string::npos)
                return status::invalidName;
        }
        const bool atRoot = kind == ContentChange::Kind::createFolder && words[1] == 0;
        const ContentStore& store = *operation.phone->content(operation.content).store;
        if (!atRoot && store.root.find(words[1]) == nullptr) return status::folderNotFound;
        operation.changes.push_back(std::move(change));
        return statusOk;
    });
}

}  // namespace

Status writeItem(Handle handle, ItemIdRecord* id, const void* item) {
    const auto arguments = [&](ArgumentText& text) { text.number("handle", handle).item(id); };
    return serve({"CAWriteItem", handle}, arguments, [&](World& world) -> Status {
        auto& operation = require<ContentOperation>(world, handle);
        requireGiven(item);
        requireStarted(world, Group::content);
        const ItemForm& form = formOf(operation);
        const RecordSizes sizes = world.sizesOf(*operation.phone);
        Word size = 0;
        std::memcpy(&size, item, sizeof size);
        if (!form.takesRecord(size, sizes)) return status::wrongRecordSize;
        ContentChange change;
        change.uid = uidOf(world, id, form, sizes);
        const ContentItem* const previous =
            change.uid.empty() ? nullptr : &requireItem(operation, change.uid);
        change.item = form.read(world, *operation.phone, item, previous);
        change.item->folderId = id->folderId;
        const auto queued = operation.findNew(id->position);
        if (change.uid.empty() && queued != operation.changes.end()) {
            queued->item = std::move(change.item);
            return statusOk;
        }
        if (change.uid.empty()) {
            change.temporaryId = nextTemporaryId(operation);
            id->position = change.temporaryId;
        }
        operation.changes.push_back(std::move(change));
        return statusOk;
    });
}

Status deleteItem(Handle handle, const ItemIdRecord* id) {
    const auto arguments = [&](ArgumentText& text) { text.number("handle", handle).item(id); };
    return serve({"CADeleteItem", handle}, arguments, [&](World& world) -> Status {
        auto& operation = require<ContentOperation>(world, handle);
        requireStarted(world, Group::content);
        ContentChange change;
        change.kind = ContentChange::Kind::remove;
        change.uid = uidOf(world, id, formOf(operation), world.sizesOf(*operation.phone));
        if (change.uid.empty()) {
            const auto queued = operation.findNew(id->position);
            if (queued == operation.changes.end()) return status::itemNotFound;
            operation.changes.erase(queued);
            return statusOk;
        }
        requireItem(operation, change.uid);
        operation.changes.push_back(std::move(change));
        return statusOk;
    });
}

Status commitOperations(Handle handle, ItemIdListRecord* written) {
    return serve(
        {"CACommitOperations", handle}, [&](ArgumentText& text) { text.number("handle", handle); },
        [&](World& world) -> Status {
            auto& operation = require<ContentOperation>(world, handle);
            requireStarted(world, Group::content);
            Phone& phone = *operation.phone;
            const system::FolderLock lock = lockImage(phone.image);
            refreshContent(phone, operation.content);
            const ContentStore& before = *phone.content(operation.content).store;
            std::vector<CreatedItem> created;
            std::shared_ptr<ContentStore> next = afterChanges(before, operation.changes, created);
            char* block = nullptr;
            if (written != nullptr && !created.empty()) {
                std::size_t uidBytes = 0;
                for (const CreatedItem& item : created)
                    uidBytes += item.uid.size();
                block = takeMemory(world, created.size() * sizeof(ItemIdRecord) + uidBytes, BlockKind::held);
                world.sessions.findAny(operation.parent)->held.push_back(block);
            }
            if (!operation.changes.empty()) replaceContent(phone, operation.content, std::move(next));
            operation.changes.clear();
            if (written == nullptr) return statusOk;
            *written = {sizeof *written, static_cast<Word>(block == nullptr ? 0 : created.size()),
                        addressOf(block)};
            char* uid = block + created.size() * sizeof(ItemIdRecord);
            for (std::size_t i = 0; i < created.size(); ++i) {
                const CreatedItem& item = created[i];
                const ItemIdRecord id{sizeof id,        item.folderId,
                                      item.temporaryId, static_cast<Word>(item.uid.size()),
                                      addressOf(uid),   0};
                std::memcpy(block + i * sizeof id, &id, sizeof id);
                item.uid.copy(uid, item.uid.size());
                uid += item.uid.size();
            }
            return statusOk;
        });
}

Status createFolder(Handle operation, void* folderRecord, const char16_t* name) {
    return changeFolder("CACreateFolder", ContentChange::Kind::createFolder, operation, folderRecord, name);
}

Status renameFolder(Handle operation, void* folderRecord, const char16_t* name) {
    return changeFolder("CARenameFolder", ContentChange::Kind::renameFolder, operation, folderRecord, name);
}

Status deleteFolder(Handle operation, void* folderRecord) {
    return changeFolder("CADeleteFolder", ContentChange::Kind::deleteFolder, operation, folderRecord,
                        nullptr);
}

}  // namespace ovno2::simulator::content

namespace ovno2::simulator {

std::string uidOf(World& world, const library::ItemIdRecord* id, const ItemForm& form,
                  const RecordSizes& sizes) {
    constexpr std::size_t mostUidBytes = 2048;
    requireGiven(id);
    if (!form.takesId(id->size, sizes)) throw Refused{status::wrongRecordSize};
    if (id->uidLength > mostUidBytes) throw Refused{status::invalidParameter};
    std::string uid(id->uidLength, '\0');
    if (!uid.empty() && !copyFrom(world, id->uid, uid.size(), uid.data())) {
        throw Refused{status::invalidParameter};
    }
    return uid;
}

}  // namespace ovno2::simulator
