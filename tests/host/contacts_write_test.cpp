// `ovphone contacts add`, `edit`, `remove`, `import` and `export` on phones of the test's own.
#include <regex>

#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr const char* twoCards =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Berg;Bob;;;\r\nTEL;TYPE=CELL:111\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;Anna;;;\r\nTEL;TYPE=CELL:7\r\nEND:VCARD\r\n";

class OvphoneContacts : public Ovphone {
  protected:
    OvphoneContacts() {
        bundled_ = phones;
        phones = folder.path() / "phones";
        fill(R"({"uid": "01", "fields": [{"id": 2, "text": "Anna"}, {"id": 64, "text": "5"}]})");
        write("two.vcf", twoCards);
    }

    void write(const std::string& name, const std::string& bytes) {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
    }
    // A phone with these contacts, and `more` said about its store.
    void fill(const std::string& contacts, const std::string& more = "") {
        fs::create_directories(phones / "n95");
        fs::copy_file(bundled_ / "demo" / "phone.json", phones / "n95" / "phone.json",
                      fs::copy_options::overwrite_existing);
        std::ofstream(phones / "n95" / "contacts.json")
            << R"({"format": 1, "folder": {"id": 1, "name": "Contacts", "path": "predefContacts", "subfolders": []},)"
            << more << R"("contacts": [)" << contacts << "]}";
    }
    std::string store() const { return contentOf(phones / "n95" / "contacts.json"); }
    // The contacts of the phone as JSON lines, without their places and ids.
    std::vector<std::string> book() {
        std::vector<std::string> contacts = items("contacts");
        for (std::string& contact : contacts)
            contact = std::regex_replace(contact, std::regex(R"(,"location":"[^"]*","uid":"[^"]*")"), "");
        return contacts;
    }
    static std::string fault(const std::string& call, const std::string& more) {
        return R"({"command": "fault", "call": ")" + call + R"(", )" + more + "}";
    }

    fs::path bundled_;
};

}  // namespace

// What a phone has travels through a file to an empty phone, and a second time nothing is left to do.
TEST_F(OvphoneContacts, ABookTravelsThroughEveryKindOfFile) {
    const fs::path empty = phones;
    for (const std::string file :
         {"a.vcf --as vcf", "b.vcf --card-version 2.1", "c.vcf --card-version 4.0", "d.csv"}) {
        const std::string name = file.substr(0, 5);
        phones = bundled_;
        const bool hasPictures = !file.starts_with('d');
        EXPECT_EQ(hasPictures ? 0 : 1, run("contacts --phone 356300010000017 export " + file).status) << file;
        EXPECT_EQ(1, run("contacts --phone 356300010000017 export " + file).status) << "is there already";
        const std::vector<std::string> same = items("contacts --phone 356300010000017 import " + name);
        EXPECT_THAT(same, AllOf(SizeIs(171), Each(HasSubstr(R"("result":"unchanged")")))) << file;
        const std::vector<std::string> before = items("contacts --phone 356300010000017");
        phones = empty;
        fill("");
        // Three of them have what no field takes.
        EXPECT_THAT(items("contacts import " + name, 1),
                    AllOf(SizeIs(171), Each(HasSubstr(R"("result":"added")"))));
        const std::string written = store();
        EXPECT_THAT(items("contacts import " + name, 1), Each(HasSubstr(R"("result":"unchanged")"))) << file;
        EXPECT_EQ(written, store());
        run("contacts export again.vcf --force");
        run("contacts import again.vcf");
        EXPECT_EQ(written, store());
    }
}

