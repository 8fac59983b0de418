// What was saved goes to an empty phone, and only what is as it was saved.
#include <rapidjson/pointer.h>
#include <utility>

#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class Restore : public Ovphone {
  protected:
    Restore() {
        phones = folder.path() / "phones";
        fs::create_directories(phones / "new/files/C");
        fs::create_directories(phones / "new/files/E");
        std::ofstream(phones / "new/phone.json")
            << R"({"format": 1, "serialNumber": "356300090000090", "model": "Nokia N95", "typeName": "Nokia N95 8GB",
                "platform": {"code": "0x2000020", "level": 310},
                "connections": [{"medium": "usb", "deviceName": "New one"}]})";
        const auto store = [&](const char* name, const char* list, const char* folders) {
            std::ofstream(phones / "new" / name)
                << R"({"format": 1, "folder": {"id": 1, "name": "\\", "path": "\\",
                "subfolders": [)"
                << folders << "]}, \"" << list << "\": []}";
        };
        store("contacts.json", "contacts", "");
        store("calendar.json", "entries", R"({"id": 2, "name": "Own", "path": "\\Own"})");
        store("notes.json", "notes", R"({"id": 2, "name": "predefNotes", "path": "Notes"})");
        store("messages.json", "messages", R"({"id": 2, "name": "predefOutbox", "path": "Outbox"})");
    }
    // The bundled phone is in an archive.
    void archiveDemo() {
        const fs::path own = std::exchange(phones, BUNDLED_PHONES);
        ASSERT_EQ(0, run("archive --phone N95 archive").status);
        phones = own;
    }
    rapidjson::Document restored(const std::string& arguments, int status, const std::string& plan = "[]") {
        const Outcome outcome = run("restore --format json " + arguments, plan);
        EXPECT_EQ(status, outcome.status) << arguments << outcome.errors;
        rapidjson::Document parsed;
        parsed.Parse(outcome.output.c_str());
        EXPECT_FALSE(parsed.HasParseError()) << outcome.output << outcome.errors;
        return parsed;
    }
    static unsigned number(const rapidjson::Document& report, const char* kind, const char* what) {
        const std::string path = std::string("/sections/") + kind + "/" + what;
        const auto* const value = rapidjson::Pointer(path.c_str()).Get(report);
        return value && value->IsUint() ? value->GetUint() : 9999;
    }
};

TEST_F(Restore, AnArchiveGoesToAnEmptyPhoneOnceAndIsThereThen) {
    archiveDemo();
    const Outcome trial = run("restore --dry-run archive");
    EXPECT_THAT(trial.output, AllOf(HasSubstr("notes     40   0"), HasSubstr("Nothing was written")));
    EXPECT_THAT(items("notes"), IsEmpty());

    const rapidjson::Document first = restored("archive --messages", 1);
    EXPECT_EQ(171U, number(first, "contacts", "written"));
    EXPECT_EQ(40U, number(first, "notes", "written"));
    EXPECT_EQ(number(first, "calendar", "new"), number(first, "calendar", "written"));
    EXPECT_EQ(number(first, "files", "new"), number(first, "files", "written"));
    EXPECT_GT(number(first, "messages", "written"), 0U);
    EXPECT_GT(number(first, "messages", "impossible"), 0U) << "received ones";
    EXPECT_EQ(40U, items("notes").size());
    EXPECT_EQ(contentOf(fs::path(BUNDLED_PHONES) / "demo/files/C/Data/Images/200807/Berg & Tal.jpg"),
              contentOf(phones / "new/files/C/Data/Images/200807/Berg & Tal.jpg"));

    const rapidjson::Document again = restored("archive --messages", 1);
    for (const char* const kind : {"contacts", "calendar", "notes", "messages", "files"}) {
        EXPECT_EQ(0U, number(again, kind, "new")) << kind;
        EXPECT_EQ(0U, number(again, kind, "different")) << kind;
    }
    std::ofstream(phones / "new/files/C/Documents/Liesmich.txt") << "another";
    const rapidjson::Document differs = restored("archive --only files", 1);
    EXPECT_EQ(1U, number(differs, "files", "different"));
    EXPECT_EQ("another", contentOf(phones / "new/files/C/Documents/Liesmich.txt"));
    EXPECT_EQ(1U, number(restored("archive --only files --force", 1), "files", "written"));
    EXPECT_NE("another", contentOf(phones / "new/files/C/Documents/Liesmich.txt"));
}

