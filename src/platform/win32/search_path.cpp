#include "platform/win32/search_path.h"

#include <algorithm>
#include <windows.h>

#include "base/values.h"
#include "platform/win32/wide.h"

namespace ovno2::platform::win32 {

namespace {

constexpr DWORD longestPath = 32768;

Text searchFolders() {
    std::vector<wchar_t> buffer(longestPath);
    Text folders = fromWide(buffer.data(), GetModuleFileNameW(nullptr, buffer.data(), longestPath));
    folders.resize(std::min(folders.rfind(u'\\'), folders.size()));
    for (const auto folder : {GetSystemDirectoryW, GetWindowsDirectoryW})
        folders.append(u";").append(fromWide(buffer.data(), folder(buffer.data(), longestPath)));
    const DWORD length = GetEnvironmentVariableW(L"PATH", buffer.data(), longestPath);
    for (const Text& folder : split(fromWide(buffer.data(), length < longestPath ? length : 0), u';')) {
        const bool onDrive = folder.size() > 2 && folder[1] == u':' && folder[2] == u'\\';
        if (onDrive || folder.starts_with(u"\\\\")) folders.append(u";").append(folder);
    }
    return folders;
}

}  // namespace

bool isBareName(TextView name) {
    return !name.empty() && name.find_first_of(u"\\/:") == TextView::npos;
}

Text findNamed(TextView name, const wchar_t* extension) {
    const Text folders = searchFolders();
    const Text wanted(name);
    std::vector<wchar_t> path(longestPath);
    const DWORD length =
        SearchPathW(wide(folders), wide(wanted), extension, longestPath, path.data(), nullptr);
    return length < longestPath ? fromWide(path.data(), length) : Text();
}

}  // namespace ovno2::platform::win32
