// `ovphone archive` and `ovphone verify`, on a small phone of the test's own.
#include <map>
#include <sys/stat.h>

#include "host/archive/kept_blocks.h"
#include "host/archive/manifest.h"
#include "host/output/incoming.h"
#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

TEST(Sha256, IsThatOfTheStandardHoweverTheBytesCome) {
    const std::string long_(1'000'000, 'a');
    const std::pair<std::string, const char*> known[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {long_, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
    for (const auto& [bytes, hex] : known)
        for (const bool portable : {false, true})
            for (const std::size_t piece : {std::size_t{7}, std::size_t{64}, bytes.size() + 1}) {
                Sha256 hash(portable);
                for (std::size_t i = 0; i < bytes.size(); i += piece)
                    hash.add(std::string_view(bytes).substr(i, piece));
                EXPECT_EQ(hex, hexOf(hash.finished()));
            }
}

TEST(Manifest, TakesWhatSha256sumWritesAndNothingThatLeadsOut) {
    const std::string hex(64, 'a');
    const Manifest manifest = readManifest(
        hex + "  plain.txt\n\\" + hex + "  a\\\\b\\nc\n" + hex + " *./binary\r\n" + hex + "  /etc/passwd\n" +
        hex + "  a/../../b\nabc  short\n" + std::string(64, 'b') + "  plain.txt\n" + hex + "  \n");
    std::vector<std::string> names;
    for (const auto& [path, digest] : manifest.files)
        names.push_back(path);
    EXPECT_THAT(names, ElementsAre("a\\b\nc", "binary", "plain.txt"));
    EXPECT_THAT(manifest.problems,
                ElementsAre(HasSubstr("SHA256SUMS:4:"), HasSubstr("SHA256SUMS:5:"), HasSubstr("no line"),
                            HasSubstr("twice"), HasSubstr("SHA256SUMS:8:")));
    EXPECT_EQ("\\" + hex + "  a\\\\b\\nc\n", manifestLine("a\\b\nc", *digestFromHex(hex)));
}

TEST(KeptBlocks, AreGoneWhenTheirTextIsAndStayWhenNobodyKnows) {
    const std::string file =
        "x\r\nBEGIN:VCARD\r\nUID:1\r\nEND:VCARD\r\nBEGIN:VCARD\r\nUID:2\r\n BEGIN:VCARD\r\n"
        "END:VCARD\r\nBEGIN:VCARD\r\nUID:3\r\nEND:VCARD\r\nBEGIN:VCARD\r\n";
    constexpr std::string_view kinds[] = {"VCARD"};
    const std::vector<std::string_view> blocks = blocksOf(file, kinds);
    ASSERT_THAT(blocks, SizeIs(3));
    PresentBlocks now;
    now.add(blocks[0]);
    now.add("BEGIN:VCARD\r\nUID:2\r\nNOTE:new\r\nEND:VCARD\r\n");
    const KeptBlocks whole = keptBlocks(blocks, std::span(blocks).subspan(2, 1), now, /*isWhole=*/true);
    EXPECT_THAT(whole.gone, ElementsAre(blocks[2], blocks[1]));
    EXPECT_EQ(1u, whole.newlyGone);
    const KeptBlocks part = keptBlocks(blocks, {}, now, /*isWhole=*/false);
    EXPECT_THAT(part.gone, ElementsAre(blocks[1]));
    EXPECT_THAT(part.stays, ElementsAre(blocks[2]));
}

class OvphoneArchive : public Ovphone {
  protected:
    OvphoneArchive() {
        phones = folder.path() / "phones";
        write("phone.json", identity("356"));
        writeContacts("Anna", "Bert");
        write("calendar.json",
              R"({"format": 1, "folder": {"id": 1, "name": "\\", "path": "\\", "subfolders": [
            {"id": 2, "name": "Work", "path": "\\Work"}]}, "entries": [{"uid": "01", "folderId": 2, "type": "meeting",
            "start": "2008-07-07T08:00:00", "end": "2008-07-07T09:30:00", "summary": "Team"}]})");
        write("messages.json",
              R"({"format": 1, "folder": {"id": 1, "name": "\\", "path": "\\", "subfolders": [
            {"id": 2, "name": "predefInbox", "path": "Inbox"}]}, "messages": [{"uid": "01", "folderId": 2,
            "date": "2008-07-19T16:04:11", "addresses": ["+491"], "text": "Hi"}]})");
        write("notes.json",
              R"({"format": 1, "folder": {"id": 1, "name": "\\", "path": "\\", "subfolders": []},
            "notes": [{"uid": "01", "text": "../../Milk"}]})");
        write("files/C/Images/a.jpg", "small");
        write("files/C/Images/A.JPG", "large");
        write("files/C/CON", "device");
    }

    static std::string identity(const std::string& serial) {
        return R"({"format": 1, "serialNumber": ")" + serial + R"(", "typeName": "Nokia N95",
            "connections": [{"deviceNumber": 1, "medium": "usb", "deviceName": "Nokia N95"}]})";
    }
    void write(const std::string& path, const std::string& bytes) const {
        const fs::path file = phones / "n95" / path;
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
    }
    void writeContacts(const std::string& first, const std::string& second) const {
        write(
            "contacts.json",
            R"({"format": 1, "folder": {"id": 1, "name": "Contacts", "path": "predefContacts", "subfolders": []},
            "contacts": [{"uid": "01", "fields": [{"id": 2, "text": ")" +
                first + R"("}]}, {"uid": "02", "fields": [{"id": 2, "text": ")" + second + R"("}]}]})");
    }

    fs::path saved(const std::string& path) const { return folder.path() / "out" / path; }
    std::string text(const std::string& path) const { return contentOf(saved(path)); }
    // What is the same in two archives of the same: not the times of the runs.
    std::map<std::string, std::string> tree() const {
        std::map<std::string, std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(folder.path() / "out"))
            if (entry.is_regular_file())
                found[fs::relative(entry.path(), folder.path() / "out").string()] = contentOf(entry.path());
        for (const char* const path :
             {"SHA256SUMS", "phone.json", "losses.json", "page/data/archive.js", "page/data/losses.js"})
            found.erase(path);
        return found;
    }
    void expectWhole() {
        const Outcome outcome = run("verify out");
        EXPECT_EQ(0, outcome.status) << outcome.errors;
        EXPECT_EQ(0, runLine("sh -c 'cd out && sha256sum --quiet --strict -c SHA256SUMS'").status);
    }
};

