// Content access, the writing half. Changes are checked and queued in their operation; the commit carries all
// of them out at once or none.
#include <algorithm>

#include "simulator/calls/content_functions.h"
#include "simulator/calls/content_operation.h"
#include "simulator/calls/item_records.h"
#include "simulator/images/contacts_image.h"

namespace ovno2::simulator::content {
namespace {

const Contact& requireContact(const ContentOperation& operation, const std::string& uid) {
    const Contact* const contact = operation.phone->contacts->find(uid);
    if (contact == nullptr || operation.phone->vanished.contains(uid)) throw Refused{status::itemNotFound};
    return *contact;
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
        if (!atRoot && operation.phone->contacts->root.find(words[1]) == nullptr)
            return status::folderNotFound;
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
        ContactRecord record;
        std::memcpy(&record, item, sizeof record);
        if (record.size != sizeof record) return status::wrongRecordSize;
        ContentChange change;
        change.uid = uidOf(world, id);
        const Contact* const previous = change.uid.empty() ? nullptr : &requireContact(operation, change.uid);
        change.contact = contactFromItem(world, *operation.phone, record, previous);
        change.contact->folderId = id->folderId;
        const auto queued = operation.findNew(id->position);
        if (change.uid.empty() && queued != operation.changes.end()) {
            queued->contact = std::move(change.contact);
            return statusOk;
        }
        if (change.uid.empty()) {
            change.temporaryId = ++operation.lastTemporaryId;
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
        change.uid = uidOf(world, id);
        if (change.uid.empty()) {
            const auto queued = operation.findNew(id->position);
            if (queued == operation.changes.end()) return status::itemNotFound;
            operation.changes.erase(queued);
            return statusOk;
        }
        requireContact(operation, change.uid);
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
            refreshContacts(phone);
            std::vector<CreatedContact> created;
            std::shared_ptr<ContactStore> next = afterChanges(*phone.contacts, operation.changes, created);
            char* block = nullptr;
            if (written != nullptr && !created.empty()) {
                std::size_t uidBytes = 0;
                for (const CreatedContact& contact : created)
                    uidBytes += contact.uid.size();
                block = takeMemory(world, created.size() * sizeof(ItemIdRecord) + uidBytes, BlockKind::held);
                world.sessions.findAny(operation.parent)->held.push_back(block);
            }
            if (!operation.changes.empty()) replaceContacts(phone, std::move(next));
            operation.changes.clear();
            if (written == nullptr) return statusOk;
            *written = {sizeof *written, static_cast<Word>(block == nullptr ? 0 : created.size()),
                        addressOf(block)};
            char* uid = block + created.size() * sizeof(ItemIdRecord);
            for (std::size_t i = 0; i < created.size(); ++i) {
                const CreatedContact& contact = created[i];
                const ItemIdRecord id{sizeof id,           contact.folderId,
                                      contact.temporaryId, static_cast<Word>(contact.uid.size()),
                                      addressOf(uid),      0};
                std::memcpy(block + i * sizeof id, &id, sizeof id);
                contact.uid.copy(uid, contact.uid.size());
                uid += contact.uid.size();
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
