// The stream reader of contacts.json: the parser's events straight into contacts, with the place kept for
// errors.
#include <algorithm>
#include <rapidjson/reader.h>

#include "simulator/base/text.h"
#include "simulator/images/contacts_image.h"
#include "simulator/images/date_text.h"
#include "simulator/images/json_node.h"

namespace ovno2::simulator {
namespace {

constexpr std::size_t mostAddressTexts = 15;
constexpr std::size_t deepest = 64;

// Where the stream is: inside one of these objects or lists.
enum class Level : std::uint8_t {
    outside,
    root,
    folder,
    contact,
    field,
    picture,  // objects
    contacts,
    subfolders,
    fields,
    address,
    offsets  // lists
};

bool isList(Level level) {
    return level >= Level::contacts;
}

// The members of the objects, those of one object side by side and the frequent ones first.
enum class Member : std::uint8_t {
    fieldId,
    fieldText,
    fieldNumber,
    fieldDate,
    fieldAddress,
    fieldPicture,
    fieldPair,
    fieldGroup,
    fieldReserved,
    fieldOffsets,
    uid,
    position,
    fields,
    folderIdOfContact,
    pictureFormat,
    pictureFile,
    folderId,
    folderName,
    folderPath,
    subfolders,
    format,
    folder,
    capacity,
    nextUid,
    contacts,
    none
};

struct MemberRule {
    Level in;
    std::string_view name;
    const char* expected;
    Level opens = Level::outside;  // the list or object that the member's value is
};

constexpr const char* anyNumber = "a number from 0 to 4294967295";
constexpr const char* idNumber = "a number from 1 to 4294967295";

constexpr MemberRule members[] = {
    {Level::field, "id", "a number from 0 to 65535"},
    {Level::field, "text", "a text or null"},
    {Level::field, "number", anyNumber},
    {Level::field, "date", "a date such as \"1975-04-12\" or \"1975-04-12T08:30:00\""},
    {Level::field, "address", "a list of 1 to 15 texts", Level::address},
    {Level::field, "picture", "an object", Level::picture},
    {Level::field, "pair", "\"a\", \"b\", \"c\" or \"d\""},
    {Level::field, "group", anyNumber},
    {Level::field, "reserved", anyNumber},
    {Level::field, "offsets", "a list of two numbers of minutes", Level::offsets},
    {Level::contact, "uid", "pairs of upper-case hexadecimal digits"},
    {Level::contact, "position", anyNumber},
    {Level::contact, "fields", "a list", Level::fields},
    {Level::contact, "folderId", idNumber},
    {Level::picture, "format", "a text or null"},
    {Level::picture, "file", "a file of the image"},
    {Level::folder, "id", idNumber},
    {Level::folder, "name", "a text"},
    {Level::folder, "path", "a text"},
    {Level::folder, "subfolders", "a list", Level::subfolders},
    {Level::root, "format", "format 1"},
    {Level::root, "folder", "an object", Level::folder},
    {Level::root, "capacity", idNumber},
    {Level::root, "nextUid", idNumber},
    {Level::root, "contacts", "a list", Level::contacts},
};
static_assert(std::size(members) == static_cast<std::size_t>(Member::none));

const MemberRule& ruleOf(Member member) {
    return members[static_cast<std::size_t>(member)];
}

Member memberNamed(Level level, std::string_view name) {
    const char first = name.empty() ? '\0' : name.front();
    const auto* const found =
        std::find_if(std::begin(members), std::end(members), [&](const MemberRule& rule) {
            return rule.in == level && rule.name.front() == first && rule.name == name;
        });
    return static_cast<Member>(found - members);
}

class ContactsReader {
  public:
    ContactsReader(const std::filesystem::path& fileName, std::filesystem::path imageFolder)
        : file(fileName), image(std::move(imageFolder)), store(std::make_shared<ContactStore>()) {}

    // Texts are checked for UTF-8 where they are taken.
    void read(const std::string& text) {
        static constexpr std::string_view mark = "\xEF\xBB\xBF";
        const std::size_t start = text.starts_with(mark) ? mark.size() : 0;
        rapidjson::StringStream stream(text.c_str() + start);
        const rapidjson::ParseResult result = rapidjson::Reader().Parse(stream, *this);
        const std::size_t end = start + (result.IsError() ? result.Offset() : stream.Tell());
        // The parser takes a NUL for the end.
        if (result.IsError() || end != text.size()) {
            throw ImageError(file, lineAndColumn(text, end), "JSON text");
        }
    }

