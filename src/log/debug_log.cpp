#include "log/debug_log.h"

#include <array>

#include "core/attempt.h"
#include "core/current_platform.h"
#include "log/viewer_channel.h"
#include "pc/ansi.h"
#include "pc/registry_access.h"

namespace ovno2::DebugLog {

namespace {

constexpr Long nothingToFile = -1;  // the level that keeps lines out of the file
constexpr Long levelBits = 15;
constexpr Long timestampBit = 16;
constexpr Long levelWhenOnlySwitchedOn = 2;
constexpr int deepestIndent = 50;
constexpr Long lastFileNumber = 255;

constexpr Long viewerByMessages = 2;  // modes; 0 and 1 are the file, 3 and more the shared area
constexpr Long viewerByArea = 3;

struct Location {
    Long hive;
    TextView key;
    TextView name;
};

constexpr TextView hostKey = u"Software\\Marrowind\\Orvanta";
constexpr TextView hostDebugKey = u"Software\\Marrowind\\Orvanta\\Debug";
constexpr TextView debugKey = u"Software\\Tessaline\\Debug";

constexpr Location userSwitch = {platform::currentUser, debugKey, u"On"};
constexpr Location machineSwitch = {platform::localMachine, debugKey, u"On"};
constexpr Location viewerSwitch = {platform::currentUser, hostDebugKey, u"On"};
constexpr Location userMode = {platform::currentUser, hostDebugKey, u"Mode"};
constexpr Location machineMode = {platform::localMachine, hostDebugKey, u"Mode"};
constexpr Location viewerLevel = {platform::currentUser, hostDebugKey, u"Level"};
constexpr Location userLevel = {platform::currentUser, debugKey, u"Level"};
constexpr Location machineLevel = {platform::localMachine, debugKey, u"Level"};
constexpr std::array<Location, 3> files = {{{platform::currentUser, debugKey, u"DebugFile"},
                                            {platform::localMachine, hostKey, u"DebugFile"},
                                            {platform::localMachine, debugKey, u"DebugFile"}}};
constexpr std::array<Location, 2> preliminaryLevels = {
    {{platform::currentUser, hostKey, u"DebugLevel"}, machineLevel}};
constexpr std::array<Location, 3> viewerWindows = {{{platform::currentUser, hostDebugKey, u"hWnd"},
                                                    {platform::currentUser, debugKey, u"hWnd"},
                                                    {platform::localMachine, debugKey, u"hWnd"}}};

Text textAt(const Location& location) {
    return Registry::GetRegValue(location.hive, location.key, location.name);
}

Registry::WatchedValue watch(const Location& location) {
    return {location.hive, location.key, location.name};
}

double numberAt(const Location& location) {
    return numericValue(textAt(location));
}

// `target` keeps its value when the number there does not fit.
void readNumber(Long& target, const Location& location) {
    attempt([&] { target = roundHalfToEven(numberAt(location)); });
}

template <std::size_t count>
void readFirstNumber(Long& target, const std::array<Location, count>& locations) {
    for (std::size_t i = 0; i < count && target == 0; ++i)
        readNumber(target, locations[i]);
}

Text tagOfModule(TextView module) {
    if (module == u"OVComm") return u"Comm";
    if (upperCase(module) == u"TIDEWELL") return u"TW";
    if (upperCase(module) == u"TIDEWELLTRAY") return u"TWTray";
    if (lowerCase(module) == u"snipkeeper") return u"SNK";
    if (lowerCase(module) == u"snipkeepertools") return u"SNKTools";
    return Text(module);
}

struct Marks {
    TextView opening;
    Text closing;
};

Marks marksOf(Long kind) {
    switch (kind) {
        case plainLine:
            return {};
        case routineEntry:
            return {u"<", u">_"};
        case routineExit:
            return {u"</", u">"};
        default: {
            Marks marks;
            appendPart(marks.closing, spacedDecimal{kind});
            return marks;
        }
    }
}

class Writer final : public LogWriter {
  public:
    void DebugInit();
    void releaseWhatIsOpen() {
        watchedViewerSwitch_.close();
        watchedUserSwitch_.close();
        const std::unique_ptr<cMemMappedFile> released = std::move(viewer_.sharedArea);
    }

    void writeLine(TextView message, Long kind, Long level, TextView tag) noexcept override;
    void recheckSwitches() noexcept override;

  private:
    void DebugRemoteInit();
    void chooseMode();
    Text composeLines(TextView error, TextView tag, TextView message, Long kind) const;
    void appendToFile(TextView lines) const;

