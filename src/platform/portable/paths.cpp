#include "platform/portable/paths.h"

#include <algorithm>

#include "base/utf8.h"

namespace ovno2::platform::portable {

namespace fs = std::filesystem;

namespace {

bool isDriveLetter(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

fs::path drivesFolder(const Machine& machine) {
    return machine.profileFolder() / "drives";
}

}  // namespace

fs::path nativePath(const Machine& machine, TextView path) {
    if (path.starts_with(u"\\\\?\\")) path.remove_prefix(4);
    fs::path root;
    if (path.size() >= 2 && path[1] == u':' && isDriveLetter(path[0])) {
        const char letter = static_cast<char>(path[0] | 0x20);
        root = letter == 'z' ? fs::path("/") : drivesFolder(machine) / std::string(1, letter) / "";
        path.remove_prefix(2);
        while (!path.empty() && (path[0] == u'\\' || path[0] == u'/'))
            path.remove_prefix(1);
    }
    std::string rest = toUtf8(path);
    std::ranges::replace(rest, '\\', '/');
    return root / rest;
}

Text windowsPath(const Machine& machine, const fs::path& path) {
    Text text = fromUtf8(path.native());
    const Text drives = fromUtf8((drivesFolder(machine) / "").native());
    if (text.size() > drives.size() && text.starts_with(drives) && isDriveLetter(text[drives.size()]) &&
        (text.size() == drives.size() + 1 || text[drives.size() + 1] == u'/')) {
        const char16_t letter = text[drives.size()] & ~char16_t{0x20};
        text = Text{letter, u':'} + text.substr(drives.size() + 1);
        if (text.size() == 2) text += u'/';
    } else {
        text.insert(0, u"Z:");
    }
    std::ranges::replace(text, u'/', u'\\');
    return text;
}

}  // namespace ovno2::platform::portable
