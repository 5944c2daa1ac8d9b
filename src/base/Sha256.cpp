// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Sha256.h"

#include <algorithm>
#include <bit>

#if defined(__x86_64__) && defined(__GNUC__)
#define QOR_SHA_INSTRUCTIONS
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace qor {

namespace {

constexpr std::size_t LengthSize = 8;
constexpr std::size_t BlockSize = CSha256::BlockSize;

using State = CSha256::State;

/// The first 32 bits of the fractions of square roots and cube roots of the first primes.
constexpr State Start = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                         0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
alignas(16) constexpr std::uint32_t Rounds[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

void MixBlock(State& state, ByteSpan block) {
    std::array<std::uint32_t, 64> w;
    for (std::size_t i = 0; i < 16; ++i)
        w[i] = std::uint32_t{block[4 * i]} << 24 | std::uint32_t{block[4 * i + 1]} << 16 |
               std::uint32_t{block[4 * i + 2]} << 8 | std::uint32_t{block[4 * i + 3]};
    for (std::size_t i = 16; i < 64; ++i) {
        const std::uint32_t s0 =
            std::rotr(w[i - 15], 7) ^ std::rotr(w[i - 15], 18) ^ w[i - 15] >> 3;
        const std::uint32_t s1 = std::rotr(w[i - 2], 17) ^ std::rotr(w[i - 2], 19) ^ w[i - 2] >> 10;
        w[i] = w[i - 16] + s0 + w[i - 7] + s1;
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
        const std::uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
        const std::uint32_t one = h + s1 + ((e & f) ^ (~e & g)) + Rounds[i] + w[i];
        const std::uint32_t two = s0 + ((a & b) ^ (a & c) ^ (b & c));
        h = g, g = f, f = e, e = d + one, d = c, c = b, b = a, a = one + two;
    }
    const State mixed = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); ++i)
        state[i] += mixed[i];
}

void MixPlain(State& state, ByteSpan blocks) {
    for (; blocks.size() >= BlockSize; blocks = blocks.subspan(BlockSize))
        MixBlock(state, blocks.first(BlockSize));
}

#ifdef QOR_SHA_INSTRUCTIONS

/// Four rounds, and the four words that are due sixteen rounds after those of `w`.
__attribute__((target("sha,sse4.1"))) inline void MixFour(__m128i& abef, __m128i& cdgh, __m128i& w,
                                                          __m128i w4, __m128i w8, __m128i w12,
                                                          const std::uint32_t* rounds) {
    const __m128i sums = _mm_add_epi32(w, _mm_load_si128(reinterpret_cast<const __m128i*>(rounds)));
    cdgh = _mm_sha256rnds2_epu32(cdgh, abef, sums);
    abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(sums, 0x0E));
    const __m128i older = _mm_add_epi32(_mm_sha256msg1_epu32(w, w4), _mm_alignr_epi8(w12, w8, 4));
    w = _mm_sha256msg2_epu32(older, w12);
}

__attribute__((target("sha,sse4.1"))) void MixByInstructions(State& state, ByteSpan blocks) {
    const __m128i swap = _mm_set_epi8(12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3);
    auto* const words = reinterpret_cast<__m128i*>(state.data());
    const __m128i cdab = _mm_shuffle_epi32(_mm_loadu_si128(words), 0xB1);
    const __m128i efgh = _mm_shuffle_epi32(_mm_loadu_si128(words + 1), 0x1B);
    __m128i abef = _mm_alignr_epi8(cdab, efgh, 8), cdgh = _mm_blend_epi16(efgh, cdab, 0xF0);
    for (; blocks.size() >= BlockSize; blocks = blocks.subspan(BlockSize)) {
        const __m128i abefBefore = abef, cdghBefore = cdgh;
        const auto* const bytes = reinterpret_cast<const __m128i*>(blocks.data());
        __m128i w0 = _mm_shuffle_epi8(_mm_loadu_si128(bytes), swap);
        __m128i w1 = _mm_shuffle_epi8(_mm_loadu_si128(bytes + 1), swap);
        __m128i w2 = _mm_shuffle_epi8(_mm_loadu_si128(bytes + 2), swap);
        __m128i w3 = _mm_shuffle_epi8(_mm_loadu_si128(bytes + 3), swap);
        for (std::size_t i = 0; i < 64; i += 16) {
            MixFour(abef, cdgh, w0, w1, w2, w3, Rounds + i);
            MixFour(abef, cdgh, w1, w2, w3, w0, Rounds + i + 4);
            MixFour(abef, cdgh, w2, w3, w0, w1, Rounds + i + 8);
            MixFour(abef, cdgh, w3, w0, w1, w2, Rounds + i + 12);
        }
        abef = _mm_add_epi32(abef, abefBefore);
        cdgh = _mm_add_epi32(cdgh, cdghBefore);
    }
    const __m128i feba = _mm_shuffle_epi32(abef, 0x1B), dchg = _mm_shuffle_epi32(cdgh, 0xB1);
    _mm_storeu_si128(words, _mm_blend_epi16(feba, dchg, 0xF0));
    _mm_storeu_si128(words + 1, _mm_alignr_epi8(dchg, feba, 8));
}

/// Of CPUID's leaves 1 (SSSE3, SSE4.1) and 7 (SHA).
bool HasInstructions() {
    unsigned a = 0, b = 0, c = 0, d = 0;
    const bool shuffles = __get_cpuid(1, &a, &b, &c, &d) != 0 && (c >> 9 & c >> 19 & 1) != 0;
    return shuffles && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b >> 29 & 1) != 0;
}

#endif

CSha256::MixFunction FastestMix() {
#ifdef QOR_SHA_INSTRUCTIONS
    static const bool has = HasInstructions();
    if (has)
        return MixByInstructions;
#endif
    return MixPlain;
}

} // namespace

CSha256::CSha256(bool plain) : Mix(plain ? MixPlain : FastestMix()), Mixed(Start) {}

void CSha256::Update(ByteSpan bytes) {
    const std::size_t filled = Length % BlockSize;
    Length += bytes.size();
    if (filled > 0) {
        const ByteSpan first = bytes.first(std::min(bytes.size(), BlockSize - filled));
        std::ranges::copy(first, Begun.begin() + static_cast<std::ptrdiff_t>(filled));
        bytes = bytes.subspan(first.size());
        if (filled + first.size() < BlockSize)
            return;
        Mix(Mixed, Begun);
    }
    const std::size_t whole = bytes.size() / BlockSize * BlockSize;
    Mix(Mixed, bytes.first(whole));
    std::ranges::copy(bytes.subspan(whole), Begun.begin());
}

std::string CSha256::Digits() const {
    const std::size_t rest = Length % BlockSize;
    std::array<std::uint8_t, 2 * BlockSize> last{};
    std::copy_n(Begun.begin(), rest, last.begin());
    last[rest] = 0x80;
    const std::size_t end = rest + 1 + LengthSize <= BlockSize ? BlockSize : 2 * BlockSize;
    for (std::size_t i = 0; i < LengthSize; ++i)
        last[end - 1 - i] = static_cast<std::uint8_t>(Length * 8 >> (8 * i));
    State state = Mixed;
    Mix(state, ByteSpan(last).first(end));
    constexpr char Hexadecimal[] = "0123456789abcdef";
    std::string text;
    for (const std::uint32_t word : state)
        for (int shift = 28; shift >= 0; shift -= 4)
            text += Hexadecimal[word >> shift & 15];
    return text;
}

std::string Sha256Of(ByteSpan bytes) {
    CSha256 hash;
    hash.Update(bytes);
    return hash.Digits();
}

} // namespace qor
