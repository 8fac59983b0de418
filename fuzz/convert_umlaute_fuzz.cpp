// ConvertUmlauteFromFile against a slow twin that follows the rules one replacement at a time.
#include <cstdint>
#include <cstdlib>

#include "base/utf8.h"
#include "base/values.h"
#include "pc/ansi.h"
#include "pc/byte_table.h"
#include "pc/convert_uml_file.h"

namespace {

using namespace ovno2;

void replaceAt(Text& text, std::size_t at, std::size_t length, char16_t with) {
    text = text.substr(0, at) + with + text.substr(at + length);
}

void pairs(Text& text, const ByteTable& table, std::uint8_t lead) {
    for (std::size_t at = text.find(table.character(lead)); at != Text::npos && at + 1 < text.size();
         at = text.find(table.character(lead), at + 1)) {
        const Long b = table.code(text[at + 1]);
        Long code = -1, unit = -1;
        if (b < 0) continue;
        if (lead == 195) code = b + 64 == 96 ? 224 : b + 64;
        if (lead == 194) code = b >= 160 && b != 164 && b != 187 ? b - 128 : b;
        if (lead == 196 && b >= 128) unit = 0x100 + b - 128;
        if (lead == 197 && b >= 128) unit = 0x100 + b - 64;
        if (code >= 0 && code <= 255) unit = table.character(static_cast<std::uint8_t>(code));
        if (unit >= 0) replaceAt(text, at, 2, static_cast<char16_t>(unit));
    }
}

void references(Text& text, const ByteTable& table) {
    for (std::size_t at = text.find(u"&#"); at != Text::npos; at = text.find(u"&#", at + 1)) {
        const std::size_t end = text.find(u';', at);
        if (at + 2 == text.size() || end == Text::npos || end > at + 5) return;
        Text digits = text.substr(at + 2, 3);
        const Long number = numericLong(digits.substr(0, digits.find(u';')));
        if (number < 0 || number > 255) continue;
        replaceAt(text, at, end + 1 - at, table.character(static_cast<std::uint8_t>(number)));
    }
}

Text expected(Text text, const Text& keepList) {
    const ByteTable table;
    const bool hadNul = text.find(u'\0') != Text::npos;
    for (const int lead : {195, 194, 196, 197})
        pairs(text, table, static_cast<std::uint8_t>(lead));
    references(text, table);
    for (char16_t code = 0; code < 32 && !keepList.empty(); ++code) {
        if (keepList.find(code) != Text::npos) continue;
        std::size_t at = text.find(code);
        for (int count = 0; count < 101 && at != Text::npos; ++count, at = text.find(code, at))
            text[at] = u' ';
    }
    if (!hadNul) text = removeAll(text, u'\0');
    text = replaceAll(text, u"\u00E2\u201A\u00AC", u"\u20AC");
    return replaceAll(replaceAll(text, u"\\,", u","), u"\\;", u";");
}

}  // namespace

// The first byte chooses a keep-list, and whether the rest is bytes of the code page or UTF-16.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const Text keepLists[] = {{}, u"\t\r\n", {u'\0', u'x'}, u"x"};
    const Text& keepList = keepLists[data[0] & 3];
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const Text input = (data[0] & 4) != 0 ? fromUtf16Bytes(bytes) : fromAnsi(bytes);
    Text text = input;
    ConvertUmlFile::ConvertUmlauteFromFile(text, keepList);
    if (text != expected(input, keepList)) std::abort();
    return 0;
}
