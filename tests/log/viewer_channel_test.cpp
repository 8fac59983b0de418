#include "log/viewer_channel.h"

#include <gmock/gmock.h>
#include <optional>

#include "base/utf8.h"
#include "common/machine_test.h"
#include "common/test_window.h"
#include "core/attempt.h"
#include "log/debug_log.h"

namespace ovno2 {
namespace {

using testing::ElementsAre;

constexpr TextView hostDebugKey = u"Software\\Marrowind\\Orvanta\\Debug";
constexpr TextView debugKey = u"Software\\Tessaline\\Debug";

struct Message {
    std::uint32_t message, first, second;
    bool operator==(const Message&) const = default;
};

class LogViewer : public MachineTest {
  protected:
    LogViewer() {
        openViewer();
        setRegistryText(platform::currentUser, hostDebugKey, u"On", u"1");
    }

    void openViewer() {
        viewer.emplace(u"Viewer", [this](std::uint32_t message, std::uint32_t first, std::uint32_t second) {
            messages.push_back({message, first, second});
            return message == DebugLog::greetingMessage ? greeting : Long{7};
        });
        setRegistryText(platform::currentUser, hostDebugKey, u"hWnd", decimalText(viewer->number()));
    }
    void start(TextView mode, TextView level = u"4") {
        setRegistryText(platform::currentUser, hostDebugKey, u"Mode", mode);
        setRegistryText(platform::currentUser, hostDebugKey, u"Level", level);
        DebugLog::connect();
        DebugLog::DebugInit();
    }
    // The text of all chunk messages; end marks that fill the last chunk of a line are left out.
    std::string chunkText() const {
        std::string text;
        for (const Message& message : messages)
            for (std::uint64_t codes = message.first | std::uint64_t{message.second} << 32;
                 message.message == DebugLog::chunkMessage && codes != 0; codes >>= 8)
                text.push_back(static_cast<char>(codes & 0xFF));
        return text;
    }
    void line(TextView tag, TextView message) {
        stateOf<LogFront>().writer->writeLine(message, plainLine, 0, tag);
    }