TEST_F(OvphoneContacts, AnImportAddsToWhatThePhoneHas) {
    struct MergeCase {
        std::string file;
        int status;
        std::vector<std::string> book;
    };
    const MergeCase cases[] = {
        {twoCards,
         0,
         {R"({"firstName":"Anna","mobile":["5"],"mobile2":["7"])",
          R"({"firstName":"Bob","lastName":"Berg","mobile":["111"])"}},
        // One phone's Anna is nobody else's: born on another day, she is another one.
        {"firstName;mobile;birthday;Shoe size\r\nAnna;9;1980-02-29;38\r\nAnna;5;1975-04-12;\r\n",
         1,
         {R"({"firstName":"Anna","mobile":["5"],"birthday":["1975-04-12"])",
          R"({"firstName":"Anna","mobile":["9"],"birthday":["1980-02-29"])"}},
        {"First name,Mobile\r\nAnna,\"6\r\n", 1, {R"({"firstName":"Anna","mobile":["5"])"}},
        {"no,heading\r\n1,2\r\n", 1, {R"({"firstName":"Anna","mobile":["5"])"}},
        {"", 1, {R"({"firstName":"Anna","mobile":["5"])"}},
    };
    for (const MergeCase& c : cases) {
        fill(R"({"uid": "01", "fields": [{"id": 2, "text": "Anna"}, {"id": 64, "text": "5"}]})");
        write("file", c.file);
        for (const char* const trial : {" --dry-run", "", ""}) {
            const std::string before = store();
            EXPECT_EQ(c.status, run("contacts import file" + std::string(trial)).status) << c.file;
            if (*trial != 0) {
                EXPECT_EQ(before, store());
            }
        }
        const std::vector<std::string> now = book();
        EXPECT_EQ(c.book.size(), now.size()) << c.file;
        for (std::size_t i = 0; i < std::min(c.book.size(), now.size()); ++i)
            EXPECT_THAT(now[i], HasSubstr(c.book[i])) << c.file;
    }
    write("file", "firstName;Shoe size\r\nAnna;38\r\n");
    EXPECT_THAT(run("contacts import file").errors, HasSubstr("Shoe size: 38"));
}

TEST_F(OvphoneContacts, ContactsAreAddedEditedAndRemoved) {
    write("face.jpg", "\xFF\xD8\xFFpicture");
    const struct {
        std::string arguments;
        std::string last;  // how the last contact begins then
    } steps[] = {
        {"add Bob Berg mobile=1 'mobile 2=2;3' birthday=1980-02-29 homeTown=Ulm homeStreet=Gasse "
         "categories='A;B' note='x;y'",
         R"({"firstName":"Bob","lastName":"Berg","mobile":["1"],"birthday":["1980-02-29"],"categories":["A","B"],)"
         R"("mobile2":["2","3"],"homeStreet":["Gasse"],"homeTown":["Ulm"],"note":"x;y")"},
        {"edit Bob mobile2=3 note= categories=C homeTown=Bonn picture=face.jpg",
         R"({"firstName":"Bob","lastName":"Berg","mobile":["1"],"birthday":["1980-02-29"],"categories":["C"],)"
         R"("mobile2":["3"],"homeStreet":["Gasse"],"homeTown":["Bonn"]})"},
        {"edit bob berg mobile=4 mobile2= birthday= email+=a@b.example email+=c@d.example homeTown= "
         "homeStreet=",
         R"({"firstName":"Bob","lastName":"Berg","mobile":["4"],"email":["a@b.example"])"},
        {"edit Bob firstName=Bobby", R"({"firstName":"Bobby","lastName":"Berg")"},
        {"remove 'bobby berg'", R"({"firstName":"Anna","mobile":["5"])"},
    };
    for (const auto& step : steps) {
        const Outcome outcome = run("contacts " + step.arguments);
        EXPECT_EQ(0, outcome.status) << step.arguments << ": " << outcome.errors;
        EXPECT_THAT(book().back(), HasSubstr(step.last)) << step.arguments;
        const bool hasPicture = &step != &steps[0] && &step != std::end(steps) - 1;
        EXPECT_EQ(hasPicture, store().find("\"picture\"") != std::string::npos) << step.arguments;
    }
}

TEST_F(OvphoneContacts, TellsWhatIsWrong) {
    fill(
        R"({"uid": "01", "fields": [{"id": 2, "text": "Anna"}]}, {"uid": "02", "fields": [{"id": 2, "text": "anna"}]},
            {"uid": "03", "fields": [{"id": 2, "text": "Ina"}, {"id": 65, "text": "5"}]})");
    fs::create_directories(folder.path() / "dir.vcf");
    const std::string before = store();
    const Case cases[] = {
        {"contacts add", 2, "required"},
        {"contacts add mobile=", 2, "needs a name"},
        {"contacts add A mobil=1", 2, "Did you mean \"mobile\"?"},
        {"contacts add A birthday=1981-02-29", 2, "no date"},
        {"contacts add A picture=dir.vcf", 1, "is no file"},
        {"contacts edit Anna", 2, "what to change"},
        {"contacts edit Anna note=x", 1, "2 contacts are called"},
        {"contacts edit Nobody note=x", 1, "No contact is called"},
        {"contacts remove Anna", 1, "(02)"},
        {"contacts remove Ina Nobody", 1, "No contact is called"},
        {"contacts import dir.vcf", 1, "is a folder"},
        {"contacts import missing.vcf", 1, "is not there"},
        {"contacts export dir.vcf", 1, "is a folder"},
        {"contacts export book", 2, "--as"},
        {"contacts export none/book.vcf", 1, "is not written"},
    };
    for (const Case& c : cases)
        expectOutcome(c);
    EXPECT_EQ(before, store());
    // What the phone keeps in a field that its other numbers do not reach is never said to be gone.
    expectOutcome({"contacts edit Ina mobile=6", 1, "also keeps old ones"});
    expectOutcome({"contacts remove 02 ina", 0, ""});
    EXPECT_THAT(book(), SizeIs(1));
}

