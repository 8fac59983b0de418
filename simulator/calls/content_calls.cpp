// Content access, the reading half: connections, folders, identifier lists, operations and items.
#include <algorithm>

#include "simulator/calls/content_functions.h"
#include "simulator/calls/content_operation.h"
#include "simulator/calls/item_records.h"
#include "simulator/calls/memory_calls.h"
#include "simulator/calls/record_builder.h"
#include "simulator/images/contacts_image.h"

namespace ovno2::simulator::content {
namespace {

constexpr std::size_t folderWords = sizeof(FolderInfoRecord) / sizeof(Word);
constexpr std::size_t idWords = sizeof(ItemIdRecord) / sizeof(Word);

void fillFolder(RecordBuilder& builder, std::size_t record, const ContentFolder& folder, Word recordBytes) {
    builder.setWord(record, 0, recordBytes);
    builder.setWord(record, 1, folder.id);
    builder.setText(record, 3, folder.name);
    builder.setText(record, 4, folder.path);
    builder.setWord(record, 5, static_cast<Word>(folder.subfolders.size()));
    if (folder.subfolders.empty()) return;
    const std::size_t list = builder.addWords(folder.subfolders.size() * recordBytes / sizeof(Word));
    builder.setPointer(record, 6, list);
    for (std::size_t i = 0; i < folder.subfolders.size(); ++i) {
        fillFolder(builder, list + i * recordBytes, folder.subfolders[i], recordBytes);
    }
}

const ContactStore& storeOf(const Session& session) {
    return *session.phone->contacts;
}

}  // namespace

Word version() {
    return serveValue<Word>(
        {"CAGetAPIVersion"}, [](ArgumentText&) {},
        [](World& world) { return world.versions().contentAccess; });
}

Status initialize(Word version) {
    return serve(
        {"CAAPI_Initialize"}, [&](ArgumentText& text) { text.number("version", version); },
        [](World& world) {
            world.started(Group::content) = 1;
            return statusOk;
        });
}

Status terminate() {
    return serve(
        {"CAAPI_Terminate", 0, /*releases=*/true}, [](ArgumentText&) {},
        [](World& world) -> Status {
            unsigned& started = world.started(Group::content);
            if (started == 0) return status::notStarted;
            started = 0;
            return statusOk;
        });
}

Status openConnection(const char16_t* serial, Word* medium, Word target, Handle* connection) {
    const auto arguments = [&](ArgumentText& text) {
        text.text(serial).number("medium", medium == nullptr ? 0 : *medium).number("target", target);
    };
    return serve({"DAOpenCA"}, arguments, [&](World& world) -> Status {
        requireGiven(medium, connection);
        requireStarted(world, Group::content);
        std::shared_ptr<Phone> phone = reachPhone(world, serial, *medium);
        if (phone->contentRefused != statusOk) return phone->contentRefused;
        if (target != signature::targetContacts || phone->contacts == nullptr) return status::notSupported;
        {
            const system::FolderLock lock = lockImage(phone->image);
            refreshContacts(*phone);
        }
        *connection = world.sessions.open(std::make_unique<ContentConnection>(std::move(phone), target));
        return statusOk;
    });
}

Status closeConnection(Handle connection) {
    return serve(
        {"DACloseCA", connection, /*releases=*/true},
        [&](ArgumentText& text) { text.number("handle", connection); },
        [&](World& world) { return closeSession<ContentConnection>(world, connection); });
}

Status folderInfo(Handle connection, void* folderRecord) {
    const auto arguments = [&](ArgumentText& text) {
        Word offered = 0;
        if (folderRecord != nullptr) std::memcpy(&offered, folderRecord, sizeof offered);
        text.number("handle", connection).number("size", offered);
    };
    return serve({"CAGetFolderInfo", connection}, arguments, [&](World& world) -> Status {
        auto& session = require<ContentConnection>(world, connection);
        requireGiven(folderRecord);
        requireStarted(world, Group::content);
        Word offered = 0;
        std::memcpy(&offered, folderRecord, sizeof offered);
        const Word recordBytes = world.sizesOf(*session.phone).folder;
        if (offered != recordBytes) return status::wrongRecordSize;
        RecordBuilder builder;
        const std::size_t root = builder.addWords(recordBytes / sizeof(Word));
        fillFolder(builder, root, storeOf(session).root, recordBytes);
        char* const block = builder.finish(world, BlockKind::held);
        session.held.push_back(block);
        if (world.plan.poking()) {
            const auto pokes = world.plan.pokesOf("CAGetFolderInfo", nullptr);
            const FolderInfoRecord* const record = reinterpret_cast<FolderInfoRecord*>(block);
            pokeRecords(world, pokes, "subfolder", atAddress<void>(record->subfolders),
                        record->subfolderCount, folderWords, recordBytes);
            pokeRecords(world, pokes, "folder", block, 1, folderWords, 0);
        }
        std::memcpy(folderRecord, block, recordBytes);
        return statusOk;
    });
}

Status itemIds(Handle connection, Word folderId, ItemIdListRecord* list) {
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", connection).number("folder", folderId);
    };
    return serve({"CAGetIDList", connection}, arguments, [&](World& world) -> Status {
        auto& session = require<ContentConnection>(world, connection);
        requireGiven(list);
        requireStarted(world, Group::content);
        if (list->size != sizeof *list) return status::wrongRecordSize;
        const ContactStore& store = storeOf(session);
        if (store.root.find(folderId) == nullptr) return status::folderNotFound;
        std::vector<const Contact*> contacts;
        std::size_t uidBytes = 0;
        for (const auto& contact : store.contacts) {
            if (contact->folderId != folderId) continue;
            contacts.push_back(contact.get());
            uidBytes += contact->uid.size();
        }
        ItemIdListRecord answer{sizeof answer, static_cast<Word>(contacts.size()), 0};
        if (!contacts.empty()) {
            char* const block =
                takeMemory(world, contacts.size() * sizeof(ItemIdRecord) + uidBytes, BlockKind::held);
            session.held.push_back(block);
            char* uid = block + contacts.size() * sizeof(ItemIdRecord);
            for (std::size_t i = 0; i < contacts.size(); ++i) {
                const Contact& contact = *contacts[i];
                const ItemIdRecord id{sizeof id,        folderId,
                                      contact.position, static_cast<Word>(contact.uid.size()),
                                      addressOf(uid),   0};
                std::memcpy(block + i * sizeof id, &id, sizeof id);
                contact.uid.copy(uid, contact.uid.size());
                uid += contact.uid.size();
            }
            answer.items = addressOf(block);
        }
        if (world.plan.poking()) {
            const auto pokes = world.plan.pokesOf("CAGetIDList", nullptr);
            pokeRecords(world, pokes, "id", atAddress<void>(answer.items), answer.count, idWords,
                        sizeof(ItemIdRecord));
            pokeRecords(world, pokes, "list", &answer, 1, sizeof answer / sizeof(Word), 0);
        }
        *list = answer;
        return statusOk;
    });
}

