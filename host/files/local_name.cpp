#include "host/files/local_name.h"

#include <algorithm>

#include "host/output/text.h"

namespace ovno2::host {

namespace {

constexpr char16_t replacement = u'_';
constexpr std::size_t longestName = 240;  // bytes of UTF-8; file systems take 255, and " (2)" must have room
constexpr std::size_t longestExtension = 16;

bool isSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit < 0xE000;
}

bool isPair(TextView text, std::size_t i) {
    return text[i] < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
}

bool isUsable(char16_t unit) {
    return unit >= u' ' && unit != 0x7F && !(unit >= 0x80 && unit < 0xA0) &&
           TextView(u"<>:\"/\\|?*").find(unit) == TextView::npos;
}

bool isDeviceName(TextView name) {
    const Text stem = lowerCase(name.substr(0, name.find(u'.')));
    for (const TextView device : {u"con", u"prn", u"aux", u"nul"})
        if (stem == device) return true;
    return stem.size() == 4 && (stem.starts_with(u"com") || stem.starts_with(u"lpt")) && stem[3] >= u'1' &&
           stem[3] <= u'9';
}

std::size_t extensionOf(TextView name) {
    const std::size_t dot = name.rfind(u'.');
    const bool is = dot != TextView::npos && dot > 0 && name.size() - dot <= longestExtension;
    return is ? dot : name.size();
}

// `suffix` goes between name and extension.
Text withSuffix(TextView name, TextView suffix) {
    const std::size_t dot = extensionOf(name);
    return Text(name.substr(0, dot)).append(suffix).append(name.substr(dot));
}

Text shortened(Text name) {
    const std::size_t dot = extensionOf(name);
    const Text extension = name.substr(dot);
    name.resize(dot);
    while (!name.empty() && toUtf8(name + extension).size() > longestName) {
        const bool pair = name.size() > 1 && isSurrogate(name.back());
        name.resize(name.size() - (pair ? 2 : 1));
    }
    return name + extension;
}

}  // namespace

Text localName(TextView phoneName) {
    Text name;
    for (std::size_t i = 0; i < phoneName.size(); ++i) {
        if (!isSurrogate(phoneName[i])) {
            name += isUsable(phoneName[i]) ? phoneName[i] : replacement;
        } else if (isPair(phoneName, i)) {
            name.append(phoneName.substr(i++, 2));
        } else {
            name += replacement;
        }
    }
    if (name == u"..") name = u"__";
    if (name.empty()) name = replacement;
    name = shortened(std::move(name));
    if (name.back() == u'.' || name.back() == u' ') name.back() = replacement;
    return isDeviceName(name) ? replacement + name : name;
}

Text LocalNames::give(TextView phoneName) {
    const Text wanted = localName(phoneName);
    int& count = taken_[lowerCase(wanted)];
    Text name = wanted;
    while (count++ > 0) {
        name = withSuffix(wanted, u" (" + fromUtf8(std::to_string(count)) + u")");
        if (taken_.emplace(lowerCase(name), 1).second) break;
    }
    return name;
}

}  // namespace ovno2::host