TEST_F(OvphoneArchive, HoldsEverythingForItsUserAlone) {
    const Outcome outcome = runLine("sh -c \"umask 0; '" OVPHONE "' archive out\"");
    EXPECT_EQ(0, outcome.status) << outcome.errors;
    EXPECT_THAT(outcome.output, AllOf(HasSubstr("contacts  2 of 2"), HasSubstr("files     3 of 3 (3 fetched"),
                                      HasSubstr("Everything that the phone listed is in the archive.")));
    expectWhole();
    EXPECT_EQ(0700u, fs::status(folder.path() / "out").permissions() == fs::perms::owner_all ? 0700u : 0u);
    for (const auto& entry : fs::recursive_directory_iterator(folder.path() / "out"))
        EXPECT_EQ(
            entry.is_directory() ? fs::perms::owner_all : fs::perms::owner_read | fs::perms::owner_write,
            entry.status().permissions())
            << entry.path();
    EXPECT_THAT(text("contacts/contacts.vcf"), AllOf(HasSubstr("VERSION:4.0"), HasSubstr("FN:Bert")));
    EXPECT_THAT(text("calendar/Work.ics"), HasSubstr("SUMMARY:Team"));
    EXPECT_THAT(text("messages/conversations/+491.txt"), HasSubstr("Hi"));
    EXPECT_EQ("../../Milk", text("notes/.._.._Milk.txt"));
    EXPECT_EQ("device", text("files/C/_CON"));
    const std::string one = text("files/C/Images/a.jpg"), other = text("files/C/Images/A.JPG");
    EXPECT_TRUE(one.empty() != other.empty());
    EXPECT_TRUE(fs::exists(saved("files/C/Images/A (2).JPG")) ||
                fs::exists(saved("files/C/Images/a (2).jpg")));
    EXPECT_TRUE(fs::exists(saved("index.html")));
    // Again: only what says when it was.
    const auto before = tree();
    const Outcome again = run("archive out --json");
    EXPECT_THAT(again.output, AllOf(HasSubstr("\"complete\": true"), HasSubstr("\"filesWritten\": 2,")));
    EXPECT_EQ(before, tree());
}

