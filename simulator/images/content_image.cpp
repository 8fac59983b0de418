// A store's file: what stands around its items, and how one takes the place of another.
#include "simulator/images/content_image.h"

#include <algorithm>
#include <system_error>

#include "simulator/base/text.h"
#include "simulator/images/contact_pictures.h"
#include "simulator/images/item_image.h"
#include "simulator/images/json_text.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

std::unique_ptr<ItemImage> formOf(ContentKind kind, const std::filesystem::path& image) {
    switch (kind) {
        case ContentKind::contacts:
            return contactsForm(image);
        case ContentKind::calendar:
            return calendarForm();
        case ContentKind::notes:
            return notesForm();
        case ContentKind::messages:
        case ContentKind::otherMessages:
            return messagesForm();
        case ContentKind::countedItems:
            break;
    }
    return countedItemsForm();
}

std::filesystem::path fileOf(const Phone& phone, ContentKind kind) {
    return phone.image / (std::string(infoOf(kind).name) + ".json");
}

class StoreReader {
  public:
    StoreReader(ContentKind kind, const std::filesystem::path& image)
        : form(formOf(kind, image)), list(infoOf(kind).list), store(std::make_shared<ContentStore>()) {
        store->numbered = form->isNumbered();
    }

    // Room for about so many.
    void expectItems(std::size_t count) {
        store->items.reserve(count);
        store->byUid.reserve(count);
    }

    void readItem(const JsonNode& node) {
        const auto place = static_cast<Word>(store->items.size() + 1);
        std::shared_ptr<ContentItem> item = form->read(node, store->numbered ? place : 0);
        if (item->uid.empty()) node.fail("a member \"uid\"");
        if (!store->add(std::move(item))) node.member("uid").fail("a uid that no other item has");
    }

    // Everything but the items that have been read already.
    std::shared_ptr<ContentStore> finish(const JsonNode& root) {
        root.expectFormat();
        root.forEachMember([&](std::string_view name, const JsonNode& value) {
            if (name == "folder") {
                readFolder(value, store->root);
            } else if (name == "capacity") {
                store->capacity = readId(value);
            } else if (name == "nextUid") {
                store->nextUid = readId(value);
            } else if (name == list) {
                value.forEachElement([&](const JsonNode& element, std::size_t) { readItem(element); });
            } else if (name != "format") {
                value.fail("no member of this name");
            }
        });
        if (folderIds.empty()) root.fail("a member \"folder\"");
        for (std::size_t i = 0; i < store->items.size(); ++i) {
            const ContentItem& read = *store->items[i];
            if (read.folderId == 0) {
                const_cast<ContentItem&>(read).folderId = store->root.id;  // still ours alone
            } else if (store->root.find(read.folderId) == nullptr) {
                root.failBelow(list + "/" + std::to_string(i) + "/folderId", "the id of a folder");
            }
        }
        return std::move(store);
    }

  private:
    void readFolder(const JsonNode& node, ContentFolder& folder) {
        node.expectMembers({"id", "name", "path", "subfolders"});
        const JsonNode id = node.member("id");
        folder.id = readId(id);
        if (std::find(folderIds.begin(), folderIds.end(), folder.id) != folderIds.end()) {
            id.fail("an id that no other folder has");
        }
        folderIds.push_back(folder.id);
        if (const auto name = node.optionalMember("name")) folder.name = name->text();
        if (const auto path = node.optionalMember("path")) folder.path = path->text();
        if (const auto subfolders = node.optionalMember("subfolders")) {
            subfolders->forEachElement([&](const JsonNode& subfolder, std::size_t) {
                readFolder(subfolder, folder.subfolders.emplace_back());
            });
        }
    }

    const std::unique_ptr<ItemImage> form;
    const std::string list;
    std::shared_ptr<ContentStore> store;
    std::vector<Word> folderIds;
};

