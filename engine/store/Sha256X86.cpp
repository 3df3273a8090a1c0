#include "store/Sha256Blocks.h"

#include <cpuid.h>
#include <immintrin.h>

namespace velmorak {
namespace {

bool isShaThere() {
    constexpr unsigned extendedFeatures = 7;
    constexpr unsigned shaBit = 1U << 29U;
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    return __get_cpuid_count(extendedFeatures, 0, &a, &b, &c, &d) != 0 && (b & shaBit) != 0 &&
           __builtin_cpu_supports("sse4.1") != 0;
}

/// The state as the instructions want it: a b e f and c d g h, from the highest word to the lowest.
struct Halves {
    __m128i abef;
    __m128i cdgh;
};

[[gnu::target("sha,sse4.1")]] Halves halvesOf(const DigestState& state) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state.data()));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state.data() + 4));
    const __m128i cdab = _mm_shuffle_epi32(low, 0xB1);
    const __m128i efgh = _mm_shuffle_epi32(high, 0x1B);
    return {_mm_alignr_epi8(cdab, efgh, 8), _mm_blend_epi16(efgh, cdab, 0xF0)};
}

[[gnu::target("sha,sse4.1")]] void putBack(const Halves& halves, DigestState& state) {
    const __m128i feba = _mm_shuffle_epi32(halves.abef, 0x1B);
    const __m128i dchg = _mm_shuffle_epi32(halves.cdgh, 0xB1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state.data()), _mm_blend_epi16(feba, dchg, 0xF0));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state.data() + 4), _mm_alignr_epi8(dchg, feba, 8));
}

[[gnu::target("sha,sse4.1")]] __m128i nextWords(const __m128i* words) {
    const __m128i sum = _mm_add_epi32(_mm_sha256msg1_epu32(words[0], words[1]), _mm_alignr_epi8(words[3], words[2], 4));
    return _mm_sha256msg2_epu32(sum, words[3]);
}

[[gnu::target("sha,sse4.1")]] void absorb(Halves& halves, const std::uint8_t* block) {
    const __m128i bigEndian = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
    __m128i words[16];
    Halves mixed = halves;
#pragma GCC unroll 16
    for (std::size_t i = 0; i < 16; ++i) {
        words[i] = i < 4
                       ? _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * i)), bigEndian)
                       : nextWords(words + i - 4);
        const __m128i constants = _mm_loadu_si128(reinterpret_cast<const __m128i*>(digestConstants.data() + 4 * i));
        const __m128i sum = _mm_add_epi32(words[i], constants);
        mixed.cdgh = _mm_sha256rnds2_epu32(mixed.cdgh, mixed.abef, sum);
        mixed.abef = _mm_sha256rnds2_epu32(mixed.abef, mixed.cdgh, _mm_shuffle_epi32(sum, 0x0E));
    }
    halves.abef = _mm_add_epi32(halves.abef, mixed.abef);
    halves.cdgh = _mm_add_epi32(halves.cdgh, mixed.cdgh);
}

}  // namespace

const bool hasDigestInstructions = isShaThere();

[[gnu::target("sha,sse4.1")]] void absorbBlocksByInstructions(DigestState& state, const std::uint8_t* blocks,
                                                              std::size_t count) {
    Halves halves = halvesOf(state);
    for (; count > 0; --count, blocks += digestBlock) {
        absorb(halves, blocks);
    }
    putBack(halves, state);
}

}  // namespace velmorak
