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

constexpr TextView hostDebugKey = u"Software\\Marrowind\\Orvanta\\Debug";

// The number of the message and its two parameters.
using Message = std::array<std::uint32_t, 3>;
using Messages = std::vector<Message>;

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
    // As on a new thread.
    void start(TextView mode) {
        resetThreadState();
        usePlatform(machine);
        messages.clear();
        setRegistryText(platform::currentUser, hostDebugKey, u"Mode", mode);
        setRegistryText(platform::currentUser, hostDebugKey, u"Level", u"4");
        DebugLog::DebugInit();
    }
    // The text of all chunk messages since the last call; end marks that fill the last chunk of a line are
    // left out.
    std::string chunkText() {
        std::string text;
        for (const auto& [message, first, second] : messages)
            for (std::uint64_t codes = first | std::uint64_t{second} << 32;
                 message == DebugLog::chunkMessage && codes != 0; codes >>= 8)
                text.push_back(static_cast<char>(codes & 0xFF));
        messages.clear();
        return text;
    }

    Messages messages;
    Long greeting = DebugLog::greetingAnswer;
    std::optional<TestWindow> viewer;
};

TEST_F(LogViewer, TheViewerIsAskedAndDecidesWhetherTheLogIsOn) {
    greeting = 814;
    start(u"2");
    EXPECT_FALSE(logIsOn());
    EXPECT_EQ((Messages{{29798, 0, 0}}), messages);
    greeting = DebugLog::greetingAnswer;
    start(u"2");
    EXPECT_TRUE(logIsOn());
    EXPECT_EQ((Message{29798, 0, 0}), messages.at(0));
    EXPECT_EQ("[ovNo2] remote Debug on, Level: 4\r\n", chunkText());
}

TEST_F(LogViewer, EightCharactersGoIntoOneMessage) {
    start(u"2");
    const std::pair<TextView, Messages> cases[] = {
        {u"abcde", {{29797, 0x63626154, 0x0A0D6564}}},
        {u"abcdef", {{29797, 0x63626154, 0x0D666564}, {29797, 0x0000000A, 0}}},
        {u"äŁ電€", {{29797, 0x3F4CE454, 0x000A0D80}}}};
    for (const auto& [line, expected] : cases) {
        messages.clear();
        stateOf<LogFront>().writer->writeLine(line, plainLine, 0, u"T");
        EXPECT_EQ(expected, messages) << toUtf8(line);
    }
}

TEST_F(LogViewer, LinesAboveTheLevelAreNotSentAndDoNotIndent) {
    start(u"2");
    messages.clear();
    DebugWrite(u"detail", routineEntry, 5);
    raisePending(fileNotFound);
    DebugWrite(u"shown", plainLine, 4);
    EXPECT_EQ("[ovNo2]  53:File not found\r\n[ovNo2] shown\r\n", chunkText());
}

TEST_F(LogViewer, ModeAndVisibilityDecideTheChannel) {
    constexpr std::uint32_t none = 0, chunks = 29797, shared = 29799;
    using Row = std::tuple<TextView, TextView, bool, std::uint32_t>;
    for (const auto& [userMode, machineMode, visible, expected] :
         {Row{u"2", u"3", true, chunks}, Row{u"3", u"2", true, shared}, Row{u"0", u"2", true, none},
          Row{u"", u"2", true, chunks}, Row{u"", u"", true, shared}, Row{u"", u"0", true, shared},
          Row{u"x", u"3", true, none}, Row{u"9", u"", true, shared}, Row{u"2", u"", false, none}}) {
        if (!visible) viewer->hide();
        setRegistryText(platform::localMachine, hostDebugKey, u"Mode", machineMode);
        start(userMode);
        messages.clear();
        DebugWrite(u"x");
        EXPECT_EQ(expected, messages.empty() ? 0 : messages[0][0]) << toUtf8(userMode) << visible;
    }
}

TEST_F(LogViewer, ALineInTheSharedAreaIsFoundAtItsOffsetUntilTheAreaIsReleased) {
    start(u"3");
    messages.clear();
    cMemMappedFile reader;
    reader.MemName = u"OVDebug";
    for (const Text line : {u"first für 電話", u"second"}) {
        DebugWrite(line);
        const auto [message, at, length] = messages.back();
        Text text;
        EXPECT_EQ(29799u, message);
        EXPECT_EQ(0, reader.MemRead(static_cast<Long>(at), static_cast<Long>(length), text));
        EXPECT_EQ(u"[ovNo2] " + line + u"\r\n", text);
    }
    EXPECT_EQ(2u, messages.size());
    DebugLog::releaseWhatIsOpen();
    DebugWrite(u"after");
    EXPECT_EQ("[ovNo2] cMem Class_Terminate\r\n[ovNo2] MemClose\r\n[ovNo2] after\r\n", chunkText());
    DebugLog::releaseWhatIsOpen();
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

TEST_F(LogViewer, AViewerThatGoesAwayCostsNobodyAnything) {
    for (const TextView mode : {u"2", u"3"}) {
        if (!viewer) openViewer();
        start(mode);
        viewer.reset();
        raisePending(fileNotFound);
        DebugWrite(u"lost", routineEntry);
        EXPECT_EQ(noFailure, pendingFailure().number);
        EXPECT_TRUE(logIsOn());
    }
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
