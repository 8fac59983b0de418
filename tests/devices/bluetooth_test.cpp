#include "devices/bluetooth.h"

#include <gmock/gmock.h>

#include "common/phone_test.h"
#include "devices/media.h"
#include "devices/session.h"

namespace ovno2 {
namespace {

using library::Status;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr Status notReached = library::phoneNotReached;
constexpr Status off = library::mediumOff;
constexpr Status refusal = library::pairingRefused;
constexpr Status other = 0x80100001;

class BluetoothTest : public PhoneTest {
  protected:
    BluetoothTest() {
        clock().set({.year = 2008, .month = 7, .day = 1, .hour = 23, .minute = 59, .second = 58});
        attachPhones();
    }
    ~BluetoothTest() override {
        Session::DMApiTerminate();
        MediaControl::MediaApiTerminate();
    }

    void attachPhones() {
        simulator.run("surroundings",
                      {{"bluetooth", simulator::Control::Json::parse(R"({"format": 1, "found": [
                          {"deviceNumber": 7, "deviceName": "Nokia 6300", "address": "00:1A:2B:3C:4D:5E",
                           "state": 8, "passkey": "1234"},
                          {"deviceNumber": 8, "deviceName": "Müller", "address": "00:1A:2B:3C:4D:5F"}]})")}});
    }

    // The calls that matter, in order: "P" pairs, "T" trusts, "S100" searches with that time-out, "M" opens
    // the media in order to switch Bluetooth on.
    std::string made() {
        std::string text;
        for (const std::string& line : simulator.readJournal()) {
            if (line.starts_with("CONAChangeDeviceTrustedState("))
                text += line.find("operation 100") != std::string::npos ? "P " : "T ";
            if (line.starts_with("CONASearchDevices("))
                text += "S" + std::to_string(std::stoi(line.substr(line.find("timeout ") + 8))) + " ";
            if (line.starts_with("CONAOpenMM(")) text += "M ";
        }
        if (!text.empty()) text.pop_back();
        return text;
    }
};

// The lines that tell of a change, and a clock that a slow library lets run on.
class ChangeLog : public RecordingLog {
  public:
    ChangeLog(TestClock& clock, std::size_t slowCall) : clock_(clock), slowCall_(slowCall) {}
    void writeLine(TextView message, Long kind, Long level, TextView tag) noexcept override {
        RecordingLog::writeLine(message, kind, level, tag);
        const bool isStatus = kind == plainLine && message.size() == 8 && message[0] == u'8';
        if (isStatus && ++statuses_ == slowCall_) clock_.advance(std::chrono::seconds(10));
        if (kind == plainLine && message.size() == 2 && message[0] == u'e') told += toUtf8(message);
    }
    std::string told;