TEST_F(OvphoneArchive, KeepsWhatThePhoneNoLongerHas) {
    ASSERT_EQ(0, run("archive out").status);
    writeContacts("Anna", "Berta");
    write("messages.json", R"({"format": 1, "folder": {"id": 1, "name": "\\", "path": "\\", "subfolders": [
        {"id": 2, "name": "predefInbox", "path": "Inbox"}]}, "messages": []})");
    write("notes.json",
          R"({"format": 1, "folder": {"id": 1, "name": "\\", "path": "\\", "subfolders": []}, "notes": []})");
    write("calendar.json", R"({"format": 1, "folder": {"id": 1, "name": "\\", "path": "\\", "subfolders": [
        {"id": 2, "name": "Work", "path": "\\Work"}]}, "entries": []})");
    write("files/C/Images/a.jpg", "changed since");
    fs::remove(phones / "n95" / "files/C/CON");
    const Outcome outcome = run("archive out");
    EXPECT_EQ(0, outcome.status) << outcome.errors;
    EXPECT_THAT(outcome.output,
                AllOf(HasSubstr("contacts  2 of 2, and 1 that the phone no longer has (1 of them new)"),
                      HasSubstr("messages  0 of 0, and 1"), HasSubstr("1 replaced")));
    expectWhole();
    EXPECT_THAT(text("contacts/no-longer-on-phone.vcf"),
                AllOf(HasSubstr("FN:Bert\r"), Not(HasSubstr("Anna"))));
    EXPECT_THAT(text("contacts/contacts.vcf"), AllOf(HasSubstr("FN:Berta"), Not(HasSubstr("FN:Bert\r"))));
    EXPECT_THAT(text("calendar/no-longer-on-phone.ics"), HasSubstr("SUMMARY:Team"));
    EXPECT_FALSE(fs::exists(saved("calendar/Work.ics")));
    EXPECT_THAT(text("messages/messages.json"),
                AllOf(HasSubstr("Hi"), HasSubstr("\"onPhone\":false,\"goneSince\":\"2")));
    EXPECT_THAT(text("notes/notes.json"), HasSubstr("\"onPhone\":false"));
    EXPECT_EQ("../../Milk", text("notes/.._.._Milk.txt"));
    EXPECT_EQ("device", text("files/C/_CON"));
    EXPECT_THAT(text("files.json"), AllOf(HasSubstr("\"onPhone\":false"),
                                          HasSubstr("\"replaced\":[{\"file\":\"files-replaced/2")));
    EXPECT_THAT(text("page/data/contacts.js"), HasSubstr("\"onPhone\":false"));
    // A third run marks nothing a second time.
    const auto before = tree();
    EXPECT_THAT(run("archive out").output, Not(HasSubstr("of them new")));
    EXPECT_EQ(before, tree());
}

TEST_F(OvphoneArchive, GoesIntoNoFolderThatIsAnothers) {
    fs::create_directories(folder.path() / "full");
    std::ofstream(folder.path() / "full/mine.txt") << "mine";
    expectOutcome({"archive full", 1, "no archive of a phone"});
    EXPECT_EQ("mine", contentOf(folder.path() / "full/mine.txt"));
    expectOutcome({"archive full/mine.txt", 1, "no folder"});
    expectOutcome({"archive --only photos out", 2, "photos"});
    expectOutcome({"archive", 2, "DIR"});
    EXPECT_EQ(0, run("archive out --dry-run").status);
    EXPECT_FALSE(fs::exists(saved("")));
    ASSERT_EQ(0, run("archive out").status);
    const auto before = tree();
    {
        const std::unique_ptr<Incoming> other = Incoming::alone(folder.path() / "out");
        expectOutcome({"archive out", 1, "another program is archiving into it"});
    }
    write("phone.json", identity("999"));
    expectOutcome({"archive out", 1, "another phone, Nokia N95 with the serial number 356"});
    write("phone.json", identity("356"));
    for (const auto& [path, message] :
         {std::pair("SHA256SUMS", "damaged"), std::pair("phone.json", "cannot be told")}) {
        const std::string good = text(path);
        std::ofstream(saved(path)) << "damage";
        expectOutcome({"archive out", 1, message});
        std::ofstream(saved(path)) << good;
    }
    // A link in place of a folder leads nowhere.
    fs::rename(saved("files"), folder.path() / "elsewhere");
    fs::create_symlink(folder.path() / "elsewhere", saved("files"));
    write("files/C/new.txt", "new");
    expectOutcome({"archive out", 1, "it is a link"});
    EXPECT_FALSE(fs::exists(folder.path() / "elsewhere/C/new.txt"));
    fs::remove(saved("files"));
    fs::rename(folder.path() / "elsewhere", saved("files"));
    fs::remove(phones / "n95" / "files/C/new.txt");
    ASSERT_EQ(0, run("archive out").status);
    EXPECT_EQ(before, tree());
}

