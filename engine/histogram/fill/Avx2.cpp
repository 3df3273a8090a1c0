#include <immintrin.h>

#include "histogram/fill/Kernels.h"

namespace velmorak::filling {
namespace {

constexpr std::size_t group = 4;
/// Prefetch distance at which the sums do not wait for memory.
constexpr std::size_t fetchedAhead = 128;
/// A double so large that its unit in the last place is 1; sums with it are rounded to whole numbers.
constexpr double wholeNumbers = 0x1.8p52;
constexpr double largest = 0x1.fffffffffffffp1023;

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

/// Looks up cells on an axis with bins of different widths.
class BySlice {
public:
    explicit BySlice(const AxisSlices& axis);

    CellIndices operator()(std::size_t /*at*/, __m256d x) const;

private:
    const SliceStart* starts;
    __m256d low;
    __m256d perUnit;
    __m256d last;
};

BySlice::BySlice(const AxisSlices& axis)
    : starts(axis.starts),
      low(_mm256_set1_pd(axis.low)),
      perUnit(_mm256_set1_pd(axis.perUnit)),
      last(_mm256_set1_pd(axis.last)) {}

CellIndices BySlice::operator()(std::size_t /*at*/, __m256d x) const {
    static_assert(sizeof(SliceStart) == 16);
    const __m256d steps = _mm256_mul_pd(_mm256_sub_pd(x, low), perUnit);
    const __m256d inside = _mm256_min_pd(_mm256_max_pd(steps, _mm256_setzero_pd()), last);
    alignas(16) std::uint32_t slices[group];
    _mm_store_si128(reinterpret_cast<__m128i*>(slices), _mm256_cvttpd_epi32(inside));
    const auto startOf = [&](std::size_t entry) {
        return _mm_loadu_pd(reinterpret_cast<const double*>(starts + slices[entry]));
    };
    const __m256d even = _mm256_set_m128d(startOf(2), startOf(0));
    const __m256d odd = _mm256_set_m128d(startOf(3), startOf(1));
    const __m256d isAbove = _mm256_cmp_pd(_mm256_unpacklo_pd(even, odd), x, _CMP_LE_OQ);
    const __m256i positions = _mm256_castpd_si256(_mm256_unpackhi_pd(even, odd));
    // What is true is -1.
    return {_mm256_sub_epi64(positions, _mm256_castpd_si256(isAbove)), isFinite(x)};
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

/// The only row of a profile, whatever its value.
struct OneRow {
    CellIndices operator()(std::size_t /*at*/, __m256d y) const { return {_mm256_setzero_si256(), isFinite(y)}; }
};

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
    Offsets(__m256i cells, std::size_t cellBytes);
    std::byte* in(std::byte* cells, std::size_t entry) const { return cells + bytes[entry]; }

    alignas(32) std::uint64_t bytes[group];
};

Offsets::Offsets(__m256i cells, std::size_t cellBytes) {
    const __m256i each = _mm256_set1_epi64x(static_cast<long long>(cellBytes));
    _mm256_store_si256(reinterpret_cast<__m256i*>(bytes), _mm256_mul_epu32(cells, each));
}

bool isPivotDue(std::int64_t entries) {
    return entries % pivotInterval == 0;
}

void add(double* sums, __m256d addends) {
    _mm256_storeu_pd(sums, _mm256_add_pd(_mm256_loadu_pd(sums), addends));
}

void add(double* sums, __m128d addends) {
    _mm_storeu_pd(sums, _mm_add_pd(_mm_loadu_pd(sums), addends));
}

void addOne(double* sum, __m128d addend) {
    _mm_store_sd(sum, _mm_add_sd(_mm_load_sd(sum), addend));
}

/// The pairs of values of four entries.
struct Pairs {
    Pairs(__m256d one, __m256d other);

