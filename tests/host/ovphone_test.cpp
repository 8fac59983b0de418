// The program as its user starts it, on the bundled phones.
#include <algorithm>
#include <sstream>

#include "common/soon.h"
#include "host/output/display_width.h"
#include "host/output/text.h"
#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

TEST_F(Ovphone, ListsEveryConnectionOfEveryPhone) {
    const std::vector<std::string> list = items("list");
    ASSERT_EQ(6u, list.size());
    EXPECT_EQ(R"({"model":"Nokia N95","medium":"USB","serialNumber":"356300010000017","address":"USB01",)"
              R"("name":"Nokia N95","platform":"S60 3rd","platformType":63})",
              list[0]);
    EXPECT_THAT(list[1], AllOf(HasSubstr(R"("medium":"Bluetooth","serialNumber":"356300010000017")")));
    EXPECT_THAT(list[4], HasSubstr(R"("medium":"USB drive")"));

    const Outcome table = run("list");
    EXPECT_THAT(table.output, AllOf(StartsWith("Model             Medium     Serial number"),
                                    HasSubstr("\nNokia 6230i       cable ")));
    EXPECT_THAT(table.errors, IsEmpty());
    phones = folder.path();
    EXPECT_THAT(items("list"), IsEmpty());
    EXPECT_THAT(run("list").errors, HasSubstr("No phone is attached"));
}

TEST_F(Ovphone, ReadsThePhoneBookOfTheChosenPhone) {
    const std::vector<std::string> contacts = items("contacts");
    ASSERT_EQ(171u, contacts.size());
    EXPECT_EQ(
        R"({"firstName":"Anna","lastName":"Müller","mobile":["+49 171 3920001"],"homePhone":["030 23125 101"],)"
        R"("workPhone":["030 23125 102"],"email":["anna@example.org"],"company":["Praxis am Mühlbach"],)"
        R"("birthday":["1975-04-12"],"categories":["Familie","Freunde"],"nickname":"Änni","title":"Dr.",)"
        R"("jobTitle":["Zahnärztin"],"mobile2":["+49 176 04069002"],"fax":["030 23125 103"],)"
        R"("email2":["praxis@muehlbach.example"],"web":["http://www.muehlbach.example/"],)"
        R"("homeStreet":["Lindenstraße 12"],"homePostcode":["10969"],"homeTown":["Berlin"],)"
        R"("homeCountry":["Deutschland"],"workStreet":["Am Mühlbach 3"],"workPostcode":["10179"],)"
        R"("workTown":["Berlin"],"workState":["Berlin"],"workCountry":["Deutschland"],)"
        R"json("note":"Schlüssel liegt bei Käthe.\nHund heißt Fips.\tBeißt nicht.","location":"1 (SB)",)json"
        R"("uid":"0A01"})",
        contacts[0]);
    EXPECT_THAT(contacts,
                Contains(R"json({"mobile":["+49 171 3920099"],"location":"16 (SB)","uid":"0A2E"})json"));
    EXPECT_EQ(items("contacts --phone 6230"), items("contacts --phone 356300020000026"));
}

// The phone lists all and hands out a part.
TEST_F(Ovphone, SaysWhichPartOfThePhoneBookArrived) {
    const std::string lost = R"([{"command": "drop", "after": 40, "gone": true}])",
                      one =
                          R"([{"command": "fault", "call": "CAReadItem", "nth": 3, "status": "0x80100014"}])";
    for (const char* command : {"contacts", "contacts --format json", "", "contacts show"}) {
        const Outcome gone = run(std::string(command) + " --phone N95", lost);
        EXPECT_EQ(1, gone.status) << command;
        EXPECT_THAT(gone.errors,
                    HasSubstr("18 of 171 contacts of Nokia N95 could be read. The phone is no longer"));
        EXPECT_THAT(gone.output, HasSubstr("Anna"));
        const Outcome there = run(std::string(command) + " --phone N95", one);
        EXPECT_EQ(1, there.status) << command;
        EXPECT_THAT(there.errors,
                    HasSubstr("170 of 171 contacts of Nokia N95 could be read. The phone is attached"));
    }
    EXPECT_THAT(run("--format json", lost).output, HasSubstr("\"contactsListed\": 171"));
    // Nobody knows whether one of those that are missing is called so.
    EXPECT_THAT(run("contacts show Nobody", lost).errors, HasSubstr("18 of 171"));
    expectOutcome(
        {"list", 1, "4 of 5 attached phones are listed",
         R"([{"command": "poke", "call": "CONAGetDevices", "record": "device", "index": 1, "word": 5, "value": 0}])"});
}