TEST_F(OvphoneArchive, IsVerifiedFileByFile) {
    expectOutcome({"verify out", 1, "is not there"});
    ASSERT_EQ(0, run("archive out").status);
    std::ofstream(saved("contacts/contacts.csv"), std::ios::app) << "x";
    fs::remove(saved("losses.json"));
    std::ofstream(saved("files/mine.txt")) << "mine";
    fs::remove(saved("notes/notes.json"));
    fs::create_symlink("/etc/passwd", saved("notes/notes.json"));
    std::ofstream(saved("SHA256SUMS"), std::ios::app)
        << std::string(64, '0') << "  ../phones/n95/phone.json\n";
    const Outcome outcome = run("verify out --json");
    EXPECT_EQ(1, outcome.status);
    rapidjson::Document result;
    result.Parse(outcome.output.c_str());
    ASSERT_FALSE(result.HasParseError());
    std::vector<std::string> found;
    for (const auto& finding : result["findings"].GetArray())
        found.push_back(std::string(finding["problem"].GetString()) + " " +
                        (finding.HasMember("path") ? finding["path"].GetString() : ""));
    EXPECT_THAT(found, ElementsAre("wrong line ", "changed contacts/contacts.csv", "extra files/mine.txt",
                                   "missing losses.json", "changed notes/notes.json"));
    EXPECT_THAT(run("verify out").output, HasSubstr("1 missing, 2 changed, 1 extra, 1 wrong line"));
}

// What a run that was killed has left: the mark, some of its files, the manifest of the run before.
TEST_F(OvphoneArchive, GoesOnFromWhatAKilledRunHasLeft) {
    ASSERT_EQ(0, run("archive out").status);
    const auto whole = tree();
    std::ofstream(saved("unfinished.json"))
        << R"({"phone": {"serialNumber": "356"}, "started": "2026-01-02T03:04:05Z"})";
    fs::remove(saved("SHA256SUMS"));
    fs::remove(saved("phone.json"));
    fs::remove(saved("files.json"));
    fs::remove(saved("files/C/_CON"));
    fs::create_directories(saved("files-replaced/before/C"));
    std::ofstream(saved("files-replaced/before/C/old.txt")) << "old";
    expectOutcome({"verify out", 1, "did not end"});
    const Outcome outcome = run("archive out");
    EXPECT_EQ(0, outcome.status) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("(1 fetched, 6 bytes; 2 were there)"));
    EXPECT_THAT(text("phone.json"),
                HasSubstr(R"({"started":"2026-01-02T03:04:05Z","result":"interrupted"})"));
    expectWhole();
    EXPECT_EQ("old", text("files-replaced/before/C/old.txt"));
    fs::remove_all(saved("files-replaced"));
    EXPECT_EQ(whole, tree());
}

// Whenever the phone goes: what was there stays, nothing is taken for deleted, and the next run has it all.
TEST_F(OvphoneArchive, LosesNothingWhenThePhoneIsLost) {
    ASSERT_EQ(0, run("archive out").status);
    const auto whole = tree();
    write("files/C/Images/late.jpg", "late");
    for (int calls = 1;; calls += 3) {
        const Outcome outcome = run(
            "archive out", R"([{"command": "drop", "gone": true, "after": )" + std::to_string(calls) + "}]");
        if (outcome.status == 0) break;
        ASSERT_LT(calls, 400);
        ASSERT_EQ(1, outcome.status);
        EXPECT_NE("", outcome.errors);
        EXPECT_THAT(outcome.output, AllOf(HasSubstr("NOT EVERYTHING"), Not(HasSubstr("no longer has"))))
            << calls;
        EXPECT_EQ(0, run("verify out").status) << calls;
        for (const auto& [path, bytes] : whole)
            if (path != "files.json" && !path.starts_with("page/data/")) {
                ASSERT_EQ(bytes, text(path)) << path;
            }
    }
    EXPECT_EQ("late", text("files/C/Images/late.jpg"));
    expectWhole();
}

}  // namespace

}  // namespace ovno2::host
