// The phone's file system: sessions, searches and transfers.
//
// What a search hands out is valid until the next call on it, what a read hands out until the next read of
// the session; both go with their session. A read's data may also go back early with CONAFreeMemory.
#include <algorithm>
#include <fstream>

#include "simulator/calls/exports.h"
#include "simulator/calls/file_session.h"
#include "simulator/calls/record_builder.h"

using namespace ovno2::simulator;
using namespace ovno2::library;

namespace {

constexpr std::size_t recordWords = sizeof(FileRecord) / sizeof(Word);
static_assert(sizeof(FolderRecord) == sizeof(FileRecord));

// Replaces what the session holds for its caller.
void holdInstead(World& world, Session& session, char* block) {
    for (char* const old : session.held)
        world.memory.release(old);
    session.held.clear();
    if (block != nullptr) session.held.push_back(block);
}

// Carries so many bytes of a file; how many of them arrive when the connection goes meanwhile.
std::optional<std::uint64_t> cutAfter(World& world, FileSession& session, std::uint64_t bytes) {
    const std::optional<Drop> drop = world.plan.dropWithin(session.phone->serialNumber.value_or(u""), bytes);
    if (!drop) return std::nullopt;
    session.phone->gone = session.phone->gone || drop->gone;
    world.breakSessions(*session.phone, drop->status);
    return bytes;
}

// Serves the next entry of one kind of a search: `which` are the entries, `next` the one that is due.
template <typename Fill>
Status findNext(const char* name, Handle handle, void* record, bool folders, Fill fill) {
    return serve(
        {name, handle}, [&](ArgumentText& text) { text.number("handle", handle); },
        [&](World& world) -> Status {
            auto& search = require<FileSearch>(world, handle);
            requireGiven(record);
            requireStarted(world, Group::fileSystem);
            auto& entries = folders ? search.listing.folders : search.listing.files;
            std::size_t& next = folders ? search.nextFolder : search.nextFile;
            if (world.plan.repeating && next > 0) --next;
            if (next >= entries.size()) return noMoreEntries;
            const FileStore::Entry& entry = entries[next++];
            const FileStore& store = require<FileSession>(world, search.parent).store;
            const FileStore::Facts facts = store.facts(entry);
            RecordBuilder builder;
            const std::size_t words = builder.addWords(recordWords);
            builder.setText(words, 0, FileStore::name(entry));
            builder.setWord(words, 1, facts.attributes);
            builder.setWord(words, 2, static_cast<Word>(facts.time));
            builder.setWord(words, 3, static_cast<Word>(facts.time >> 32));
            fill(builder, words, store, entry, facts);
            char* const block = builder.finish(world, BlockKind::held);
            holdInstead(world, search, block);
            if (world.plan.poking()) {
                pokeRecords(world, world.plan.pokesOf(name, nullptr), folders ? "folder" : "file", block, 1,
                            recordWords, 0);
            }
            std::memcpy(record, block, recordWords * sizeof(Word));
            return statusOk;
        });
}

}  // namespace

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAOpenFS(signature::WideText serial, Word* medium,
                                                     Handle* session, Word* deviceId) {
    const auto arguments = [&](ArgumentText& text) {
        text.text(serial).number("medium", medium == nullptr ? 0 : *medium);
    };
    return serve({"CONAOpenFS"}, arguments, [&](World& world) -> Status {
        requireGiven(medium, session, deviceId);
        requireStarted(world, Group::fileSystem);
        std::shared_ptr<Phone> phone = reachPhone(world, serial, *medium);
        if (phone->filesRefused != statusOk) return phone->filesRefused;
        if (phone->files == nullptr) return status::notSupported;
        *deviceId = phone->connections.front().deviceNumber;
        *session = world.sessions.open(std::make_unique<FileSession>(std::move(phone)));
        return statusOk;
    });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONACloseFS(Handle session) {
    return serve(
        {"CONACloseFS", session, /*releases=*/true},
        [&](ArgumentText& text) { text.number("handle", session); },
        [&](World& world) { return closeSession<FileSession>(world, session); });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAFindBegin(Handle session, Word, Handle* search,
                                                        signature::WideText path) {
    const auto arguments = [&](ArgumentText& text) { text.number("handle", session).text(path); };
    return serve({"CONAFindBegin", session}, arguments, [&](World& world) {
        FileSession& files = requireFiles(world, session);
        requireGiven(search);
        auto found = std::make_unique<FileSearch>(files.phone, session);
        found->listing = files.store.list(files.store.folder(files.current, path == nullptr ? u"" : path));
        *search = world.sessions.open(std::move(found));
        return statusOk;
    });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAFindNextFolder(Handle search, FolderRecord* folder) {
    const auto fill = [](RecordBuilder& builder, std::size_t record, const FileStore& store,
                         const FileStore::Entry& entry, const FileStore::Facts&) {
        if (const Drive* const drive = store.drive(entry)) {
            builder.setText(record, 4, drive->label);
            builder.setText(record, 5, drive->memoryType);
        }
    };
    return findNext("CONAFindNextFolder", search, folder, /*folders=*/true, fill);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAFindNextFile(Handle search, FileRecord* file) {
    const auto fill = [](RecordBuilder& builder, std::size_t record, const FileStore&,
                         const FileStore::Entry&, const FileStore::Facts& facts) {
        builder.setWord(record, 4, static_cast<Word>(std::min<std::uint64_t>(facts.size, 0xFFFFFFFF)));
    };
    return findNext("CONAFindNextFile", search, file, /*folders=*/false, fill);
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAFindEnd(Handle search) {
    return serve(
        {"CONAFindEnd", search, /*releases=*/true},
        [&](ArgumentText& text) { text.number("handle", search); },
        [&](World& world) { return closeSession<FileSearch>(world, search); });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONASetCurrentFolder(Handle session, signature::WideText path) {
    const auto arguments = [&](ArgumentText& text) { text.number("handle", session).text(path); };
    return serve({"CONASetCurrentFolder", session}, arguments, [&](World& world) {
        FileSession& files = requireFiles(world, session);
        requireGiven(path);
        files.current = files.store.folder(files.current, path);
        return statusOk;
    });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAReadFile(Handle session, FileRecord* file, ovno2::Address* data,
                                                       Word offset, Word length) {
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", session);
        if (file != nullptr) text.text(atAddress<const char16_t>(file->name));
    };
    return serve({"CONAReadFile", session}, arguments, [&](World& world) -> Status {
        FileSession& files = requireFiles(world, session);
        requireGiven(file, data, atAddress<const char16_t>(file == nullptr ? 0 : file->name));
        const FileStore::Entry entry = files.store.file(files.current, atAddress<const char16_t>(file->name));
        const FileStore::Facts facts = files.store.facts(entry);
        if (facts.size > 0x7FFFFFFF) return status::outOfMemory;
        if (offset > facts.size) return status::invalidParameter;
        const std::uint64_t rest = facts.size - offset;
        const std::uint64_t bytes = length == 0 ? rest : std::min<std::uint64_t>(length, rest);
        holdInstead(world, files, nullptr);
        if (cutAfter(world, files, bytes)) return files.broken;
        char* block = nullptr;
        if (bytes != 0) {
            block = takeMemory(world, static_cast<std::size_t>(bytes), BlockKind::held);
            files.held.push_back(block);
            std::ifstream stream(entry.disk, std::ios::binary);
            stream.seekg(static_cast<std::streamoff>(offset));
            if (!stream.read(block, static_cast<std::streamsize>(bytes))) return status::storeFailed;
        }
        file->attributes = facts.attributes;
        file->timeLow = static_cast<Word>(facts.time);
        file->timeHigh = static_cast<Word>(facts.time >> 32);
        file->size = static_cast<Word>(bytes);
        *data = addressOf(block);
        if (world.plan.poking()) {
            const auto pokes = world.plan.pokesOf("CONAReadFile", nullptr);
            pokeRecords(world, pokes, "file", file, 1, recordWords, 0);
            pokeRecords(world, pokes, "data", data, 1, 1, 0);
        }
        return statusOk;
    });
}

SIMULATOR_EXPORT Status SIMULATOR_STDCALL CONAWriteFile(Handle session, FileRecord* file, const void* data,
                                                        Word) {
    const auto arguments = [&](ArgumentText& text) {
        text.number("handle", session);
        if (file != nullptr) text.text(atAddress<const char16_t>(file->name)).number("size", file->size);
    };
    return serve({"CONAWriteFile", session}, arguments, [&](World& world) -> Status {
        FileSession& files = requireFiles(world, session);
        requireGiven(file, atAddress<const char16_t>(file == nullptr ? 0 : file->name));
        if (file->size != 0) requireGiven(data);
        const std::optional<std::uint64_t> arrived = cutAfter(world, files, file->size);
        try {
            files.store.write(files.current, atAddress<const char16_t>(file->name),
                              {static_cast<const char*>(data), file->size}, arrived);
        } catch (const Refused&) {
            if (!arrived) throw;
        }
        return arrived ? files.broken : statusOk;
    });
}

SIMULATOR_CHECK(CONAOpenFS);
SIMULATOR_CHECK(CONACloseFS);
SIMULATOR_CHECK(CONAFindBegin);
SIMULATOR_CHECK(CONAFindNextFolder);
SIMULATOR_CHECK(CONAFindNextFile);
SIMULATOR_CHECK(CONAFindEnd);
SIMULATOR_CHECK(CONASetCurrentFolder);
SIMULATOR_CHECK(CONAReadFile);
SIMULATOR_CHECK(CONAWriteFile);
