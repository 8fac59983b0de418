// Local files and folders.
//
// Paths are Windows paths in UTF-16 ("\" separates; natively a drive letter maps to a folder and "\" to "/").
// Operations return a FailureNumber (0 = done) unless said otherwise, and leave out-values alone on failure.
#pragma once

#include <cstddef>
#include <memory>

#include "base/failure.h"
#include "base/types.h"

namespace ovno2::platform {

inline constexpr Long noAttributes = -1;
inline constexpr Long attributeReadOnly = 1;
inline constexpr Long attributeHidden = 2;
inline constexpr Long attributeDirectory = 16;

// An open file. Closing happens in the destructor; `close` reports what closing had to say.
class OpenFile {
  public:
    virtual ~OpenFile() = default;
    virtual FailureNumber size(std::uint64_t& bytes) = 0;
    virtual FailureNumber seek(std::uint64_t position) = 0;
    virtual FailureNumber read(void* to, std::size_t bytes, std::size_t& got) = 0;  // got = 0 at the end
    virtual FailureNumber write(const void* from,
                                std::size_t bytes) = 0;  // all or a failure (61 = disk full)
    virtual FailureNumber close() = 0;
};

enum class FileAccess {
    read,     // an existing file, byte reader; paths of 260 characters or more fail with 53
    append,   // created when missing
    replace,  // written beside the target and put in its place by `close`; until then, and after a failure,
              // the target keeps its old content
};

class Files {
  public:
    virtual ~Files() = default;

    // The classic open statement under a file number 1..255: 52 bad number, 53 not found, 55 the number is in
    // use, 75 hidden, read-only or a folder, 76 folder missing, 70 in use by another program.
    virtual FailureNumber open(Long number, TextView path, FileAccess access, OpenFile*& file) = 0;
    virtual void close(Long number) = 0;  // discards an unfinished replacement; nothing when it is not open

    // The wide reader: an existing file for reading with read sharing; "\\?\" in front lifts the length
    // limit.
    virtual FailureNumber openWide(TextView path, std::unique_ptr<OpenFile>& file) = 0;

    virtual bool pathExists(TextView path) = 0;
    virtual Long attributes(TextView path) = 0;  // noAttributes when there is no such path
    virtual FailureNumber setAttributes(TextView path, Long attributes) = 0;
    virtual Text shortPath(TextView path) = 0;  // empty on failure
    virtual FailureNumber makeFolder(
        TextView path) = 0;  // one level; 75 exists, 76 parent missing or path too long
    virtual Long makeFolderTree(TextView path) = 0;  // all missing parents; the shell's status, 0 = done
    virtual FailureNumber remove(TextView path) = 0;
};

// A named area shared between processes.
class SharedArea {
  public:
    virtual ~SharedArea() = default;  // unmaps and closes
    virtual std::byte* map(
        std::size_t size) = 0;  // the view, null when it cannot be mapped (area smaller than size)
    virtual void unmap() = 0;
};

class SharedMemory {
  public:
    virtual ~SharedMemory() = default;
    virtual std::unique_ptr<SharedArea> open(TextView name, bool forWriting) = 0;     // null: no such area
    virtual std::unique_ptr<SharedArea> create(TextView name, std::size_t size) = 0;  // null: refused
};

}  // namespace ovno2::platform
