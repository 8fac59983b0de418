// Messages and notes: what the driver's lines say, whose numbers are whose, and the commands on the bundled
// phone.
#include "host/messages/conversations.h"
#include "host/messages/message.h"
#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(MessageLines, HoldTheirPartsWhateverIsInThem) {
    struct Case {
        const char16_t* line;
        const char16_t *folder, *uid, *text;
        std::size_t addresses;
    };
    for (const auto& [line, folder, uid, text, addresses] :
         {Case{u"predefInbox|Inbox|2|2008-07-19 16:04:11|0A|a,b|Hi", u"Inbox", u"0A", u"Hi", 2},
          Case{u"A|B|Own\\A|B|17|2008-07-19|0A0B||x|1|2008-01-01|0C|y", u"A|B", u"0A0B",
               u"x|1|2008-01-01|0C|y", 0},
          Case{u"7|7|3||0A||", u"7", u"0A", u"", 0}}) {
        const std::optional<Message> message = messageOf(line, DataStore::messages);
        ASSERT_TRUE(message) << toUtf8(line);
        EXPECT_EQ(folder, message->folder);
        EXPECT_EQ(uid, message->uid);
        EXPECT_EQ(text, message->text);
        EXPECT_EQ(addresses, message->addresses.size());
    }
    for (const char16_t* const none : {u"", u"a|b|c", u"a|b|x|2008-01-01|0A||text"})
        EXPECT_FALSE(messageOf(none, DataStore::messages)) << toUtf8(none);
}

TEST(PhoneNumbers, AreTheSameHoweverTheyAreWritten) {
    struct Case {
        const char16_t *a, *b;
        bool same;
    };
    for (const auto& [a, b, same] :
         {Case{u"+49 171 3920001", u"0171/392-0001", true}, Case{u"0049 171 3920001", u"+491713920001", true},
          Case{u"0171 3920001", u"0171 3920002", false}, Case{u"+49 171 3920001", u"+41 171 3920001", false},
          Case{u"110", u"+49 110", false}, Case{u"22922", u"22922", true},
          Case{u"3920001", u"0171 3920001", false}, Case{u"Info", u"INFO", true},
          Case{u"Info", u"", false}}) {
        EXPECT_EQ(same, sameNumber(a, b)) << toUtf8(a) << " " << toUtf8(b);
        EXPECT_EQ(same, sameNumber(b, a));
        if (same) {
            EXPECT_EQ(numberKey(a), numberKey(b));
        }
    }
}

class OvphoneMessages : public Ovphone {
  protected:
    OvphoneMessages() {
        fs::create_directory(folder.path() / "phones");
        fs::copy(fs::path(BUNDLED_PHONES) / "demo", folder.path() / "phones" / "demo",
                 fs::copy_options::recursive);
        phones = folder.path() / "phones";
    }
};

TEST_F(OvphoneMessages, AreShownByWhomTheyAreWith) {
    EXPECT_EQ(505u, items("messages").size());
    EXPECT_THAT(run("messages").output, AllOf(StartsWith("With "), HasSubstr("Sabine Krüger")));
    const Outcome sabine = run("messages show sabine -v");
    EXPECT_THAT(sabine.output,
                AllOf(StartsWith("Sabine Krüger (01713920021)\n\n  200"), HasSubstr("  Me  [")));
    EXPECT_THAT(run("messages show '+49 171 3920021'").output, HasSubstr("Sabine Krüger"));
    expectOutcome({"messages show Zacharias", 1, "There are no messages with \"Zacharias\""});
    expectOutcome({"messages find 'no such words'", 1, "No message holds"});
    EXPECT_EQ(40u, items("notes").size());
    // A folder or an item that does not come is told.
    const char* const lost =
        R"([{"command": "fault", "call": "CAReadItem", "nth": 5, "onwards": true, "status": "0x80100004"}])";
    for (const char* const command :
         {"messages", "messages list --format json", "messages export - --as csv", "notes"})
        EXPECT_EQ(1, run(command, lost).status) << command;
    EXPECT_THAT(run("messages", lost).errors, HasSubstr("4 of 500 messages of Nokia N95 could be read."));
    EXPECT_THAT(run("messages export all.csv",
                    R"([{"command": "fault", "call": "CAGetIDList", "nth": 3, "status": "0x80100010"}])")
                    .errors,
                HasSubstr("changed between two reads"));
}

TEST_F(OvphoneMessages, ChangesAreKeptAndLookedFor) {
    const Outcome sent = run("messages send '+49 171 5550001;0170 555' 'Bis später 👍 |'");
    EXPECT_EQ(0, sent.status) << sent.errors;
    EXPECT_THAT(sent.errors,
                AllOf(HasSubstr("lies in the folder Outbox"), HasSubstr("The phone decides when")));
    const std::string found = json("messages find später 👍");
    EXPECT_THAT(found, AllOf(HasSubstr(R"("direction":"waiting")"), HasSubstr(R"("text":"Bis später 👍 |")"),
                             HasSubstr(R"("addresses":["+49 171 5550001","0170 555"])")));
    const std::size_t uid = found.find(R"("uid":")") + 7;
    const std::string id = found.substr(uid, found.find('"', uid) - uid);
    EXPECT_THAT(run("messages remove " + id).errors, HasSubstr("1 message deleted"));
    expectOutcome({"messages remove " + id, 1, "There is no message with the id"});
    expectOutcome({"messages send '' x", 2, "Nobody is named"});
    expectOutcome({"messages send 123 ' '", 2, "The text is empty"});

    EXPECT_THAT(items("notes add 'Milch | Brot'"),
                ElementsAre(R"({"name":"Milch | Brot","result":"added"})"));
    const std::string note = json("notes show 'Milch | Brot'");
    EXPECT_THAT(note, HasSubstr(R"("text":"Milch | Brot")"));
    EXPECT_EQ(505u, items("messages").size());
    // What the phone refuses is not done.
    for (const char* const call : {"CAWriteItem", "CACommitOperations"}) {
        const Outcome refused =
            run("messages send 123 x --format json",
                std::string(R"([{"command": "fault", "call": ")") + call + R"(", "status": "0x80100010"}])");
        EXPECT_EQ(1, refused.status);
        EXPECT_THAT(refused.output, HasSubstr(R"({"name":"to 123","result":"failed","message":)"));
        EXPECT_THAT(refused.errors, HasSubstr("Nothing was changed on the phone."));
    }
    EXPECT_EQ(505u, items("messages").size());
}

TEST_F(OvphoneMessages, FilesAreWholeOrNotThere) {
    for (const char* const form : {"mbox", "json", "csv", "text"}) {
        const std::string name = std::string("all.") + form;
        EXPECT_THAT(run("messages export " + name + " --as " + form).errors,
                    HasSubstr("505 of 505 messages"));
        EXPECT_LT(10000u, fs::file_size(folder.path() / name)) << form;
        EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write,
                  fs::status(folder.path() / name).permissions());
        EXPECT_EQ(1, run("messages export " + name + " --as " + form).status) << "is there already";
    }
    const std::string mbox = contentOf(folder.path() / "all.mbox");
    std::size_t mails = 0;
    for (std::size_t place = 0; (place = mbox.find("\n\nFrom ", place)) != std::string::npos; ++place)
        ++mails;
    EXPECT_EQ(504u, mails);
    expectOutcome({"messages export all", 2, "say with --as"});
    EXPECT_EQ(1, run("messages export none/all.csv").status);
}

}  // namespace

}  // namespace ovno2::host
