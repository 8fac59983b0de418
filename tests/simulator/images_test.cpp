// Phone images: what is read from them, and what is said about damaged ones.
#include "simulator/library.h"

namespace simulator_tests {
namespace {

const char* const plainPhone = R"({"format": 1, "serialNumber": "1", "connections": [{"medium": "usb"}]})";

std::string phoneWith(const std::string& members) {
    return R"({"format": 1, "connections": [{"medium": "usb"}], )" + members + "}";
}
std::string bookWith(const std::string& contacts) {
    return R"({"format": 1, "folder": {"id": 1, "name": "Contacts"}, "contacts": )" + contacts + "}";
}
std::string fieldWith(const std::string& members) {
    return bookWith(R"([{"uid": "01", "fields": [{"id": 2, "text": "x"}, {)" + members + "}]}]");
}

class Images : public World {
  protected:
    std::vector<std::string> load() { return control.load(phones.path); }
    // What the phones say about themselves, in their order.
    std::string listed(const char* member) {
        std::string all;
        const Json answer = control.run("phones");
        for (const Json& phone : answer["phones"])
            all += phone[member];
        return all;
    }

    TemporaryFolder phones;
};

// One file of an image and what is said about it: the place, and what was expected there.
struct Damage {
    const char* file;
    std::string content;
    const char* place;
    const char* expected;
};

Damage phone(const std::string& content, const char* place, const char* expected) {
    return {"phone.json", content.starts_with('"') ? phoneWith(content) : content, place, expected};
}
Damage book(const std::string& content, const char* place, const char* expected) {
    return {"contacts.json", content, place, expected};
}
Damage list(const std::string& contacts, const char* place, const char* expected) {
    return book(bookWith(contacts), place, expected);
}
Damage field(const std::string& members, const char* place, const char* expected) {
    return book(fieldWith(members), place, expected);
}
// One item of another store.
Damage item(const char* file, const char* list, const std::string& members, const char* place,
            const char* expected) {
    return {file,
            R"({"format": 1, "folder": {"id": 1}, ")" + std::string(list) + R"(": [{"uid": "0A"}, {)" +
                members + "}]}",
            place, expected};
}
Damage entry(const std::string& members, const char* place, const char* expected) {
    return item("calendar.json", "entries", R"("uid": "0B", )" + members, place, expected);
}
Damage message(const std::string& members, const char* place, const char* expected) {
    return item("messages.json", "messages", R"("uid": "0B", )" + members, place, expected);
}
Damage files(const std::string& members, const char* place, const char* expected) {
    return {"files.json", R"({"format": 1, )" + members + "}", place, expected};
}

TEST_F(Images, ADamagedImageIsLeftOutWithFilePlaceAndWhatWasExpected) {
    const Damage damages[] = {
        phone("", "line 1", "JSON text"),
        phone("[]", ": /:", "an object"),
        phone(std::string(100000, '['), "line 1", "less deep nesting"),
        phone(R"({"format": 2, "connections": []})", "/format", "format 1"),
        phone(R"({"format": 1, "connections": []})", "/connections", "at least one"),
        phone(R"({"format": 1, "connections": [{"medium": "air"}]})", "/connections/0/medium", "\"usb\""),
        phone(R"("serialNumber": 5)", "/serialNumber", "a text or null"),
        phone(R"("seralNumber": "5")", "/seralNumber", "no member of this name"),
        phone(R"("platform": {"code": "20", "level": 1})", "/platform/code", "\"0x20\""),
        phone(R"("recordSizes": {"dataItem": 18})", "/recordSizes/dataItem", "16 or 20"),
        phone(R"("refuses": {"content": 5})", "/refuses/content", "top bit"),
        book(bookWith("[]") + std::string("\n\0x", 3), "column 1", "JSON text"),
        book("{\"format\": \"\\n\\n\",\n oops", "line 2 column 2", "JSON text"),
        book(R"({"format": 1, "contacts": []})", ": /:", "\"folder\""),
        book(R"({"folder": {"id": 1}, "contacts": []})", ": /:", "format 1"),
        book(R"({"format": 1, "folder": {"id": 1, "subfolders": [{"id": 2}, {"id": 2}]}})",
             "/folder/subfolders/1/id", "no other folder"),
        list(std::string(100000, '['), "line 1", "less deep nesting"),
        list("[{}]", "/contacts/0", "a member \"uid\""),
        list(R"([{"uid": "0a"}])", "/contacts/0/uid", "upper-case"),
        list(R"([{"uid": "0A"}, {"uid": "0A"}])", "/contacts/1/uid", "no other item"),
        list(R"([{"uid": "0A", "folderId": 7}])", "/contacts/0/folderId", "id of a folder"),
        list(R"([{"uid": "0A", "postion": 7}])", "/contacts/0/postion", "no member"),
        field(R"("text": "y")", "/contacts/0/fields/1", "a member \"id\""),
        field("\"id\": 2, \"text\": \"\xFF\"", "/fields/1/text", "UTF-8 text"),
        field(R"("id": 70000)", "/fields/1/id", "65535"),
        field(R"("id": 1, "text": "y", "number": 3)", "/fields/1/number", "one value"),
        field(R"("id": 9, "date": "1975-02-30")", "/fields/1/date", "1975-04-12"),
        field(R"("id": 9, "date": "1900-02-29T08:30:00")", "/fields/1/date", "1975-04-12"),
        field(R"("id": 9, "date": "1975-04-12", "offsets": [1])", "/fields/1/offsets", "two numbers"),
        field(R"("id": 516, "number": 4294967296)", "/fields/1/number", "4294967295"),
        field(R"("id": 10, "picture": {"file": "none.jpg"})", "/picture/file", "a file of the image"),
        field(R"("id": 10, "picture": {"file": "../phone.json"})", "/picture/file", "a file of the image"),
        field(R"("id": 10, "picture": {"format": "JPEG"})", "/fields/1", "\"file\""),
        field(R"("id": 256, "address": [])", "/fields/1/address", "1 to 15"),
        field(R"("id": 1, "pair": "e")", "/fields/1/pair", "\"d\""),
        entry(R"("type": "meting")", "/entries/1/type", "\"meeting\""),
        entry(R"("start": "2008-02-30T10:00:00")", "/entries/1/start", "2008-07-19"),
        entry(R"("start": "2008-02-03T24:00:00")", "/entries/1/start", "2008-07-19"),
        entry(R"("end": "2008-07-19T10:00:00+60")", "/entries/1/end", "+60+60"),
        entry(R"("alarm": "2008-07-19+60+99999999999")", "/entries/1/alarm", "+60+60"),
        entry(R"("repeat": {"every": "hour"})", "/repeat/every", "\"day\""),
        entry(R"("repeat": {"every": "day", "interval": 256})", "/repeat/interval", "255"),
        entry(R"("repeat": {"every": "week", "days": ["MO", "mo"]})", "/repeat/days/1", "\"MO\""),
        entry(R"("exceptions": ["2008-07-19", "soon"])", "/exceptions/1", "2008-07-19"),
        entry(R"("priority": "high")", "/entries/1/priority", "number"),
        entry(R"("summary": "a\u0000b")", "/entries/1/summary", "character 0"),
        entry(R"("fields": [{"id": 768, "text": "x", "number": 1}])", "/fields/0",
              "\"number\" or a \"text\""),
        entry(R"("folderId": 7)", "/entries/1/folderId", "id of a folder"),
        entry(R"("subject": "x")", "/entries/1/subject", "no member"),
        message(R"("date": "yesterday")", "/messages/1/date", "2008-07-19"),
        message(R"("addresses": [5])", "/addresses/0", "a text or null"),
        message(R"("text": "x", "bytes": "00")", "/messages/1/bytes", "one of"),
        message(R"("bytes": "0G")", "/messages/1/bytes", "hexadecimal"),
        item("notes.json", "notes", R"("text": "x")", "/notes/1", "a member \"uid\""),
        item("notes.json", "notes", R"("uid": "0A", "text": "x")", "/notes/1/uid", "no other item"),
        item("otherMessages.json", "messages", R"("uid": "0b")", "/messages/1/uid", "upper-case"),
        item("countedItems.json", "items", R"("uid": "0B", "text": "x")", "/items/1/text", "no member"),
        files(R"("times": {"C/none": "2008-07-19T16:04:11Z"})", "/times/C/none", "an entry"),
        files(R"("times": {"C": "2008-02-30T16:04:11Z"})", "/times/C", "a time that there is"),
        files(R"("renaming": {"from": "C/a", "to": "../b"})", "/renaming/to", "an entry"),
    };
    std::filesystem::create_directories(phones.path / "bad/files/C");
    phones.write("good/phone.json", plainPhone);
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.content.substr(0, 200));
        control.reset();
        phones.write("bad/phone.json", phoneWith(R"("serialNumber": "2")"));
        const auto damaged = phones.write(std::string("bad/") + damage.file, damage.content);
        EXPECT_THAT(load(), ElementsAre(AllOf(HasSubstr(damaged.string()), HasSubstr(damage.place),
                                              HasSubstr(damage.expected))));
        EXPECT_EQ(listed("serial"), "1");
        std::filesystem::remove(damaged);
    }
}

