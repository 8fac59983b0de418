#include "platform/portable/ini_text.h"

#include "base/utf8.h"
#include "base/values.h"

namespace ovno2::platform::portable {

namespace {

bool isBlank(char16_t c) {
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}

TextView trimmed(TextView text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

TextView nextLine(TextView& rest) {
    const std::size_t end = rest.find_first_of(u"\r\n");
    const TextView line = rest.substr(0, end);
    rest.remove_prefix(end == TextView::npos ? rest.size() : end + 1);
    return trimmed(line);
}

}  // namespace

Text iniValue(TextView contents, TextView section, TextView key) {
    section = trimmed(section);
    key = trimmed(key);
    bool inSection = false;
    while (!contents.empty()) {
        const TextView line = nextLine(contents);
        if (line.starts_with(u'[')) {
            const std::size_t end = line.rfind(u']');
            if (end == TextView::npos) continue;
            if (inSection) return {};
            inSection = equalsIgnoringCase(trimmed(line.substr(1, end - 1)), section);
            continue;
        }
        const std::size_t equals = line.find(u'=');
        if (!inSection || line.starts_with(u';') || equals == TextView::npos ||
            !equalsIgnoringCase(trimmed(line.substr(0, equals)), key))
            continue;
        TextView value = trimmed(line.substr(equals + 1));
        if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') &&
            value.back() == value.front())
            value = value.substr(1, value.size() - 2);
        return Text(value);
    }
    return {};
}

bool decodeMarked(std::string_view bytes, Text& text) {
    if (bytes.starts_with("\xFF\xFE")) {
        text = fromUtf16Bytes(bytes.substr(2));
        return true;
    }
    if (!bytes.starts_with("\xEF\xBB\xBF")) return false;
    text = fromUtf8(bytes.substr(3));
    return true;
}

}  // namespace ovno2::platform::portable
