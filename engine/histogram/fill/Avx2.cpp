#include <immintrin.h>

#include "histogram/fill/Kernels.h"

namespace velmorak::filling {
namespace {

/// Prefetch distance at which the sums do not wait for memory.
constexpr std::size_t fetchedAhead = 128;
/// A double so large that its unit in the last place is 1; sums with it are rounded to whole numbers.
constexpr double wholeNumbers = 0x1.8p52;
constexpr double largest = 0x1.fffffffffffffp1023;
constexpr int shiftToBytes = 6;
static_assert(std::size_t{1} << shiftToBytes == cellBytes);

__m256d magnitude(__m256d value) {
    return _mm256_andnot_pd(_mm256_set1_pd(-0.0), value);
}

__m256d isFinite(__m256d x) {
    return _mm256_cmp_pd(magnitude(x), _mm256_set1_pd(largest), _CMP_LE_OQ);
}

/// The cells of four entries.
struct CellIndices {
    __m256i cells;  ///< In the low 32 bits of each.
    __m256d areSure;
};

/// Computes cells on an axis with bins of equal width.
class ByStep {
public:
    explicit ByStep(const Steps& axis);

    CellIndices operator()(std::size_t /*at*/, __m256d x) const;

private:
    __m256d shifted;
    __m256d perUnit;
    __m256d top;
    __m256d bound;
};

ByStep::ByStep(const Steps& axis)
    : shifted(_mm256_set1_pd(axis.shifted)),
      perUnit(_mm256_set1_pd(axis.perUnit)),
      top(_mm256_set1_pd(axis.top)),
      bound(_mm256_set1_pd(axis.bound)) {}

CellIndices ByStep::operator()(std::size_t /*at*/, __m256d x) const {
    const __m256d whole = _mm256_set1_pd(wholeNumbers);
    const __m256d steps = _mm256_mul_pd(_mm256_sub_pd(x, shifted), perUnit);
    const __m256d inside = _mm256_min_pd(_mm256_max_pd(steps, _mm256_setzero_pd()), top);
    const __m256d rounded = _mm256_add_pd(inside, whole);
    const __m256d rest = _mm256_sub_pd(inside, _mm256_sub_pd(rounded, whole));
    const __m256d isSure = _mm256_cmp_pd(magnitude(rest), bound, _CMP_LE_OQ);
    return {_mm256_castpd_si256(rounded), _mm256_and_pd(isSure, isFinite(x))};
}

/// Takes cells that are known already.
class Listed {
public:
    explicit Listed(const std::uint32_t* known) : known(known) {}

    CellIndices operator()(std::size_t at, __m256d x) const;

private:
    const std::uint32_t* known;
};

CellIndices Listed::operator()(std::size_t at, __m256d x) const {
    const __m128i cells = _mm_loadu_si128(reinterpret_cast<const __m128i*>(known + at));
    return {_mm256_cvtepu32_epi64(cells), isFinite(x)};
}

__m256d weightsAt(const Entries& entries, std::size_t at) {
    return !entries.weights ? _mm256_set1_pd(1.0) : _mm256_loadu_pd(entries.weights + at);
}

bool areAll(__m256d conditions) {
    return _mm256_movemask_pd(conditions) == 0xF;
}

void fetch(const double* values, std::size_t at) {
    _mm_prefetch(reinterpret_cast<const char*>(values + at + fetchedAhead), _MM_HINT_T0);
}

/// Byte offsets of four cells.
struct Offsets {
    explicit Offsets(__m256i cells);
    std::byte* in(std::byte* cells, std::size_t entry) const;

    alignas(32) std::uint64_t inLowBits[group];
};

Offsets::Offsets(__m256i cells) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(inLowBits), _mm256_slli_epi64(cells, shiftToBytes));
}

std::byte* Offsets::in(std::byte* cells, std::size_t entry) const {
    return cells + static_cast<std::uint32_t>(inLowBits[entry]);
}

void count(std::byte* cell) {
    ++*reinterpret_cast<std::int64_t*>(cell);
}

void addFour(std::byte* cell, __m256d addends) {
    auto* const sums = reinterpret_cast<double*>(cell + sizeof(std::int64_t));
    _mm256_storeu_pd(sums, _mm256_add_pd(_mm256_loadu_pd(sums), addends));
}

void addLastTwo(std::byte* cell, __m128d addends) {
    auto* const sums = reinterpret_cast<double*>(cell + sizeof(std::int64_t)) + 4;
    _mm_storeu_pd(sums, _mm_add_pd(_mm_loadu_pd(sums), addends));
}

/// The contributions of four entries to the first four sums of their cells, one vector per entry.
struct Addends {
    Addends(__m256d first, __m256d second, __m256d third, __m256d fourth);

    __m256d of[group];
};

