// The sessions of the phone's file system and the searches inside them.
#pragma once

#include "simulator/calls/serve.h"
#include "simulator/images/file_store.h"

namespace ovno2::simulator {

struct FileSession : Session {
    static constexpr SessionKind ownKind = SessionKind::fileSystem;
    explicit FileSession(std::shared_ptr<Phone> ofPhone)
        : Session(ownKind, std::move(ofPhone)), store(phone->image, phone->files), current(store.root()) {}
    FileStore store;
    FileStore::Entry current;
    std::string announcedDeletion;  // the four-argument form: the folder whose deletion was asked about
};

struct FileSearch : Session {
    static constexpr SessionKind ownKind = SessionKind::search;
    FileSearch(std::shared_ptr<Phone> ofPhone, Handle session) : Session(ownKind, std::move(ofPhone)) {
        parent = session;
    }
    FileStore::Listing listing;
    std::size_t nextFolder = 0;
    std::size_t nextFile = 0;
};

inline FileSession& requireFiles(World& world, Handle handle) {
    auto& session = require<FileSession>(world, handle);
    requireStarted(world, Group::fileSystem);
    return session;
}

}  // namespace ovno2::simulator
