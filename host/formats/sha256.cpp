#include "host/formats/sha256.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <fstream>
#include <vector>
#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace ovno2::host {

namespace {

constexpr std::array<std::uint32_t, 64> roundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t wordAt(const unsigned char* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
           static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
}

#if defined(__x86_64__) || defined(__i386__)
bool processorKnowsIt() {
    constexpr unsigned sse41 = 1U << 19, sha = 1U << 29;
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & sse41) == 0) return false;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & sha) != 0;
}
#else
bool processorKnowsIt() {
    return false;
}
#endif

}  // namespace

Sha256::Sha256(bool portable)
    : addBlocks_(addBlocks), state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                    0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19} {
    static const bool isFast = processorKnowsIt();
    if (isFast && !portable) addBlocks_ = addBlocksFast;
}

void Sha256::addBlocks(State& state, const unsigned char* blocks, std::size_t count) {
    for (; count != 0; --count, blocks += blockSize) {
        std::array<std::uint32_t, 64> words;
        for (std::size_t i = 0; i < 16; ++i)
            words[i] = wordAt(blocks + 4 * i);
        for (std::size_t i = 16; i < words.size(); ++i) {
            const std::uint32_t near = words[i - 2], far = words[i - 15];
            words[i] = words[i - 16] + (std::rotr(far, 7) ^ std::rotr(far, 18) ^ far >> 3) + words[i - 7] +
                       (std::rotr(near, 17) ^ std::rotr(near, 19) ^ near >> 10);
        }
        auto [a, b, c, d, e, f, g, h] = state;
        for (std::size_t i = 0; i < words.size(); ++i) {
            const std::uint32_t one = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                      ((e & f) ^ (~e & g)) + roundConstants[i] + words[i];
            const std::uint32_t other =
                (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
            h = g;
            g = f;
            f = e;
            e = d + one;
            d = c;
            c = b;
            b = a;
            a = one + other;
        }
        const State added{a, b, c, d, e, f, g, h};
        for (std::size_t i = 0; i < state.size(); ++i)
            state[i] += added[i];
    }
}

#if defined(__x86_64__) || defined(__i386__)
__attribute__((target("sha,sse4.1"))) static inline __m128i load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

// Two halves of the state as the instructions want them (a, b, e, f and c, d, g, h), four words at a time.
__attribute__((target("sha,sse4.1"))) void Sha256::addBlocksFast(State& state, const unsigned char* blocks,
                                                                 std::size_t count) {
    const __m128i byteOrder = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
    const __m128i low = _mm_shuffle_epi32(load(state.data()), 0xB1);
    const __m128i high = _mm_shuffle_epi32(load(state.data() + 4), 0x1B);
    __m128i abef = _mm_alignr_epi8(low, high, 8), cdgh = _mm_blend_epi16(high, low, 0xF0);
    for (; count != 0; --count, blocks += blockSize) {
        const __m128i abefBefore = abef, cdghBefore = cdgh;
        __m128i words[4];
        for (int i = 0; i < 4; ++i)
            words[i] = _mm_shuffle_epi8(load(blocks + 16 * i), byteOrder);
#pragma GCC unroll 16
        for (int i = 0; i < 16; ++i) {
            __m128i& oldest = words[i % 4];
            const __m128i last = words[(i + 3) % 4];
            const __m128i sum = _mm_add_epi32(oldest, load(&roundConstants[4 * static_cast<std::size_t>(i)]));
            cdgh = _mm_sha256rnds2_epu32(cdgh, abef, sum);
            abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(sum, 0x0E));
            if (i >= 12) continue;
            const __m128i between = _mm_alignr_epi8(last, words[(i + 2) % 4], 4);
            const __m128i begun = _mm_sha256msg1_epu32(oldest, words[(i + 1) % 4]);
            oldest = _mm_sha256msg2_epu32(_mm_add_epi32(begun, between), last);
        }
        abef = _mm_add_epi32(abef, abefBefore);
        cdgh = _mm_add_epi32(cdgh, cdghBefore);
    }
    const __m128i feba = _mm_shuffle_epi32(abef, 0x1B), dchg = _mm_shuffle_epi32(cdgh, 0xB1);
    auto* const stored = reinterpret_cast<__m128i*>(state.data());
    _mm_storeu_si128(stored, _mm_blend_epi16(feba, dchg, 0xF0));
    _mm_storeu_si128(stored + 1, _mm_alignr_epi8(dchg, feba, 8));
}
#else
void Sha256::addBlocksFast(State& state, const unsigned char* blocks, std::size_t count) {
    addBlocks(state, blocks, count);
}
#endif

void Sha256::add(std::string_view bytes) {
    const auto* next = reinterpret_cast<const unsigned char*>(bytes.data());
    std::size_t left = bytes.size();
    const std::size_t begun = size_ % blockSize;
    size_ += left;
    if (begun != 0) {
        const std::size_t taken = std::min(left, blockSize - begun);
        std::memcpy(rest_.data() + begun, next, taken);
        next += taken;
        left -= taken;
        if (begun + taken < blockSize) return;
        addBlocks_(state_, rest_.data(), 1);
    }
    addBlocks_(state_, next, left / blockSize);
    if (left % blockSize != 0)
        std::memcpy(rest_.data(), next + left / blockSize * blockSize, left % blockSize);
}

Digest Sha256::finished() {
    const std::uint64_t bits = size_ * 8;
    constexpr std::size_t lengthSize = 8;
    const std::size_t begun = size_ % blockSize;
    const std::size_t blanks =
        (begun < blockSize - lengthSize ? blockSize : 2 * blockSize) - lengthSize - begun;
    std::string end(blanks, '\0');
    end.front() = '\x80';
    for (int shift = 56; shift >= 0; shift -= 8)
        end.push_back(static_cast<char>(bits >> shift));
    add(end);
    Digest digest;
    for (std::size_t i = 0; i < digest.size(); ++i)
        digest[i] = static_cast<unsigned char>(state_[i / 4] >> (24 - 8 * (i % 4)));
    return digest;
}

Digest digestOf(std::string_view bytes) {
    Sha256 hash;
    hash.add(bytes);
    return hash.finished();
}

std::optional<Digest> digestOfFile(const std::filesystem::path& file) {
    constexpr std::size_t pieceSize = std::size_t{256} << 10;
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    std::vector<char> piece(pieceSize);
    Sha256 hash;
    do {
        stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        hash.add({piece.data(), static_cast<std::size_t>(stream.gcount())});
    } while (stream);
    if (stream.bad()) return std::nullopt;
    return hash.finished();
}

std::string hexOf(const Digest& digest) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    hex.reserve(2 * digest.size());
    for (const unsigned char byte : digest)
        hex.append({digits[byte >> 4], digits[byte & 15]});
    return hex;
}

std::optional<Digest> digestFromHex(std::string_view hex) {
    const auto digit = [](char c) {
        if (c >= '0' && c <= '9') return c - '0';
        const char small = static_cast<char>(c | 0x20);
        return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
    };
    Digest digest;
    if (hex.size() != 2 * digest.size()) return std::nullopt;
    for (std::size_t i = 0; i < digest.size(); ++i) {
        const int high = digit(hex[2 * i]), low = digit(hex[2 * i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        digest[i] = static_cast<unsigned char>(high << 4 | low);
    }
    return digest;
}

}  // namespace ovno2::host
