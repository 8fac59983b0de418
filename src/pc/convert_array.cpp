#include "pc/convert_array.h"

#include <algorithm>

#include "core/attempt.h"
#include "pc/byte_table.h"

namespace ovno2::ConvertArray {

namespace {

constexpr std::int64_t mostCharacters = 0x3FFFFFFE;  // of one text, as on the host's side

}  // namespace

Text ConvertByteArrayToString(const ByteArray& bytes, Long lastIndex) {
    Text text;
    attempt([&] {
        if (lastIndex == 0) {
            if (!bytes.hasElements()) throw RuntimeFailure(subscriptOutOfRange);
            lastIndex = bytes.upperBound();
        }
        DebugLine(u"ConvertByteArrayToString:", decimal{lastIndex});
        const std::int64_t length = std::int64_t{lastIndex} - bytes.lowerBound() + 1;
        if (length < 0) throw RuntimeFailure(invalidProcedureCall);
        if (length > mostCharacters) throw RuntimeFailure(outOfMemory);
        const std::size_t present = std::min(bytes.size(), static_cast<std::size_t>(length));
        Text result;
        result.reserve(static_cast<std::size_t>(length));
        ByteTable().append(result, bytes.elements().data(), present);
        result.resize(static_cast<std::size_t>(length));
        if (present < result.size()) raisePending(subscriptOutOfRange);
        text = std::move(result);
    });
    return text;
}

void ConvertStringToByteArray(TextView text, ByteArray& bytes) {
    if (text.empty()) return;
    attempt([&] {
        const std::string codes = ByteTable().codesOf(text);
        bytes = ByteArray(std::vector<std::uint8_t>(codes.begin(), codes.end()));
    });
}

}  // namespace ovno2::ConvertArray
