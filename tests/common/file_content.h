// Whole files of a test's own.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <string>
#include <string_view>

namespace ovno2 {

// Writes the file, in folders that are made where they are missing.
inline void writeContent(const std::filesystem::path& file, std::string_view bytes) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}
// Nothing when there is no such file.
inline std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}
// A content in which every byte comes once.
inline std::string everyByte() {
    std::string all(256, '\0');
    std::iota(all.begin(), all.end(), '\0');
    return all;
}

}  // namespace ovno2
