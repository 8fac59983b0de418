#include "host/viewer/published_viewer.h"

#include "core/current_platform.h"
#include "core/log_front.h"
#include "host/output/text.h"
#include "log/viewer_channel.h"
#include "pc/registry_access.h"

namespace ovno2::host {

namespace {

constexpr TextView key = u"Software\\Marrowind\\Orvanta\\Debug";
constexpr Long textType = 1;

enum Position : std::size_t { windowValue, modeValue, levelValue, switchValue };

Text read(TextView name) {
    return Registry::GetRegValue(platform::currentUser, key, name);
}

void store(TextView name, TextView text) {
    Registry::SetRegValue(platform::currentUser, key, name, text, textType);
    clearPendingFailure();
}

}  // namespace

Long runningViewer() {
    const Long window = numericLong(read(u"hWnd"));
    platform::Windows& windows = currentPlatform().windows();
    if (window == 0) return 0;
    Long answer = 0;
    const Long outcome = windows.send(window, DebugLog::greetingMessage, 0, 0, answer);
    if (outcome == platform::invalidWindowHandle) return 0;
    const bool hangs = outcome != noFailure;
    return hangs || answer == DebugLog::greetingAnswer ? window : 0;
}

// The switch comes last: whoever sees it finds the window.
PublishedViewer::PublishedViewer(Long window, LogMode mode, std::optional<Long> level)
    : values_{{{u"hWnd", {}, {}}, {u"Mode", {}, {}}, {u"Level", {}, {}}, {u"On", {}, {}}}} {
    const bool leftBehind = !read(values_[windowValue].name).empty();
    for (Value& value : values_) {
        value.written = read(value.name);
        if (!leftBehind) value.before = value.written;
    }
    write(values_[windowValue], decimalText(window));
    write(values_[modeValue], decimalText(static_cast<Long>(mode)));
    if (level) setLevel(*level);
    write(values_[switchValue], u"1");
}

PublishedViewer::~PublishedViewer() {
    for (std::size_t i = values_.size(); i-- > 0;)
        if (const Value& value = values_[i];
            value.before != value.written && read(value.name) == value.written)
            store(value.name, value.before);
}

bool PublishedViewer::isPublished() const {
    return read(values_[windowValue].name) == values_[windowValue].written &&
           read(values_[switchValue].name) == values_[switchValue].written;
}

void PublishedViewer::setLevel(Long level) {
    write(values_[levelValue], decimalText(level));
}

void PublishedViewer::write(Value& value, const Text& text) {
    value.written = text;
    store(value.name, text);
}

}  // namespace ovno2::host
