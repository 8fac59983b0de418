// Media and Bluetooth phones, on phones that are near, shy, unwilling or far away.
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include "host/bluetooth/found_phones.h"
#include "host/output/command_output.h"
#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

class Bluetooth : public Ovphone {
  protected:
    Bluetooth() {
        phones = folder.path() / "phones";
        fs::create_directory(phones);
        fs::copy(fs::path(BUNDLED_PHONES) / "bluetooth-only", phones / "bluetooth-only",
                 fs::copy_options::recursive);
        std::ofstream(phones / "bluetooth.json") << R"({"format": 1, "found": [
            {"deviceName": "Omas 3110", "address": "02:00:00:31:10:0B", "passkey": "4711", "reach": "afterSearch"},
            {"deviceName": "Nokia E71", "address": "02:00:00:E7:10:0C", "appearsAfter": 1},
            {"deviceName": "Nokia E71", "address": "02:00:00:E7:10:0D", "refuses": "0x80200100"},
            {"deviceName": "Nokia 6021", "address": "02:00:00:60:21:0E", "reach": "never"}]})";
    }
    Outcome pair(const std::string& passkey, const std::string& arguments, const std::string& plan = "[]") {
        std::ofstream(folder.path() / "plan.json") << plan;
        std::ofstream(folder.path() / "passkey") << passkey << "\n";
        const Outcome outcome =
            runLine("OVNO2_JOURNAL=journal OVNO2_SIMULATOR_PLAN=plan.json '" OVPHONE "' bluetooth pair " +
                    arguments + " --passkey-stdin <passkey");
        fs::remove(folder.path() / "passkey");
        return outcome;
    }
};

TEST_F(Bluetooth, APhoneIsFoundPairedAndAttachedFromThenOn) {
    EXPECT_THAT(items("list"), IsEmpty());
    EXPECT_THAT(
        items("bluetooth search"),
        UnorderedElementsAre(HasSubstr(R"("name":"Omas 3110","address":"02:00:00:31:10:0B","paired":false)"),
                             HasSubstr("E7:10:0C"), HasSubstr("E7:10:0D")));
    ASSERT_EQ(0, runLine("'" OVPHONE "' log file '" + (folder.path() / "log").string() + "'").status);
    ASSERT_EQ(0, runLine("'" OVPHONE "' log on").status);

    const Outcome refused = pair("815815", "02-00-00-31-10-0b");
    EXPECT_EQ(1, refused.status);
    EXPECT_THAT(refused.errors, HasSubstr("02:00:00:31:10:0B refused to be paired: the passkeys"));
    EXPECT_THAT(contentOf(folder.path() / "journal"), HasSubstr("\"02:00:00:31:10:0B\", ***) = 80200100"));
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.path())) {
        if (!entry.is_regular_file()) continue;
        EXPECT_THAT(contentOf(entry.path()), Not(HasSubstr("815815"))) << entry.path();
    }

    const Outcome paired = pair("4711", "oma");
    EXPECT_EQ(0, paired.status);
    EXPECT_EQ("Paired with Omas 3110 (02:00:00:31:10:0B)\nTrusted: Omas 3110 (02:00:00:31:10:0B)\n",
              paired.output);
    EXPECT_THAT(paired.errors, HasSubstr("contacts --phone 'Nokia 3110c'"));
    EXPECT_THAT(items("list")[0], HasSubstr(R"("model":"Nokia 3110c","medium":"Bluetooth")"));
    EXPECT_THAT(items("bluetooth search")[0], HasSubstr(R"("paired":true,"trusted":true)"));
}