  private:
    TestClock& clock_;
    std::size_t slowCall_;
    std::size_t statuses_ = 0;
};

TEST_F(BluetoothTest, EverySequenceOfStatusesHasItsCalls) {
    struct Case {
        TextView behindAddress, passkey;
        Long what;
        std::vector<Status> statuses;  // of the calls that change the state, in order; 0 = as the phone does
        const char* made;
        const char* told;
        Long result;
        std::size_t slowCall = 0;  // the one that takes ten seconds
    };
    constexpr auto as = [](Status status) { return static_cast<Long>(status); };
    const Case cases[] = {
        // Only trusted.
        {u"", u"", 3, {0}, "T", "", 0},
        {u"", u"", 3, {notReached, 0}, "T M S100 T", "e0", 0},
        {u"", u"", 3, {notReached, notReached}, "T M S100 T", "e0", as(notReached)},
        {u"", u"", 3, {notReached}, "T", "", as(notReached), 1},
        {u"", u"", 3, {off}, "T", "", as(off)},
        // Paired only.
        {u"", u"1234", 1, {0}, "P", "", 0},
        {u"", u"9999", 1, {0}, "P", "e3", -2},
        {u"", u"1234", 1, {other}, "P", "", as(other)},
        {u"", u"1234", 1, {notReached, 0}, "P M S100 P", "e1", 0},
        {u"", u"1234", 1, {notReached, notReached}, "P M S100 P", "e1e2", as(notReached)},
        {u"", u"1234", 1, {notReached}, "P", "e2", as(notReached), 1},
        {u"", u"1234", 1, {off, off, 0}, "P M P M P", "", 0},
        {u"", u"1234", 1, {off, off, off}, "P M P M P", "", as(off)},
        {u"", u"1234", 1, {off, notReached, 0}, "P M P M S100 P", "e1", 0},
        {u"", u"1234", 1, {notReached, refusal}, "P M S100 P", "e1e3", -2},
        {u"", u"", 1, {0}, "P", "e3", -2},
        // Paired and trusted.
        {u"", u"1234", 3, {0, 0}, "P T", "", 0},
        {u"", u"1234", 3, {refusal}, "P", "e3", -2},
        {u"", u"1234", 3, {notReached, notReached}, "P M S100 P", "e1e2", as(notReached)},
        {u"", u"1234", 3, {other, 0}, "P T", "", 0},
        {u"", u"1234", 3, {0, other}, "P T", "", as(other)},
        {u"", u"1234", 3, {off, off, off, 0}, "P M P M P T", "", 0},
        {u"", u"1234", 3, {notReached, 0, notReached, off, 0}, "P M S100 P T M S50 T M S50 T", "e1e4e4", 0},
        // Marked as trusted.
        {u"", u"", 2, {notReached, off, notReached}, "T M S50 T M S50 T", "e4e4e5", as(notReached)},
        {u"", u"", 2, {off}, "T", "e5", as(off), 1},
        {u"", u"", 2, {notReached, off}, "T M S50 T", "e4e5", as(off), 2},
        // What stands behind the address decides.
        {u"!1", u"", 3, {}, "", "", -9},
        {u"!5", u"", 0, {}, "", "", -9},
        {u"!1", u"1234", 0, {0, 0}, "P T", "", 0},
        {u" ! 5", u"1234", 3, {0}, "P", "", 0},
        {u"0", u"1234", 3, {0}, "T", "", 0},
        {u"4", u"1234", 3, {}, "", "", -1},
        {u"x", u"", 3, {0}, "T", "", 0},
        {u"99999999999", u"", 3, {0}, "T", "", 0},
        // Nothing is asked for.
        {u"", u"1234", 0, {}, "", "", -1},
        {u"", u"1234", 8, {}, "", "", -1},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(&one - cases);
        simulator.clearPlan();
        attachPhones();
        Session::DMApiInit();
        ChangeLog log(clock(), one.slowCall);
        simulator.readJournal();
        for (std::size_t i = 0; i < one.statuses.size(); ++i)
            if (one.statuses[i] != 0)
                simulator.fail("CONAChangeDeviceTrustedState", one.statuses[i],
                               static_cast<std::uint32_t>(i + 1));
        const Text address = u" 00:1a:2b:3c:4D:5E" + Text(one.behindAddress);
        EXPECT_EQ(one.result, Bluetooth::ChangeDeviceTrustedStateSub(address, one.what, Text(one.passkey)));
        EXPECT_EQ(one.made, made());
        EXPECT_EQ(one.told, log.told);
        for (const std::string& line : log.lines)
            EXPECT_THAT(line, Not(HasSubstr("1234")));
    }
}

TEST_F(BluetoothTest, ASearchListsWhatItFinds) {
    TextArray models, addresses, ids;
    LongArray states({5, 6, 7});
    EXPECT_EQ(0, Bluetooth::MediaSearchBT(models, addresses, ids, states, /*timeout=*/200));
    EXPECT_THAT(models.elements(), ElementsAre(u"Nokia 6300", u"Müller"));
    EXPECT_THAT(addresses.elements(), ElementsAre(u"00:1A:2B:3C:4D:5E", u"00:1A:2B:3C:4D:5F"));
    EXPECT_THAT(ids.elements(), ElementsAre(u"7", u"8"));
    EXPECT_THAT(states.elements(), ElementsAre(8, 0));
    EXPECT_EQ("M S200", made());

    simulator.fail("CONASearchDevices", other);
    EXPECT_EQ(-2, Bluetooth::MediaSearchBT(models, addresses, ids, states, /*timeout=*/-1));
    simulator.run("surroundings",
                  {{"bluetooth", {{"format", 1}, {"found", simulator::Control::Json::array()}}}});
    EXPECT_EQ(0, Bluetooth::MediaSearchBT(models, addresses, ids, states, /*timeout=*/0));
    Session::DMApiTerminate();
    simulator.fail("CONAOpenDM", other, 1, /*onwards=*/true);
    EXPECT_EQ(-1, Bluetooth::MediaSearchBT(models, addresses, ids, states, /*timeout=*/200));
    EXPECT_EQ(2u, models.size());  // all three have left the arrays alone
}

TEST_F(BluetoothTest, WildListsAreNotFollowed) {
    using Json = simulator::Control::Json;
    for (const Json& value : {Json(0), Json(0xFFFFFFFFu), Json("unmapped")}) {
        simulator.clearPlan();
        simulator.run("poke",
                      {{"call", "CONASearchDevices"}, {"record", "found"}, {"word", 2}, {"value", value}});
        TextArray models, addresses, ids;
        LongArray states;
        EXPECT_EQ(0, Bluetooth::MediaSearchBT(models, addresses, ids, states, /*timeout=*/200));
        EXPECT_EQ(u"", models.at(0));
        EXPECT_EQ(u"00:1A:2B:3C:4D:5E", addresses.at(0));
    }
}

// Acts in the place of a host's window that lives on while a search runs.
class ActsDuringSearch : public RecordingLog {
  public:
    explicit ActsDuringSearch(std::function<void()> action) : action_(std::move(action)) {}
    void writeLine(TextView message, Long kind, Long, TextView) noexcept override {
        if (kind == routineEntry && message == u"CallBackMediaSearchBT") action_();
    }

  private:
    std::function<void()> action_;
};

TEST_F(BluetoothTest, AHostThatClosesDuringASearchGetsAnAnswer) {
    TextArray models({u"kept"}), addresses, ids;
    LongArray states;
    const Text address = u"00:1A:2B:3C:4D:5E";
    {
        const ActsDuringSearch log([&] {
            Session::DMApiTerminate();
            MediaControl::MediaApiTerminate();
        });
        EXPECT_EQ(-2, Bluetooth::MediaSearchBT(models, addresses, ids, states, /*timeout=*/200));
        EXPECT_EQ(u"kept", models.at(0));
        simulator.fail("CONAChangeDeviceTrustedState", notReached);
        EXPECT_GT(0, Bluetooth::ChangeDeviceTrustedStateSub(address, 3, {}));
    }
    EXPECT_EQ(0, Bluetooth::ChangeDeviceTrustedStateSub(address, 3, {}));
}

}  // namespace
}  // namespace ovno2
