// Executables with a version, made byte by byte.
#pragma once

#include <cstring>
#include <string>

#include "platform/processes.h"

namespace ovno2 {

// A library without code for 32-bit systems, or with `wide` for 64-bit ones, that has nothing but the fixed
// version record; its only section is the resources'.
inline std::string makeExecutable(const platform::FileVersion& version, bool wide = false) {
    constexpr std::uint32_t optional = 88, address = 0x1000, offset = 0x200, size = 0x200;
    const std::uint32_t optionalSize = wide ? 0xF0 : 0xE0;
    const std::uint32_t directories = optional + (wide ? 108 : 92);
    std::string bytes(offset + size, '\0');
    const auto put = [&](std::size_t at, std::initializer_list<std::uint32_t> words) {
        std::memcpy(&bytes[at], words.begin(), words.size() * sizeof(std::uint32_t));
    };
    put(0, {0x5A4D});
    put(60, {64, 0x4550, 0x10000u | (wide ? 0x8664 : 0x14C)});  // where the header is; one section
    put(optional - 4, {0x21020000u | optionalSize, wide ? 0x20Bu : 0x10Bu});          // a library
    put(optional + 32, {0x1000, 0x200, 4, 0, 4, 0, address + 0x1000, offset, 0, 2});  // alignments, sizes
    put(directories, {16, 0, 0, 0, 0, address, size});
    bytes.replace(optional + optionalSize, 5, ".rsrc");
    put(optional + optionalSize + 8, {size, address, size, offset, 0, 0, 0, 0x40000040});  // readable data

    constexpr std::uint32_t directory = 24, below = 0x80000000, one = 0x10000;
    put(offset + 12, {one, 16, below | directory});
    put(offset + directory + 12, {one, 1, below | 2 * directory});
    put(offset + 2 * directory + 12, {one, 0x409, 3 * directory});
    put(offset + 3 * directory, {address + 3 * directory + 16, 92});
    const std::size_t block = offset + 3 * directory + 16;
    put(block, {52u << 16 | 92});
    const std::u16string name = u"VS_VERSION_INFO";
    std::memcpy(&bytes[block + 6], name.data(), name.size() * sizeof(char16_t));
    put(block + 40, {0xFEEF04BD, 0x10000});
    std::size_t at = block + 48;
    for (const auto& parts : {version.file, version.product})
        for (const std::size_t high : {0u, 2u}) {
            put(at, {std::uint32_t{parts[high]} << 16 | parts[high + 1]});
            at += sizeof(std::uint32_t);
        }
    return bytes;
}

}  // namespace ovno2