TEST_F(Images, AnyCutOffOrAlteredStoreIsReadOrRefusedButNeverBreaksTheWorld) {
    const Damage stores[] = {
        field(R"("id": 256, "address": [null, "Ringstraße"], "pair": "c")", "", ""),
        entry(R"("start": "2008-07-19T14:30:00+60+60", "repeat": {"every": "week", "days": ["MO"]}, "type": 8,
            "exceptions": ["2008-07-21"], "summary": "ß", "fields": [{"id": 774, "number": 1}])",
              "", ""),
        message(R"("date": "2008-07-19", "addresses": ["+49", {"text": null, "info": 1}], "bytes": "00FF")",
                "", ""),
    };
    phones.write("one/phone.json", plainPhone);
    for (const auto& [file, whole, place, expected] : stores) {
        for (std::size_t i = 0; i < whole.size(); ++i) {
            control.reset();
            phones.write(std::string("one/") + file, whole.substr(0, i));
            EXPECT_THAT(load(), SizeIs(1)) << i;
            std::string altered = whole;
            altered[i] = '"';
            phones.write(std::string("one/") + file, altered);
            load();
        }
        phones.write(std::string("one/") + file, whole);
    }
}

TEST_F(Images, PhonesComeByTheirOrderAndEachHasASerialNumberAndANameOfItsOwn) {
    const std::pair<const char*, const char*> phoneFiles[] = {
        {"a", R"("serialNumber": "4", "model": "M", "friendlyName": "F")"},
        {"b", R"("serialNumber": "3", "friendlyName": "F", "typeName": "T")"},
        {"c", R"("serialNumber": "2", "order": 2, "typeName": "T")"},
        {"d", R"("serialNumber": "1", "order": 1)"},
        {"e", R"("serialNumber": "4")"}};
    for (const auto& [name, members] : phoneFiles)
        phones.write(std::string(name) + "/phone.json", phoneWith(members));
    phones.write("notes/readme.txt", "not an image");
    EXPECT_THAT(load(), ElementsAre(HasSubstr("no other phone")));
    EXPECT_EQ(listed("serial"), "1243");
    CONNAPI(DMAPI_Initialize)(30, 0);
    Handle session = 0;
    CONNAPI(CONAOpenDM)(&session);
    Word count = 4;
    std::array<DeviceRecord, 4> devices{};
    ASSERT_EQ(CONNAPI(CONAGetDevices)(session, &count, devices.data()), statusOk);
    std::u16string names;
    for (const DeviceRecord& device : devices)
        names +=
            reinterpret_cast<const char16_t*>(at(recordAt<ConnectionRecord>(device.connections).deviceName));
    EXPECT_EQ(names, u"dTMF") << "the folder, the type, the model, the friendly name";
    CONNAPI(CONAFreeDeviceStructure)(count, devices.data());
    CONNAPI(CONACloseDM)(session);
    CONNAPI(DMAPI_Terminate)(0);
}

}  // namespace
}  // namespace simulator_tests