TEST_F(Bluetooth, SaysWhatWasNotDoneAndWhatToDo) {
    const auto status = [](const char* call, int nth, const char* code, bool onwards = false) {
        return std::string(R"({"command": "fault", "call": ")") + call + R"(", "nth": )" +
               std::to_string(nth) + R"(, "status": ")" + code + R"(", "onwards": )" +
               (onwards ? "true}" : "false}");
    };
    const char* const state = "CONAChangeDeviceTrustedState";
    const struct {
        const char* arguments;
        const char* message;
        std::string plan = "[]";
        const char* passkey = "4711";
        int exitStatus = 1;
    } cases[] = {
        {"E71", "\"E71\" fits several phones; name one by its address:\n  Nokia E71 (02:00:00:E7:10:0C)"},
        {"Omma", "Did you mean \"Omas 3110\"?"},
        {"''", "An empty name means no phone", "[]", "", 2},
        {"Omas", "There is no passkey", "[]", ""},
        {"Omas", "1 to 16 letters", "[]", "12345678901234567"},
        {"02:00:00:60:21:0E", "was not reached, although it was searched for"},
        {"02:00:00:E7:10:0D", "refused to be paired"},
        // One status for both steps would be that of the second.
        {"Omas", "refused the connection", status(state, 1, "0x80200008")},
        {"Omas", "Omas 3110 (02:00:00:31:10:0B) did not let itself be trusted",
         status(state, 2, "0x80200100")},
        {"02:00:00:E7:10:0C", "Bluetooth is off on this computer", status(state, 1, "0x8020000D", true)},
        {"Omas", "did not search", status("CONASearchDevices", 1, "0x80100014")},
    };
    for (const auto& c : cases) {
        const Outcome outcome = pair(c.passkey, c.arguments, "[" + c.plan + "]");
        EXPECT_EQ(c.exitStatus, outcome.status) << c.arguments << outcome.errors;
        EXPECT_THAT(outcome.errors, HasSubstr(c.message));
    }
    EXPECT_THAT(run("bluetooth trust oma --format json").output,
                AllOf(HasSubstr("\"trusted\": true"), Not(HasSubstr("paired"))));
    expectOutcome({"bluetooth untrust oma", 1, "Nothing was changed"});
    expectOutcome({"bluetooth pair oma </dev/null", 2, "--passkey-stdin"});
    EXPECT_EQ(u"02:00:00:31:10:AB", bluetoothAddress(u"0200003110ab"));
    for (const TextView name :
         {u"", u"020000311", u"02:00:00:31:10:0B5", u"02:00:00:31:10:0G", u"02:00-00:31:10.0B"})
        EXPECT_FALSE(bluetoothAddress(name));
}

TEST_F(Bluetooth, AMediumIsOnOrOffForAllThatFollowsAndTheProgramLooks) {
    EXPECT_THAT(items("media off bluetooth infrared"),
                testing::Contains(R"({"medium":"bluetooth","on":false})"));
    EXPECT_THAT(run("media").output, HasSubstr("bluetooth  off"));
    EXPECT_EQ(3U, items("bluetooth search").size()) << "a search switches it on";
    EXPECT_THAT(run("media").output, HasSubstr("bluetooth  on"));
    const std::string refuses =
        R"([{"command": "fault", "call": "CONAMMSetMedia", "onwards": true, "status": "0x80100014"}])";
    expectOutcome({"media off usb cable", 1, "Still on: usb, cable.", refuses});
    expectOutcome({"media on usb", 1, "Still off: usb.",
                   R"([{"command": "surroundings", "media": {"format": 1, "media": []}}])"});
    expectOutcome({"media", 1, "No kind of connection is on",
                   R"([{"command": "fault", "call": "CONAMMGetMedia", "status": "0x80100014"}])"});
    expectOutcome({"media on nfc", 2, "nfc"});
}

// The program with a terminal of its own.
class OnTerminal {
  public:
    explicit OnTerminal(const std::string& line) {
        process_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
        if (process_ == 0) {
            execl("/bin/sh", "sh", "-c", ("exec " + line).c_str(), nullptr);
            _exit(127);
        }
    }
    ~OnTerminal() { ::close(terminal_); }
    OnTerminal(const OnTerminal&) = delete;
    OnTerminal& operator=(const OnTerminal&) = delete;

    void type(const std::string& text) const { EXPECT_GT(::write(terminal_, text.data(), text.size()), 0); }
    bool shows() const {
        termios settings{};
        tcgetattr(terminal_, &settings);
        return (settings.c_lflag & ECHO) != 0;
    }
    // Everything that is shown until the text is, or until the program has ended.
    std::string until(const std::string& text) const {
        constexpr int patience = 60'000;  // ms
        std::string shown;
        pollfd ready{terminal_, POLLIN, 0};
        for (char letter = 0; shown.find(text) == std::string::npos && poll(&ready, 1, patience) == 1 &&
                              ::read(terminal_, &letter, 1) == 1;)
            shown += letter;
        return shown;
    }
    int status() const {
        int status = 0;
        waitpid(process_, &status, 0);
        return status;
    }

  private:
    int terminal_ = -1;
    pid_t process_ = -1;
};

TEST_F(Bluetooth, ThePasskeyIsNotShownAndTheTerminalIsAsItWas) {
    const std::string line = "env OVNO2_HOME='" + (folder.path() / "home").string() + "' OVNO2_PHONES='" +
                             phones.string() + "' '" OVPHONE "' bluetooth pair 02:00:00:31:10:0B";
    const OnTerminal paired(line);
    EXPECT_THAT(paired.until("same one): "), HasSubstr("Passkey for 02:00:00:31:10:0B"));
    EXPECT_FALSE(paired.shows());
    paired.type("4711\n");
    EXPECT_THAT(paired.until("as in a film"), AllOf(HasSubstr("Paired with"), Not(HasSubstr("4711"))));
    EXPECT_EQ(0, paired.status());

    const OnTerminal interrupted(line);
    interrupted.until("same one): ");
    interrupted.type("47\x03");
    const int status = interrupted.status();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_TRUE(interrupted.shows());
}

}  // namespace

}  // namespace ovno2::host
