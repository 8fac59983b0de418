#include "devices/bluetooth.h"

#include "base/secret.h"
#include "core/pending_messages.h"
#include "devices/devices.h"
#include "devices/media.h"
#include "devices/session.h"
#include "library/library_memory.h"

namespace ovno2::Bluetooth {

namespace {

using library::ConnectionRecord;
using library::is;
using library::LibraryString;
using library::Word;

constexpr Word searchOption = library::mediumBluetooth + 0x2000;
constexpr Word operationPair = 0x100;
constexpr Word operationTrust = 0x400;
constexpr Long noSession = -1;
constexpr Long searchFailed = -2;
constexpr Long nothingAttempted = -1;
constexpr Long refused = -2;
constexpr Long passkeyMissing = -9;
constexpr std::size_t addressLength = 17;  // "00:11:22:33:44:55"
constexpr Long flagPair = 1;
constexpr Long flagDoNotTrust = 4;
constexpr int mostPairingAttempts = 3;

// The phones that a search found; the list goes back to the library on every way out.
class FoundList {
  public:
    ~FoundList() {
        if (library::isAddress(list_))
            library::CONAFreeDeviceStructure.tried(count_, library::pointerTo(list_));
    }
    FoundList() = default;
    FoundList(const FoundList&) = delete;
    FoundList& operator=(const FoundList&) = delete;

    library::Answer search(Long timeout) {
        return library::CONASearchDevices.tried(
            Session::handle(), searchOption, static_cast<Word>(timeout),
            reinterpret_cast<library::signature::SearchProgress>(&CallBackMediaSearchBT), &count_, &list_);
    }
    bool found() const { return library::isAddress(list_) && count_ >= 1; }
    std::vector<ConnectionRecord> records() const {
        if (count_ > Devices::mostDevices) throw RuntimeFailure(invalidProcedureCall);
        return library::copyBlock<ConnectionRecord>(list_, count_);
    }

  private:
    Word count_ = 0;
    Address list_ = 0;
};

void listFound(const std::vector<ConnectionRecord>& found, TextArray& models, TextArray& addresses,
               TextArray& deviceIds, LongArray& states) {
    const Long last = static_cast<Long>(found.size()) - 1;
    attempt([&] { models.resize(last); });
    attempt([&] { addresses.resize(last); });
    attempt([&] { deviceIds.resize(last); });
    attempt([&] { states.resize(last); });
    for (Long i = 0; i <= last; ++i) {
        const ConnectionRecord& record = found[static_cast<std::size_t>(i)];
        attempt([&] { deviceIds.at(i) = decimalText(static_cast<Long>(record.deviceNumber)); });
        attempt([&] { models.at(i) = library::codePageText(record.deviceName); });
        attempt([&] { addresses.at(i) = library::codePageText(record.address); });
        attempt([&] { states.at(i) = static_cast<Long>(record.state); });
    }
}

// How long one call of the library took.
class CallTime {
  public:
    bool isUp() const {
        constexpr Single secondsOfADay = 86400;
        constexpr Single limit = 10;  // seconds
        Single passed = currentPlatform().clock().secondsSinceMidnight() - began_;
        if (passed < 0) passed += secondsOfADay;
        return passed >= limit;
    }

  private:
    Single began_ = currentPlatform().clock().secondsSinceMidnight();
};

// The passkey in the library's memory for the length of the pairing.
class LibraryPasskey {
  public:
    explicit LibraryPasskey(const Text& passkey) : text_(passkey), length_(passkey.size()) {}
    ~LibraryPasskey() {
        if (text_.get()) wipe(text_.get(), length_);
    }
    LibraryPasskey(const LibraryPasskey&) = delete;
    LibraryPasskey& operator=(const LibraryPasskey&) = delete;
    const char16_t* get() const { return text_.get(); }

  private:
    LibraryString text_;
    std::size_t length_;
};

// The phone whose state is changed, and how the library's last call on it ended.
class Change {
  public:
    Change(const char16_t* address, Long what) : address_(address), what_(what) {}

    Long result() const { return result_; }
    Long what() const { return what_; }

    void trustOnly() {
        while (true) {
            const CallTime time;
            call(operationTrust, nullptr);
            if (!is(result_, library::phoneNotReached) || time.isUp() || searches_ >= 1) return;
            DebugLine(u"e0");
            search(100);
        }
    }

