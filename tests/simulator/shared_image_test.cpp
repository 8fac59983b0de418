// Processes that change one image at once and are killed at any moment leave the old or the new store.
#include <csignal>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "simulator/files_fixture.h"
#include "simulator/writing_fixture.h"

namespace simulator_tests {
namespace {

class SharedBook : public Writing {};

class SharedFiles : public Files {};

// Another process that changes things until it is killed. `change` gets 1, 2, 3, ... and says whether it
// worked.
class Changer {
  public:
    explicit Changer(const std::function<bool(int)>& change) {
        int pipe[2];
        EXPECT_EQ(::pipe(pipe), 0);
        child = ::fork();
        if (child == 0) {
            for (int n = 1; change(n); ++n) {
                if (n == 1 && ::write(pipe[1], "x", 1) != 1) break;
            }
            std::_Exit(1);
        }
        ::close(pipe[1]);
        char started = 0;
        EXPECT_EQ(::read(pipe[0], &started, 1), 1);
        ::close(pipe[0]);
    }
    // Kills it that long after, somewhere in the midst of a change.
    void killAfter(std::chrono::microseconds delay) const {
        std::this_thread::sleep_for(delay);
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "a change failed";
    }

  private:
    pid_t child = 0;
};

// Contact n gets n as two texts and a picture of its own.
bool rewriteFirst(const ContentSession& session, int n) {
    const std::string digits = std::to_string(n);
    const std::u16string text(digits.begin(), digits.end());
    WrittenContact contact({{2, text}, {4, text}, {10, u""}});
    const Word picture = contact.block(static_cast<std::size_t>(n));
    contact.put(2, 10, contact.copy(PictureRecord{16, 0, static_cast<Word>(n), picture}));
    ItemIdRecord id = session.ids()[0];
    return contact.write(session, id) == statusOk && session.commit() == statusOk;
}

TEST_F(SharedBook, AKilledWriterLeavesTheOldOrTheNewPhoneBook) {
    for (int round = 0; round < 25; ++round) {
        {
            const ContentSession session;
            Changer([&](int n) {
                return rewriteFirst(session, n);
            }).killAfter(std::chrono::microseconds(1370 * round));
        }
        control.reset();
        ASSERT_THAT(control.load(folder.path), IsEmpty());
        const Json contacts = book()["contacts"];
        ASSERT_THAT(contacts, SizeIs(2));
        const Json& fields = contacts[0]["fields"];
        ASSERT_EQ(fields[0]["text"], fields[1]["text"]);
        const std::filesystem::path picture = fields[2]["picture"]["file"].get<std::string>();
        EXPECT_EQ(std::to_string(std::filesystem::file_size(folder.path / "one" / picture)),
                  fields[0]["text"]);
    }
}

// What both write is described in files.json, so that each change of the one touches what the other has said.
TEST_F(SharedFiles, TwoWritersKilledAtAnyMomentLoseNothingOfEachOther) {
    const std::size_t described = settings()["times"].size();
    const std::string content(100000, 'x');
    for (int round = 0; round < 8; ++round) {
        const Changer files([&](int n) {
            return go(u"\\\\C:") == statusOk &&
                   rename(n % 2 ? u"note.txt" : u"memo.txt", n % 2 ? u"memo.txt" : u"note.txt") == statusOk &&
                   go(u"\\\\E:") == statusOk && write(u"file", content) == statusOk;
        });
        const Changer folders([&](int n) {
            return go(u"\\\\C:") == statusOk &&
                   renameFolder(n % 2 ? u"Images" : u"Bilder", n % 2 ? u"Bilder" : u"Images") == statusOk;
        });
        files.killAfter(std::chrono::microseconds(7000 + 1100 * round));
        folders.killAfter(std::chrono::microseconds(310 * round));
        reopen();
        ASSERT_EQ(settings()["times"].size(), described);
        ASSERT_EQ(settings()["attributes"].size(), 1U);
        for (const auto& entry : std::filesystem::directory_iterator(folder.path / "one"))
            EXPECT_FALSE(entry.path().filename().string().starts_with(".")) << "left over: " << entry.path();
        EXPECT_EQ(fileContent(folder.path / "one/files/E/file"), content);
        ASSERT_EQ(go(u"\\\\C:"), statusOk);
        rename(u"memo.txt", u"note.txt");
        renameFolder(u"Bilder", u"Images");
    }
}

TEST_F(SharedFiles, AnInterruptedRenameIsSettledByTheNameOnDisk) {
    Json before = settings();
    before["renaming"] = {{"from", "C/Images"}, {"to", "C/Bilder"}};
    for (const bool moved : {false, true}) {
        folder.write("one/files.json", before.dump());
        folder.write("one/.incoming-7", "left over");
        if (moved)
            std::filesystem::rename(folder.path / "one/files/C/Images", folder.path / "one/files/C/Bilder");
        reopen();
        const std::string name = moved ? "C/Bilder" : "C/Images";
        EXPECT_EQ(settings()["times"][name + "/beach.jpg"], "2008-07-19T16:04:11Z");
        EXPECT_EQ(settings()["attributes"][name], "0x2000");
        EXPECT_FALSE(settings().contains("renaming"));
        EXPECT_FALSE(std::filesystem::exists(folder.path / "one/.incoming-7"));
    }
}

TEST_F(SharedFiles, APipeInPlaceOfAFileIsAnErrorAndNoHang) {
    ASSERT_EQ(::mkfifo((folder.path / "bluetooth.json").c_str(), 0600), 0);
    for (const char* const name : {"phone.json", "contacts.json", "files.json"}) {
        const std::filesystem::path file = folder.path / "one" / name;
        const std::string content = fileContent(file);
        std::filesystem::remove(file);
        ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
        control.reset();
        EXPECT_THAT(control.load(folder.path), SizeIs(2)) << name;
        std::filesystem::remove(file);
        if (!content.empty()) folder.write(std::string("one/") + name, content);
    }
}

}  // namespace
}  // namespace simulator_tests
