// Executables with a version, made byte by byte.
#pragma once

#include <cstdint>
#include <string>

#include "platform/processes.h"

namespace ovno2 {

class ByteWriter {
  public:
    void word(std::uint32_t value) {
        bytes += static_cast<char>(value & 0xFF);
        bytes += static_cast<char>(value >> 8 & 0xFF);
    }
    void doubleWord(std::uint32_t value) {
        word(value & 0xFFFF);
        word(value >> 16);
    }
    void fillTo(std::size_t size) { bytes.resize(size, '\0'); }
    std::string bytes;
};

// A library without code for 32-bit systems, or with `wide` for 64-bit ones, that has nothing but the fixed
// version record; its only section is the resources'.
inline std::string makeExecutable(const platform::FileVersion& version, bool wide = false) {
    constexpr std::uint32_t resourceAddress = 0x1000, resourceOffset = 0x200, resourceSize = 0x200;
    const std::uint32_t optionalSize = wide ? 0xF0 : 0xE0;
    ByteWriter file;
    file.word(0x5A4D);
    file.fillTo(60);
    file.doubleWord(64);
    file.doubleWord(0x4550);
    file.word(wide ? 0x8664 : 0x14C);
    file.word(1);  // sections
    file.fillTo(64 + 20);
    file.word(optionalSize);
    file.word(0x2102);  // a library
    const std::size_t optional = file.bytes.size();
    file.word(wide ? 0x20B : 0x10B);
    file.fillTo(optional + 32);
    file.doubleWord(0x1000);  // alignment of sections
    file.doubleWord(0x200);   // and in the file
    file.word(4);
    file.fillTo(optional + 48);
    file.word(4);
    file.fillTo(optional + 56);
    file.doubleWord(resourceAddress + 0x1000);  // image size
    file.doubleWord(resourceOffset);            // size of the headers
    file.fillTo(optional + 68);
    file.word(2);
    file.fillTo(optional + (wide ? 108 : 92));
    file.doubleWord(16);  // directories
    file.fillTo(file.bytes.size() + 16);
    file.doubleWord(resourceAddress);
    file.doubleWord(resourceSize);
    file.fillTo(optional + optionalSize);
    file.bytes += std::string(".rsrc\0\0\0", 8);
    file.doubleWord(resourceSize);
    file.doubleWord(resourceAddress);
    file.doubleWord(resourceSize);
    file.doubleWord(resourceOffset);
    file.fillTo(file.bytes.size() + 12);
    file.doubleWord(0x40000040);  // readable data

    file.fillTo(resourceOffset);
    const auto directory = [&](std::uint32_t id, std::uint32_t below) {
        file.fillTo(file.bytes.size() + 14);
        file.word(1);  // entries by number
        file.doubleWord(id);
        file.doubleWord(below);
    };
    constexpr std::uint32_t directorySize = 24, subdirectory = 0x80000000;
    directory(/*id=*/16, subdirectory | directorySize);
    directory(/*id=*/1, subdirectory | 2 * directorySize);
    directory(/*id=*/0x409, 3 * directorySize);
    constexpr std::uint32_t blockSize = 92;
    file.doubleWord(resourceAddress + 3 * directorySize + 16);
    file.doubleWord(blockSize);
    file.fillTo(file.bytes.size() + 8);
    const std::size_t block = file.bytes.size();
    file.word(blockSize);
    file.word(52);
    file.word(0);
    for (const char c : std::string("VS_VERSION_INFO"))
        file.word(static_cast<unsigned char>(c));
    file.fillTo(block + 40);
    file.doubleWord(0xFEEF04BD);
    file.doubleWord(0x10000);
    for (const auto& parts : {version.file, version.product}) {
        file.word(parts[1]);
        file.word(parts[0]);
        file.word(parts[3]);
        file.word(parts[2]);
    }
    file.fillTo(resourceOffset + resourceSize);
    return file.bytes;
}

}  // namespace ovno2
