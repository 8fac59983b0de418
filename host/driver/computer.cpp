// This computer as the module sees it.
#include <array>
#include <fstream>

#include "host/driver/driver.h"
#include "host/output/console.h"
#include "pc/ansi.h"
#include "pc/file_info.h"
#include "pc/files.h"
#include "pc/get_file_contents_mod.h"
#include "pc/process.h"
#include "pc/registry_access.h"

namespace ovno2::host {

bool goesAsText(const std::filesystem::path& file) {
    std::array<char, 32> head{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(head.data(), head.size());
    return GetFileContentsMod::isEncodedText(
        {reinterpret_cast<const std::uint8_t*>(head.data()), static_cast<std::size_t>(stream.gcount())});
}

bool losesCharacters(const std::filesystem::path& file) {
    if (!goesAsText(file)) return false;
    const Text text = Files::GetFileContents(fromUtf8(console::textOf(file)), /*decode=*/true);
    return fromAnsi(toAnsi(text)) != text;
}

namespace computer {

Text userValue(TextView key, TextView name) {
    return Registry::GetRegValue(platform::currentUser, key, name);
}

Text machineValue(TextView key, TextView name) {
    return Registry::GetRegValue(platform::localMachine, key, name);
}

// Deleting a value that is not there has done what it should.
bool setUserValue(TextView key, TextView name, TextView text) {
    constexpr Long textType = 1;
    Registry::SetRegValue(platform::currentUser, key, name, text, textType);
    return userValue(key, name) == text;
}

std::vector<TextView> runningAmong(std::span<const TextView> programs) {
    std::vector<TextView> running;
    bool refresh = true;
    for (const TextView program : programs) {
        if (Process::CheckIfRunning(program, /*id=*/0, refresh).id != 0) running.push_back(program);
        refresh = false;
    }
    return running;
}

Text programVersion(const std::filesystem::path& file) {
    return GetFileInfo_::FileVersionText(fromUtf8(console::textOf(file)), /*preferProductVersion=*/true);
}

Text fromCodePage(std::string_view bytes) {
    return fromAnsi(bytes);
}

}  // namespace computer

}  // namespace ovno2::host
