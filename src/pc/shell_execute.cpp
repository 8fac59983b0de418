#include "pc/shell_execute.h"

#include "core/attempt.h"
#include "core/current_platform.h"
#include "pc/files.h"
#include "pc/process.h"

namespace ovno2::ShellExecute {

namespace {

constexpr Long firstSuccess = 33;
constexpr Long refused = 5;
constexpr Long showWithoutActivating = 4;
constexpr Long showMinimized = 6;
constexpr Long elevationRefused = -5;
constexpr Long notStarted = -1;
constexpr TextView interpreter = u"cmd.exe";

bool isRunning(TextView executable) {
    return Process::CheckIfRunning(Text(executable), /*id=*/0, /*refresh=*/true).id != 0;
}

// The interpreter may know what to do with a file that the shell does not.
void runThroughInterpreter(TextView file) {
    if (file.find(u' ') == TextView::npos) {
        ShellEx(interpreter, u"/c start " + Text(file), showMinimized, /*verb=*/{}, /*options=*/0);
        return;
    }
    const bool quote = file.find(u'&') == TextView::npos && !file.starts_with(u'"');
    const Text command = quote ? u'"' + Text(file) + u'"' : Text(file);
    ShellEx(interpreter, u"/k " + command, showWithoutActivating, /*verb=*/{}, /*options=*/0);
}

}  // namespace

Long ShellEx(TextView file, TextView parameters, Long show, TextView verb, Long options) {
    const RoutineLog log(u"ShellEx");
    DebugLine(u"ShellEx: ", file, u" ", parameters);
    const bool wasRunning = isRunning(file);  // a path is no executable's name
    if (verb.empty()) verb = u"open";
    Long answer = 0;
    attempt([&] { answer = currentPlatform().processes().shellExecute(verb, file, parameters, show); });
    DebugLine(u"lr:", decimal{answer});
    if ((options & judgeOutcome) == 0) return answer;
    if (answer >= firstSuccess || answer < 0) return 1;
    if (equalsIgnoringCase(verb, u"runas")) return answer == refused ? elevationRefused : notStarted;
    if (!wasRunning && isRunning(Files::FileNamePart(file))) return 1;
    if (!equalsIgnoringCase(file, interpreter) && file.find(u'?') == TextView::npos)
        attempt([&] { runThroughInterpreter(file); });
    return notStarted;
}

}  // namespace ovno2::ShellExecute