// Whatever fails and whenever, what is told is what the phone has, and the next import sets it right.
TEST_F(OvphoneContacts, FailuresLeaveWhatIsTold) {
    std::vector<std::string> plans;
    for (const char* const call : {"CAWriteItem", "CACommitOperations", "CABeginOperation", "CAGetIDList",
                                   "DAOpenCA", "CAEndOperation", "CAReadItem", "DACloseCA"})
        for (const char* const when : {R"("nth": 1)", R"("nth": 2)", R"("nth": 2, "onwards": true)"})
            plans.push_back(fault(call, std::string(R"("status": "0x80100100", )") + when));
    for (int after = 4; after < 44; after += 4)
        for (const char* const gone : {"true", "false"})
            plans.push_back(R"({"command": "drop", "after": )" + std::to_string(after) + R"(, "gone": )" +
                            gone + "}");
    for (const std::string& plan : plans) {
        fill(R"({"uid": "01", "fields": [{"id": 2, "text": "Anna"}, {"id": 64, "text": "5"}]})");
        const Outcome outcome = run("contacts import two.vcf", "[" + plan + "]");
        const std::string now = store();
        const bool hasBob = now.find("Bob") != std::string::npos,
                   has7 = now.find("\"7\"") != std::string::npos;
        EXPECT_EQ(0, outcome.status == 0 && !(hasBob && has7)) << plan;
        EXPECT_EQ(outcome.status == 0, outcome.errors.empty()) << plan << outcome.errors;
        EXPECT_THAT(now, HasSubstr("\"5\"")) << plan;
        if (outcome.errors.find("Nothing was written") != std::string::npos) {
            EXPECT_FALSE(hasBob || has7) << plan;
        }
        EXPECT_EQ(0, run("contacts import two.vcf").status) << plan;
        EXPECT_THAT(book(), SizeIs(2)) << plan;
    }
}

// Old software writes no notes and knows one kind of address.
TEST_F(OvphoneContacts, OldSoftwareLosesNothingUnasked) {
    std::string identity = contentOf(phones / "n95" / "phone.json");
    identity = std::regex_replace(identity, std::regex(R"("versions": \{[^}]*\})"),
                                  R"("versions": {"deviceManagement": 30, "contentAccess": 32})");
    std::ofstream(phones / "n95" / "phone.json") << identity;
    const char* const contact = R"({"uid": "01", "fields": [{"id": 2, "text": "Ute"}, {"id": 64, "text": "5"},
        {"id": 256, "address": [null, "Gasse", "1", "Ulm"]}, {"id": 512, "text": "Notiz"}]})";
    std::ofstream(phones / "n95" / "contacts.json")
        << R"({"format": 1, "folder": {"id": 1, "name": "Contacts", "path": "predefContacts", "subfolders": []},)"
        << R"("contacts": [)" << contact << "]}";
    expectOutcome({"contacts edit Ute mobile=6", 1, "--accept-losses"});
    EXPECT_THAT(store(), AllOf(HasSubstr("Notiz"), HasSubstr("\"5\"")));
    expectOutcome({"contacts edit Ute mobile=6 --accept-losses", 1, "Note"});
    EXPECT_THAT(
        book(),
        ElementsAre(HasSubstr(R"("mobile":["6"],"street":["Gasse"],"postcode":["1"],"town":["Ulm"])")));
    expectOutcome({"contacts edit Ute town=Bonn", 0, "written anew"});
}

TEST_F(OvphoneContacts, APhoneThatRunsFullTakesWhatFits) {
    fill("", R"("capacity": 5, )");
    std::string cards;
    for (int i = 0; i < 9; ++i)
        cards += "BEGIN:VCARD\r\nVERSION:3.0\r\nN:" + std::to_string(i) + ";;;;\r\nEND:VCARD\r\n";
    write("nine.vcf", cards);
    const Outcome outcome = run("contacts import nine.vcf");
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("5 added, 4 failed\n", outcome.output);
    EXPECT_THAT(book(), SizeIs(5));
}

}  // namespace ovno2::host