    std::shared_ptr<ContactStore> take() {
        if (!formatSeen) fail("format 1");
        if (folderIds.empty()) fail("a member \"folder\"");
        for (std::size_t i = 0; i < store->contacts.size(); ++i) {
            const Contact& read = *store->contacts[i];
            if (read.folderId == 0) {
                const_cast<Contact&>(read).folderId = store->root.id;  // still ours alone
            } else if (store->root.find(read.folderId) == nullptr) {
                throw ImageError(file, "/contacts/" + std::to_string(i) + "/folderId", "the id of a folder");
            }
        }
        return std::move(store);
    }

    // The parser's events.
    bool Null() { return acceptText(nullptr); }
    bool Bool(bool) { fail(expectedHere()); }
    bool Int(int value) { return acceptNumber(value); }
    bool Uint(unsigned value) { return acceptNumber(value); }
    bool Int64(std::int64_t value) { return acceptNumber(value); }
    bool Uint64(std::uint64_t) { fail(expectedHere()); }  // more than any member takes
    bool Double(double) { fail(expectedHere()); }
    bool RawNumber(const char*, std::size_t, bool) { fail(expectedHere()); }
    bool String(const char* value, std::size_t length, bool) {
        const std::string_view text(value, length);
        return acceptText(&text);
    }

    bool StartObject() {
        switch (at) {
            case Level::outside:
                enter(Level::root);
                return true;
            case Level::contacts:
                enter(Level::contact);
                startContact();
                return true;
            case Level::fields:
                enter(Level::field);
                draft = {};
                return true;
            case Level::subfolders:
                startFolder();
                return true;
            default:
                break;
        }
        if (isList(at) || member == Member::none || isList(ruleOf(member).opens)) fail(expectedHere());
        if (ruleOf(member).opens == Level::folder) {
            startFolder();
        } else if (ruleOf(member).opens == Level::picture) {
            oneValue(Contact::Kind::picture);
            picture = {};
            enter(Level::picture);
        } else {
            fail(expectedHere());
        }
        return true;
    }

    bool Key(const char* text, std::size_t length, bool) {
        const std::string_view name(text, length);
        member = memberNamed(at, name);
        if (member == Member::none) {
            throw ImageError(file, place() + (at == Level::root ? "" : "/") + std::string(name),
                             "no member of this name");
        }
        return true;
    }

    bool EndObject(std::size_t) {
        member = Member::none;
        if (at == Level::folder) endFolder();
        if (at == Level::contact) endContact();
        if (at == Level::field) endField();
        leave();
        return true;
    }

    bool StartArray() {
        if (isList(at) || member == Member::none || !isList(ruleOf(member).opens)) fail(expectedHere());
        if (member == Member::fieldAddress) {
            oneValue(Contact::Kind::address);
            address.clear();
        }
        enter(ruleOf(member).opens);
        return true;
    }

    bool EndArray(std::size_t) {
        const Level left = at;
        leave();
        if (left == Level::offsets && draft.offsetCount != 2) fail(expectedHere());
        if (left == Level::address && address.empty()) fail(expectedHere());
        return true;
    }

  private:
    // An object or list that encloses the current one, with what leads from it into the next.
    struct Enclosing {
        Level level;
        Member member;      // of an object
        std::size_t index;  // of a list
    };

    // The field under way.
    struct Draft {
        Contact::Field field;
        bool hasId = false;
        bool hasKind = false;
        bool hasPair = false;
        bool hasGroup = false;
        bool hasFile = false;
        std::uint8_t offsetCount = 0;
        library::DateRecord date{};
    };

    void enter(Level next) {
        if (enclosing.size() >= deepest) fail("less deep nesting");
        enclosing.push_back({at, member, index});
        at = next;
        member = Member::none;
        index = 0;
    }
    void leave() {
        at = enclosing.back().level;
        member = enclosing.back().member;
        index = enclosing.back().index;
        enclosing.pop_back();
        if (isList(at)) ++index;
    }

