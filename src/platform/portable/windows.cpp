#include "platform/portable/windows.h"

#include <cstdio>

#include "base/utf8.h"
#include "base/values.h"

namespace ovno2::platform::portable {

namespace {

using Outcome = WindowConnection::Outcome;

constexpr Long buttonsOfStyle = 15;
constexpr Long yesAndNo = 4;
constexpr Long procedureStep = 16;  // numbers of procedures look like the addresses they stand for

// What a message box nobody can see is answered with: OK, or the button that changes least.
Long quietAnswer(Long style) {
    constexpr Long ok = 1, cancel = 2, no = 7;
    const Long buttons = style & buttonsOfStyle;
    if (buttons == 0) return ok;
    return buttons == yesAndNo ? no : cancel;
}

}  // namespace

template <class Exchange>
Outcome PortableWindows::with(Long window, Exchange&& exchange) {
    std::shared_ptr<Connection> connection;
    {
        const std::lock_guard guard(mutex_);
        std::shared_ptr<Connection>& known = connections_[window];
        if (!known) known = std::make_shared<Connection>(profileFolder_, window);
        connection = known;
    }
    Outcome outcome{};
    {
        const std::lock_guard guard(connection->mutex);
        outcome = exchange(connection->line);
    }
    if (outcome == Outcome::gone) {
        const std::lock_guard guard(mutex_);
        connections_.erase(window);
    }
    return outcome;
}

bool PortableWindows::isVisible(Long window) {
    WindowConnection::State state;
    return with(window, [&](WindowConnection& line) { return line.query(state); }) == Outcome::answered &&
           state.visible;
}

Long PortableWindows::send(Long window, std::uint32_t message, std::uint32_t first, std::uint32_t second,
                           Long& answer) {
    switch (with(window, [&](WindowConnection& line) { return line.send(message, first, second, answer); })) {
        case Outcome::answered:
            return noFailure;
        case Outcome::timedOut:
            return windowDoesNotAnswer;
        case Outcome::gone:
            break;
    }
    return invalidWindowHandle;
}

void PortableWindows::processPendingMessages() {
    std::vector<std::function<void()>> handlers;
    {
        const std::lock_guard guard(mutex_);
        if (pendingHandlers_.empty()) return;
        handlers = pendingHandlers_;
    }
    for (const std::function<void()>& handler : handlers)
        handler();
}

FailureNumber PortableWindows::activate(TextView title) {
    Long chosen = 0;
    for (const Long number : endpointNumbers(profileFolder_)) {
        WindowConnection::State state;
        if (with(number, [&](WindowConnection& line) { return line.query(state); }) != Outcome::answered ||
            !state.visible)
            continue;
        if (equalsIgnoringCase(state.title, title)) {
            chosen = number;
            break;
        }
        if (chosen == 0 && equalsIgnoringCase(TextView(state.title).substr(0, title.size()), title))
            chosen = number;
    }
    if (chosen == 0 ||
        with(chosen, [](WindowConnection& line) { return line.activate(); }) != Outcome::answered)
        return invalidProcedureCall;
    const std::lock_guard guard(mutex_);
    activeWindow_ = chosen;
    return noFailure;
}

FailureNumber PortableWindows::sendKeys(TextView keys) {
    Long window = 0;
    {
        const std::lock_guard guard(mutex_);
        window = activeWindow_;
    }
    if (window == 0) return invalidProcedureCall;
    return with(window, [&](WindowConnection& line) { return line.sendKeys(keys); }) == Outcome::answered
               ? noFailure
               : invalidProcedureCall;
}

FailureNumber PortableWindows::callProcedure(Long procedure, Long first, Long second, Long third, Long fourth,
                                             Long& answer) {
    Procedure called;
    {
        const std::lock_guard guard(mutex_);
        const auto known = procedures_.find(procedure);
        if (known == procedures_.end()) return invalidProcedureCall;
        called = known->second;
    }
    answer = called(first, second, third, fourth);
    return noFailure;
}

Long PortableWindows::registerProcedure(Procedure procedure) {
    const std::lock_guard guard(mutex_);
    const Long number = nextProcedure_;
    nextProcedure_ += procedureStep;
    procedures_[number] = std::move(procedure);
    return number;
}

void PortableWindows::unregisterProcedure(Long number) {
    const std::lock_guard guard(mutex_);
    procedures_.erase(number);
}

void PortableWindows::whenMessagesArePending(std::function<void()> handler) {
    const std::lock_guard guard(mutex_);
    pendingHandlers_.push_back(std::move(handler));
}

Long PortableWindows::messageBox(TextView text, Long style) {
    if (answerMessageBox) return answerMessageBox(text, style);
    std::fprintf(stderr, "%s\n", toUtf8(replaceAll(text, u"\r", u"\n")).c_str());
    return quietAnswer(style);
}

std::unique_ptr<Windows> makeWindows(Machine& machine) {
    return std::make_unique<PortableWindows>(machine);
}

}  // namespace ovno2::platform::portable
