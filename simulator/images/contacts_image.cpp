// contacts.json and the pictures as files of an image.
#include "simulator/images/contacts_image.h"

#include <algorithm>
#include <set>
#include <system_error>

#include "simulator/base/text.h"
#include "simulator/images/date_text.h"
#include "simulator/images/json_node.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

nlohmann::ordered_json folderJson(const ContentFolder& folder) {
    nlohmann::ordered_json subfolders = nlohmann::ordered_json::array();
    for (const ContentFolder& subfolder : folder.subfolders)
        subfolders.push_back(folderJson(subfolder));
    return {{"id", folder.id},
            {"name", toUtf8(folder.name)},
            {"path", toUtf8(folder.path)},
            {"subfolders", std::move(subfolders)}};
}

nlohmann::ordered_json textOrNull(const Contact& contact, Contact::TextPlace place) {
    if (place == Contact::none) return nullptr;
    return toUtf8(contact.textAt(place));
}

nlohmann::ordered_json fieldJson(const Contact& contact, const Contact::Field& field) {
    nlohmann::ordered_json node = {{"id", field.id}};
    switch (field.kind) {
        case Contact::Kind::text:
            node["text"] = textOrNull(contact, field.value);
            break;
        case Contact::Kind::number:
            node["number"] = field.value;
            break;
        case Contact::Kind::date: {
            const library::DateRecord& date = contact.dates[field.value].record;
            node["date"] = dateText(date);
            if (date.firstOffset != 0 || date.secondOffset != 0) {
                node["offsets"] = {date.firstOffset, date.secondOffset};
            }
            break;
        }
        case Contact::Kind::picture: {
            const Contact::Picture& picture = contact.pictures[field.value];
            const std::u8string file = picture.file.generic_u8string();
            node["picture"] = {{"format", textOrNull(contact, picture.format)},
                               {"file", std::string(file.begin(), file.end())}};
            break;
        }
        case Contact::Kind::address: {
            nlohmann::ordered_json words = nlohmann::ordered_json::array();
            for (const Contact::TextPlace place : contact.addresses[field.value]) {
                words.push_back(textOrNull(contact, place));
            }
            node["address"] = std::move(words);
            break;
        }
    }
    if (field.pair != defaultPair(field.id))
        node["pair"] = std::string(1, static_cast<char>('a' + field.pair));
    if (field.group != field.pair + 1U) node["group"] = field.group;
    if (field.reserved != 0) node["reserved"] = field.reserved;
    return node;
}

using PictureFiles = std::set<std::filesystem::path>;

PictureFiles picturesOf(const ContactStore& store) {
    PictureFiles files;
    for (const auto& contact : store.contacts) {
        for (const Contact::Picture& picture : contact->pictures) {
            if (!picture.file.empty()) files.insert(picture.file);
        }
    }
    return files;
}