    void pairWith(const char16_t* passkey) {
        for (int attempts = 1;; ++attempts) {
            const CallTime time;
            call(operationPair, passkey);
            if (is(result_, library::phoneNotReached)) {
                if (time.isUp() || searches_ >= 1) {
                    what_ = 0;
                    DebugLine(u"e2");
                    break;
                }
                DebugLine(u"e1");
                search(100);
            } else if (is(result_, library::mediumOff) && attempts < mostPairingAttempts) {
                MediaControl::MediaConnect(eMediaBT, /*secondMedium=*/-1, /*disconnect=*/false);
            } else {
                break;
            }
        }
        if (is(result_, library::pairingRefused)) {
            DebugLine(u"e3");
            what_ = 0;
            result_ = refused;
        }
        searches_ = 0;
    }

    void markTrusted() {
        while (true) {
            const CallTime time;
            call(operationTrust, nullptr);
            if (!is(result_, library::phoneNotReached) && !is(result_, library::mediumOff)) return;
            if (time.isUp() || searches_ >= 2) break;
            DebugLine(u"e4");
            search(50);
            processPendingMessages();
        }
        what_ = 0;
        DebugLine(u"e5");
    }

  private:
    void call(Word operation, const char16_t* passkey) {
        result_ = library::CONAChangeDeviceTrustedState
                      .tried(Session::handle(), operation, address_, passkey, /*name=*/nullptr)
                      .valueOr(result_);
        DebugLine(hex{result_});
    }

    void search(Long timeout) {
        TextArray models;
        TextArray addresses;
        TextArray deviceIds;
        LongArray states;
        MediaSearchBT(models, addresses, deviceIds, states, timeout);
        ++searches_;
    }

    const char16_t* address_;
    Long what_;
    int searches_ = 0;  // since pairing or marking began
    Long result_ = nothingAttempted;
};

}  // namespace

Long MediaSearchBT(TextArray& models, TextArray& addresses, TextArray& deviceIds, LongArray& states,
                   Long timeout) {
    const RoutineLog log(u"MediaSearchBT");
    if (!Session::isOpen()) {
        const Long opened = Session::DMApiInit().result;
        if (opened != 0) {
            DebugLine(u" e1", hex{opened});
            return noSession;
        }
    }
    MediaControl::MediaConnect(eMediaBT, /*secondMedium=*/-1, /*disconnect=*/false);
    FoundList list;
    const library::Answer searched = list.search(timeout);
    if (!searched.succeeded()) {
        DebugLine(u" e2", hex{searched.status});
        return searchFailed;
    }
    if (!list.found()) return 0;
    std::vector<ConnectionRecord> found;
    if (attempt([&] { found = list.records(); }) != noFailure) return searchFailed;
    listFound(found, models, addresses, deviceIds, states);
    return 0;
}

library::Status OVNO2_CALLED_BY_LIBRARY CallBackMediaSearchBT(library::Word, library::Word) noexcept {
    const RoutineLog log(u"CallBackMediaSearchBT");
    processPendingMessages();
    return 0;
}

Long ChangeDeviceTrustedStateSub(const Text& address, Long what, const Text& passkey) {
    const RoutineLog log(u"ChangeDeviceTrustedStateSub");
    DebugLine(decimal{what});
    if (!Session::isOpen()) Session::DMApiInit();
    Text bare;
    if (attempt([&] { bare = removeAll(removeAll(address, u' '), u'!'); }) != noFailure)
        return nothingAttempted;
    if (bare.size() > addressLength) {
        Long flags = 0;
        attempt([&] { flags = roundHalfToEven(numericValue(TextView(bare).substr(addressLength))); });
        bare.resize(addressLength);
        what = (flags & flagPair) != 0 ? pair : 0;
        if ((flags & flagDoNotTrust) == 0) what |= trust;
        if ((what & pair) != 0 && passkey.empty()) return passkeyMissing;
    }
    attempt([&] { bare = upperCase(bare); });
    const LibraryString libraryAddress(bare);
    if (!libraryAddress.get()) return nothingAttempted;

    Change change(libraryAddress.get(), what);
    if (passkey.empty() && what == (pair | trust)) {
        change.trustOnly();
        return change.result();
    }
    if ((change.what() & pair) != 0) {
        const LibraryPasskey libraryPasskey(passkey);
        if (!libraryPasskey.get()) return nothingAttempted;
        change.pairWith(libraryPasskey.get());
    }
    if ((change.what() & trust) != 0) change.markTrusted();
    return change.result();
}

}  // namespace ovno2::Bluetooth
