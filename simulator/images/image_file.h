// Files of an image: reading one whole, and the error that names what is wrong with one. No state.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ovno2::simulator {

// "FILE: PLACE: expected WHAT".
struct ImageError : std::runtime_error {
    ImageError(const std::filesystem::path& file, std::string_view place, std::string_view expected);
};

// The bytes of a file, with a NUL behind them.
struct FileBytes {
    std::unique_ptr<char[]> data;
    std::size_t size = 0;

    operator std::string_view() const { return {data.get(), size}; }
};

// Throws ImageError when the file cannot be read.
FileBytes readWhole(const std::filesystem::path& file);

}  // namespace ovno2::simulator
