#include "simulator/images/image_file.h"

#include <fstream>

#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

std::string message(const std::filesystem::path& file, std::string_view place, std::string_view expected) {
    const std::u8string name = file.u8string();
    std::string text(name.begin(), name.end());
    text.append(": ").append(place).append(": expected ").append(expected);
    return text;
}

}  // namespace

ImageError::ImageError(const std::filesystem::path& file, std::string_view place, std::string_view expected)
    : std::runtime_error(message(file, place, expected)) {}

FileBytes readWhole(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary | std::ios::ate);
    const auto size = static_cast<std::streamsize>(stream ? std::streamoff(stream.tellg()) : -1);
    if (size < 0 || !std::filesystem::is_regular_file(file)) throw ImageError(file, "/", "a readable file");
    FileBytes bytes;
    bytes.size = static_cast<std::size_t>(size);
    bytes.data = std::make_unique_for_overwrite<char[]>(bytes.size + 1);
    system::preferLargePages(bytes.data.get(), bytes.size);
    bytes.data[bytes.size] = '\0';
    stream.seekg(0);
    if (!stream.read(bytes.data.get(), size)) throw ImageError(file, "/", "a readable file");
    return bytes;
}

}  // namespace ovno2::simulator
