// ConvertFromUnicodeSub against a decoder that works on the bytes themselves.
#include <cstdint>
#include <cstdlib>

#include "base/utf8.h"
#include "pc/ansi.h"
#include "pc/get_file_contents_mod.h"

namespace {

using namespace ovno2;

Text bigEndianText(std::string_view bytes) {
    std::string swapped;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        swapped.append({bytes[i + 1], bytes[i]});
    return fromUtf16Bytes(swapped);
}

Long expected(std::string_view bytes, Text& text) {
    if (bytes.starts_with("\xFE\xFF")) {
        text = bigEndianText(bytes.substr(2));
        return 2;
    }
    if (bytes.starts_with("\xFF\xFE")) {
        bytes.remove_prefix(bytes.size() > 2 && bytes[2] == 0 ? 3 : 2);
        text = fromUtf16Bytes(bytes);
        return 4;
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    text = fromAnsi(bytes);
    for (std::size_t at = 4; at <= 20; at += 2)
        if (at >= bytes.size() || static_cast<unsigned char>(bytes[at]) > 8) return 0;
    text = bigEndianText(bytes);
    return 3;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Text text = fromAnsi(bytes);
    Text wanted;
    const Long encoding = expected(bytes, wanted);
    if (GetFileContentsMod::ConvertFromUnicodeSub(text) != encoding || text != wanted) std::abort();
    // Texts that are no byte strings: what they become is not told, but it ends.
    Text wide = fromUtf16Bytes(bytes);
    GetFileContentsMod::ConvertFromUnicodeSub(wide);
    return 0;
}
