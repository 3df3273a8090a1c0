#pragma once

#include <immintrin.h>

#include "histogram/fill/Kernels.h"

/// How the cells of eight entries are found with AVX-512. For Avx512.cpp alone, which is compiled for these processors.
namespace velmorak::filling::avx512 {

inline constexpr std::size_t wideGroup = 8;
/// A double so large that its unit in the last place is 1; sums with it are rounded to whole numbers.
inline constexpr double wholeNumbers = 0x1.8p52;
inline constexpr double largest = 0x1.fffffffffffffp1023;

inline __mmask8 isFinite(__m512d x) {
    return _mm512_cmp_pd_mask(_mm512_abs_pd(x), _mm512_set1_pd(largest), _CMP_LE_OQ);
}

/// The cells of eight entries.
struct CellIndices {
    __m512i cells;  ///< In the low 32 bits of each.
    __mmask8 areSure;
};

/// Computes cells on an axis with bins of equal width.
class ByStep {
public:
    explicit ByStep(const Steps& axis);

    CellIndices operator()(std::size_t /*at*/, __m512d x) const;

private:
    __m512d shifted;
    __m512d perUnit;
    __m512d top;
    __m512d bound;
};

inline ByStep::ByStep(const Steps& axis)
    : shifted(_mm512_set1_pd(axis.shifted)),
      perUnit(_mm512_set1_pd(axis.perUnit)),
      top(_mm512_set1_pd(axis.top)),
      bound(_mm512_set1_pd(axis.bound)) {}

inline CellIndices ByStep::operator()(std::size_t /*at*/, __m512d x) const {
    const __m512d whole = _mm512_set1_pd(wholeNumbers);
    const __m512d steps = _mm512_mul_pd(_mm512_sub_pd(x, shifted), perUnit);
    const __m512d inside = _mm512_min_pd(_mm512_max_pd(steps, _mm512_setzero_pd()), top);
    const __m512d rounded = _mm512_add_pd(inside, whole);
    const __m512d rest = _mm512_sub_pd(inside, _mm512_sub_pd(rounded, whole));
    const __mmask8 isSure = _mm512_mask_cmp_pd_mask(isFinite(x), _mm512_abs_pd(rest), bound, _CMP_LE_OQ);
    return {_mm512_castpd_si512(rounded), isSure};
}

/// Looks up cells on an axis with bins of different widths.
class BySlice {
public:
    explicit BySlice(const AxisSlices& axis);

    CellIndices operator()(std::size_t /*at*/, __m512d x) const;

private:
    const std::byte* starts;
    __m512d low;
    __m512d perUnit;
    __m512d last;
};

inline BySlice::BySlice(const AxisSlices& axis)
    : starts(reinterpret_cast<const std::byte*>(axis.starts)),
      low(_mm512_set1_pd(axis.low)),
      perUnit(_mm512_set1_pd(axis.perUnit)),
      last(_mm512_set1_pd(axis.last)) {}

// Eight loads of 16 bytes are quicker than instructions that gather.
inline CellIndices BySlice::operator()(std::size_t /*at*/, __m512d x) const {
    static_assert(sizeof(SliceStart) == 16);
    const __m512d steps = _mm512_mul_pd(_mm512_sub_pd(x, low), perUnit);
    const __m512d inside = _mm512_min_pd(_mm512_max_pd(steps, _mm512_setzero_pd()), last);
    alignas(64) std::uint64_t offsets[wideGroup];
    _mm512_store_si512(offsets, _mm512_slli_epi64(_mm512_cvttpd_epi64(inside), 4));
    asm("" : "+m"(offsets));
    const auto startOf = [&](std::size_t entry) {
        return _mm_loadu_pd(reinterpret_cast<const double*>(starts + offsets[entry]));
    };
    const auto everyOther = [&](std::size_t entry) {
        const __m256d lower = _mm256_set_m128d(startOf(entry + 2), startOf(entry));
        const __m256d upper = _mm256_set_m128d(startOf(entry + 6), startOf(entry + 4));
        return _mm512_insertf64x4(_mm512_castpd256_pd512(lower), upper, 1);
    };
    const __m512d even = everyOther(0);
    const __m512d odd = everyOther(1);
    const __mmask8 isAbove = _mm512_cmp_pd_mask(_mm512_unpacklo_pd(even, odd), x, _CMP_LE_OQ);
    const __m512i positions = _mm512_castpd_si512(_mm512_unpackhi_pd(even, odd));
    return {_mm512_mask_add_epi64(positions, isAbove, positions, _mm512_set1_epi64(1)), isFinite(x)};
}

/// Takes cells that are known already.
class Listed {
public:
    explicit Listed(const std::uint32_t* known) : known(known) {}

    CellIndices operator()(std::size_t at, __m512d x) const;

private:
    const std::uint32_t* known;
};

inline CellIndices Listed::operator()(std::size_t at, __m512d x) const {
    const __m256i cells = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(known + at));
    return {_mm512_cvtepu32_epi64(cells), isFinite(x)};
}

/// The only row of a profile, whatever its value.
struct OneRow {
    CellIndices operator()(std::size_t /*at*/, __m512d y) const { return {_mm512_setzero_si512(), isFinite(y)}; }
};

}  // namespace velmorak::filling::avx512
