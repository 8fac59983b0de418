// Content access, the reading half: connections, folders, identifier lists, operations and items.
#include <algorithm>

#include "simulator/calls/content_functions.h"
#include "simulator/calls/content_operation.h"
#include "simulator/calls/item_form.h"
#include "simulator/calls/memory_calls.h"
#include "simulator/calls/record_builder.h"
#include "simulator/images/content_image.h"

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

const ContentStore& storeOf(const ContentConnection& connection) {
    return *connection.phone->content(connection.content).store;
}

// The lists of an item that goes back; nothing when it is of no known kind. A connection that is gone leaves
// only the record's size to tell the kind by.
std::optional<RecordParts> partsToFree(const World& world, Handle connection, const void* item) {
    RecordSizes sizes;
    if (const auto* const session = world.sessions.find<ContentConnection>(connection)) {
        sizes = world.sizesOf(*session->phone);
        const ItemForm* const form = formOf(session->content);
        return form == nullptr ? std::nullopt : std::optional(form->parts(item, sizes));
    }
    Word size = 0;
    std::memcpy(&size, item, sizeof size);
    if (size == shortCalendarRecord) sizes.calendar = size;
    for (const ItemForm* const form : {&contactForm, &calendarForm, &messageForm, &noteForm}) {
        if (form->bytes(sizes) == size) return form->parts(item, sizes);
    }
    return std::nullopt;
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
        const auto* const kind =
            std::ranges::find_if(contentKinds, [=](const auto& one) { return one.target == target; });
        if (kind == contentKinds.end()) return status::notSupported;
        {
            const system::FolderLock lock = lockImage(phone->image);
            refreshContent(*phone, kind->kind);
        }
        if (phone->content(kind->kind).store == nullptr) return status::notSupported;
        *connection = world.sessions.open(std::make_unique<ContentConnection>(std::move(phone), kind->kind));
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
        const ContentStore& store = storeOf(session);
        if (store.root.find(folderId) == nullptr) return status::folderNotFound;
        std::vector<const ContentItem*> items;
        std::size_t uidBytes = 0;
        for (const auto& item : store.items) {
            if (item->folderId != folderId) continue;
            items.push_back(item.get());
            uidBytes += item->uid.size();
        }
        ItemIdListRecord answer{sizeof answer, static_cast<Word>(items.size()), 0};
        if (!items.empty()) {
            char* const block =
                takeMemory(world, items.size() * sizeof(ItemIdRecord) + uidBytes, BlockKind::held);
            session.held.push_back(block);
            char* uid = block + items.size() * sizeof(ItemIdRecord);
            for (std::size_t i = 0; i < items.size(); ++i) {
                const ContentItem& item = *items[i];
                const ItemIdRecord id{sizeof id,      folderId,
                                      item.position,  static_cast<Word>(item.uid.size()),
                                      addressOf(uid), 0};
                std::memcpy(block + i * sizeof id, &id, sizeof id);
                item.uid.copy(uid, item.uid.size());
                uid += item.uid.size();
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
            *operation = world.sessions.open(std::make_unique<ContentOperation>(session, connection));
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
        const ItemForm& form = formOf(session);
        const Phone& phone = *session.phone;
        const RecordSizes sizes = world.sizesOf(phone);
        Word size = 0;
        std::memcpy(&size, item, sizeof size);
        if (size != form.bytes(sizes)) return status::wrongRecordSize;
        const std::string uid = uidOf(world, id, form, sizes);
        const Content& content = phone.content(session.content);
        const ContentItem* found = nullptr;
        if (const auto queued = session.findNew(id->position); uid.empty() && queued != session.changes.end())
            found = queued->item.get();
        else if (!content.vanished.contains(uid))
            found = content.store->find(uid, session.nextRead);
        if (found == nullptr) return status::itemNotFound;
        handOut(world, phone, sizes, form, *found, static_cast<char*>(item));
        return statusOk;
    });
}

Status freeItem(Handle connection, void* item) {
    const auto arguments = [&](ArgumentText& text) { text.number("handle", connection); };
    return serve({"CAFreeItemData", connection, /*releases=*/true}, arguments, [&](World& world) -> Status {
        requireGiven(item);
        const std::optional<RecordParts> parts = partsToFree(world, connection, item);
        if (!parts) return status::invalidHandle;
        const LowMemory::Block block = itemBlock(world, *parts);
        const bool empty =
            std::ranges::all_of(parts->all(), [](const RecordPart& part) { return part.address == 0; });
        if (!block)
            return empty ? statusOk : misused(world, "CAFreeItemData", "no item that is handed out", item);
        releaseBlock(world, block.start);
        return statusOk;
    });
}

}  // namespace ovno2::simulator::content
