#include <algorithm>
#include <cstring>
#include <vector>

#include "core/attempt.h"
#include "core/current_platform.h"
#include "pc/byte_table.h"
#include "pc/file_access.h"
#include "pc/files.h"
#include "pc/get_file_contents_mod.h"

namespace ovno2::Files {

namespace {

constexpr std::size_t pieceSize = 0x10000;    // bytes, read at once by the byte reader
constexpr std::size_t chunkSize = 4'096'000;  // bytes, read at once by the wide reader
constexpr Long highestFileNumber = 255;

// A file open under the first free number.
class NumberedFile {
  public:
    explicit NumberedFile(TextView path) {
        platform::Files& files = currentPlatform().files();
        FailureNumber failure = fileAlreadyOpen;
        while (failure == fileAlreadyOpen && number_ < highestFileNumber)
            failure = files.open(++number_, path, platform::FileAccess::read, file_);
        require(failure);
    }
    ~NumberedFile() {
        if (file_) currentPlatform().files().close(number_);
    }
    NumberedFile(const NumberedFile&) = delete;
    NumberedFile& operator=(const NumberedFile&) = delete;
    platform::OpenFile& operator*() const { return *file_; }
    platform::OpenFile* operator->() const { return file_; }

  private:
    Long number_ = 0;
    platform::OpenFile* file_ = nullptr;
};

std::size_t pieceOf(std::uint64_t left, std::size_t most) {
    return static_cast<std::size_t>(std::min<std::uint64_t>(left, most));
}

void reserve(Text& text, std::uint64_t length) {
    if (length > text.max_size()) throw RuntimeFailure(outOfMemory);
    text.reserve(static_cast<std::size_t>(length));
}

// Appends the file's next bytes, at most `count` of them, one character a byte; what the file has lost since
// then is missing.
FailureNumber readBytes(const NumberedFile& file, std::uint64_t count, Text& text) {
    const ByteTable table;
    std::vector<std::uint8_t> piece(pieceOf(count, pieceSize));
    while (count > 0) {
        std::size_t got = 0;
        const FailureNumber failure = file->read(piece.data(), pieceOf(count, piece.size()), got);
        if (failure != noFailure) return failure;
        if (got == 0) break;
        table.append(text, piece.data(), got);
        count -= got;
    }
    return noFailure;
}

// One attempt to read, and one more from the start when it fails; what is left of that.
template <class Read>
FailureNumber readTwice(platform::OpenFile& file, Read&& read) {
    if (read() == noFailure) return noFailure;
    const FailureNumber failure = file.seek(0);
    return failure == noFailure ? read() : failure;
}

// False when the file cannot be opened or its text would not fit into memory. Bytes that cannot be read twice
// give an empty text.
bool readWhole(TextView path, Text& text) {
    bool held = false;
    attempt([&] {
        const NumberedFile file(path);
        std::uint64_t size = 0;
        require(file->size(size));
        Text content;
        reserve(content, size);
        const FailureNumber failure = readTwice(*file, [&] {
            content.clear();
            return readBytes(file, size, content);
        });
        if (failure != noFailure) {
            content.clear();
            raisePending(failure);
        }
        text = std::move(content);
        held = true;
    });
    return held;
}

// True, with the mark read, when the file is marked as UTF-16; else back at its start.
bool readMark(platform::OpenFile& file) {
    std::uint8_t mark[2] = {};
    std::size_t got = 0;
    require(file.read(mark, sizeof mark, got));
    if (got == sizeof mark && mark[0] == 0xFF && mark[1] == 0xFE) return true;
    require(file.seek(0));
    return false;
}

// The next `count` bytes as text, fewer when the file has become shorter.
Text readChunk(platform::OpenFile& file, std::vector<std::uint8_t>& buffer, std::size_t count, bool wide,
               std::size_t& got) {
    require(file.read(buffer.data(), count, got));
    Text chunk;
    if (wide) {
        chunk.resize(got / sizeof(char16_t));
        std::memcpy(chunk.data(), buffer.data(), chunk.size() * sizeof(char16_t));
    } else {
        chunk.reserve(got);
        ByteTable().append(chunk, buffer.data(), got);
    }
    return chunk;
}

}  // namespace

Text GetFileContents(TextView path, bool decode, Long& encoding, TextView requiredText, Long options) {
    const RoutineLog log(u"GetFileContents");
    Text text;
    if (FileExistsW_(path) && readWhole(path, text)) {
        encoding = decode ? GetFileContentsMod::ConvertFromUnicodeSub(text) : GetFileContentsMod::ansiOrUtf8;
        return text;
    }
    if ((options & noWideReader) == 0) text = GetFileContentsW(path, decode, requiredText);
    if (text.empty()) DebugLine(u"File not found:", path);
    return text;
}

Text GetFileContents(TextView path, bool decode) {
    Long encoding = 0;
    return GetFileContents(path, decode, encoding);
}

bool GetFileBytes(TextView path, FileBytes& content) {
    const RoutineLog log(u"GetFileContents");
    const bool exists = FileExistsW_(path);
    bool read = false;
    attempt([&] {
        if (!exists) return;
        const std::unique_ptr<platform::OpenFile> file = openByWidePath(path);
        if (!file) throw RuntimeFailure(fileNotFound);
        std::uint64_t size = 0;
        require(file->size(size));
        constexpr std::uint64_t mostBytes = 0x7FFFFFFF;  // a library counts them in 31 bits
        if (size > mostBytes) throw RuntimeFailure(outOfMemory);
        FileBytes found;
        found.bytes = std::make_unique_for_overwrite<std::uint8_t[]>(static_cast<std::size_t>(size));
        require(readTwice(*file, [&] {
            return file->read(found.bytes.get(), static_cast<std::size_t>(size), found.size);
        }));
        content = std::move(found);
        read = true;
    });
    if (!exists) DebugLine(u"File not found:", path);
    return read;
}

Text GetFileContentsW(TextView path, bool decode, TextView requiredText, Long maximumBytes) {
    const RoutineLog log(u"GetFileContentsW");
    std::unique_ptr<platform::OpenFile> file;
    attempt([&] { file = openByWidePath(path); });
    if (!file) {
        Long encoding = 0;
        return GetFileContents(path, decode, encoding, requiredText, noWideReader);
    }
    Text text;
    bool wide = false;
    // A part of a file must not be taken for the whole: whatever fails on the way, the text is empty.
    attempt([&] {
        std::uint64_t size = 0;
        require(file->size(size));
        DebugLine(decimal{static_cast<Long>(size)});
        wide = decode && readMark(*file);
        std::uint64_t left = size - (wide ? 2 : 0);
        if (maximumBytes > 0) left = std::min<std::uint64_t>(left, static_cast<std::uint64_t>(maximumBytes));
        std::vector<std::uint8_t> buffer(pieceOf(left, chunkSize));
        Text content;
        if (requiredText.empty()) reserve(content, wide ? left / 2 : left);
        while (left > 0) {
            std::size_t got = 0;
            const Text chunk = readChunk(*file, buffer, pieceOf(left, buffer.size()), wide, got);
            if (requiredText.empty() || chunk.find(requiredText) != Text::npos) content += chunk;
            if (got == 0 || maximumBytes > 0) break;
            left -= got;
        }
        text = std::move(content);
    });
    if (decode && !wide) GetFileContentsMod::ConvertFromUnicodeSub(text);
    return text;
}

}  // namespace ovno2::Files