    bool settingsRead_ = false;
    Text file_;  // path; empty = no file
    bool timestamps_ = false;
    Text prefix_;
    int indent_ = 0;  // blanks
    Long mode_ = 0;
    ViewerChannel viewer_;
    bool writing_ = false;  // what the writer itself calls logs nothing
    // The re-check comes so often that opening the keys each time would take most of a long read.
    Registry::WatchedValue watchedViewerSwitch_ = watch(viewerSwitch);
    Registry::WatchedValue watchedUserSwitch_ = watch(userSwitch);
};

struct State {
    static constexpr StateSlot slot = StateSlot::log;
    Writer writer;
    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() { stateOf<LogFront>().writer = nullptr; }
};

void Writer::DebugInit() {
    if (settingsRead_) return;
    LogFront& front = stateOf<LogFront>();
    for (std::size_t i = 0; i < files.size() && file_.empty(); ++i)
        file_ = textAt(files[i]);
    readFirstNumber(front.level, preliminaryLevels);
    if (front.level == 0 && (numberAt(userSwitch) != 0 || numberAt(machineSwitch) != 0))
        front.level = levelWhenOnlySwitchedOn;
    if (numberAt(userSwitch) > 0 && (!file_.empty() || front.level > 0)) front.enabled = true;
    attempt([&] { prefix_ = u"[" + tagOfModule(currentPlatform().libraries().moduleName()) + u"] "; });
    DebugRemoteInit();
    timestamps_ = (front.level & timestampBit) != 0;
    front.level &= levelBits;
    settingsRead_ = true;
}

void Writer::DebugRemoteInit() {
    LogFront& front = stateOf<LogFront>();
    viewer_.window = 0;
    readFirstNumber(viewer_.window, viewerWindows);
    chooseMode();

    front.level = 0;
    readNumber(front.level, viewerLevel);
    front.level &= levelBits;
    if (front.level == 0) readNumber(front.level, userLevel);
    if (front.level == 0) readNumber(front.level, machineLevel);

    if (!front.enabled && viewer_.window != 0 && numberAt(viewerSwitch) != 0 && viewer_.viewerWantsLines())
        front.enabled = true;
    if (!viewer_.sharedArea) {
        attempt([&] {
            auto area = std::make_unique<cMemMappedFile>();
            area->MemName = sharedAreaName;
            viewer_.sharedArea = std::move(area);
        });
    }
    if (front.enabled) DebugLine(u"remote Debug on, Level:", spacedDecimal{front.level});
}

void Writer::chooseMode() {
    mode_ = 0;
    if (viewer_.window == 0 || !currentPlatform().windows().isVisible(viewer_.window)) return;
    if (!textAt(userMode).empty()) return readNumber(mode_, userMode);
    readNumber(mode_, machineMode);
    if (mode_ == 0) mode_ = viewerByArea;
}

void Writer::recheckSwitches() noexcept {
    attempt([&] {
        if (numericValue(watchedViewerSwitch_.text()) == 0 && numericValue(watchedUserSwitch_.text()) == 0)
            return;
        settingsRead_ = false;
        DebugInit();
    });
}

void Writer::writeLine(TextView message, Long kind, Long level, TextView tag) noexcept {
    if (writing_) return;
    const LogFront& front = stateOf<LogFront>();
    const PendingFailure failure = std::exchange(pendingFailure(), {});
    if (tag.empty()) tag = prefix_;
    if (kind == routineExit && !tag.empty() && indent_ > 0) --indent_;
    const bool toViewer = mode_ >= viewerByMessages;
    if (toViewer && level > front.level) return;

    if (toViewer || (front.level != nothingToFile && !file_.empty())) {
        writing_ = true;
        attempt([&] {
            Text error;
            if (failure.number != noFailure) {
                appendPart(error, spacedDecimal{failure.number});
                error.push_back(u':');
                error.append(failure.description.empty() ? describeFailure(failure.number)
                                                         : TextView(failure.description));
            }
            const Text lines = composeLines(error, tag, message, kind);
            if (!toViewer)
                appendToFile(lines);
            else if (mode_ == viewerByMessages)
                viewer_.DebugSendChunks(lines);
            else
                viewer_.DebugSendShared(lines);
        });
        clearPendingFailure();
        writing_ = false;
    }
    if (kind == routineEntry && ++indent_ > deepestIndent) indent_ = 0;
}

// The failure's line, if there is a failure, and the line itself; both end in CR LF.
Text Writer::composeLines(TextView error, TextView tag, TextView message, Long kind) const {
    constexpr TextView lineEnd = u"\r\n";
    const auto indent = static_cast<std::size_t>(indent_);
    const Marks marks = marksOf(kind);
    Text lines;
    lines.reserve(2 * (tag.size() + indent) + error.size() + message.size() + 32);
    if (!error.empty()) lines.append(tag).append(indent, u' ').append(error).append(lineEnd);
    if (timestamps_)
        lines.append(decimalText(currentPlatform().clock().secondsSinceMidnight())).append(u": ");
    lines.append(tag).append(indent, u' ').append(marks.opening).append(message).append(marks.closing);
    return lines.append(lineEnd);
}

void Writer::appendToFile(TextView lines) const {
    const std::string bytes = toAnsi(lines);
    platform::Files& seam = currentPlatform().files();
    platform::OpenFile* opened = nullptr;
    Long number = 0;
    FailureNumber failure = fileAlreadyOpen;
    while (failure == fileAlreadyOpen && number < lastFileNumber)
        failure = seam.open(++number, file_, platform::FileAccess::append, opened);
    if (failure != noFailure) return;
    opened->write(bytes.data(), bytes.size());
    seam.close(number);
}

Writer& writer() {
    return stateOf<State>().writer;
}

}  // namespace

void connect() {
    stateOf<LogFront>().writer = &writer();
}

void DebugInit() noexcept {
    attempt([] {
        connect();
        writer().DebugInit();
    });
}

void releaseWhatIsOpen() noexcept {
    attempt([] { writer().releaseWhatIsOpen(); });
}

}  // namespace ovno2::DebugLog