TEST_F(Restore, OfADamagedArchiveTheRestGoesAndTheDamageIsNamed) {
    archiveDemo();
    const fs::path archive = folder.path() / "archive";
    std::ofstream(archive / "contacts/contacts.vcf", std::ios::app) << "BEGIN:VCARD\nEND:VCARD\n";
    std::ofstream(archive / "notes/notes.json") << "[{";
    std::ofstream(archive / "SHA256SUMS", std::ios::app) << std::string(64, '0') + "  ../home/registry.reg\n";
    const Outcome outcome = run("restore --only contacts,notes,files archive");
    EXPECT_EQ(1, outcome.status);
    EXPECT_THAT(outcome.errors, AllOf(HasSubstr("\"contacts/contacts.vcf\" is not as it was written"),
                                      HasSubstr("\"notes/notes.json\" is not as it was written"),
                                      HasSubstr("leads out of the archive")));
    EXPECT_THAT(outcome.output,
                AllOf(Not(HasSubstr("contacts")), HasSubstr("files"), HasSubstr("NOT EVERYTHING")));
    EXPECT_THAT(items("contacts"), IsEmpty());
    fs::remove(archive / "SHA256SUMS");
    expectOutcome({"restore archive", 1, "without its manifest"});
}

TEST_F(Restore, TakesSingleFilesAndFoldersOfThem) {
    fs::create_directories(folder.path() / "saved/calendars");
    std::ofstream(folder.path() / "saved/book.vcf")
        << "BEGIN:VCARD\nVERSION:3.0\nN:Müller;Anna;;;\nFN:Anna Müller\nTEL;TYPE=CELL:0171 1\nEND:VCARD\n";
    std::ofstream(folder.path() / "saved/calendars/own.ics")
        << "BEGIN:VCALENDAR\nVERSION:2.0\nX-WR-CALNAME:Club\nBEGIN:VEVENT\nUID:1\nDTSTART:20080714T100000\n"
           "DTEND:20080714T110000\nSUMMARY:Dentist\nEND:VEVENT\nEND:VCALENDAR\n";
    std::ofstream(folder.path() / "saved/picture.gif") << "no";
    EXPECT_EQ(1U, number(restored("saved/book.vcf", 0), "contacts", "written"));
    const rapidjson::Document all = restored("saved", 0);
    EXPECT_EQ(1U, number(all, "contacts", "equal"));
    EXPECT_EQ(1U, number(all, "calendar", "written"));
    EXPECT_THAT(run("calendar").output + run("calendar folders").output, HasSubstr("Club"));
    // The phone refuses one of two.
    std::ofstream(folder.path() / "saved/calendars/own.ics", std::ios::app)
        << "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VEVENT\nUID:2\nDTSTART:20080715T100000\nSUMMARY:One\nEND:"
           "VEVENT\n"
           "BEGIN:VEVENT\nUID:3\nDTSTART:20080716T100000\nSUMMARY:Two\nEND:VEVENT\nEND:VCALENDAR\n";
    const rapidjson::Document halves =
        restored("saved --only calendar", 1,
                 R"([{"command": "fault", "call": "CAWriteItem", "nth": 1, "status": "0x80100014"},
                     {"command": "fault", "call": "CAWriteItem", "nth": 2, "status": "0x80100014"}])");
    EXPECT_EQ(1U, number(halves, "calendar", "written"));
    for (const Case& c : std::initializer_list<Case>{
             {"restore nothing", 1, "is not there"},
             {"restore saved/picture.gif", 1, "neither an archive nor a card"},
             {"restore home", 1, "no card or calendar file"},
             {"restore saved --only notes", 1, "holds nothing that could go to a phone of these kinds"},
             {"restore", 2, "SOURCE"}})
        expectOutcome(c);
}

}  // namespace

}  // namespace ovno2::host
