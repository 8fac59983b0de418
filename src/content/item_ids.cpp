#include "content/item_ids.h"

#include <cstring>

#include "content/state.h"
#include "library/library_memory.h"

namespace ovno2::Content {

using namespace std::string_view_literals;  // names of routines whose length is known beforehand

namespace {

constexpr library::Word longestUsualUid = 2048;  // bytes
constexpr library::Word longestUid = 0x10000;    // what is longer identifies nothing

std::uint8_t digitValue(char16_t digit) {
    if (digit >= u'0' && digit <= u'9') return static_cast<std::uint8_t>(digit - u'0');
    if (digit >= u'A' && digit <= u'F') return static_cast<std::uint8_t>(digit - u'A' + 10);
    if (digit >= u'a' && digit <= u'f') return static_cast<std::uint8_t>(digit - u'a' + 10);
    return 0;
}

// The bytes in the module's own low memory; 0 when there is none.
Address keepInBuffer(std::span<const std::uint8_t> bytes) {
    library::LowWords& buffer = state().IdBuffer;
    if (!buffer.allocate(bytes.size() / sizeof(library::Word) + 1)) return 0;
    std::memcpy(buffer.at(0), bytes.data(), bytes.size());
    return library::addressOf(buffer.at(0));
}

}  // namespace

Text GetUIDAsString(const library::ItemIdRecord& record) {
    const RoutineLog log(u"GetUIDAsString"sv);
    Text uid;
    if (!library::isAddress(record.uid)) return uid;
    if (record.uidLength > longestUsualUid) DebugWrite(u"GetUIDAsString !!!");
    if (record.uidLength > longestUid) return uid;
    attempt([&] { uid = BytesToHex(library::copyBlock<std::uint8_t>(record.uid, record.uidLength)); });
    return uid;
}

void CopyItemIdToLibrary(const ItemId& id, library::ItemIdRecord& record) {
    const RoutineLog log(u"CopyItemIdToLibrary");
    record = {.size = static_cast<library::Word>(id.Size),
              .folderId = static_cast<library::Word>(id.FolderId),
              .position = static_cast<library::Word>(id.Position),
              .uidLength = 0,
              .uid = 0,
              .word5 = static_cast<library::Word>(id.Word5)};
    std::vector<std::uint8_t> bytes;
    attempt([&] { bytes = HexToBytes(id.Uid); });
    if (bytes.empty()) return;
    void* const block = library::CONAAllocMemory.tried(static_cast<library::Word>(bytes.size()));
    if (block) {
        std::memcpy(block, bytes.data(), bytes.size());
        record.uid = library::addressOf(block);
    } else {
        record.uid = keepInBuffer(bytes);
    }
    if (record.uid != 0) record.uidLength = static_cast<library::Word>(bytes.size());
}

void FreeItemIdBytes(library::ItemIdRecord& record) {
    if (record.uid != 0 && !state().IdBuffer.holds(record.uid))
        library::CONAFreeMemory.tried(library::pointerTo(record.uid));
    record.uid = 0;
    record.uidLength = 0;
}

Text BytesToHex(std::span<const std::uint8_t> bytes) {
    constexpr TextView digits = u"0123456789ABCDEF";
    const RoutineLog log(u"BytesToHex"sv);
    Text text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 15]);
    }
    return text;
}

std::vector<std::uint8_t> HexToBytes(TextView text) {
    const RoutineLog log(u"HexToBytes");
    std::vector<std::uint8_t> bytes(text.size() / 2);
    for (std::size_t k = 0; k < bytes.size(); ++k)
        bytes[k] = static_cast<std::uint8_t>(digitValue(text[2 * k]) << 4 | digitValue(text[2 * k + 1]));
    return bytes;
}

}  // namespace ovno2::Content
