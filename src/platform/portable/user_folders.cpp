#include "platform/portable/user_folders.h"

#include <cstdlib>
#include <fstream>
#include <pwd.h>
#include <unistd.h>

#include "platform/portable/paths.h"

namespace ovno2::platform::portable {

namespace fs = std::filesystem;

namespace {

fs::path variable(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

fs::path homeFolder() {
    if (fs::path home = variable("HOME"); home.is_absolute()) return home;
    passwd entry;
    passwd* found = nullptr;
    char texts[16384];
    if (getpwuid_r(geteuid(), &entry, texts, sizeof texts, &found) != 0 || !found) return "/";
    return found->pw_dir;
}

fs::path baseFolder(const char* name, const char* belowHome) {
    fs::path folder = variable(name);
    return folder.is_absolute() ? folder : homeFolder() / belowHome;
}

// A line of user-dirs.dirs is NAME="$HOME/folder" or NAME="/folder".
fs::path desktopFolder(std::string_view name, const char* belowHome) {
    std::ifstream file(baseFolder("XDG_CONFIG_HOME", ".config") / "user-dirs.dirs");
    constexpr std::string_view home = "$HOME";
    for (std::string line; std::getline(file, line);) {
        std::string_view rest(line);
        if (!rest.starts_with(name) || !rest.substr(name.size()).starts_with("=\"")) continue;
        rest.remove_prefix(name.size() + 2);
        rest = rest.substr(0, rest.find('"'));
        if (rest.starts_with('/')) return rest;
        if (!rest.starts_with(home)) continue;
        rest.remove_prefix(home.size());
        return rest.size() > 1 ? homeFolder() / rest.substr(1) : homeFolder();
    }
    return homeFolder() / belowHome;
}

Text systemFolder(const Machine& machine, const char16_t* path) {
    std::error_code error;
    return fs::is_directory(nativePath(machine, u"C:\\"), error) ? Text(path) : Text();
}

}  // namespace

Text userFolder(const Machine& machine, Long id) {
    fs::path folder;
    switch (id) {
        case 0:
        case 16:
            folder = desktopFolder("XDG_DESKTOP_DIR", "Desktop");
            break;
        case 5:
            folder = desktopFolder("XDG_DOCUMENTS_DIR", "Documents");
            break;
        case 13:
            folder = desktopFolder("XDG_MUSIC_DIR", "Music");
            break;
        case 14:
            folder = desktopFolder("XDG_VIDEOS_DIR", "Videos");
            break;
        case 21:
            folder = desktopFolder("XDG_TEMPLATES_DIR", "Templates");
            break;
        case 26:
            folder = baseFolder("XDG_CONFIG_HOME", ".config");
            break;
        case 28:
            folder = baseFolder("XDG_DATA_HOME", ".local/share");
            break;
        case 32:
            folder = baseFolder("XDG_CACHE_HOME", ".cache");
            break;
        case 35:
            return systemFolder(machine, u"C:\\ProgramData");
        case 36:
            return systemFolder(machine, u"C:\\Windows");
        case 37:
            return systemFolder(machine, u"C:\\Windows\\System32");
        case 38:
            return systemFolder(machine, u"C:\\Program Files");
        case 39:
            folder = desktopFolder("XDG_PICTURES_DIR", "Pictures");
            break;
        case 40:
            folder = homeFolder();
            break;
        default:
            return {};
    }
    return windowsPath(machine, folder.lexically_normal());
}

}  // namespace ovno2::platform::portable