    __m128d of[group];
};

Pairs::Pairs(__m256d one, __m256d other) {
    const __m256d even = _mm256_unpacklo_pd(one, other);
    const __m256d odd = _mm256_unpackhi_pd(one, other);
    of[0] = _mm256_castpd256_pd128(even);
    of[1] = _mm256_castpd256_pd128(odd);
    of[2] = _mm256_extractf128_pd(even, 1);
    of[3] = _mm256_extractf128_pd(odd, 1);
}

/// @param weights w and w².
void fillCell(std::byte* cell, double x, __m128d weights) {
    auto* const entries = reinterpret_cast<std::int64_t*>(cell + lineEntriesAt);
    const std::int64_t before = *entries;
    if (isPivotDue(before)) [[unlikely]] {
        chooseLinePivot(cell, x);
    }
    *entries = before + 1;
    const auto* const pivot = reinterpret_cast<const double*>(cell + linePivotAt);
    const __m128d distance = _mm_sub_sd(_mm_set_sd(x), _mm_load_sd(pivot));
    const __m128d first = _mm_mul_sd(weights, distance);
    const __m128d second = _mm_mul_sd(first, distance);
    add(reinterpret_cast<double*>(cell), _mm256_set_m128d(_mm_unpacklo_pd(first, second), weights));
}

/// @param place x and y.
void fillCell(std::byte* cell, __m128d place, __m128d weights) {
    auto* const entries = reinterpret_cast<std::int64_t*>(cell + planeEntriesAt);
    const std::int64_t before = *entries;
    if (isPivotDue(before)) [[unlikely]] {
        choosePlanePivot(cell, _mm_cvtsd_f64(place), _mm_cvtsd_f64(_mm_unpackhi_pd(place, place)));
    }
    *entries = before + 1;
    const auto* const pivots = reinterpret_cast<const double*>(cell + planePivotAt);
    const __m128d distances = _mm_sub_pd(place, _mm_loadu_pd(pivots));
    const __m128d firsts = _mm_mul_pd(_mm_unpacklo_pd(weights, weights), distances);
    const __m128d squares = _mm_mul_pd(firsts, distances);
    auto* const sums = reinterpret_cast<double*>(cell);
    add(sums, weights);
    add(sums + 2, firsts);
    add(sums + 4, _mm_mul_pd(_mm_unpacklo_pd(firsts, firsts), distances));
    addOne(sums + 6, _mm_unpackhi_pd(squares, squares));
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
        const Offsets offsets(places.cells, lineCellBytes);
        const Pairs weights(w, _mm256_mul_pd(w, w));
        for (std::size_t entry = 0; entry < group; ++entry) {
            fillCell(offsets.in(cells, entry), entries.x[at + entry], weights.of[entry]);
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
        const __m256i placed = _mm256_add_epi32(alongX.cells, _mm256_mul_epu32(alongY.cells, rowCells));
        const Offsets offsets(placed, planeCellBytes);
        const Pairs places(x, y);
        const Pairs weights(w, _mm256_mul_pd(w, w));
        for (std::size_t entry = 0; entry < group; ++entry) {
            fillCell(offsets.in(cells, entry), places.of[entry], weights.of[entry]);
        }
    }
    return at;
}

std::size_t fill1D(const Steps& axis, std::byte* cells, const Entries& entries) {
    return fillLine(ByStep(axis), cells, entries);
}

std::size_t fillBySlice1D(const AxisSlices& axis, std::byte* cells, const Entries& entries) {
    return fillLine(BySlice(axis), cells, entries);
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

std::size_t fillProfile(const Steps& axis, std::byte* cells, const Entries& entries) {
    return fillPlane(ByStep(axis), OneRow(), 0, cells, entries);
}

std::size_t fillProfileFromIndices(const Cells& known, std::byte* cells, const Entries& entries) {
    return fillPlane(Listed(known.x), OneRow(), 0, cells, entries);
}

}  // namespace

Kernels avx2Kernels() {
    return {.group = group,
            .fill1D = fill1D,
            .fillBySlice1D = fillBySlice1D,
            .fillFromIndices1D = fillFromIndices1D,
            .fill2D = fill2D,
            .fillFromIndices2D = fillFromIndices2D,
            .fillProfile = fillProfile,
            .fillProfileFromIndices = fillProfileFromIndices};
}

}  // namespace velmorak::filling
