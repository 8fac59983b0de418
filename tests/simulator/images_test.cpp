// Phone images: what is read from them, and what is said about damaged ones.
#include "simulator/library.h"

namespace simulator_tests {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const char* const plainPhoneJson =
    R"({"format": 1, "serialNumber": "1", "connections": [{"medium": "usb"}]})";

// phone.json and contacts.json around the one part that is damaged.
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
    std::size_t loaded() { return control.run("phones")["phones"].size(); }

    TemporaryFolder phones;
};

struct Damage {
    std::string file;
    std::string content;
    const char* place;
    const char* expected;
};

TEST_F(Images, ADamagedImageIsLeftOutWithFilePlaceAndWhatWasExpected) {
    const Damage damages[] = {
        {"phone.json", "", "line 1", "JSON text"},
        {"phone.json", "{\n  \"format\": 1,\n  oops", "line 3 column 3", "JSON text"},
        {"phone.json", "[]", ": /:", "an object"},
        {"phone.json", R"({"format": 2, "connections": []})", "/format", "format 1"},
        {"phone.json", R"({"format": 1, "connections": []})", "/connections", "at least one"},
        {"phone.json", R"({"format": 1, "connections": [{"medium": "air"}]})", "/connections/0/medium",
         "\"usb\""},
        {"phone.json", phoneWith(R"("serialNumber": 5)"), "/serialNumber", "a text or null"},
        {"phone.json", phoneWith(R"("seralNumber": "5")"), "/seralNumber", "no member of this name"},
        {"phone.json", phoneWith(R"("platform": {"code": "20", "level": 1})"), "/platform/code", "\"0x20\""},
        {"phone.json", phoneWith(R"("recordSizes": {"dataItem": 18})"), "/recordSizes/dataItem", "16 or 20"},
        {"phone.json", phoneWith(R"("recordSizes": {"date": 256})"), "/recordSizes/date", "0 to 255"},
        {"phone.json", phoneWith(R"("refuses": {"content": 5})"), "/refuses/content", "top bit"},
        {"contacts.json", "{\"format\": 1,\n\"contacts\": [}", "line 2", "JSON text"},
        {"contacts.json", bookWith("[]") + std::string("\n\0x", 3), "column 1", "JSON text"},
        {"contacts.json", bookWith("[]") + ",", "line 1", "JSON text"},
        {"contacts.json", "{\"format\": \"\\n\\n\",\n oops", "line 2 column 2", "JSON text"},
        {"contacts.json", bookWith(std::string(100000, '[')), "line 1", "less deep nesting"},
        {"phone.json", std::string(100000, '['), "line 1", "less deep nesting"},
        {"contacts.json", "7", ": /:", "an object"},
        {"contacts.json", R"({"format": 1, "contacts": []})", ": /:", "\"folder\""},
        {"contacts.json", R"({"folder": {"id": 1}, "contacts": []})", ": /:", "format 1"},
        {"contacts.json", R"({"format": 1, "folder": {"id": 1, "subfolders": [{"id": 2}, {"id": 2}]}})",
         "/folder/subfolders/1/id", "no other folder"},
        {"contacts.json", bookWith("{}"), "/contacts", "a list"},
        {"contacts.json", bookWith("[7]"), "/contacts/0", "an object"},
        {"contacts.json", bookWith("[{}]"), "/contacts/0", "a member \"uid\""},
        {"contacts.json", bookWith(R"([{"uid": "0a"}])"), "/contacts/0/uid", "upper-case"},
        {"contacts.json", bookWith(R"([{"uid": "0A1"}])"), "/contacts/0/uid", "hexadecimal"},
        {"contacts.json", bookWith(R"([{"uid": "0A"}, {"uid": "0A"}])"), "/contacts/1/uid",
         "no other contact"},
        {"contacts.json", bookWith(R"([{"uid": "0A", "folderId": 7}])"), "/contacts/0/folderId",
         "id of a folder"},
        {"contacts.json", bookWith(R"([{"uid": "0A", "postion": 7}])"), "/contacts/0/postion", "no member"},
        {"contacts.json", fieldWith(R"("text": "y")"), "/contacts/0/fields/1", "a member \"id\""},
        {"contacts.json", fieldWith("\"id\": 2, \"text\": \"\xFF\""), "/fields/1/text", "UTF-8 text"},
        {"contacts.json", fieldWith(R"("id": 70000)"), "/fields/1/id", "65535"},
        {"contacts.json", fieldWith(R"("id": 1, "text": "y", "number": 3)"), "/fields/1/number", "one value"},
        {"contacts.json", fieldWith(R"("id": 1, "text": ["y"])"), "/fields/1/text", "a text or null"},
        {"contacts.json", fieldWith(R"("id": 9, "date": "1975-13-01")"), "/fields/1/date", "1975-04-12"},
        {"contacts.json", fieldWith(R"("id": 9, "date": "1975-04-12", "offsets": [1])"), "/fields/1/offsets",
         "two numbers"},
        {"contacts.json", fieldWith(R"("id": 516, "number": 4294967296)"), "/fields/1/number", "4294967295"},
        {"contacts.json", fieldWith(R"("id": 10, "picture": {"file": "none.jpg"})"), "/fields/1/picture/file",
         "a file of the image"},
        {"contacts.json", fieldWith(R"("id": 10, "picture": {"file": "../phone.json"})"), "/picture/file",
         "a file of the image"},
        {"contacts.json", fieldWith(R"("id": 10, "picture": {"format": "JPEG"})"), "/fields/1", "\"file\""},
        {"contacts.json", fieldWith(R"("id": 256, "address": [])"), "/fields/1/address", "1 to 15"},
        {"contacts.json", fieldWith(R"("id": 256, "address": ["a", 5])"), "/fields/1/address/1",
         "a text or null"},
        {"contacts.json", fieldWith(R"("id": 1, "pair": "e")"), "/fields/1/pair", "\"d\""},
        {"files.json", R"({"format": 1})", "files.json", "a folder \"files\""},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.file + " " + damage.content);
        control.reset();
        phones.write("bad/phone.json", R"({"format": 1, "connections": [{"medium": "usb"}]})");
        phones.write("good/phone.json", plainPhoneJson);
        const auto damaged = phones.write("bad/" + damage.file, damage.content);
        const std::vector<std::string> errors = load();
        ASSERT_THAT(errors, SizeIs(1));
        EXPECT_THAT(errors[0], HasSubstr(damaged.string()));
        EXPECT_THAT(errors[0], HasSubstr(damage.place));
        EXPECT_THAT(errors[0], HasSubstr(damage.expected));
        EXPECT_EQ(loaded(), 1U);
        std::filesystem::remove(damaged);
    }
}

