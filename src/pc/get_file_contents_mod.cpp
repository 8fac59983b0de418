#include "pc/get_file_contents_mod.h"

#include <algorithm>

#include "core/attempt.h"
#include "pc/byte_table.h"

namespace ovno2::GetFileContentsMod {

namespace {

constexpr char16_t byteOrderMark = 0xFEFF;
constexpr char16_t swappedByteOrderMark = 0xFFFE;

bool startsWithCodes(TextView text, const ByteTable& table, std::initializer_list<std::uint8_t> codes) {
    std::size_t i = 0;
    for (const std::uint8_t code : codes)
        if (i >= text.size() || text[i++] != table.character(code)) return false;
    return true;
}

// Two bytes of `byteString` make one character, `low` being the place of the low byte within each pair. An
// odd last byte is dropped.
Text packed(TextView byteString, const ByteTable& table, std::size_t low) {
    const std::string bytes = table.codesOf(byteString);
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    Text text(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char16_t>(byteAt(2 * i + low) | byteAt(2 * i + 1 - low) << 8);
    return text;
}

// Text in a Western language has mostly zero bytes where the high bytes of big-endian UTF-16 stand. For a
// byte string and for its bytes alike: codes up to 8 are the same on every page.
template <class Codes>
bool hasZeroBytes(const Codes& text) {
    constexpr std::size_t firstPosition = 5;  // positions count from 1
    constexpr std::size_t lastPosition = 21;
    constexpr unsigned largestCode = 8;
    if (text.size() < lastPosition) return false;
    for (std::size_t position = firstPosition; position <= lastPosition; position += 2)
        if (text[position - 1] > largestCode) return false;
    return true;
}

}  // namespace

Long ConvertFromUnicodeSub(Text& text) {
    Long encoding = ansiOrUtf8;
    attempt([&] {
        if (text.starts_with(byteOrderMark)) {
            text.erase(0, 1);
            encoding = littleEndianWithMark;
        } else if (text.starts_with(swappedByteOrderMark)) {
            encoding = bigEndianWithMark;
        }
        const ByteTable table;
        if (startsWithCodes(text, table, {0xFE, 0xFF})) {
            encoding = bigEndianWithMark;
            text = packed(TextView(text).substr(2), table, /*low=*/1);
        } else if (startsWithCodes(text, table, {0xFF, 0xFE})) {
            encoding = littleEndianWithMark;
            const std::size_t first = text.size() > 2 && text[2] == u'\0' ? 3 : 2;
            text = packed(TextView(text).substr(first), table, /*low=*/0);
        } else {
            if (startsWithCodes(text, table, {0xEF, 0xBB, 0xBF})) text.erase(0, 3);
            if (!hasZeroBytes(text)) return;
            encoding = bigEndian;
            text = packed(text, table, /*low=*/1);
        }
    });
    return encoding;
}

bool isEncodedText(std::span<const std::uint8_t> bytes) {
    const auto startsWith = [&](std::initializer_list<std::uint8_t> mark) {
        return bytes.size() >= mark.size() && std::equal(mark.begin(), mark.end(), bytes.begin());
    };
    return startsWith({0xFE, 0xFF}) || startsWith({0xFF, 0xFE}) || startsWith({0xEF, 0xBB, 0xBF}) ||
           hasZeroBytes(bytes);
}

}  // namespace ovno2::GetFileContentsMod
