// contacts.json into contacts.
#include <algorithm>
#include <cstring>
#include <tuple>

#include "simulator/base/text.h"
#include "simulator/images/contacts_image.h"
#include "simulator/images/date_text.h"
#include "simulator/images/json_text.h"

namespace ovno2::simulator {
namespace {

constexpr std::size_t mostAddressTexts = 15;

// A comparison that costs next to nothing: there are forty member names in a contact of twenty fields.
template <std::size_t size>
bool isName(std::string_view name, const char (&wanted)[size]) {
    return name.size() == size - 1 && std::memcmp(name.data(), wanted, size - 1) == 0;
}

class ContactsReader {
  public:
    explicit ContactsReader(const std::filesystem::path& imageFolder)
        : image(imageFolder), store(std::make_shared<ContactStore>()) {}

    // Room for about so many.
    void expectContacts(std::size_t count) {
        store->contacts.reserve(count);
        store->byUid.reserve(count);
    }

    void readContact(const JsonNode& node) {
        contact = std::make_shared<Contact>();
        contact->position = static_cast<Word>(store->contacts.size() + 1);
        fields.clear();
        textUnits = 0;
        node.forEachMember([&](std::string_view name, const JsonNode& value) {
            if (isName(name, "uid")) {
                readUid(value);
            } else if (isName(name, "position")) {
                contact->position = value.word();
            } else if (isName(name, "folderId")) {
                contact->folderId = idOf(value);
            } else if (isName(name, "fields")) {
                value.forEachElement([&](const JsonNode& field, std::size_t) { readField(field); });
            } else {
                value.fail("no member of this name");
            }
        });
        if (contact->uid.empty()) node.fail("a member \"uid\"");
        if (!contact->arrange(fields)) node.fail("at most 255 fields in a pair");
        contact->texts.assign(texts.data(), textUnits);
        if (!store->add(std::move(contact))) node.member("uid").fail("a uid that no other contact has");
    }

    // Everything but the contacts that have been read already.
    std::shared_ptr<ContactStore> finish(const JsonNode& root) {
        root.expectFormat();
        root.forEachMember([&](std::string_view name, const JsonNode& value) {
            if (name == "folder") {
                readFolder(value, store->root);
            } else if (name == "capacity") {
                store->capacity = idOf(value);
            } else if (name == "nextUid") {
                store->nextUid = idOf(value);
            } else if (name == "contacts") {
                value.forEachElement([&](const JsonNode& element, std::size_t) { readContact(element); });
            } else if (name != "format") {
                value.fail("no member of this name");
            }
        });
        if (folderIds.empty()) root.fail("a member \"folder\"");
        for (std::size_t i = 0; i < store->contacts.size(); ++i) {
            const Contact& read = *store->contacts[i];
            if (read.folderId == 0) {
                const_cast<Contact&>(read).folderId = store->root.id;  // still ours alone
            } else if (store->root.find(read.folderId) == nullptr) {
                root.failBelow("contacts/" + std::to_string(i) + "/folderId", "the id of a folder");
            }
        }
        return std::move(store);
    }

  private:
    static Word idOf(const JsonNode& node) { return node.wordBetween(1, 0xFFFFFFFF); }

    void readUid(const JsonNode& node) {
        const bool isHex = node.isText() && fromHex(node.utf8(), contact->uid);
        if (!isHex || contact->uid.empty() || toHex(contact->uid) != node.utf8()) {
            node.fail("pairs of upper-case hexadecimal digits");
        }
    }

