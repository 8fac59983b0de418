#include "simulator/images/image_file.h"

#include <atomic>
#include <fstream>
#include <system_error>

namespace ovno2::simulator {
namespace {

// Tells apart what one process has on its way at a time.
std::string nextNumber() {
    static std::atomic<unsigned> last{0};
    return std::to_string(++last);
}

std::string message(const std::filesystem::path& file, std::string_view place, std::string_view expected) {
    const std::u8string name = file.u8string();
    std::string text(name.begin(), name.end());
    if (!place.empty()) text.append(": ").append(place);
    text.append(": expected ").append(expected);
    return text;
}

}  // namespace

ImageError::ImageError(const std::filesystem::path& file, std::string_view place, std::string_view expected)
    : std::runtime_error(message(file, place, expected)) {}

FileBytes readWhole(const std::filesystem::path& file) {
    // Asked first: opening a pipe waits for somebody to write to it.
    std::error_code failed;
    if (!std::filesystem::is_regular_file(file, failed)) throw ImageError(file, "/", "a readable file");
    std::ifstream stream(file, std::ios::binary | std::ios::ate);
    const auto size = static_cast<std::streamsize>(stream ? std::streamoff(stream.tellg()) : -1);
    if (size < 0) throw ImageError(file, "/", "a readable file");
    FileBytes bytes;
    bytes.size = static_cast<std::size_t>(size);
    bytes.data = std::make_unique_for_overwrite<char[]>(bytes.size + 1);
    system::preferLargePages(bytes.data.get(), bytes.size);
    bytes.data[bytes.size] = '\0';
    stream.seekg(0);
    if (!stream.read(bytes.data.get(), size)) throw ImageError(file, "/", "a readable file");
    return bytes;
}

system::FolderLock lockImage(const std::filesystem::path& folder) {
    try {
        return system::FolderLock(folder);
    } catch (const std::system_error&) {
        throw ImageError(folder, "", "a folder that can be read and that no other program keeps on changing");
    }
}

void removeLeftovers(const std::filesystem::path& folder) {
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator(folder, failed)) {
        const bool leftOver = entry.path().filename().u8string().starts_with(u8".incoming-");
        if (leftOver && !entry.is_directory(failed)) std::filesystem::remove(entry.path(), failed);
    }
}

IncomingFile::IncomingFile(const std::filesystem::path& folder, std::span<const char> bytes)
    : name(folder / (".incoming-" + std::to_string(system::processId()) + "-" + nextNumber())) {
    try {
        system::writeDurably(name, bytes);
    } catch (...) {
        remove();
        throw;
    }
}

IncomingFile::~IncomingFile() {
    remove();
}

void IncomingFile::moveTo(const std::filesystem::path& target) {
    std::error_code ignored;
    const std::filesystem::file_status replaced = std::filesystem::status(target, ignored);
    if (std::filesystem::is_regular_file(replaced))
        std::filesystem::permissions(name, replaced.permissions(), ignored);
    system::replaceDurably(name, target);
    name.clear();
}

void IncomingFile::remove() const {
    std::error_code ignored;
    if (!name.empty()) std::filesystem::remove(name, ignored);
}

}  // namespace ovno2::simulator
