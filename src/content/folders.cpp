#include "content/folders.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "content/state.h"
#include "devices/discovery.h"
#include "library/library_memory.h"
#include "library/library_texts.h"

namespace ovno2::Content {

namespace {

using library::FolderInfoRecord;
using library::Handle;
using library::Word;

constexpr unsigned char shortSize = 32;
constexpr unsigned char longSize = 48;
constexpr double firstSuiteWithLongRecords = 3.1;
constexpr unsigned char guardByte = 77;
constexpr std::size_t guardStart = sizeof(FolderInfoRecord);
constexpr std::size_t bufferSize = 97;

constexpr Word mostSubfolders = 100;
// A store that claims more than this leads in a circle.
constexpr std::size_t deepestLevel = 32;
constexpr std::size_t mostFolders = 10000;
constexpr Long noMemoryForName = -7;
constexpr Long noSuchFolder = -8;
constexpr std::uintptr_t lastReservedAddress = 32;

// A folder record as it goes to the library: as long as the library makes them, aligned.
struct alignas(Word) RecordBytes {
    std::array<unsigned char, 256> bytes{};
};

Long folderInfo(Handle connection, unsigned char* buffer, Long status) {
    status = library::CAGetFolderInfo.tried(connection, buffer).valueOr(status);
    DebugLine(hex{status});
    return status;
}

// How far the library wrote, from what is left of the guard bytes.
Long writtenSize(unsigned char* buffer) {
    for (std::size_t i = bufferSize - 1; i >= guardStart; --i) {
        if (buffer[i] != guardByte) return static_cast<Long>((i + 1) & ~std::size_t{1});
        buffer[i] = 0;
    }
    return shortSize;
}

// The records of one level, copied; their size is corrected by what the first one says.
struct Level {
    std::vector<unsigned char> bytes;
    std::size_t stride = 0;

    FolderInfoRecord record(std::size_t i) const {
        FolderInfoRecord record{};
        std::memcpy(&record, bytes.data() + i * stride, std::min(stride, sizeof record));
        return record;
    }
    RecordBytes recordBytes(std::size_t i) const {
        RecordBytes record;
        std::memcpy(record.bytes.data(), bytes.data() + i * stride, std::min(stride, record.bytes.size()));
        return record;
    }
};

Level copyLevel(Address pointer, std::size_t count, Long recordSize) {
    Level level;
    level.stride = static_cast<std::size_t>(recordSize == 0 ? shortSize : recordSize);
    level.bytes = library::copyBlock<unsigned char>(pointer, count * level.stride);
    const unsigned char told = level.bytes[0];
    if (told > 0 && told != level.stride) {
        level.stride = told;
        level.bytes = library::copyBlock<unsigned char>(pointer, count * level.stride);
    }
    return level;
}

// One change to the folders in an operation of its own, committed. `change` gets the operation and `newName`
// in the library's memory, null when that is empty; `tag` goes before its marker in the log.
template <class Change>
Long changeFolders(Handle connection, const Text& newName, TextView tag, Change&& change) {
    DebugWrite(u"GetSubfolders", 10);
    Handle operation = 0;
    Long status = library::CABeginOperation.tried(connection, /*zero=*/0, &operation).status;
    DebugLine(hex{status});
    if (status != 0) return status;
    {
        std::optional<library::LibraryString> name;
        if (!newName.empty()) {
            name.emplace(newName);
            if (reinterpret_cast<std::uintptr_t>(name->get()) <= lastReservedAddress) {
                library::CAEndOperation.tried(operation);
                return noMemoryForName;
            }
        }
        DebugWrite(tag, 11);
        status = change(operation, name ? name->get() : nullptr).status;
    }
    DebugLine(u"CARenameFolder:", hex{status});
    if (status == 0) {
        status = library::CACommitOperations.tried(operation, /*writtenOrNull=*/nullptr).status;
        DebugLine(hex{status});
    }
    if (status != 0) {
        // A change that failed is dropped with its operation.
        library::CAEndOperation.tried(operation);
        return status;
    }
    status = library::CAEndOperation.tried(operation).valueOr(status);
    DebugLine(hex{status});
    return status;
}

// Renames the folder, or deletes it when `newName` is empty.
Long changeFolder(Handle connection, RecordBytes record, const Text& newName) {
    return changeFolders(connection, newName, u"GetSubfolders", [&](Handle operation, const char16_t* name) {
        return name ? library::CARenameFolder.tried(operation, record.bytes.data(), name)
                    : library::CADeleteFolder.tried(operation, record.bytes.data());
    });
}

Long walk(Word count, Address pointer, std::vector<FolderEntry>& list, Long recordSize, Handle connection,
          const Text& oldName, const Text& newName, std::size_t depth) {
    const RoutineLog log(u"GetSubfolders");
    if (count < 1 || count > mostSubfolders || depth > deepestLevel || list.size() > mostFolders) return 0;
    Long result = oldName.empty() ? 0 : noSuchFolder;
    Level level;
    const std::size_t first = list.size();
    const FailureNumber failure = attempt([&] {
        level = copyLevel(pointer, count, recordSize);
        list.resize(first + count);
    });
    if (failure != noFailure) return result;
    for (std::size_t i = 0; i < count; ++i) {
        const FolderInfoRecord record = level.record(i);
        list[first + i] = entryOf(record);
        DebugLine(list[first + i].Path, u":", list[first + i].Name);
        if (!oldName.empty() && list[first + i].Name == oldName)
            return changeFolder(connection, level.recordBytes(i), newName);
        if (record.subfolderCount >= 1)
            walk(record.subfolderCount, record.subfolders, list, /*recordSize=*/0, /*connection=*/0,
                 /*oldName=*/{},
                 /*newName=*/{}, depth + 1);
    }
    return result;
}

}  // namespace

FolderEntry entryOf(const FolderInfoRecord& record) {
    FolderEntry entry;
    attempt([&] { entry.Name = library::GetStringFromPointer(record.name); });
    attempt([&] { entry.Path = library::GetStringFromPointer(record.path); });
    entry.FolderId = static_cast<Long>(record.folderId);
    return entry;
}

Long GetNokiaFolder(Handle connection, FolderInfoRecord& record) {
    const RoutineLog log(u"GetNokiaFolder");
    alignas(Word) std::array<unsigned char, bufferSize> buffer;
    buffer.fill(guardByte);
    record.size = shortSize;
    std::memcpy(buffer.data(), &record, sizeof record);
    const bool longRecords = numericValue(Discovery::SuiteBuildText()) >= firstSuiteWithLongRecords;
    if (longRecords) buffer[0] = longSize;
    Long status = folderInfo(connection, buffer.data(), library::notCalled);
    if (status != 0) {
        buffer[0] = longRecords ? shortSize : longSize;
        status = folderInfo(connection, buffer.data(), status);
    }
    if (status != 0) return status;
    const Long size = writtenSize(buffer.data());
    std::memcpy(&record, buffer.data(), sizeof record);
    return size;
}

Long GetSubfolders(Word count, Address pointer, std::vector<FolderEntry>& list, Long recordSize,
                   Handle connection, const Text& oldName, const Text& newName) {
    return walk(count, pointer, list, recordSize, connection, oldName, newName, /*depth=*/1);
}

Long CreateSubfolder(Handle connection, const Text& newName, TextView tag) {
    FolderInfoRecord record{};
    record.size = shortSize;
    return changeFolders(connection, newName, tag, [&](Handle operation, const char16_t* name) {
        return library::CACreateFolder.tried(operation, &record, name);
    });
}

}  // namespace ovno2::Content
