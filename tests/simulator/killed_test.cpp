// A process killed at any moment leaves the old or the new store.
#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "simulator/files_fixture.h"
#include "simulator/writing_fixture.h"

namespace simulator_tests {
namespace {

using ::testing::SizeIs;

class KilledWriter : public Writing {};

class KilledTransfer : public Files {};

// Lets another process change things until it is killed. `change` gets 1, 2, 3, ... and says whether it
// worked; the process is killed `delay` after its first change, somewhere in the midst of a later one.
void killWhileChanging(const std::function<bool(int)>& change, std::chrono::microseconds delay) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t child = ::fork();
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
    std::this_thread::sleep_for(delay);
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status)) << "a change failed";
}

// Contact n gets n as two texts and a picture of its own.
bool rewriteFirst(const ContentSession& session, int n) {
    const std::string digits = std::to_string(n);
    const std::u16string text(digits.begin(), digits.end());
    WrittenContact contact({{2, text}, {4, text}, {10, u""}});
    const Word picture = contact.block(static_cast<std::size_t>(n));
    contact.put(2, 10, contact.copy(PictureRecord{16, 0, static_cast<Word>(n), picture}));
    ItemIdRecord id = session.ids()[0];
    return write(session, id, contact) == statusOk &&
           DAAPI(CACommitOperations)(session.operation, nullptr) == statusOk;
}

TEST_F(KilledWriter, LeavesTheOldOrTheNewPhoneBook) {
    for (int round = 0; round < 25; ++round) {
        {
            const ContentSession session;
            killWhileChanging([&](int n) { return rewriteFirst(session, n); },
                              std::chrono::microseconds(1370 * round));
        }
        control.reset();
        ASSERT_THAT(control.load(folder.path), IsEmpty());
        const Json book = Json::parse(fileContent(folder.path / "one/contacts.json"));
        ASSERT_THAT(book["contacts"], SizeIs(2));
        const Json& fields = book["contacts"][0]["fields"];
        ASSERT_EQ(fields[0]["text"], fields[1]["text"]);
        const std::filesystem::path picture = fields[2]["picture"]["file"].get<std::string>();
        EXPECT_EQ(std::to_string(std::filesystem::file_size(folder.path / "one" / picture)),
                  fields[0]["text"]);
    }
}

TEST_F(KilledTransfer, LeavesTheOldOrTheNewFile) {
    constexpr std::size_t bytes = 1000000;
    ASSERT_EQ(go(u"\\\\E:"), statusOk);
    for (int round = 0; round < 15; ++round) {
        killWhileChanging(
            [&](int n) {
                return write(u"file", std::string(bytes, static_cast<char>('a' + n % 26))) == statusOk;
            },
            std::chrono::microseconds(1100 * round));
        const std::string content = fileContent(folder.path / "one/files/E/file");
        ASSERT_EQ(content, std::string(bytes, content[0]));
    }
    EXPECT_THAT(list(u"\\\\E:"), SizeIs(3));
}

}  // namespace
}  // namespace simulator_tests