    static void appendPlace(std::string& path, Level level, Member ofObject, std::size_t ofList) {
        if (isList(level)) path.append("/").append(std::to_string(ofList));
        if (!isList(level) && ofObject != Member::none) path.append("/").append(ruleOf(ofObject).name);
    }
    std::string place() const {
        std::string path;
        for (const Enclosing& one : enclosing)
            appendPlace(path, one.level, one.member, one.index);
        appendPlace(path, at, member, index);
        return path.empty() ? "/" : path;
    }
    [[noreturn]] void fail(std::string_view expected) const { throw ImageError(file, place(), expected); }

    const char* expectedHere() const {
        if (at == Level::address) return "a text or null";
        if (at == Level::offsets) return "two numbers of minutes";
        return isList(at) || member == Member::none ? "an object" : ruleOf(member).expected;
    }

    void oneValue(Contact::Kind kind) {
        if (draft.hasKind) fail("one value in a field");
        draft.hasKind = true;
        draft.field.kind = kind;
    }

    Word number(std::int64_t value, std::int64_t lowest = 0, std::int64_t highest = 0xFFFFFFFF) const {
        if (value < lowest || value > highest) fail(expectedHere());
        return static_cast<Word>(value);
    }

    bool acceptNumber(std::int64_t value) {
        if (at == Level::offsets) {
            if (value < -0x7FFFFFFF || value > 0x7FFFFFFF || draft.offsetCount == 2) fail(expectedHere());
            const bool first = draft.offsetCount++ == 0;
            (first ? draft.date.firstOffset : draft.date.secondOffset) = static_cast<std::int32_t>(value);
            ++index;
            return true;
        }
        if (isList(at)) fail(expectedHere());
        switch (member) {
            case Member::fieldId:
                draft.field.id = static_cast<std::uint16_t>(number(value, 0, 0xFFFF));
                draft.hasId = true;
                break;
            case Member::fieldNumber:
                oneValue(Contact::Kind::number);
                draft.field.value = number(value);
                break;
            case Member::fieldGroup:
                draft.field.group = number(value);
                draft.hasGroup = true;
                break;
            case Member::fieldReserved:
                draft.field.reserved = number(value);
                break;
            case Member::position:
                contact->position = number(value);
                break;
            case Member::folderIdOfContact:
                contact->folderId = number(value, 1);
                break;
            case Member::folderId:
                folders.back().id = number(value, 1);
                break;
            case Member::format:
                number(value, 1, 1);
                formatSeen = true;
                break;
            case Member::capacity:
                store->capacity = number(value, 1);
                break;
            case Member::nextUid:
                store->nextUid = number(value, 1);
                break;
            default:
                fail(expectedHere());
        }
        return true;
    }

    std::u16string utf16(std::string_view text) const {
        std::u16string result;
        if (!appendUtf16(result, text)) fail("UTF-8 text");
        return result;
    }

    Contact::TextPlace addText(std::string_view text) {
        const auto start = static_cast<Contact::TextPlace>(contact->texts.size());
        if (!appendUtf16(contact->texts, text.substr(0, text.find('\0')))) fail("UTF-8 text");
        contact->texts += u'\0';
        return start;
    }

    // A text, or null when `text` is a null pointer.
    bool acceptText(const std::string_view* text) {
        if (at == Level::address) {
            if (address.size() == mostAddressTexts) fail("1 to 15 texts");
            address.push_back(text == nullptr ? Contact::none : addText(*text));
            ++index;
            return true;
        }
        if (isList(at)) fail(expectedHere());
        if (member == Member::fieldText) {
            oneValue(Contact::Kind::text);
            draft.field.value = text == nullptr ? Contact::none : addText(*text);
            return true;
        }
        if (member == Member::pictureFormat) {
            picture.format = text == nullptr ? Contact::none : addText(*text);
            return true;
        }
        if (text == nullptr) fail(expectedHere());
        switch (member) {
            case Member::fieldDate:
                oneValue(Contact::Kind::date);
                if (!parseDate(*text, draft.date)) fail(expectedHere());
                break;
            case Member::fieldPair:
                if (text->size() != 1 || (*text)[0] < 'a' || (*text)[0] > 'd') fail(expectedHere());
                draft.field.pair = static_cast<std::uint8_t>((*text)[0] - 'a');
                draft.hasPair = true;
                break;
            case Member::pictureFile:
                acceptPictureFile(*text);
                break;
            case Member::uid:
                if (!fromHex(*text, contact->uid) || text->empty() || toHex(contact->uid) != *text) {
                    fail(expectedHere());
                }
                break;
            case Member::folderName:
                folders.back().name = utf16(*text);
                break;
            case Member::folderPath:
                folders.back().path = utf16(*text);
                break;
            default:
                fail(expectedHere());
        }
        return true;
    }