Addends::Addends(__m256d first, __m256d second, __m256d third, __m256d fourth) {
    const __m256d evenLow = _mm256_unpacklo_pd(first, second);
    const __m256d oddLow = _mm256_unpackhi_pd(first, second);
    const __m256d evenHigh = _mm256_unpacklo_pd(third, fourth);
    const __m256d oddHigh = _mm256_unpackhi_pd(third, fourth);
    of[0] = _mm256_insertf128_pd(evenLow, _mm256_castpd256_pd128(evenHigh), 1);
    of[1] = _mm256_insertf128_pd(oddLow, _mm256_castpd256_pd128(oddHigh), 1);
    of[2] = _mm256_permute2f128_pd(evenLow, evenHigh, 0x31);
    of[3] = _mm256_permute2f128_pd(oddLow, oddHigh, 0x31);
}

// The entries are passed by value, so that the compiler knows that stores into cells do not change their addresses.

template <typename FindX>
std::size_t fillLine(const FindX findX, std::byte* cells, const Entries entries) {
    std::size_t at = 0;
    for (; at + group <= entries.count; at += group) {
        fetch(entries.x, at);
        const __m256d x = _mm256_loadu_pd(entries.x + at);
        const __m256d w = weightsAt(entries, at);
        const CellIndices places = findX(at, x);
        if (!areAll(_mm256_and_pd(places.areSure, _mm256_cmp_pd(w, w, _CMP_ORD_Q)))) {
            break;
        }
        const Offsets offsets(places.cells);
        const __m256d wx = _mm256_mul_pd(w, x);
        const Addends addends(w, _mm256_mul_pd(w, w), wx, _mm256_mul_pd(wx, x));
        for (std::size_t entry = 0; entry < group; ++entry) {
            std::byte* const cell = offsets.in(cells, entry);
            count(cell);
            addFour(cell, addends.of[entry]);
        }
    }
    return at;
}

template <typename FindX, typename FindY>
std::size_t fillPlane(const FindX findX, const FindY findY, std::size_t stride, std::byte* cells,
                      const Entries entries) {
    const __m256i rowCells = _mm256_set1_epi64x(static_cast<long long>(stride));
    std::size_t at = 0;
    for (; at + group <= entries.count; at += group) {
        const __m256d x = _mm256_loadu_pd(entries.x + at);
        const __m256d y = _mm256_loadu_pd(entries.y + at);
        const __m256d w = weightsAt(entries, at);
        const CellIndices alongX = findX(at, x);
        const CellIndices alongY = findY(at, y);
        const __m256d areSure = _mm256_and_pd(alongX.areSure, alongY.areSure);
        if (!areAll(_mm256_and_pd(areSure, _mm256_cmp_pd(w, w, _CMP_ORD_Q)))) {
            break;
        }
        const Offsets offsets(_mm256_add_epi32(alongX.cells, _mm256_mul_epu32(alongY.cells, rowCells)));
        const __m256d wx = _mm256_mul_pd(w, x);
        const __m256d wy = _mm256_mul_pd(w, y);
        const __m256d wxx = _mm256_mul_pd(wx, x);
        const __m256d wyy = _mm256_mul_pd(wy, y);
        const Addends addends(w, _mm256_mul_pd(w, w), wx, wy);
        const __m256d even = _mm256_unpacklo_pd(wxx, wyy);
        const __m256d odd = _mm256_unpackhi_pd(wxx, wyy);
        const __m128d squares[group] = {_mm256_castpd256_pd128(even), _mm256_castpd256_pd128(odd),
                                        _mm256_extractf128_pd(even, 1), _mm256_extractf128_pd(odd, 1)};
        for (std::size_t entry = 0; entry < group; ++entry) {
            std::byte* const cell = offsets.in(cells, entry);
            count(cell);
            addFour(cell, addends.of[entry]);
            addLastTwo(cell, squares[entry]);
        }
    }
    return at;
}

std::size_t fill1D(const Steps& axis, std::byte* cells, const Entries& entries) {
    return fillLine(ByStep(axis), cells, entries);
}

std::size_t fillFromIndices1D(const Cells& known, std::byte* cells, const Entries& entries) {
    return fillLine(Listed(known.x), cells, entries);
}

std::size_t fill2D(const Steps (&axes)[2], std::size_t stride, std::byte* cells, const Entries& entries) {
    return fillPlane(ByStep(axes[0]), ByStep(axes[1]), stride, cells, entries);
}

std::size_t fillFromIndices2D(const Cells& known, std::size_t stride, std::byte* cells, const Entries& entries) {
    return fillPlane(Listed(known.x), Listed(known.y), stride, cells, entries);
}

}  // namespace

Kernels avx2Kernels() {
    return {.fill1D = fill1D,
            .fillFromIndices1D = fillFromIndices1D,
            .fill2D = fill2D,
            .fillFromIndices2D = fillFromIndices2D};
}

}  // namespace velmorak::filling
