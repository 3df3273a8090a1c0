#pragma once

#include "expression/simd/SimdKernels.h"

#include <immintrin.h>

// Compiled for several instruction sets: nothing here may be an inline function that other sources share.

namespace velmorak::expression {

namespace {

inline constexpr std::size_t width = 4;

/// Pads a remainder of fewer than four values, so that it takes the same instructions as the others.
inline __m256d loadSome(const double* values, std::size_t count) {
    alignas(32) double padded[width] = {1.0, 1.0, 1.0, 1.0};
    for (std::size_t i = 0; i < count; ++i) {
        padded[i] = values[i];
    }
    return _mm256_load_pd(padded);
}

/// Packs eight comparisons of four values each into 32 bytes of 0 or 1, in order.
inline __m256i packed(const __m256d (&truths)[8]) {
    __m256i halves[4];
    for (std::size_t i = 0; i < 4; ++i) {
        halves[i] = _mm256_castps_si256(
            _mm256_shuffle_ps(_mm256_castpd_ps(truths[2 * i]), _mm256_castpd_ps(truths[2 * i + 1]), 0x88));
    }
    const __m256i bytes =
        _mm256_packs_epi16(_mm256_packs_epi32(halves[0], halves[1]), _mm256_packs_epi32(halves[2], halves[3]));
    const __m128i low = _mm256_castsi256_si128(bytes);
    const __m128i high = _mm256_extracti128_si256(bytes, 1);
    const __m256i ordered = _mm256_set_m128i(_mm_unpackhi_epi16(low, high), _mm_unpacklo_epi16(low, high));
    return _mm256_and_si256(ordered, _mm256_set1_epi8(1));
}

template <int predicate>
bool compare(const KernelArgs& args) {
    const auto* a = static_cast<const double*>(args.in[0]);
    const auto* b = static_cast<const double*>(args.in[1]);
    auto* out = static_cast<std::uint8_t*>(args.out);
    std::size_t row = 0;
    for (; row + 8 * width <= args.rows; row += 8 * width) {
        __m256d truths[8];
        for (std::size_t i = 0; i < 8; ++i) {
            truths[i] =
                _mm256_cmp_pd(_mm256_loadu_pd(a + row + i * width), _mm256_loadu_pd(b + row + i * width), predicate);
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + row), packed(truths));
    }
    for (; row < args.rows; row += width) {
        const std::size_t rest = args.rows - row < width ? args.rows - row : width;
        const int truths =
            _mm256_movemask_pd(_mm256_cmp_pd(loadSome(a + row, rest), loadSome(b + row, rest), predicate));
        for (std::size_t i = 0; i < rest; ++i) {
            out[row + i] = static_cast<std::uint8_t>((truths >> i) & 1);
        }
    }
    return true;
}

}  // namespace

}  // namespace velmorak::expression
