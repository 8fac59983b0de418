#include "content/connection.h"

#include <cmath>

#include "core/attempt.h"
#include "core/current_platform.h"
#include "core/pending_messages.h"

namespace ovno2::Content {

namespace {

constexpr Single secondsOfTrust = 1;

Single secondsSinceMidnight() {
    return currentPlatform().clock().secondsSinceMidnight();
}

}  // namespace

library::Answer Connection::openOver(library::Word medium, library::Word target,
                                     const char16_t* serialNumber) {
    if (!serialNumber) return {};
    library::Handle opened = 0;
    const library::Answer answer = library::DAOpenCA.tried(serialNumber, &medium, target, &opened);
    if (answer.succeeded()) handle = opened;
    return answer;
}

Long Connection::close() {
    const Long status = handle != 0 ? library::DACloseCA.tried(handle).status : 0;
    handle = 0;
    lastCheck.status = library::notCalled;
    writeSession = {};
    return status;
}

void Connection::remember(Long status) {
    lastCheck.at = secondsSinceMidnight();
    lastCheck.status = status;
}

bool Connection::isTrusted(const Text& forSerial) const {
    return lastCheck.status == 0 && forSerial == serial &&
           std::fabs(secondsSinceMidnight() - lastCheck.at) < secondsOfTrust;
}

void waitToReconnect() {
    constexpr std::uint32_t pause = 50;  // milliseconds
    attempt([] { currentPlatform().clock().sleep(pause); });
    processPendingMessages();
}

}  // namespace ovno2::Content
