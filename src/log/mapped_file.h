// The named shared-memory ring buffer through which the diagnostic log reaches a viewer.
//
// The area holds UTF-16 pieces, each at an offset that is a multiple of 4, one after another without length,
// separator or terminator; a piece that would reach or pass the end goes to offset 0 instead. There is no
// header: readers are told the offset (`LastWritePos`) and the length of each piece.
//
// An instance owns its mapping and its view and gives both back in `MemClose` and at its end. It belongs to
// the thread that made it. The log keeps one instance per thread under the name "OVDebug".
#pragma once

#include <memory>

#include "platform/platform.h"

namespace ovno2 {

class cMemMappedFile {
  public:
    static constexpr Long MemSize = 0x100000;  // bytes of the mapping

    static constexpr Long openedExisting = -1;  // results of CreateFile
    static constexpr Long createdNew = -2;

    static constexpr Long done = 0;  // results of MemWrite and MemRead
    static constexpr Long nothingToDo = -1;
    static constexpr Long noMappingOrView = -2;  // MemRead
    static constexpr Long noMapping = -4;        // MemWrite
    static constexpr Long noView = -5;           // MemWrite

    cMemMappedFile() = default;
    ~cMemMappedFile();
    cMemMappedFile(const cMemMappedFile&) = delete;
    cMemMappedFile& operator=(const cMemMappedFile&) = delete;

    Text MemName;  // name of the mapping; set it before the first call

    Long WritePos() const { return writePos_; }          // byte offset at which the next write starts
    Long LastWritePos() const { return lastWritePos_; }  // byte offset of the last piece written

    // Looks whether the named mapping exists and creates it otherwise. The mapping is not kept: a new one
    // lives on only while somebody holds it.
    Long CreateFile();

    // Writes `text`, in pieces of half the mapping when it is longer than that. The mapping is opened or
    // created and its view made on the first call. `done`, or `nothingToDo` (empty text), `noMapping`,
    // `noView`; after a failure the next call tries again.
    Long MemWrite(TextView text);

    // Reads `length` characters at byte offset `position` of an existing mapping. `nothingToDo` when there is
    // no such mapping, the length is not positive or the piece would reach the end; `text` is then untouched.
    Long MemRead(Long position, Long length, Text& text);

    void MemClose();

  private:
    bool openMapping(bool forWriting);
    bool makeView();
    void writePiece(TextView piece);

    std::unique_ptr<platform::SharedArea> mapping_;
    std::byte* view_ = nullptr;
    bool writable_ = false;  // how the mapping was opened
    Long writePos_ = 0;
    Long lastWritePos_ = 0;
};

}  // namespace ovno2
