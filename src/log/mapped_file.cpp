#include "log/mapped_file.h"

#include <cstring>

#include "core/attempt.h"
#include "core/current_platform.h"

namespace ovno2 {

namespace {

constexpr Long pieceAlignment = 4;
constexpr Long bytesPerCharacter = 2;
// A longer text goes out in pieces of this many characters.
constexpr Long longestPiece = cMemMappedFile::MemSize / 2;

std::int64_t byteCount(std::int64_t characters) {
    return characters * bytesPerCharacter;
}

}  // namespace

cMemMappedFile::~cMemMappedFile() {
    DebugWrite(u"cMem Class_Terminate");
    MemClose();
}

bool cMemMappedFile::openMapping(bool forWriting) {
    attempt([&] { mapping_ = currentPlatform().sharedMemory().open(MemName, forWriting); });
    writable_ = forWriting;
    return mapping_ != nullptr;
}

bool cMemMappedFile::makeView() {
    if (!view_) view_ = mapping_->map(MemSize);
    return view_ != nullptr;
}

Long cMemMappedFile::CreateFile() {
    platform::SharedMemory& memory = currentPlatform().sharedMemory();
    std::unique_ptr<platform::SharedArea> area;
    attempt([&] { area = memory.open(MemName, /*forWriting=*/true); });
    if (area) return openedExisting;
    attempt([&] { area = memory.create(MemName, MemSize); });
    return createdNew;
}

Long cMemMappedFile::MemWrite(TextView text) {
    if (text.empty()) return nothingToDo;
    if (!mapping_ && !openMapping(/*forWriting=*/true)) {
        attempt([&] { mapping_ = currentPlatform().sharedMemory().create(MemName, MemSize); });
        if (!mapping_) return noMapping;
    }
    if (!writable_) return noView;  // a reader's view of somebody else's area
    if (!view_) {
        if (!makeView()) return noView;
        writePos_ = 0;
    }
    while (text.size() > static_cast<std::size_t>(longestPiece)) {
        writePiece(text.substr(0, longestPiece));
        text.remove_prefix(longestPiece);
    }
    writePiece(text);
    return done;
}

void cMemMappedFile::writePiece(TextView piece) {
    const std::int64_t bytes = byteCount(static_cast<std::int64_t>(piece.size()));
    writePos_ = (writePos_ + pieceAlignment - 1) / pieceAlignment * pieceAlignment;
    if (writePos_ + bytes >= MemSize) writePos_ = 0;
    lastWritePos_ = writePos_;
    std::memcpy(view_ + writePos_, piece.data(), static_cast<std::size_t>(bytes));
    writePos_ += static_cast<Long>(bytes);
}

Long cMemMappedFile::MemRead(Long position, Long length, Text& text) {
    if (length <= 0) return nothingToDo;
    if (!mapping_ && !openMapping(/*forWriting=*/true) && !openMapping(/*forWriting=*/false))
        return nothingToDo;
    if (!makeView()) return noMappingOrView;
    const std::int64_t bytes = byteCount(length);
    if (position < 0 || position + bytes >= MemSize) return nothingToDo;
    const FailureNumber failure = attempt([&] {
        Text piece(static_cast<std::size_t>(length), u'\0');
        std::memcpy(piece.data(), view_ + position, static_cast<std::size_t>(bytes));
        text = std::move(piece);
    });
    return failure == noFailure ? done : nothingToDo;
}

void cMemMappedFile::MemClose() {
    DebugWrite(u"MemClose");
    if (mapping_ && view_) mapping_->unmap();
    view_ = nullptr;
    mapping_.reset();
}

}  // namespace ovno2
