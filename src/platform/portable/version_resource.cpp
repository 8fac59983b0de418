#include "platform/portable/version_resource.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace ovno2::platform::portable {

namespace {

constexpr std::uint32_t resourceDirectoryIndex = 2;
constexpr std::uint32_t versionResourceType = 16;
constexpr std::uint32_t fixedRecordSignature = 0xFEEF04BD;
constexpr std::uint32_t subdirectoryFlag = 0x80000000;
constexpr std::size_t sectionHeaderSize = 40;
constexpr std::size_t longestVersionBlock = 65536;  // its length is a 16-bit word

using Bytes = std::vector<unsigned char>;

std::uint32_t word(const Bytes& bytes, std::size_t at) {
    return at + 2 <= bytes.size() ? bytes[at] | static_cast<std::uint32_t>(bytes[at + 1]) << 8 : 0;
}

std::uint32_t doubleWord(const Bytes& bytes, std::size_t at) {
    return at + 4 <= bytes.size() ? word(bytes, at) | word(bytes, at + 2) << 16 : 0;
}

// The bytes from `offset` on, fewer at the end of the file.
Bytes bytesAt(OpenFile& file, std::uint64_t offset, std::size_t count) {
    Bytes bytes(count);
    std::size_t filled = 0;
    if (file.seek(offset) == noFailure) {
        std::size_t got = 0;
        while (filled < count && file.read(bytes.data() + filled, count - filled, got) == noFailure &&
               got > 0)
            filled += got;
    }
    bytes.resize(filled);
    return bytes;
}

// Where addresses of the loaded image lie in the file.
class Sections {
  public:
    explicit Sections(Bytes headers) : headers_(std::move(headers)) {}

    std::optional<std::uint64_t> fileOffset(std::uint32_t address) const {
        for (std::size_t at = 0; at + sectionHeaderSize <= headers_.size(); at += sectionHeaderSize) {
            const std::uint32_t start = doubleWord(headers_, at + 12);
            const std::uint32_t size = std::max(doubleWord(headers_, at + 8), doubleWord(headers_, at + 16));
            if (address >= start && address - start < size)
                return std::uint64_t{doubleWord(headers_, at + 20)} + (address - start);
        }
        return std::nullopt;
    }

  private:
    Bytes headers_;
};

// The offset word of the entry with the number `wanted`, or of the first entry, of the directory at `offset`.
std::optional<std::uint32_t> directoryEntry(OpenFile& file, std::uint64_t offset,
                                            std::optional<std::uint32_t> wanted) {
    const Bytes head = bytesAt(file, offset, 16);
    const std::size_t count = std::size_t{word(head, 12)} + word(head, 14);  // by name, then by number
    const Bytes entries = bytesAt(file, offset + 16, count * 8);
    for (std::size_t at = 0; at + 8 <= entries.size(); at += 8)
        if (!wanted || doubleWord(entries, at) == *wanted) return doubleWord(entries, at + 4);
    return std::nullopt;
}

bool readFixedRecord(const Bytes& block, FileVersion& version) {
    // The record stands behind the block's key, on a boundary of four bytes.
    for (std::size_t at = 0; at + 24 <= block.size() && at < 128; at += 4) {
        if (doubleWord(block, at) != fixedRecordSignature) continue;
        for (std::size_t i = 0; i < 4; ++i) {
            // Each double word holds its more significant part second.
            const std::size_t part = i / 2 * 4 + (i % 2 == 0 ? 2 : 0);
            version.file[i] = static_cast<std::uint16_t>(word(block, at + 8 + part));
            version.product[i] = static_cast<std::uint16_t>(word(block, at + 16 + part));
        }
        return true;
    }
    return false;
}

}  // namespace

bool readVersionResource(OpenFile& file, FileVersion& version) {
    const Bytes dosHeader = bytesAt(file, 0, 64);
    if (dosHeader.size() < 64 || word(dosHeader, 0) != 0x5A4D) return false;
    const std::uint64_t headerAt = doubleWord(dosHeader, 60);
    const Bytes header = bytesAt(file, headerAt, 24);
    if (header.size() < 24 || doubleWord(header, 0) != 0x4550) return false;
    const std::size_t sectionCount = word(header, 6);
    const std::size_t optionalSize = word(header, 20);
    const Bytes optional = bytesAt(file, headerAt + 24, optionalSize);
    const bool wide = word(optional, 0) == 0x20B;
    const std::size_t directories = wide ? 112 : 96;
    if (doubleWord(optional, directories - 4) <= resourceDirectoryIndex) return false;
    const std::uint32_t resources = doubleWord(optional, directories + resourceDirectoryIndex * 8);
    const Sections sections(bytesAt(file, headerAt + 24 + optionalSize, sectionCount * sectionHeaderSize));
    const auto root = sections.fileOffset(resources);
    if (resources == 0 || !root) return false;

    // Three levels: type, name, language.
    std::uint32_t at = subdirectoryFlag;
    for (int level = 0; level < 3; ++level) {
        if ((at & subdirectoryFlag) == 0) return false;
        const std::optional<std::uint32_t> wanted =
            level == 0 ? std::optional<std::uint32_t>(versionResourceType) : std::nullopt;
        const auto entry = directoryEntry(file, *root + (at & ~subdirectoryFlag), wanted);
        if (!entry) return false;
        at = *entry;
    }
    if ((at & subdirectoryFlag) != 0) return false;
    const Bytes data = bytesAt(file, *root + at, 16);
    const auto blockAt = sections.fileOffset(doubleWord(data, 0));
    if (data.size() < 16 || !blockAt) return false;
    return readFixedRecord(
        bytesAt(file, *blockAt, std::min<std::size_t>(doubleWord(data, 4), longestVersionBlock)), version);
}

}  // namespace ovno2::platform::portable
