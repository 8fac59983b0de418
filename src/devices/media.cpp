#include "devices/media.h"

#include <cstring>

#include "core/attempt.h"
#include "devices/devices.h"
#include "devices/session.h"
#include "library/library_memory.h"
#include "library/library_start.h"

namespace ovno2::MediaControl {

namespace {

using library::Handle;
using library::MediaRecord;
using library::Word;

constexpr Word defaultVersion = 30;
constexpr Word newerVersion = 32;
constexpr Long lastContentVersionForDefault = 36;
constexpr Word stateOn = 1;
constexpr Word stateOff = 2;

struct State {
    static constexpr StateSlot slot = StateSlot::media;
    Handle handle = 0;
};

// What CONAMMGetMedia reported; the list goes back to the library on every way out.
class MediaList {
  public:
    explicit MediaList(Handle session) { library::CONAMMGetMedia.tried(session, &count_, &list_); }
    ~MediaList() {
        if (library::isAddress(list_))
            library::CONAMMFreeMediaStructures.tried(count_, library::pointerTo(list_));
    }
    MediaList(const MediaList&) = delete;
    MediaList& operator=(const MediaList&) = delete;

    bool listed() const { return count_ >= 1 && library::isAddress(list_); }
    std::vector<MediaRecord> records() const {
        std::vector<MediaRecord> copies;
        attempt([&] { copies = library::copyBlock<MediaRecord>(list_, count_); });
        return copies;
    }

  private:
    Word count_ = 0;
    Address list_ = 0;
};

// Opens the media handle; it keeps its old value when that fails.
bool openMedia(Handle& handle) {
    return library::CONAOpenMM.tried(&handle, 0).succeeded() && handle != 0;
}

void closeMedia(Handle handle) {
    library::CONACloseMM.tried(handle);
}

Long libraryMedium(Long hostMedium) {
    switch (hostMedium) {
        case eMediaCable:
            return library::mediumCable;
        case eMediaBT:
            return library::mediumBluetooth;
        case eMediaIR:
            return library::mediumInfrared;
        case eMediaUSB:
            return library::mediumUsb;
        default:
            return -1;
    }
}

// Hands one medium's new state to the library, in memory of its own.
void setMedia(Handle handle, MediaRecord record, Word state) {
    record.state = state;
    const library::LibraryBlock block(sizeof record);
    if (!block.get()) return;
    std::memcpy(block.get(), &record, sizeof record);
    attempt([&] { DebugWrite(library::codePageText(record.description)); });
    const Long status =
        library::CONAMMSetMedia.tried(handle, static_cast<MediaRecord*>(block.get())).valueOr(0);
    if (status != 0) DebugLine(u"CONAMMSetMedia: ", hex{status});
}

}  // namespace

Long MediaApiInit() {
    const RoutineLog log(u"MediaApiInit");
    clearPendingFailure();
    Long result = 0;
    if (stateOf<State>().handle == 0) {
        const Word version =
            library::recordedContentVersion() > lastContentVersionForDefault ? newerVersion : defaultVersion;
        const library::Answer started = Session::startService(library::MCAPI_Initialize, version);
        result = started.failure == fileNotFound ? libraryNotFound : started.status;
    }
    DebugLine(decimal{result});
    return result;
}

Long MediaApiTerminate() {
    const RoutineLog log(u"MediaApiTerminate");
    // The handle's value is kept after closing, so the library may not know it any more.
    State& state = stateOf<State>();
    state.handle = 0;
    const Long status = library::MCAPI_Terminate.tried(0).valueOr(0);
    DebugLine(decimal{status});
    return status;
}

Long MediaGetConnections() {
    const RoutineLog log(u"MediaGetConnections");
    Handle& handle = stateOf<State>().handle;
    const Long started = MediaApiInit();
    Long result = started == libraryNotFound ? libraryNotFound : 0;
    if (started == 0) {
        if (openMedia(handle)) {
            DebugWrite(u"MediaGetConnections", 1);
            const MediaList list(handle);
            DebugWrite(u"MediaGetConnections", 2);
            if (list.listed()) {
                DebugWrite(u"MediaGetConnections", 3);
                for (const MediaRecord& record : list.records())
                    if ((record.state & stateOn) != 0) result |= static_cast<Long>(record.medium);
            }
        }
        DebugWrite(u"MediaGetConnections", 4);
        closeMedia(handle);
    }
    MediaApiTerminate();
    return result;
}

Long MediaConnect(Long medium, Long secondMedium, bool disconnect) {
    const RoutineLog log(u"MediaConnect");
    Handle& handle = stateOf<State>().handle;
    const Long started = MediaApiInit();
    if (started != 0) return started == libraryNotFound ? libraryNotFound : -1;
    DebugWrite(u"MediaConnect", 1);
    const bool opened = openMedia(handle);
    DebugWrite(u"MediaConnect", 2);
    if (opened) {
        DebugWrite(u"MediaConnect", 3);
        const MediaList list(handle);
        DebugWrite(u"MediaConnect", 4);
        if (list.listed()) {
            const std::vector<MediaRecord> records = list.records();
            DebugLine(u"inmedium:", decimal{medium}, u" ", decimal{secondMedium});
            const Long wanted = libraryMedium(medium);
            const Long alsoWanted = libraryMedium(secondMedium);
            DebugLine(u"outmedium:", decimal{wanted}, u" ", decimal{alsoWanted});
            const Word state = disconnect ? stateOff : stateOn;
            for (const MediaRecord& record : records) {
                const Long reported = static_cast<Long>(record.medium);
                if ((reported == wanted || reported == alsoWanted) && record.state != state)
                    setMedia(handle, record, state);
            }
        }
    }
    closeMedia(handle);
    DebugWrite(u"MediaConnect", 9);
    return 0;
}

}  // namespace ovno2::MediaControl