TEST_F(Images, AnyCutOffOrAlteredPhoneBookIsReadOrRefusedButNeverBreaksTheWorld) {
    const std::string whole = fieldWith(R"("id": 256, "address": [null, "Ringstraße"], "pair": "c")");
    for (std::size_t i = 0; i < whole.size(); ++i) {
        control.reset();
        phones.write("one/phone.json", plainPhoneJson);
        phones.write("one/contacts.json", whole.substr(0, i));
        EXPECT_THAT(load(), SizeIs(1)) << i;
        std::string altered = whole;
        altered[i] = '"';
        phones.write("one/contacts.json", altered);
        load();
    }
}

TEST_F(Images, PhonesComeByTheirOrderAndASerialNumberBelongsToOne) {
    const std::pair<const char*, const char*> phoneFiles[] = {{"a", R"("serialNumber": "4")"},
                                                              {"b", R"("serialNumber": "3")"},
                                                              {"c", R"("serialNumber": "2", "order": 2)"},
                                                              {"d", R"("serialNumber": "1", "order": 1)"},
                                                              {"e", R"("serialNumber": "4")"}};
    for (const auto& [name, members] : phoneFiles)
        phones.write(std::string(name) + "/phone.json", phoneWith(members));
    phones.write("notes/readme.txt", "not an image");
    EXPECT_THAT(load(), ElementsAre(HasSubstr("no other phone")));
    std::string serials;
    const Json listed = control.run("phones");
    for (const Json& one : listed["phones"])
        serials += one["serial"];
    EXPECT_EQ(serials, "1243");
}

TEST_F(Images, EveryTextSurvivesFromTheImageToTheReader) {
    const std::vector<std::string> texts = {"Zażółć gęślą jaźń", "海边😀", "Maximilian Mustermann é",
                                            "a\nb\t\"\\/\u0001"};
    Json fields = Json::array();
    for (const std::string& text : texts)
        fields.push_back({{"id", 2}, {"text", text}});
    phones.write("one/phone.json", phoneWith(std::string(R"("serialNumber": ")") + annasSerial + "\""));
    phones.write("one/contacts.json",
                 "\xEF\xBB\xBF" + bookWith(Json::array({{{"uid", "01"}, {"fields", fields}}}).dump()));
    ASSERT_THAT(load(), IsEmpty());
    ContentSession session;
    EXPECT_THAT(session.texts(session.ids()[0]),
                ElementsAre(u"2=Zażółć gęślą jaźń", u"2=海边😀", u"2=Maximilian Mustermann é",
                            u"2=a\nb\t\"\\/\u0001"));
}

}  // namespace
}  // namespace simulator_tests