TEST_F(Ovphone, WritesPicturesToTheFolderAndNothingElsewhere) {
    fs::create_directory(folder.path() / "tmp");
    const fs::path pictures = folder.path() / "my photos; old" / "here";
    for (const char* where : {"", " --pictures 'my photos; old/here'"}) {
        const Outcome outcome =
            runLine(std::string("TMPDIR=tmp '" OVPHONE "' contacts --phone N95 --format json") + where);
        EXPECT_EQ(0, outcome.status) << outcome.errors;
        EXPECT_TRUE(fs::is_empty(folder.path() / "tmp"));
        const std::string path = R"("picture":[")" + (pictures / "0A01.jpg").string() + R"("],"location")";
        EXPECT_EQ(*where != 0, outcome.output.find(path) != std::string::npos);
    }
    EXPECT_EQ(20, std::distance(fs::directory_iterator(pictures), {}));
    EXPECT_EQ(contentOf(fs::path(BUNDLED_PHONES) / "demo/pictures/0A01.jpg"),
              contentOf(pictures / "0A01.jpg"));
    EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write,
              fs::status(pictures / "0A01.jpg").permissions());
}

TEST_F(Ovphone, NamesPicturesOnlyWhereTheyAre) {
    const fs::path pictures = folder.path() / "photos";
    fs::create_directories(pictures / "0A1C.png" / "in the way");
    std::ofstream(pictures / "0A01.jpg") << "mine";
    const std::string line = "contacts --phone N95 --pictures photos";
    const auto named = [&](const std::string& options) {
        const std::string output = json(line + options, 1);
        return std::pair(output.find("/0A01.jpg\"") != std::string::npos,
                         output.find("/0A1C.png\"") != std::string::npos);
    };
    EXPECT_EQ(std::pair(false, false), named(""));
    EXPECT_EQ("mine", contentOf(pictures / "0A01.jpg"));
    EXPECT_THAT(run(line).errors,
                AllOf(HasSubstr("Anna Müller is not kept"), HasSubstr("Maximilian Vollständig")));
    EXPECT_EQ(std::pair(true, false), named(" --force"));
    EXPECT_NE("mine", contentOf(pictures / "0A01.jpg"));
    // A program that is ended in the middle leaves no folder of its own: its watcher soon takes that away.
    runLine("sh -c 'for i in 1 2 3 4 5 6 7 8; do \"" OVPHONE
            "\" contacts --phone N95 --pictures photos --format json "
            "| true; done'");
    const auto isHidden = [](const fs::directory_entry& entry) {
        return entry.path().filename().string().starts_with(".");
    };
    EXPECT_TRUE(soon([&] { return std::ranges::none_of(fs::directory_iterator(pictures), isHidden); }));
}

// Whatever form dates have here, and whatever daylight time rules today.
TEST_F(Ovphone, TellsDatesAndTimesAsTheyWere) {
    fs::create_directory(folder.path() / "home");
    std::ofstream(folder.path() / "home" / "registry.reg")
        << "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Control Panel\\International]\n"
           "\"sShortDate\"=\"d.M.yy\"\n";
    EXPECT_THAT(items("contacts"), AllOf(Contains(HasSubstr(R"("birthday":["1929-02-28"])")),
                                         Contains(HasSubstr(R"("birthday":["1975-04-12"])"))));
    const auto table = [&](const char* path) {
        return runLine(std::string("TZ=Europe/Berlin '" OVPHONE "' files ls --phone N95 ") + path).output;
    };
    EXPECT_THAT(table("'C:/Data/Sounds/Digital/Glocke.wav'"), HasSubstr("1.1.08 00:30:00"));
    EXPECT_THAT(table("'C:/Data/Images/200807/Sonnenuntergang.jpg'"), HasSubstr("26.7.08 08:24:45"));
}