    std::vector<Message> messages;
    Long greeting = DebugLog::greetingAnswer;
    std::optional<TestWindow> viewer;
};

TEST_F(LogViewer, TheViewerIsAskedAndSwitchesTheLogOn) {
    start(u"2");
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ((Message{29798, 0, 0}), messages[0]);
    EXPECT_TRUE(logIsOn());
    EXPECT_EQ("[ovNo2] remote Debug on, Level: 4\r\n", chunkText());
}

TEST_F(LogViewer, AViewerThatDeclinesLeavesTheLogOff) {
    greeting = 814;
    start(u"2");
    EXPECT_FALSE(logIsOn());
    EXPECT_THAT(messages, ElementsAre(Message{29798, 0, 0}));
}

TEST_F(LogViewer, EightCharactersGoIntoOneMessage) {
    start(u"2");
    messages.clear();
    line(u"T", u"abcde");
    EXPECT_THAT(messages, ElementsAre(Message{29797, 0x63626154, 0x0A0D6564}));
    messages.clear();
    line(u"T", u"abcdef");
    EXPECT_THAT(messages, ElementsAre(Message{29797, 0x63626154, 0x0D666564}, Message{29797, 0x0000000A, 0}));
    messages.clear();
    line(u"T", u"äŁ電€");
    EXPECT_THAT(messages, ElementsAre(Message{29797, 0x3F4CE454, 0x000A0D80}));
}

TEST_F(LogViewer, LinesAboveTheLevelAreNotSentAndDoNotIndent) {
    start(u"2", u"4");
    messages.clear();
    DebugWrite(u"detail", routineEntry, 5);
    EXPECT_TRUE(messages.empty());
    DebugWrite(u"shown", plainLine, 4);
    EXPECT_EQ("[ovNo2] shown\r\n", chunkText());
}

TEST_F(LogViewer, ModeAndVisibilityDecideTheChannel) {
    struct Case {
        TextView userMode, machineMode;
        bool visible;
        std::uint32_t expected;  // kind of the message a line makes, 0 = none
    };
    for (const Case& c :
         {Case{u"2", u"3", true, 29797}, Case{u"3", u"2", true, 29799}, Case{u"0", u"2", true, 0},
          Case{u"", u"2", true, 29797}, Case{u"", u"", true, 29799}, Case{u"", u"0", true, 29799},
          Case{u"x", u"3", true, 0}, Case{u"9", u"", true, 29799}, Case{u"2", u"", false, 0}}) {
        resetThreadState();
        usePlatform(machine);
        if (!c.visible) viewer->hide();
        setRegistryText(platform::localMachine, hostDebugKey, u"Mode", c.machineMode);
        start(c.userMode);
        messages.clear();
        DebugWrite(u"x");
        EXPECT_EQ(c.expected, messages.empty() ? 0 : messages[0].message) << toUtf8(c.userMode) << c.visible;
    }
}

TEST_F(LogViewer, ALineInTheSharedAreaIsFoundAtItsOffset) {
    start(u"3");
    messages.clear();
    DebugWrite(u"first für 電話");
    DebugWrite(u"second");
    ASSERT_EQ(2u, messages.size());
    EXPECT_EQ(29799u, messages[1].message);
    cMemMappedFile reader;
    reader.MemName = u"OVDebug";
    Text text;
    for (std::size_t i = 0;
         const TextView expected : {u"[ovNo2] first für 電話\r\n", u"[ovNo2] second\r\n"}) {
        EXPECT_EQ(expected.size(), messages[i].second);
        EXPECT_EQ(0, reader.MemRead(static_cast<Long>(messages[i].first),
                                    static_cast<Long>(messages[i].second), text));
        EXPECT_EQ(expected, text);
        ++i;
    }
}

TEST_F(LogViewer, WithoutASharedAreaLinesGoByMessages) {
    // An area of that name that is too small to be taken for the channel.
    const auto foreign = machine.sharedMemory().create(u"OVDebug", 64);
    ASSERT_TRUE(foreign);
    start(u"3");
    messages.clear();
    DebugWrite(u"still here");
    EXPECT_EQ("[ovNo2] still here\r\n", chunkText());
    EXPECT_EQ(noFailure, pendingFailure().number);
}

TEST_F(LogViewer, ReleasingTheAreaSaysSoByMessagesAndLeavesTheLogWorking) {
    start(u"3");
    DebugWrite(u"x");
    messages.clear();
    DebugLog::releaseSharedArea();
    EXPECT_EQ("[ovNo2] cMem Class_Terminate\r\n[ovNo2] MemClose\r\n", chunkText());
    messages.clear();
    DebugWrite(u"after");
    EXPECT_EQ("[ovNo2] after\r\n", chunkText());
    DebugLog::releaseSharedArea();
}

TEST_F(LogViewer, AViewerThatGoesAwayCostsNobodyAnything) {
    for (const TextView mode : {u"2", u"3"}) {
        resetThreadState();
        usePlatform(machine);
        if (!viewer) openViewer();
        start(mode);
        viewer.reset();
        raisePending(fileNotFound);
        DebugWrite(u"lost", routineEntry);
        EXPECT_EQ(noFailure, pendingFailure().number);
        EXPECT_TRUE(logIsOn());
    }
}

TEST_F(LogViewer, TheFailureAndTheLineArriveTogether) {
    start(u"2");
    messages.clear();
    raisePending(fileNotFound);
    DebugWrite(u"r", routineEntry);
    DebugWrite(u"x");
    EXPECT_EQ("[ovNo2]  53:File not found\r\n[ovNo2] <r>_\r\n[ovNo2]  x\r\n", chunkText());
}

TEST_F(LogViewer, TheSendersReturnTheLastAnswer) {
    DebugLog::ViewerChannel channel;
    channel.window = viewer->number();
    EXPECT_EQ(7, channel.DebugSendChunks(u"x"));
    EXPECT_EQ(-1, channel.DebugSendChunks(u""));
    EXPECT_EQ(7, channel.DebugSendShared(u"x"));
    viewer.reset();
    EXPECT_EQ(-1, channel.DebugSendChunks(u"x"));
}

}  // namespace
}  // namespace ovno2
