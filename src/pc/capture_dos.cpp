#include "pc/capture_dos.h"

#include <algorithm>
#include <chrono>

#include "core/attempt.h"
#include "core/current_platform.h"
#include "core/pending_messages.h"
#include "pc/ansi.h"
#include "pc/process_state.h"

namespace ovno2::CaptureDos {

namespace {

using namespace std::chrono;
using platform::CapturedCommand;

constexpr std::size_t pieceSize = 32768;
// A command that writes without end must not take the host's memory with it before its time is over.
constexpr std::size_t outputLimit = std::size_t{16} << 20;
// The first read waits for what a command has to say even when there is no time for more; one that says
// nothing holds nobody up.
constexpr auto firstPatience = 2000ms;

void readOutput(CapturedCommand& command, Long timeoutSeconds, std::string& output) {
    const auto start = steady_clock::now();
    const milliseconds time = seconds(std::max(timeoutSeconds, Long{0}));
    milliseconds wait = std::max(time, firstPatience);
    std::string piece;
    while (output.size() < outputLimit) {
        const auto most = static_cast<std::uint32_t>(std::min<std::int64_t>(wait.count(), INT32_MAX));
        if (command.read(piece, pieceSize, most) != CapturedCommand::Outcome::data) return;
        output += piece;
        wait = time - duration_cast<milliseconds>(steady_clock::now() - start);
        if (wait < 0ms) return;
    }
}

// A command that writes UTF-16 shows a zero, or another low code, as its second byte.
Text decoded(std::string_view bytes) {
    if (bytes.size() < 2 || static_cast<unsigned char>(bytes[1]) >= 8) return fromAnsi(bytes);
    Text text(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                        static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    }
    return text;
}

// Console programs write the OEM code page; these are its letters as the ANSI code page shows them.
char16_t repairedLetter(char16_t character) {
    switch (character) {
        case u'„':
            return u'ä';
        case u'”':
            return u'ö';
        case u'Ž':
            return u'Ä';
        case u'™':
            return u'Ö';
        case u'š':
            return u'Ü';
        case u'á':
            return u'ß';
        default:
            return character;
    }
}

void repairConsoleLetters(Text& text) {
    const Text code129 = fromAnsi("\x81");
    const char16_t smallUe = code129.size() == 1 && code129[0] >= 0x80 ? code129[0] : u'\x81';
    for (char16_t& character : text)
        character = character == smallUe ? u'ü' : repairedLetter(character);
}

}  // namespace

Text ExecuteCommand(TextView command, bool doNotWait, Long timeoutSeconds) {
    const RoutineLog log(u"CaptureDos.ExecuteCommand");
    ProcessState& state = stateOf<ProcessState>();
    if (command.empty()) {
        command = state.lastCommand;
    } else {
        attempt([&] { state.lastCommand = command; });
    }
    if (command.empty()) return {};

    platform::Platform& platform = currentPlatform();
    std::unique_ptr<CapturedCommand> running;
    DebugWrite(u"ExecuteCommand", 3);
    attempt([&] { running = platform.processes().startCaptured(command); });
    DebugWrite(u"ExecuteCommand", 4);
    processPendingMessages();
    if (!running) return {};

    std::string bytes;
    if (!doNotWait) {
        DebugWrite(u"ExecuteCommand", 5);
        attempt([&] { readOutput(*running, timeoutSeconds, bytes); });
        DebugWrite(u"ExecuteCommand", 6);
    }
    running.reset();
    DebugWrite(u"ExecuteCommand", 7);
    if (bytes.empty()) return {};

    Text output;
    attempt([&] { output = decoded(bytes); });
    attempt([&] { repairConsoleLetters(output); });
    DebugWrite(u"ExecuteCommand", 8);
    attempt([&] { state.lastOutput = output; });
    return output;
}

}  // namespace ovno2::CaptureDos