TEST_F(Ovphone, SaysWhatIsWrongAndWhatToDo) {
    fs::create_directory(folder.path() / "empty");
    const Case cases[] = {
        {"contacts --phone 'Nokia 6320i'", 1, "Did you mean \"Nokia 6230i\""},
        {"contacts --phone E65", 1, "Nokia E65 refused the connection"},
        {"contacts --phone 6300", 1, "USB drive"},
        {"contacts --phones empty", 1, "No phone is attached"},
        {"contacts --pictures output/x", 1, "--pictures"},
        {"list --connectivity .", 1, "connectivity library was not found"},
        {"list --connectivity nowhere", 2, "nowhere"},
        {"log file no/such/folder.log", 1, "there is no such folder"},
        {"log file empty", 1, "it is a folder"},
        {"lst", 2, "Did you mean \"list\"?"},
        {"contacts fnd x", 2, "Did you mean \"find\"?"},
        {"log foolow", 2, "Did you mean \"follow\"?"},
        {"list --fromat json", 2, "Did you mean \"--format\"?"},
        {"contacts find --pone N95 x", 2, "Did you mean \"--phone\"?"},
        {"help contacts shwo", 2, "Did you mean \"show\"?"},
        {"contacts show Anna Muller", 0, "the first of 5"},
        {"contacts show Mxaimilian", 1, "Did you mean \"Maximilian Vollständig\"?"},
        {"contacts find zzz", 1, "No contact holds \"zzz\""},
        {"--phone 6230 contacts", 0, "do not fit"},
        {"contacts -q", 0, ""},
        {"files --phone N95 ls E:", 0, ""},
        {"contacts --format xml", 2, "--format"},
        {"list --frobnicate", 2, "--frobnicate"},
        {"contacts --phone", 2, "--phone"},
        {"list --phones /no/such", 2, "--phones"},
        {"list contacts", 2, "contacts"},
        {"contacts extra", 2, "extra"},
        {"log level 16", 2, "16"},
        {"log file", 2, "required"},
    };
    for (const Case& c : cases)
        expectOutcome(c);
    EXPECT_EQ(6u, items("list --connectivity lib").size());  // by its name beside the program
    EXPECT_THAT(run("lst").errors, HasSubstr("ovphone --help"));
    for (const char* help : {"--help", "contacts --help", "help contacts show", "help list", "log --help",
                             "help log follow", "help files"}) {
        const Outcome outcome = run(help);
        EXPECT_EQ(0, outcome.status);
        EXPECT_THAT(outcome.output, HasSubstr("Examples:\n  ovphone"));
    }
    EXPECT_THAT(run("--version").output, StartsWith("ovphone "));
}

TEST_F(Ovphone, DemoAttachesAPhoneThatIsTheUsersOwn) {
    const std::string demo = "'" OVPHONE "' list --demo";
    const Outcome both = runLine("sh -c \"" + demo + " & " + demo + "; wait\"");
    EXPECT_THAT(both.errors, HasSubstr("To begin anew, delete"));
    EXPECT_EQ(2u, items("list --demo").size());  // one phone, attached in two ways
    EXPECT_EQ(0, run("contacts add --demo firstName=Berta").status);
    EXPECT_THAT(run("--demo contacts show Berta").output, HasSubstr("Berta"));
    const fs::path own = folder.path() / "home" / "ovphone" / "phones";
    EXPECT_EQ(1, std::distance(fs::directory_iterator(own), {}));  // nothing of the second copy
    EXPECT_EQ(fs::perms::owner_all, fs::status(own / "demo").permissions());
    EXPECT_EQ(contentOf(fs::path(BUNDLED_PHONES) / "demo" / "messages.json"),
              contentOf(own / "demo" / "messages.json"));
    EXPECT_THAT(contentOf(fs::path(BUNDLED_PHONES) / "demo" / "contacts.json"), Not(HasSubstr("Berta")));
    EXPECT_EQ(2, run("list --demo --connectivity lib").status);
    std::ofstream(folder.path() / "file");
    const Outcome noPlace = runLine("OVNO2_HOME=file '" OVPHONE "' list --demo");
    EXPECT_EQ(1, noPlace.status);
    EXPECT_THAT(noPlace.errors, HasSubstr("Not a directory"));
}