    void readFolder(const JsonNode& node, ContentFolder& folder) {
        node.expectMembers({"id", "name", "path", "subfolders"});
        const JsonNode id = node.member("id");
        folder.id = idOf(id);
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

    void readField(const JsonNode& node) {
        Contact::Field field;
        field.value = Contact::none;
        bool hasId = false, hasKind = false, hasPair = false, hasGroup = false;
        std::optional<std::pair<std::int32_t, std::int32_t>> offsets;
        const auto oneValue = [&](const JsonNode& value, Contact::Kind kind) {
            if (hasKind) value.fail("one value in a field");
            hasKind = true;
            field.kind = kind;
        };
        node.forEachMember([&](std::string_view name, const JsonNode& value) {
            if (isName(name, "id")) {
                field.id = static_cast<std::uint16_t>(value.wordBetween(0, 0xFFFF));
                hasId = true;
            } else if (isName(name, "text")) {
                oneValue(value, Contact::Kind::text);
                field.value = addText(value);
            } else if (isName(name, "number")) {
                oneValue(value, Contact::Kind::number);
                field.value = value.word();
            } else if (isName(name, "date")) {
                oneValue(value, Contact::Kind::date);
                field.value = addDate(value);
            } else if (isName(name, "address")) {
                oneValue(value, Contact::Kind::address);
                field.value = addAddress(value);
            } else if (isName(name, "picture")) {
                oneValue(value, Contact::Kind::picture);
                field.value = addPicture(value);
            } else if (isName(name, "pair")) {
                field.pair = readPair(value);
                hasPair = true;
            } else if (isName(name, "group")) {
                field.group = value.word();
                hasGroup = true;
            } else if (isName(name, "reserved")) {
                field.reserved = value.word();
            } else if (isName(name, "offsets")) {
                offsets = readOffsets(value);
            } else {
                value.fail("no member of this name");
            }
        });
        if (!hasId) node.fail("a member \"id\"");
        if (!hasPair) field.pair = defaultPair(field.id);
        if (!hasGroup) field.group = field.pair + 1U;
        if (offsets) {
            if (field.kind != Contact::Kind::date) node.fail("\"offsets\" only beside a \"date\"");
            library::DateRecord& date = contact->dates[field.value].record;
            std::tie(date.firstOffset, date.secondOffset) = *offsets;
        }
        fields.push_back(field);
    }

    Contact::TextPlace addText(const JsonNode& node) {
        if (node.isNull()) return Contact::none;
        if (!node.isText()) node.fail("a text or null");
        const std::string_view text = node.utf8();
        if (texts.size() - textUnits <= text.size()) texts.resize(2 * texts.size() + text.size() + 1);
        const auto place = static_cast<Contact::TextPlace>(textUnits);
        bool valid = true;
        char16_t* const end = widenUtf8(text, texts.data() + textUnits, valid);
        if (!valid) node.fail("UTF-8 text");
        *end = u'\0';
        textUnits = static_cast<std::size_t>(end + 1 - texts.data());
        return place;
    }

    Word addDate(const JsonNode& node) {
        library::DateRecord date{};
        if (!node.isText() || !parseDate(node.utf8(), date)) {
            node.fail("a day that there is, such as \"1975-04-12\" or \"1975-04-12T08:30:00\"");
        }
        contact->dates.push_back({date});
        return static_cast<Word>(contact->dates.size() - 1);
    }

    static std::pair<std::int32_t, std::int32_t> readOffsets(const JsonNode& node) {
        constexpr const char* expected = "a list of two numbers of minutes";
        std::vector<std::int32_t> minutes;
        if (!node.isArray() || node.arraySize() != 2) node.fail(expected);
        node.forEachElement([&](const JsonNode& element, std::size_t) {
            const std::optional<std::int64_t> number = element.integer();
            if (!number || *number < -0x7FFFFFFF || *number > 0x7FFFFFFF) element.fail("a number of minutes");
            minutes.push_back(static_cast<std::int32_t>(*number));
        });
        return {minutes[0], minutes[1]};
    }

    Word addAddress(const JsonNode& node) {
        constexpr const char* expected = "a list of 1 to 15 texts";
        if (!node.isArray()) node.fail(expected);
        if (node.arraySize() == 0 || node.arraySize() > mostAddressTexts) node.fail(expected);
        Contact::AddressWords address;
        node.forEachElement([&](const JsonNode& text, std::size_t) { address.push_back(addText(text)); });
        contact->addresses.push_back(std::move(address));
        return static_cast<Word>(contact->addresses.size() - 1);
    }

    Word addPicture(const JsonNode& node) {
        node.expectMembers({"format", "file"});
        Contact::Picture picture;
        if (const auto format = node.optionalMember("format")) picture.format = addText(*format);
        const std::optional<JsonNode> file = node.optionalMember("file");
        if (!file) node.fail("a picture with a member \"file\"");
        const std::filesystem::path name(file->text());
        const bool escapes =
            name.empty() || name.has_root_path() || std::find(name.begin(), name.end(), "..") != name.end();
        std::error_code ignored;
        if (escapes || (!image.empty() && !std::filesystem::is_regular_file(image / name, ignored))) {
            file->fail("a file of the image");
        }
        picture.file = name;
        contact->pictures.push_back(std::move(picture));
        return static_cast<Word>(contact->pictures.size() - 1);
    }

    static std::uint8_t readPair(const JsonNode& node) {
        const std::string_view name = node.isText() ? node.utf8() : std::string_view();
        if (name.size() != 1 || name[0] < 'a' || name[0] > 'd') node.fail("\"a\", \"b\", \"c\" or \"d\"");
        return static_cast<std::uint8_t>(name[0] - 'a');
    }

    const std::filesystem::path& image;
    std::shared_ptr<ContactStore> store;
    std::vector<Word> folderIds;

    // The contact under way. Its fields and texts grow here and are copied when their number is known.
    std::shared_ptr<Contact> contact;
    std::vector<Contact::Field> fields;
    std::vector<char16_t> texts;
    std::size_t textUnits = 0;
};

}  // namespace

std::shared_ptr<ContactStore> readContacts(const std::filesystem::path& file,
                                           const std::filesystem::path& image) {
    constexpr std::uintmax_t usualBytes = 512;  // of a contact
    JsonText text(file);
    ContactsReader reader(image);
    std::error_code unknown;
    const std::uintmax_t bytes = std::filesystem::file_size(file, unknown);
    if (!unknown) reader.expectContacts(static_cast<std::size_t>(bytes / usualBytes));
    return reader.finish(
        text.parseStreaming("contacts", [&](const JsonNode& contact) { reader.readContact(contact); }));
}

std::shared_ptr<ContactStore> readContacts(const JsonNode& root, const std::filesystem::path& image) {
    return ContactsReader(image).finish(root);
}

}  // namespace ovno2::simulator
