#include "messages/message_text.h"

#include "library/library_memory.h"
#include "library/library_texts.h"
#include "pc/ansi.h"
#include "pc/byte_table.h"
#include "pc/convert_hex_text_mod.h"

namespace ovno2::Data {

namespace {

using library::MessageRecord;

// The characters that the record counts, or the text up to its end where they are more than can be read.
Text countedText(const MessageRecord& record) {
    constexpr double bytesPerUnit = 2;
    const Long length = static_cast<Long>(record.dataLength);
    Text text;
    if (length < 0 || !library::isAddress(record.data)) return text;
    const auto units = static_cast<std::size_t>(roundHalfToEven(length / bytesPerUnit));
    std::vector<char16_t> block;
    if (attempt([&] { library::copyBlock(record.data, units, block); }) == noFailure)
        text.assign(block.begin(), block.end());
    else
        text = library::GetStringFromPointer(record.data).substr(0, units);
    return removeAll(throughAnsi(text), u'\0');
}

Text byteText(const MessageRecord& record) {
    const auto bytes = library::copyBlock<std::uint8_t>(record.data, record.dataLength);
    Text text;
    text.reserve(bytes.size());
    ByteTable().append(text, bytes.data(), bytes.size());
    return text;
}

void logInHex(const Text& text) {
    constexpr std::size_t mostDigits = 150;
    if (!logIsOn()) return;
    Text digits = ConvertHexTextMod::ConvertTextToHexText(text);
    if (digits.size() > mostDigits) digits = digits.substr(0, mostDigits) + u"...";
    DebugLine(u":", digits);
}

}  // namespace

Text messageText(const MessageRecord& record) {
    constexpr std::size_t alwaysKept = 2;
    constexpr char16_t firstVisible = 32;
    Text text;
    switch (record.info & formatMask) {
        case formatText:
            text = countedText(record);
            break;
        case formatBytes:
            text = byteText(record);
            attempt([&] { logInHex(text); });
            break;
        default:
            DebugLine(u"dwInfoField ???", decimal{static_cast<Long>(record.info)});
            break;
    }
    while (text.size() > alwaysKept && text.back() < firstVisible)
        text.pop_back();
    return text;
}

}  // namespace ovno2::Data
