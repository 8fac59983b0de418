// Local files: whole-file reading and writing, folders, path parts and tests.
//
// Nothing here throws: reading gives an empty text, writing -1, a test False. Texts read from files are byte
// strings (byte_table.h) unless the reader decodes them. Paths are Windows paths (platform/files.h).
//
// State on the thread: the file number of all writes, and the file-system object, made on first use. Called
// by the contacts, the phone file transfer, the messages and the discovery.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "platform/automation.h"
#include "platform/files.h"
#include "platform/thread_state.h"

namespace ovno2::Files {

struct State {
    static constexpr StateSlot slot = StateSlot::files;
    Long writeFileNumber = 0;                  // 17 after the first write, wraps from 255 to 1
    platform::ObjectPointer fileSystemObject;  // null until it is needed
};

// Forgets the file-system object; the next use makes a new one.
void releaseFileSystemObject();

inline constexpr Long noWideReader = 1;  // option: give up where the byte reader cannot go on

// The whole file as a byte string; with `decode` UTF-16 becomes text and a mark is removed, and `encoding`
// gets the code of GetFileContentsMod (untouched when the file could not be read this way). What the byte
// reader cannot open or hold is read by `GetFileContentsW`, to which `requiredText` goes.
Text GetFileContents(TextView path, bool decode, Long& encoding, TextView requiredText = {},
                     Long options = 0);
// For callers that do not ask for the encoding.
Text GetFileContents(TextView path, bool decode);

// The wide reader: paths of any length, and files in chunks of 4,096,000 bytes, of which only those are kept
// that hold `requiredText` (empty = all). `maximumBytes` above 0 reads one chunk of at most that size.
Text GetFileContentsW(TextView path, bool decode, TextView requiredText = {}, Long maximumBytes = 0);

struct FileBytes {
    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t size = 0;
    std::span<const std::uint8_t> all() const { return {bytes.get(), size}; }
};
// The whole file as it is, in one piece: what `GetFileContents` reads, for files too large to be held as
// text. False, with `content` as it was, when there is no such file, or it cannot be read or held.
bool GetFileBytes(TextView path, FileBytes& content);

// Writes a text: `encoding` 2 is UTF-16 big-endian with mark, 3 the same without, 4 little-endian with mark,
// anything else the ANSI code page. With one of the three a text that holds NUL characters is taken for the
// bytes themselves. Missing folders are made, a hidden file is replaced and stays hidden. `path` comes back
// as it was used: "\?" and
// "/" as "\", "?" as "_". 0 = written; -1 = failure, and what the file held before is still there.
// `showError` tells the user, unless the path is on drive m:.
Long WriteFileContents(Text& path, TextView text, bool append, Long encoding, bool showError);

// Fills a piece with the next bytes and tells how many; 0 = no more. Throws when there are more that it
// cannot get.
using ByteSource = std::function<std::size_t(std::span<std::uint8_t> piece)>;
// `WriteFileContents` of a byte string, not appending, for content that is not held as text.
Long WriteFileBytes(Text& path, const ByteSource& next, bool showError);

// Makes a folder with all that is missing above it. 0, 75, or the code of the folder above. A `subName`
// leaves out the platform's call for whole trees.
Long MkDirRecourse(TextView folder, TextView subName = {});
// The same step by step, in three ways: the platform's call, the shell, and the platform's call below short
// names.
Long MkDir_(TextView folder);

// Removes one "\" or "/" at the end.
void RemoveTrailingSeparator(Text& path);
// What stands before the last "\", else before the last "/"; a short address such as "http://host" is taken
// whole.
Text FolderPart(TextView path, bool keepSeparator = false);
// What stands behind it; without the extension from its last ".".
Text FileNamePart(TextView path, bool keepExtension = true);
// The path with short folder names where the platform has them, so that it fits the platform's classic calls.
Text GetShortFileName(TextView path);

bool FileExistsW_(TextView path);  // exists and can be opened for reading
bool FileExists(TextView path);    // by attributes; a folder exists too
bool FolderExists(TextView path);  // up to the first "*"
// Up to the first "*"; platform::noAttributes when there is no such path.
Long GetAttributes(TextView path);
Long SetAttributes(TextView path, Long attributes);  // the platform's status: 0 = refused
// Bytes as the file-system object counts them; 0 when the file does not exist.
Single FileSize(TextView path, bool skipExistenceTest = false);

}  // namespace ovno2::Files
