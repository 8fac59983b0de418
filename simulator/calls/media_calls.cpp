// The connection media: which there are, and switching them on and off.
#include <algorithm>

#include "simulator/calls/exports.h"
#include "simulator/calls/memory_calls.h"
#include "simulator/calls/record_builder.h"
#include "simulator/images/surroundings_image.h"

using namespace ovno2::simulator;
using namespace ovno2::library;

namespace {

constexpr std::size_t mediaWords = sizeof(MediaRecord) / sizeof(Word);
constexpr Word stateOn = 1;
constexpr Word stateOff = 2;

// As another process may have left them.
void refreshMedia(World& world) {
    if (!world.phonesFolder.empty()) world.media = readMedia(world.phonesFolder);
}

}  // namespace

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAOpenMM(Handle* session, Word) {
    return serve(
        {"CONAOpenMM"}, [](ArgumentText&) {},
        [&](World& world) {
            requireGiven(session);
            requireStarted(world, Group::media);
            *session = world.sessions.open(std::make_unique<MediaSession>());
            return statusOk;
        });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONACloseMM(Handle session) {
    return serve(
        {"CONACloseMM", session, /*releases=*/true},
        [&](ArgumentText& text) { text.number("handle", session); },
        [&](World& world) { return closeSession<MediaSession>(world, session); });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAMMGetMedia(Handle session, Word* count, ovno2::Address* list) {
    return serve(
        {"CONAMMGetMedia", session}, [&](ArgumentText& text) { text.number("handle", session); },
        [&](World& world) {
            require<MediaSession>(world, session);
            requireGiven(count, list);
            refreshMedia(world);
            const std::size_t media = world.media.size();
            *count = static_cast<Word>(media);
            *list = 0;
            if (media == 0) return statusOk;
            RecordBuilder builder;
            const std::size_t records = builder.addWords(media * mediaWords);
            for (std::size_t i = 0; i < media; ++i) {
                const std::size_t record = records + i * sizeof(MediaRecord);
                builder.setWord(record, 0, sizeof(MediaRecord));
                builder.setWord(record, 1, world.media[i].medium);
                builder.setText(record, 2, world.media[i].description);
                builder.setWord(record, 3, world.media[i].on ? stateOn : stateOff);
            }
            char* const block = builder.finish(world, BlockKind::media);
            if (world.plan.poking()) {
                pokeRecords(world, world.plan.pokesOf("CONAMMGetMedia", nullptr), "media", block, media,
                            mediaWords, sizeof(MediaRecord));
            }
            *list = addressOf(block);
            return statusOk;
        });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAMMSetMedia(Handle session, MediaRecord* media) {
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", session);
        if (media != nullptr) text.number("medium", media->medium).number("state", media->state);
    };
    return serve({"CONAMMSetMedia", session}, arguments, [&](World& world) -> Status {
        require<MediaSession>(world, session);
        requireGiven(media);
        if (media->size != sizeof(MediaRecord)) return status::wrongRecordSize;
        if (media->state != stateOn && media->state != stateOff) return status::invalidParameter;
        const system::FolderLock lock = lockImage(world.phonesFolder);
        refreshMedia(world);
        const auto found = std::find_if(world.media.begin(), world.media.end(),
                                        [&](const Medium& one) { return one.medium == media->medium; });
        if (found == world.media.end()) return status::notSupported;
        found->on = media->state == stateOn;
        if (!world.phonesFolder.empty()) writeMedia(world.phonesFolder, world.media);
        return statusOk;
    });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAMMFreeMediaStructures(Word count, void* list) {
    return serve(
        {"CONAMMFreeMediaStructures", 0, /*releases=*/true},
        [&](ArgumentText& text) { text.number("count", count); },
        [&](World& world) { return freeWhole(world, "CONAMMFreeMediaStructures", BlockKind::media, list); });
}

SIMULATOR_CHECK(CONAOpenMM);
SIMULATOR_CHECK(CONACloseMM);
SIMULATOR_CHECK(CONAMMGetMedia);
SIMULATOR_CHECK(CONAMMSetMedia);
SIMULATOR_CHECK(CONAMMFreeMediaStructures);
