// The program as its user starts it, on the bundled phones.
#include <sstream>

#include "host/output/display_width.h"
#include "host/ovphone_fixture.h"
#include "support/utf8.h"

namespace ovno2::host {

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

TEST_F(Ovphone, ListsEveryConnectionOfEveryPhone) {
    const json list = runJson("list");
    ASSERT_EQ(6u, list.size());
    EXPECT_EQ(
        json::parse(R"({"model":"Nokia N95","medium":"USB","serialNumber":"356300010000017","address":"USB01",
                              "name":"Nokia N95","platform":"S60 3rd","platformType":63})"),
        list[0]);
    EXPECT_EQ(list[0]["serialNumber"], list[1]["serialNumber"]);
    EXPECT_EQ("Bluetooth", list[1]["medium"]);
    EXPECT_EQ("Nokia 6230i", list[2]["model"]);
    EXPECT_EQ("Samsung SGH-D600", list[3]["model"]);
    EXPECT_EQ("USB drive", list[4]["medium"]);

    const Outcome table = run("list");
    EXPECT_EQ(0, table.status);
    EXPECT_THAT(table.output, StartsWith("Model             Medium     Serial number"));
    EXPECT_THAT(table.output, HasSubstr("\nNokia 6230i       cable "));
    EXPECT_THAT(table.errors, IsEmpty());
}

TEST_F(Ovphone, ReadsThePhoneBookOfTheFirstPhone) {
    const json contacts = runJson("contacts");
    ASSERT_EQ(171u, contacts.size());

    const json anna = contact(contacts, "0A01");
    EXPECT_EQ("Anna", anna["firstName"]);
    EXPECT_EQ("Müller", anna["lastName"]);
    EXPECT_EQ("Praxis am Mühlbach", anna["company"]);
    EXPECT_EQ("Zahnärztin", anna["jobTitle"]);
    EXPECT_EQ("Änni", anna["nickname"]);
    EXPECT_EQ("+49 171 3920001", anna["mobile"]);
    EXPECT_EQ("+49 176 04069002", anna["mobile2"]);
    EXPECT_EQ("030 23125 101", anna["homePhone"]);
    EXPECT_EQ("030 23125 102", anna["workPhone"]);
    EXPECT_EQ("anna@example.org", anna["email"]);
    EXPECT_EQ("Lindenstraße 12", anna["homeStreet"]);
    EXPECT_EQ("Deutschland", anna["homeCountry"]);
    EXPECT_EQ("Am Mühlbach 3", anna["workStreet"]);
    EXPECT_EQ("Berlin", anna["workState"]);
    EXPECT_EQ("Schlüssel liegt bei Käthe.\nHund heißt Fips.\tBeißt nicht.", anna["note"]);
    EXPECT_EQ(json::parse(R"(["Familie", "Freunde"])"), anna["categories"]);
    EXPECT_FALSE(anna.contains("picture"));
    EXPECT_FALSE(anna.contains("pager"));
    EXPECT_FALSE(anna.contains("other"));

    EXPECT_FALSE(contact(contacts, "0A2E").contains("firstName"));
}

TEST_F(Ovphone, WritesPicturesToTheFolderAndNothingElsewhere) {
    const std::string temporary = "TMPDIR='" + (folder.path() / "tmp").string() + "'";
    fs::create_directory(folder.path() / "tmp");
    const Outcome without = run("contacts --format json", temporary);
    EXPECT_EQ(0, without.status) << without.errors;
    EXPECT_TRUE(fs::is_empty(folder.path() / "tmp"));

    const Outcome with = run("contacts --format json --pictures 'my photos/here'", temporary);
    EXPECT_EQ(0, with.status) << with.errors;
    EXPECT_TRUE(fs::is_empty(folder.path() / "tmp"));
    const fs::path pictures = folder.path() / "my photos" / "here";
    EXPECT_EQ(20, std::distance(fs::directory_iterator(pictures), {}));
    const json anna = contact(json::parse(with.output), "0A01");
    EXPECT_EQ((pictures / "0A01.jpg").string(), anna["picture"]);
    EXPECT_EQ(contentOf(fs::path(BUNDLED_PHONES) / "demo/pictures/0A01.jpg"),
              contentOf(pictures / "0A01.jpg"));

    const Outcome impossible = run("contacts --pictures output/x");
    EXPECT_EQ(1, impossible.status);
    EXPECT_THAT(impossible.errors, HasSubstr("--pictures"));
}

TEST_F(Ovphone, ChoosesAPhoneByNameAndSuggestsTheNearest) {
    EXPECT_EQ(runJson("contacts --phone 6230").size(), runJson("contacts --phone 356300020000026").size());
    const Outcome wrong = run("contacts --phone 'Nokia 6320i'");
    EXPECT_EQ(1, wrong.status);
    EXPECT_THAT(wrong.output, IsEmpty());
    EXPECT_THAT(wrong.errors, HasSubstr("Did you mean \"Nokia 6230i\""));
}

