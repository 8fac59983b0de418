// contacts.json and the pictures as files of an image.
#include "simulator/images/contacts_image.h"

#include <algorithm>
#include <set>
#include <system_error>

#include "simulator/base/text.h"
#include "simulator/images/date_text.h"
#include "simulator/images/json_writer.h"
#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

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

void writeText(JsonWriter& writer, const Contact& contact, Contact::TextPlace place) {
    if (place == Contact::none) {
        writer.Null();
    } else {
        writer.value(contact.textAt(place));
    }
}

void writeDate(JsonWriter& writer, const library::DateRecord& date) {
    writer.member("date", dateText(date));
    if (date.firstOffset == 0 && date.secondOffset == 0) return;
    writer.Key("offsets");
    writer.StartArray();
    writer.value(date.firstOffset);
    writer.value(date.secondOffset);
    writer.EndArray();
}

void writePicture(JsonWriter& writer, const Contact& contact, const Contact::Picture& picture) {
    const std::u8string file = picture.file.generic_u8string();
    writer.Key("picture");
    writer.StartObject();
    writer.Key("format");
    writeText(writer, contact, picture.format);
    writer.member("file", std::string(file.begin(), file.end()));
    writer.EndObject();
}

void writeField(JsonWriter& writer, const Contact& contact, const Contact::Field& field) {
    writer.StartObject();
    writer.member("id", field.id);
    switch (field.kind) {
        case Contact::Kind::text:
            writer.Key("text");
            writeText(writer, contact, field.value);
            break;
        case Contact::Kind::number:
            writer.member("number", field.value);
            break;
        case Contact::Kind::date:
            writeDate(writer, contact.dates[field.value].record);
            break;
        case Contact::Kind::picture:
            writePicture(writer, contact, contact.pictures[field.value]);
            break;
        case Contact::Kind::address:
            writer.Key("address");
            writer.StartArray();
            for (const Contact::TextPlace place : contact.addresses[field.value])
                writeText(writer, contact, place);
            writer.EndArray();
            break;
    }
    if (field.pair != defaultPair(field.id))
        writer.member("pair", std::string(1, static_cast<char>('a' + field.pair)));
    if (field.group != field.pair + 1U) writer.member("group", field.group);
    if (field.reserved != 0) writer.member("reserved", field.reserved);
    writer.EndObject();
}

// One line a contact and one a field, so that changes of a phone book show line by line.
void writeContacts(JsonWriter& writer, const ContactStore& store) {
    writer.layout("{\n\"format\": 1,\n\"folder\": ");
    writeFolder(writer, store.root);
    if (store.capacity != 0) writer.layout(",\n\"capacity\": " + std::to_string(store.capacity));
    if (store.nextUid != 0) writer.layout(",\n\"nextUid\": " + std::to_string(store.nextUid));
    writer.layout(",\n\"contacts\": [");
    const char* separator = "\n";
    for (const auto& contact : store.contacts) {
        writer.layout(separator);
        writer.layout("{\"uid\": \"" + toHex(contact->uid) +
                      "\", \"position\": " + std::to_string(contact->position));
        if (contact->folderId != store.root.id)
            writer.layout(", \"folderId\": " + std::to_string(contact->folderId));
        writer.layout(", \"fields\": [");
        const char* fieldSeparator = "\n  ";
        for (const Contact::Field& field : contact->fields) {
            writer.layout(fieldSeparator);
            writeField(writer, *contact, field);
            fieldSeparator = ",\n  ";
        }
        writer.layout("]}");
        separator = ",\n";
    }
    writer.layout("\n]\n}\n");
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
std::filesystem::path storePicture(const std::filesystem::path& image, const Contact& contact,
                                   const Contact::Picture& picture) {
    const std::filesystem::path folder = image / "pictures";
    std::filesystem::create_directories(folder);
    std::filesystem::path name;
    for (int number = 0; name.empty() || std::filesystem::exists(folder / name); ++number) {
        const std::string suffix = number == 0 ? "" : "-" + std::to_string(number);
        name = toHex(contact.uid) + suffix + "." + extensionOf(contact, picture);
    }
    IncomingFile(image, picture.bytes).moveTo(folder / name);
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
            picture.file = storePicture(image, *changed, picture);
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
    phone.contacts = readContacts(file, phone.image);
}

void refreshContacts(Phone& phone) {
    if (phone.image.empty()) return;
    const system::FileStamp stamp = system::stampOf(phone.image / "contacts.json");
    if (stamp != system::FileStamp() && stamp != phone.contactsStamp) readContactsImage(phone);
}

void replaceContacts(Phone& phone, std::shared_ptr<ContactStore> store) {
    if (!phone.image.empty()) {
        const std::filesystem::path file = phone.image / "contacts.json";
        PictureFiles written;
        try {
            writeNewPictures(phone.image, *store, written);
            JsonWriter writer;
            writeContacts(writer, *store);
            IncomingFile(phone.image, writer.text()).moveTo(file);
        } catch (const std::system_error&) {
            removeFiles(phone.image, written, {});
            throw;
        }
        removeFiles(phone.image, picturesOf(*phone.contacts), picturesOf(*store));
        phone.contactsStamp = system::stampOf(file);
    }
    phone.contacts = std::move(store);
}

}  // namespace ovno2::simulator