std::shared_ptr<ContentStore> readFile(ContentKind kind, const std::filesystem::path& file,
                                       const std::filesystem::path& image) {
    constexpr std::uintmax_t usualBytes = 512;  // of an item
    JsonText text(file);
    StoreReader reader(kind, image);
    std::error_code unknown;
    const std::uintmax_t bytes = std::filesystem::file_size(file, unknown);
    if (!unknown) reader.expectItems(static_cast<std::size_t>(bytes / usualBytes));
    return reader.finish(
        text.parseStreaming(infoOf(kind).list, [&](const JsonNode& item) { reader.readItem(item); }));
}

void writeFolder(JsonWriter& writer, const ContentFolder& folder) {
    writer.StartObject();
    writer.member("id", folder.id);
    writer.member("name", folder.name);
    writer.member("path", folder.path);
    writer.Key("subfolders");
    writer.StartArray();
    for (const ContentFolder& subfolder : folder.subfolders)
        writeFolder(writer, subfolder);
    writer.EndArray();
    writer.EndObject();
}

// One line an item, so that changes of a store show line by line.
void writeStore(JsonWriter& writer, ContentKind kind, const ContentStore& store) {
    const std::unique_ptr<ItemImage> form = formOf(kind, {});
    writer.layout("{\n\"format\": 1,\n\"folder\": ");
    writeFolder(writer, store.root);
    if (store.capacity != 0) writer.layout(",\n\"capacity\": " + std::to_string(store.capacity));
    if (store.nextUid != 0) writer.layout(",\n\"nextUid\": " + std::to_string(store.nextUid));
    writer.layout(",\n\"" + std::string(infoOf(kind).list) + "\": [");
    const char* separator = "\n";
    for (const auto& item : store.items) {
        writer.layout(separator);
        writer.layout("{\"uid\": \"" + toHex(item->uid) + "\"");
        if (store.numbered || item->position != 0)
            writer.layout(", \"position\": " + std::to_string(item->position));
        if (item->folderId != store.root.id)
            writer.layout(", \"folderId\": " + std::to_string(item->folderId));
        form->write(writer, *item);
        writer.layout("}");
        separator = ",\n";
    }
    writer.layout("\n]\n}\n");
}

}  // namespace

void readContentImage(Phone& phone, ContentKind kind) {
    const std::filesystem::path file = fileOf(phone, kind);
    std::error_code failed;
    if (!std::filesystem::exists(file, failed)) return;
    Content& content = phone.content(kind);
    content.stamp = system::stampOf(file);
    content.store = readFile(kind, file, phone.image);
}

void refreshContent(Phone& phone, ContentKind kind) {
    if (phone.image.empty()) return;
    const system::FileStamp stamp = system::stampOf(fileOf(phone, kind));
    if (stamp != system::FileStamp() && stamp != phone.content(kind).stamp) readContentImage(phone, kind);
}

void replaceContent(Phone& phone, ContentKind kind, std::shared_ptr<ContentStore> store) {
    Content& content = phone.content(kind);
    if (!phone.image.empty()) {
        const bool hasPictures = kind == ContentKind::contacts;
        const std::filesystem::path file = fileOf(phone, kind);
        PictureFiles written;
        try {
            if (hasPictures) writeNewPictures(phone.image, *store, written);
            JsonWriter writer;
            writeStore(writer, kind, *store);
            IncomingFile(phone.image, writer.text()).moveTo(file);
        } catch (const std::system_error&) {
            removePictures(phone.image, written, {});
            throw;
        }
        if (hasPictures) removePictures(phone.image, picturesOf(*content.store), picturesOf(*store));
        content.stamp = system::stampOf(file);
    }
    content.store = std::move(store);
}

std::shared_ptr<ContentStore> readContent(ContentKind kind, const JsonNode& root,
                                          const std::filesystem::path& image) {
    return StoreReader(kind, image).finish(root);
}

}  // namespace ovno2::simulator
