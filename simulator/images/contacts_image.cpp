// contacts.json's items: contacts with fields of several kinds.
#include <algorithm>
#include <tuple>

#include "simulator/base/text.h"
#include "simulator/images/date_text.h"
#include "simulator/images/item_image.h"
#include "simulator/world/contact.h"

namespace ovno2::simulator {
namespace {

constexpr std::size_t mostAddressTexts = 15;

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

class ContactsImage : public ItemImage {
  public:
    explicit ContactsImage(const std::filesystem::path& imageFolder) : image(imageFolder) {}

    bool isNumbered() const override { return true; }

    std::shared_ptr<ContentItem> read(const JsonNode& node, Word position) override {
        contact = std::make_shared<Contact>();
        contact->position = position;
        fields.clear();
        textUnits = 0;
        node.forEachMember([&](std::string_view name, const JsonNode& value) {
            if (isName(name, "fields")) {
                value.forEachElement([&](const JsonNode& field, std::size_t) { readField(field); });
            } else if (!readItemMember(name, value, *contact)) {
                value.fail("no member of this name");
            }
        });
        if (!contact->arrange(fields)) node.fail("at most 255 fields in a pair");
        contact->texts.assign(texts.data(), textUnits);
        return std::move(contact);
    }

    // One line a field.
    void write(JsonWriter& writer, const ContentItem& item) const override {
        const auto& written = static_cast<const Contact&>(item);
        writer.layout(", \"fields\": [");
        const char* separator = "\n  ";
        for (const Contact::Field& field : written.fields) {
            writer.layout(separator);
            writeField(writer, written, field);
            separator = ",\n  ";
        }
        writer.layout("]");
    }

  private:
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

    const std::filesystem::path image;

    // The contact under way. Its fields and texts grow here and are copied when their number is known.
    std::shared_ptr<Contact> contact;
    std::vector<Contact::Field> fields;
    std::vector<char16_t> texts;
    std::size_t textUnits = 0;
};

}  // namespace

std::unique_ptr<ItemImage> contactsForm(const std::filesystem::path& image) {
    return std::make_unique<ContactsImage>(image);
}

}  // namespace ovno2::simulator