Status beginOperation(Handle connection, Handle* operation) {
    return serve(
        {"CABeginOperation", connection}, [&](ArgumentText& text) { text.number("handle", connection); },
        [&](World& world) {
            auto& session = require<ContentConnection>(world, connection);
            requireGiven(operation);
            requireStarted(world, Group::content);
            *operation = world.sessions.open(std::make_unique<ContentOperation>(session.phone, connection));
            return statusOk;
        });
}

Status endOperation(Handle operation) {
    return serve(
        {"CAEndOperation", operation, /*releases=*/true},
        [&](ArgumentText& text) { text.number("handle", operation); },
        [&](World& world) -> Status {
            auto* const session = world.sessions.find<ContentOperation>(operation);
            if (session == nullptr) return status::invalidHandle;
            const Status broken = session->broken;
            world.sessions.close(operation);
            return broken;
        });
}

Status readItem(Handle operation, const ItemIdRecord* id, void* item) {
    const auto arguments = [&](ArgumentText& text) { text.number("handle", operation).item(id); };
    return serve({"CAReadItem", operation}, arguments, [&](World& world) -> Status {
        auto& session = require<ContentOperation>(world, operation);
        requireGiven(item);
        requireStarted(world, Group::content);
        Word size = 0;
        std::memcpy(&size, item, sizeof size);
        if (size != sizeof(ContactRecord)) return status::wrongRecordSize;
        const std::string uid = uidOf(world, id);
        const Phone& phone = *session.phone;
        const Contact* contact = nullptr;
        if (const auto queued = session.findNew(id->position); uid.empty() && queued != session.changes.end())
            contact = queued->contact.get();
        else if (!phone.vanished.contains(uid))
            contact = storeOf(session).find(uid, session.nextRead);
        if (contact == nullptr) return status::itemNotFound;
        ContactRecord record;
        buildItem(world, phone, *contact, record);
        std::memcpy(item, &record, sizeof record);
        return statusOk;
    });
}

Status freeItem(Handle connection, void* item) {
    const auto arguments = [&](ArgumentText& text) { text.number("handle", connection); };
    return serve({"CAFreeItemData", connection, /*releases=*/true}, arguments, [&](World& world) -> Status {
        requireGiven(item);
        ContactRecord record;
        std::memcpy(&record, item, sizeof record);
        const LowMemory::Block block = itemBlock(world, record);
        const ItemPair pairs[] = {record.a, record.b, record.c, record.d};
        const bool empty = std::all_of(std::begin(pairs), std::end(pairs),
                                       [](const ItemPair& pair) { return pair.items == 0; });
        if (!block)
            return empty ? statusOk : misused(world, "CAFreeItemData", "no item that is handed out", item);
        releaseBlock(world, block.start);
        return statusOk;
    });
}

}  // namespace ovno2::simulator::content
