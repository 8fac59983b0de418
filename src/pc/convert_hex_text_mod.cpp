#include "pc/convert_hex_text_mod.h"

#include <optional>

#include "core/attempt.h"
#include "pc/ansi.h"
#include "pc/byte_table.h"

namespace ovno2::ConvertHexTextMod {

namespace {

constexpr Long detailLevel = 5;
constexpr Long largestByte = 0xFF;

Long codeOf(char16_t character, const ByteTable& table) {
    const Long code = table.code(character);
    if (code >= 0) return code;
    const std::string bytes = toAnsi(TextView(&character, 1));
    return bytes.size() == 1 ? Long{static_cast<std::uint8_t>(bytes[0])} : Long{character};
}

}  // namespace

Text ConvertTextToHexText(TextView text) {
    constexpr TextView digits = u"0123456789ABCDEF";
    std::optional<RoutineLog> log;
    if (logsMoreThan(detailLevel - 1)) log.emplace(u"ConvertTextToHexText", detailLevel);
    Text hexText;
    attempt([&] {
        const ByteTable table;
        hexText.assign(2 * text.size(), u' ');
        for (std::size_t i = 0; i < text.size(); ++i) {
            const Long code = codeOf(text[i], table);
            if (code > largestByte) {
                raisePending(invalidProcedureCall);
                continue;
            }
            hexText[2 * i] = digits[static_cast<std::size_t>(code) >> 4];
            hexText[2 * i + 1] = digits[static_cast<std::size_t>(code) & 0xF];
        }
    });
    if (log) DebugWrite(hexText, plainLine, detailLevel);
    return hexText;
}

}  // namespace ovno2::ConvertHexTextMod
