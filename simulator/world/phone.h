// A phone of the world: its identity, its connections, what it holds, and the image folder it came from.
#pragma once

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "simulator/system/system.h"
#include "simulator/world/content_kind.h"
#include "simulator/world/content_store.h"

namespace ovno2::simulator {

using library::Status;

struct Connection {
    Word deviceNumber = 0;
    Word medium = 0;  // library numbering
    std::optional<std::u16string> deviceName;
    std::optional<std::u16string> address;
    Word state = 0;
};

struct Versions {
    Word connectivity = 52;
    Word deviceManagement = 50;
    Word contentAccess = 50;
    Word fileSystem = 40;
};

struct RecordSizes {
    Word dataItem = 20;
    Word folder = 48;
    Word calendar = 112;
    Word date = 20;
};

struct Platform {
    Word code = 0;
    Word level = 0;
};

struct FileSettings;

// A phone's content of one kind.
struct Content {
    std::shared_ptr<const ContentStore> store;  // null = the phone has none of this kind
    system::FileStamp stamp;                    // of its file when it was read
    std::set<std::string> vanished;             // uids that are listed but can no longer be read
};

struct Phone {
    std::filesystem::path image;  // empty for a phone that a test built in memory
    long order = 0;
    std::optional<std::u16string> serialNumber;
    std::optional<std::u16string> friendlyName;
    std::optional<std::u16string> model;
    std::optional<std::u16string> manufacturer;
    std::optional<std::u16string> typeName;
    std::optional<Platform> platform;
    std::vector<Connection> connections;
    Versions versions;
    RecordSizes sizes;
    Status contentRefused = library::statusOk;
    Status filesRefused = library::statusOk;

    std::array<Content, contentKinds.size()> contents;  // by kind
    std::shared_ptr<FileSettings> files;                // null = the phone has no file system

    Content& content(ContentKind kind) { return contents[indexOf(kind)]; }
    const Content& content(ContentKind kind) const { return contents[indexOf(kind)]; }

    // What a test does to it.
    bool gone = false;  // unplugged: not listed, cannot be opened
};

}  // namespace ovno2::simulator
