#include "pc/folders.h"

#include "core/attempt.h"
#include "core/current_platform.h"
#include "pc/registry_access.h"

namespace ovno2::Folders {

namespace {

TextView shellFolderValueName(Long id) {
    switch (id) {
        case 0:
            return u"Desktop";
        case 5:
            return u"Personal";
        case 6:
            return u"Favorites";
        case 13:
            return u"My Music";
        case 26:
            return u"AppData";
        case 28:
            return u"Local AppData";
        case 32:
            return u"Cache";
        case 35:
            return u"Common AppData";
        case 39:
            return u"My Pictures";
        default:
            return {};
    }
}

Text shellFolderFromRegistry(Long id) {
    static constexpr TextView keys[] = {
        u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
        u"Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders"};
    const TextView name = shellFolderValueName(id);
    if (name.empty()) return {};
    for (const TextView key : keys) {
        for (const Long hive : {platform::currentUser, platform::localMachine}) {
            Text folder = Registry::GetRegValue(hive, key, name);
            if (!folder.empty()) return folder;
        }
    }
    return {};
}

}  // namespace

Text GetSpecialFolder_(Long id, bool addSeparator) {
    const RoutineLog log(u"GetSpecialFolder_");
    DebugLine(decimal{id});
    Text folder;
    DebugWrite(u"GetSpecialFolder_", 1);
    attempt([&] { folder = removeAll(currentPlatform().processes().specialFolder(id), u'\0'); });
    if (folder.size() < 2) {
        DebugWrite(u"GetSpecialFolder_", 2);
        attempt([&] { folder = shellFolderFromRegistry(id); });
    }
    if (addSeparator && !folder.empty() && folder.back() != u'\\') attempt([&] { folder += u'\\'; });
    return folder;
}

Text GetTemporaryFolder() {
    Text folder;
    attempt([&] { folder = currentPlatform().processes().temporaryFolder(); });
    return folder;
}

}  // namespace ovno2::Folders