TEST_F(Ovphone, SwitchesTheLogAndFollowsIt) {
    const fs::path log = folder.path() / "module.log";
    EXPECT_EQ("The log is off, level 0.\nIt has no file.\n", run("log").output);
    EXPECT_EQ(0, run("log file module.log").status);
    EXPECT_THAT(run("log on").output, HasSubstr("The log is on"));
    EXPECT_THAT(run("log level 5 --timestamps").output, HasSubstr("level 5, with timestamps"));
    items("list");
    EXPECT_THAT(contentOf(log), HasSubstr("[ovNo2] <GetDevices>_\r\n"));
    EXPECT_THAT(runLine("timeout 1 '" OVPHONE "' log follow").output, HasSubstr("</DMApiTerminate>\n"));

    EXPECT_EQ(0, run("log off").status);
    const std::string before = contentOf(log);
    items("list");
    EXPECT_EQ(before, contentOf(log));
}

TEST_F(Ovphone, TheDoctorSaysWhatIsThereAndWhatToDo) {
    EXPECT_THAT(json("doctor"), AllOf(StartsWith("{\n  \"softwareSufficient\": false"),
                                      HasSubstr("\n  \"deviceLibrary\": {\n    \"present\": true\n"),
                                      HasSubstr("\"contentVersion\": 50,"), HasSubstr("\"connections\": 6,"),
                                      HasSubstr("\n  \"problems\": []\n}\n")));
    const Outcome ill = run("doctor --connectivity .");
    EXPECT_EQ(1, ill.status);
    EXPECT_THAT(ill.output, AllOf(HasSubstr("missing"), HasSubstr("What to do:\n- ")));
    EXPECT_THAT(json("doctor --connectivity .", 1),
                HasSubstr("\"kind\": \"libraryIncomplete\",\n      \"message\": \"The library folder"));
}

TEST_F(Ovphone, ShowsPhonesAndPhoneBookWithoutACommand) {
    const Outcome overview = run("");
    EXPECT_EQ(0, overview.status) << overview.errors;
    EXPECT_THAT(overview.output,
                AllOf(HasSubstr("Phone book of Nokia N95: 171 contacts"), HasSubstr("Anna Müller")));
    EXPECT_EQ(1u + 6u + 171u, items("").size());  // the line that begins the document, phones, contacts
}

TEST_F(Ovphone, FitsATerminalAndIsCompleteInAPipe) {
    // Under `script` the program has a terminal; what it writes comes out with a carriage return a line.
    const Outcome narrow = runLine("COLUMNS=60 script -qec \"'" OVPHONE "' contacts\" /dev/null");
    std::istringstream lines(narrow.output);
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with("(")) {
            EXPECT_LE(displayWidth(fromUtf8(line.substr(0, line.find(0x0D)))), 60u) << line;
        }
    EXPECT_THAT(narrow.output, AllOf(HasSubstr("more columns do not fit"), Not(HasSubstr("Work street"))));
    const Outcome cards = run("contacts show");
    EXPECT_THAT(cards.output, HasSubstr("\n  Work street    Am Mühlbach 3\n"));
    for (const Outcome& piped : {run("contacts --verbose"), cards}) {
        std::istringstream page(piped.output);
        for (std::string line; std::getline(page, line);)
            EXPECT_LE(displayWidth(fromUtf8(line)), 120u) << line;
    }
}

}  // namespace

}  // namespace ovno2::host