// The format as a file's extension: letters and digits alone, "jpg" when there are none.
std::string extensionOf(const Contact& contact, const Contact::Picture& picture) {
    std::string extension;
    if (picture.format != Contact::none) {
        for (const char letter : toUtf8(contact.textAt(picture.format))) {
            const bool upper = letter >= 'A' && letter <= 'Z';
            const bool plain = (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
            if (upper || plain) extension += upper ? static_cast<char>(letter - 'A' + 'a') : letter;
        }
    }
    return extension.empty() || extension == "jpeg" ? "jpg" : extension;
}

// Puts the picture's bytes into a file of the image that is not there yet; its name inside the image.
std::filesystem::path writePicture(const std::filesystem::path& image, const Contact& contact,
                                   const Contact::Picture& picture) {
    const std::filesystem::path folder = image / "pictures";
    std::filesystem::create_directories(folder);
    std::filesystem::path name;
    for (int number = 0; name.empty() || std::filesystem::exists(folder / name); ++number) {
        const std::string suffix = number == 0 ? "" : "-" + std::to_string(number);
        name = toHex(contact.uid) + suffix + "." + extensionOf(contact, picture);
    }
    const std::filesystem::path incoming = image / ".incoming-picture";
    system::writeDurably(incoming, picture.bytes);
    system::replaceDurably(incoming, folder / name);
    return std::filesystem::path("pictures") / name;
}

// Moves the bytes of pictures that are not in files yet into the image; `written` are the names of all of
// them.
void writeNewPictures(const std::filesystem::path& image, ContactStore& store, PictureFiles& written) {
    for (auto& contact : store.contacts) {
        const bool inFiles = std::all_of(contact->pictures.begin(), contact->pictures.end(),
                                         [](const Contact::Picture& one) { return !one.file.empty(); });
        if (inFiles) continue;
        auto changed = std::make_shared<Contact>(*contact);
        for (Contact::Picture& picture : changed->pictures) {
            if (!picture.file.empty()) continue;
            picture.file = writePicture(image, *changed, picture);
            picture.bytes.clear();
            written.insert(picture.file);
        }
        contact = std::move(changed);
    }
}

void removeFiles(const std::filesystem::path& image, const PictureFiles& files, const PictureFiles& kept) {
    std::error_code ignored;
    for (const std::filesystem::path& file : files) {
        if (!kept.contains(file)) std::filesystem::remove(image / file, ignored);
    }
}

}  // namespace

void readContactsImage(Phone& phone) {
    const std::filesystem::path file = phone.image / "contacts.json";
    std::error_code failed;
    if (!std::filesystem::exists(file, failed)) return;
    phone.contactsStamp = system::stampOf(file);
    phone.contacts = parseContacts(readWhole(file), file, phone.image);
}

void refreshContacts(Phone& phone) {
    if (phone.image.empty()) return;
    const system::FileStamp stamp = system::stampOf(phone.image / "contacts.json");
    if (stamp != system::FileStamp() && stamp != phone.contactsStamp) readContactsImage(phone);
}

void replaceContacts(Phone& phone, std::shared_ptr<ContactStore> store) {
    if (!phone.image.empty()) {
        const std::filesystem::path file = phone.image / "contacts.json";
        const std::filesystem::path incoming = phone.image / ".incoming-contacts.json";
        PictureFiles written;
        try {
            writeNewPictures(phone.image, *store, written);
            system::writeDurably(incoming, contactsJson(*store));
            system::replaceDurably(incoming, file);
        } catch (const std::system_error&) {
            removeFiles(phone.image, written, {});
            throw;
        }
        removeFiles(phone.image, picturesOf(*phone.contacts), picturesOf(*store));
        phone.contactsStamp = system::stampOf(file);
    }
    phone.contacts = std::move(store);
}

std::string contactsJson(const ContactStore& store) {
    std::string text = "{\n\"format\": 1,\n\"folder\": " + folderJson(store.root).dump() + ",\n";
    if (store.capacity != 0) text += "\"capacity\": " + std::to_string(store.capacity) + ",\n";
    if (store.nextUid != 0) text += "\"nextUid\": " + std::to_string(store.nextUid) + ",\n";
    text += "\"contacts\": [";
    const char* separator = "\n";
    for (const auto& contact : store.contacts) {
        text.append(separator).append("{\"uid\": \"").append(toHex(contact->uid));
        text.append("\", \"position\": ").append(std::to_string(contact->position));
        if (contact->folderId != store.root.id) {
            text.append(", \"folderId\": ").append(std::to_string(contact->folderId));
        }
        text += ", \"fields\": [";
        const char* fieldSeparator = "\n  ";
        for (const Contact::Field& field : contact->fields) {
            text.append(fieldSeparator).append(fieldJson(*contact, field).dump());
            fieldSeparator = ",\n  ";
        }
        text += "]}";
        separator = ",\n";
    }
    text += "]\n}\n";
    return text;
}

}  // namespace ovno2::simulator