    void acceptPictureFile(std::string_view text) {
        const std::filesystem::path name(utf16(text));
        const bool escapes =
            text.empty() || name.has_root_path() || std::find(name.begin(), name.end(), "..") != name.end();
        std::error_code ignored;
        if (escapes || (!image.empty() && !std::filesystem::is_regular_file(image / name, ignored))) {
            fail(expectedHere());
        }
        picture.file = name;
        draft.hasFile = true;
    }

    void startContact() {
        contact = std::make_shared<Contact>();
        contact->position = static_cast<Word>(store->contacts.size() + 1);
        contact->fields.reserve(lastFieldCount);
        contact->texts.reserve(lastTextLength);
    }

    void endContact() {
        if (contact->uid.empty()) fail("a member \"uid\"");
        if (!contact->arrange()) fail("at most 255 fields in a pair");
        lastFieldCount = contact->fields.size();
        lastTextLength = contact->texts.size();
        if (!store->add(std::move(contact))) {
            member = Member::uid;
            fail("a uid that no other contact has");
        }
    }

    void endField() {
        if (!draft.hasId) fail("a member \"id\"");
        if (draft.offsetCount != 0 && draft.field.kind != Contact::Kind::date) {
            fail("\"offsets\" only beside a \"date\"");
        }
        Contact::Field& field = draft.field;
        if (!draft.hasKind) field.value = Contact::none;
        if (!draft.hasPair) field.pair = defaultPair(field.id);
        if (!draft.hasGroup) field.group = field.pair + 1U;
        if (field.kind == Contact::Kind::date) {
            field.value = static_cast<Word>(contact->dates.size());
            contact->dates.push_back({draft.date});
        } else if (field.kind == Contact::Kind::picture) {
            if (!draft.hasFile) fail("a picture with a member \"file\"");
            field.value = static_cast<Word>(contact->pictures.size());
            contact->pictures.push_back(std::move(picture));
        } else if (field.kind == Contact::Kind::address) {
            field.value = static_cast<Word>(contact->addresses.size());
            contact->addresses.push_back(address);
        }
        contact->fields.push_back(field);
    }

    void startFolder() {
        enter(Level::folder);
        folders.emplace_back();
    }

    void endFolder() {
        ContentFolder ended = std::move(folders.back());
        folders.pop_back();
        if (ended.id == 0) fail("a member \"id\"");
        if (std::find(folderIds.begin(), folderIds.end(), ended.id) != folderIds.end()) {
            member = Member::folderId;
            fail("an id that no other folder has");
        }
        folderIds.push_back(ended.id);
        (folders.empty() ? store->root : folders.back().subfolders.emplace_back()) = std::move(ended);
    }

    const std::filesystem::path& file;
    const std::filesystem::path image;
    std::shared_ptr<ContactStore> store;

    Level at = Level::outside;
    Member member = Member::none;  // in an object: the member whose value is due
    std::size_t index = 0;         // in a list: the element that is due
    std::vector<Enclosing> enclosing;

    bool formatSeen = false;
    std::vector<ContentFolder> folders;  // the ones under way, outermost first
    std::vector<Word> folderIds;
    std::shared_ptr<Contact> contact;
    Draft draft;
    Contact::Picture picture;
    Contact::AddressWords address;
    std::size_t lastFieldCount = 0;
    std::size_t lastTextLength = 0;
};

}  // namespace

std::shared_ptr<ContactStore> parseContacts(const std::string& text, const std::filesystem::path& file,
                                            const std::filesystem::path& image) {
    ContactsReader reader(file, image);
    reader.read(text);
    return reader.take();
}

}  // namespace ovno2::simulator