TEST_F(Ovphone, SaysWhatIsWrongWithAPhoneThatCannotBeRead) {
    const Outcome refusing = run("contacts --phone E65");
    EXPECT_EQ(1, refusing.status);
    EXPECT_THAT(refusing.errors, HasSubstr("Nokia E65 refused the connection"));

    const Outcome drive = run("contacts --phone 6300");
    EXPECT_EQ(1, drive.status);
    EXPECT_THAT(drive.errors, HasSubstr("USB drive"));

    phones = folder.path() / "no phones";
    fs::create_directory(phones);
    const Outcome none = run("contacts");
    EXPECT_EQ(1, none.status);
    EXPECT_THAT(none.errors, HasSubstr("No phone is attached"));
    EXPECT_EQ(json::array(), runJson("list"));
}

TEST_F(Ovphone, NeedsAConnectivityLibrary) {
    const Outcome missing = run("list --connectivity .");
    EXPECT_EQ(1, missing.status);
    EXPECT_THAT(missing.errors, HasSubstr("connectivity library was not found"));
    const Outcome unknown = run("list --connectivity nowhere");
    EXPECT_EQ(2, unknown.status);
    EXPECT_EQ(6u, runJson("list --connectivity lib").size());  // by its name beside the program
}

TEST_F(Ovphone, SwitchesTheLogAndFollowsIt) {
    const fs::path log = folder.path() / "module.log";
    EXPECT_THAT(run("log").output, HasSubstr("off"));
    EXPECT_EQ(0, run("log file module.log").status);
    EXPECT_THAT(run("log on").output, HasSubstr("The log is on"));
    runJson("list");
    EXPECT_THAT(contentOf(log), HasSubstr("[ovNo2] <GetDevices>_\r\n"));
    EXPECT_THAT(runLine("timeout 1 '" OVPHONE "' log follow").output, HasSubstr("</DMApiTerminate>\n"));

    EXPECT_EQ(0, run("log off").status);
    const std::string before = contentOf(log);
    runJson("list");
    EXPECT_EQ(before, contentOf(log));
    EXPECT_EQ(2, run("log level 16").status);
    EXPECT_EQ(2, run("log file").status);
    EXPECT_EQ(1, run("log file no/such/folder.log").status);
}

TEST_F(Ovphone, TheDoctorSaysWhatIsThereAndWhatToDo) {
    const json healthy = runJson("doctor");
    EXPECT_EQ("there", healthy["deviceLibrary"]);
    EXPECT_EQ("version 50", healthy["contentVersion"]);
    EXPECT_EQ("6 connections", healthy["connections"]);
    EXPECT_EQ(json::array(), healthy["problems"]);

    const Outcome ill = run("doctor --connectivity .");
    EXPECT_EQ(1, ill.status);
    EXPECT_THAT(ill.output, HasSubstr("missing"));
    EXPECT_THAT(ill.output, HasSubstr("What to do:\n- "));
}

TEST_F(Ovphone, ExplainsAWrongCommandLine) {
    struct {
        const char* arguments;
        const char* message;
    } const cases[] = {
        {"lst", "Did you mean \"list\"?"},
        {"contacts --format xml", "--format"},
        {"list --frobnicate", "--frobnicate"},
        {"contacts --phone", "--phone"},
        {"list --phones /no/such", "--phones"},
        {"list contacts", "contacts"},
        {"contacts extra", "extra"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = run(c.arguments);
        EXPECT_EQ(2, outcome.status) << c.arguments;
        EXPECT_THAT(outcome.errors, HasSubstr(c.message));
        EXPECT_THAT(outcome.errors, HasSubstr("ovphone --help"));
        EXPECT_THAT(outcome.output, IsEmpty());
    }
    const Outcome help = run("--help");
    EXPECT_EQ(0, help.status);
    EXPECT_THAT(help.output, HasSubstr("contacts"));
    EXPECT_EQ(0, run("contacts --help").status);
}

TEST_F(Ovphone, ShowsPhonesAndPhoneBookWithoutACommand) {
    const Outcome overview = run("");
    EXPECT_EQ(0, overview.status) << overview.errors;
    EXPECT_THAT(overview.output, HasSubstr("Phone book of Nokia N95: 171 contacts"));
    EXPECT_THAT(overview.output, HasSubstr("Anna Müller"));
    const json both = runJson("");
    EXPECT_EQ(6u, both["phones"].size());
    EXPECT_EQ(171u, both["contacts"].size());
}

TEST_F(Ovphone, FitsATerminalAndIsCompleteInAPipe) {
    // Under `script` the program has a terminal; what it writes comes out with a carriage return a line.
    const Outcome narrow = runLine("COLUMNS=60 script -qec \"'" OVPHONE "' contacts\" /dev/null");
    std::istringstream lines(narrow.output);
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with("(")) {
            EXPECT_LE(displayWidth(fromUtf8(line.substr(0, line.find(0x0D)))), 60u) << line;
        }
    EXPECT_THAT(narrow.output, HasSubstr("more columns do not fit"));
    EXPECT_THAT(narrow.output, Not(HasSubstr("Work street")));
    EXPECT_THAT(run("contacts").output, HasSubstr("Work street"));
}

}  // namespace

}  // namespace ovno2::host
