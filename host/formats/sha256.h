// SHA-256 (FIPS 180-4), by which files are known again.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ovno2::host {

using Digest = std::array<unsigned char, 32>;

class Sha256 {
  public:
    // Processors with instructions of their own for it are used, unless it is to be `portable`.
    explicit Sha256(bool portable = false);

    void add(std::string_view bytes);
    // Of all that was added; nothing may be added afterwards.
    Digest finished();

  private:
    static constexpr std::size_t blockSize = 64;
    using State = std::array<std::uint32_t, 8>;
    using AddBlocks = void (*)(State& state, const unsigned char* blocks, std::size_t count);

    static void addBlocks(State& state, const unsigned char* blocks, std::size_t count);
    static void addBlocksFast(State& state, const unsigned char* blocks, std::size_t count);

    AddBlocks addBlocks_;
    State state_;
    std::array<unsigned char, blockSize> rest_{};  // of the last block, as far as it is known
    std::uint64_t size_ = 0;                       // bytes added
};

Digest digestOf(std::string_view bytes);
std::optional<Digest> digestOfFile(const std::filesystem::path& file);  // none where it cannot be read

// 64 lower-case hexadecimal digits.
std::string hexOf(const Digest& digest);
// None for what is no such text; letter case does not count.
std::optional<Digest> digestFromHex(std::string_view hex);

}  // namespace ovno2::host
