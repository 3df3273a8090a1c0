#include <immintrin.h>

#include "histogram/fill/Avx512Cells.h"
#include "histogram/fill/Kernels.h"

#include <type_traits>

namespace velmorak::filling {
namespace {

using namespace avx512;

/// Prefetch distance at which the sums do not wait for memory.
constexpr std::size_t fetchedAhead = 128;

__m512d weightsAt(const Entries& entries, std::size_t at) {
    return !entries.weights ? _mm512_set1_pd(1.0) : _mm512_loadu_pd(entries.weights + at);
}

bool areAll(__mmask8 conditions) {
    return conditions == 0xFF;
}

void fetch(const double* values, std::size_t at) {
    _mm_prefetch(reinterpret_cast<const char*>(values + at + fetchedAhead), _MM_HINT_T0);
}

/// Eight cells.
struct Targets {
    Targets(std::byte* cells, __m512i indices, std::size_t cellBytes);

    alignas(64) std::byte* of[wideGroup];
};

inline Targets::Targets(std::byte* cells, __m512i indices, std::size_t cellBytes) {
    const __m512i offsets = _mm512_mul_epu32(indices, _mm512_set1_epi64(static_cast<long long>(cellBytes)));
    const __m512i first = _mm512_set1_epi64(reinterpret_cast<long long>(cells));
    _mm512_store_si512(of, _mm512_add_epi64(offsets, first));
}

/// Two neighbouring numbers of each of eight cells.
struct Neighbours {
    /// @param at offset of the first number in its cell.
    Neighbours(const Targets& cells, std::size_t at);

    __m512d first;
    __m512d second;
};

inline Neighbours::Neighbours(const Targets& cells, std::size_t at) {
    const auto pairOf = [&](std::size_t entry) {
        return _mm_loadu_pd(reinterpret_cast<const double*>(cells.of[entry] + at));
    };
    const auto everyOther = [&](std::size_t entry) {
        const __m256d low = _mm256_set_m128d(pairOf(entry + 2), pairOf(entry));
        const __m256d high = _mm256_set_m128d(pairOf(entry + 6), pairOf(entry + 4));
        return _mm512_insertf64x4(_mm512_castpd256_pd512(low), high, 1);
    };
    const __m512d even = everyOther(0);
    const __m512d odd = everyOther(1);
    first = _mm512_unpacklo_pd(even, odd);
    second = _mm512_unpackhi_pd(even, odd);
}

/// The four values of each of eight entries.
struct Rows {
    Rows(__m512d first, __m512d second, __m512d third, __m512d fourth);

    __m256d of[wideGroup];
};

inline Rows::Rows(__m512d first, __m512d second, __m512d third, __m512d fourth) {
    const __m512i lower = _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0);
    const __m512i upper = _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4);
    const auto spread = [&](std::size_t entry, __m512d pairs, __m512d after) {
        const __m512d early = _mm512_permutex2var_pd(pairs, lower, after);
        const __m512d late = _mm512_permutex2var_pd(pairs, upper, after);
        of[entry] = _mm512_castpd512_pd256(early);
        of[entry + 2] = _mm512_extractf64x4_pd(early, 1);
        of[entry + 4] = _mm512_castpd512_pd256(late);
        of[entry + 6] = _mm512_extractf64x4_pd(late, 1);
    };
    spread(0, _mm512_unpacklo_pd(first, second), _mm512_unpacklo_pd(third, fourth));
    spread(1, _mm512_unpackhi_pd(first, second), _mm512_unpackhi_pd(third, fourth));
}

/// Whether an entry chooses a pivot: its cell has entries of which the number is a multiple of the interval, or comes
/// to it within these eight.
bool isPivotDue(const Targets& cells, __m512d counts) {
    static_assert(pivotInterval % wideGroup == 0 && (pivotInterval & (pivotInterval - 1)) == 0);
    const __m512i entries = _mm512_castpd_si512(counts);
    const __m512i last = _mm512_add_epi64(entries, _mm512_set1_epi64(wideGroup - 1));
    auto near = _mm512_testn_epi64_mask(last, _mm512_set1_epi64(pivotInterval - wideGroup));
    if (near == 0) [[likely]] {
        return false;
    }
    if (_mm512_testn_epi64_mask(entries, _mm512_set1_epi64(pivotInterval - 1)) != 0) {
        return true;
    }
    const __m512i all = _mm512_load_si512(cells.of);
    for (; near != 0; near = static_cast<__mmask8>(near & (near - 1))) {
        const auto entry = static_cast<unsigned>(__builtin_ctz(near));
        const __m512i one = _mm512_set1_epi64(reinterpret_cast<long long>(cells.of[entry]));
        const unsigned same = _mm512_cmpeq_epi64_mask(all, one);
        if ((same & (same - 1)) != 0) {
            return true;
        }
    }
    return false;
}

[[gnu::cold, gnu::noinline]] void fillInTurn(const Targets& cells, __m512d x, __m512d w) {
    alignas(64) double places[wideGroup];
    alignas(64) double weights[wideGroup];
    _mm512_store_pd(places, x);
    _mm512_store_pd(weights, w);
    for (std::size_t entry = 0; entry < wideGroup; ++entry) {
        fillLineCell(cells.of[entry], places[entry], weights[entry]);
    }
}

[[gnu::cold, gnu::noinline]] void fillInTurn(const Targets& cells, __m512d x, __m512d y, __m512d w) {
    alignas(64) double places[wideGroup];
    alignas(64) double values[wideGroup];
    alignas(64) double weights[wideGroup];
    _mm512_store_pd(places, x);
    _mm512_store_pd(values, y);
    _mm512_store_pd(weights, w);
    for (std::size_t entry = 0; entry < wideGroup; ++entry) {
        fillPlaneCell(cells.of[entry], places[entry], values[entry], weights[entry]);
    }
}

void add(std::byte* fourSums, __m256d addends) {
    auto* const sums = reinterpret_cast<double*>(fourSums);
    _mm256_storeu_pd(sums, _mm256_add_pd(_mm256_loadu_pd(sums), addends));
}

/// Adds one to the entries of a cell of one quantity. The pivot behind them is stored again, so that the next load of
/// both does not wait for the store.
void countEntry(std::byte* cell) {
    auto* const both = reinterpret_cast<__m128i*>(cell + lineEntriesAt);
    _mm_storeu_si128(both, _mm_add_epi64(_mm_loadu_si128(both), _mm_set_epi64x(0, 1)));
}

/// Adds three sums, and one to the entries behind them.
void addAndCount(std::byte* threeSums, __m256d addends) {
    auto* const sums = reinterpret_cast<double*>(threeSums);
    const __m256d before = _mm256_loadu_pd(sums);
    const __m256i counted = _mm256_add_epi64(_mm256_castpd_si256(before), _mm256_set_epi64x(1, 0, 0, 0));
    _mm256_storeu_pd(sums, _mm256_mask_add_pd(_mm256_castsi256_pd(counted), 0x7, before, addends));
}

/// Fills eight entries. Their products are formed together; only the sums are added one after the other.
[[gnu::always_inline]] inline void fillCells(const Targets& cells, __m512d x, __m512d w) {
    const Neighbours countsAndPivots(cells, lineEntriesAt);
    if (isPivotDue(cells, countsAndPivots.first)) [[unlikely]] {
        fillInTurn(cells, x, w);
        return;
    }
    const __m512d distance = _mm512_sub_pd(x, countsAndPivots.second);
    const __m512d first = _mm512_mul_pd(w, distance);
    const Rows addends(w, _mm512_mul_pd(w, w), first, _mm512_mul_pd(first, distance));
    for (std::size_t entry = 0; entry < wideGroup; ++entry) {
        add(cells.of[entry], addends.of[entry]);
        countEntry(cells.of[entry]);
    }
}

[[gnu::always_inline]] inline void fillCells(const Targets& cells, __m512d x, __m512d y, __m512d w) {
    const Neighbours lastSumsAndCounts(cells, planeEntriesAt - sizeof(double));
    if (isPivotDue(cells, lastSumsAndCounts.second)) [[unlikely]] {
        fillInTurn(cells, x, y, w);
        return;
    }
    const Neighbours pivots(cells, planePivotAt);
    const __m512d alongX = _mm512_sub_pd(x, pivots.first);
    const __m512d alongY = _mm512_sub_pd(y, pivots.second);
    const __m512d firstX = _mm512_mul_pd(w, alongX);
    const __m512d firstY = _mm512_mul_pd(w, alongY);
    const Rows lower(w, _mm512_mul_pd(w, w), firstX, firstY);
    const Rows upper(_mm512_mul_pd(firstX, alongX), _mm512_mul_pd(firstX, alongY), _mm512_mul_pd(firstY, alongY),
                     _mm512_setzero_pd());
    for (std::size_t entry = 0; entry < wideGroup; ++entry) {
        add(cells.of[entry], lower.of[entry]);
        addAndCount(cells.of[entry] + planeSecondsAt, upper.of[entry]);
    }
}

// The entries are passed by value, so that the compiler knows that stores into cells do not change their addresses.

/// The cells of the next eight entries are found before these are filled, so that their lookup does not wait for sums.
template <typename FindX>
std::size_t fillLine(const FindX findX, std::byte* cells, const Entries entries) {
    const std::size_t end = entries.count / wideGroup * wideGroup;
    __m512d nextX = end == 0 ? _mm512_setzero_pd() : _mm512_loadu_pd(entries.x);
    CellIndices next = end == 0 ? CellIndices() : findX(0, nextX);
    for (std::size_t at = 0; at < end; at += wideGroup) {
        const __m512d x = nextX;
        const __m512d w = weightsAt(entries, at);
        const CellIndices places = next;
        if (!areAll(_mm512_mask_cmp_pd_mask(places.areSure, w, w, _CMP_ORD_Q))) {
            return at;
        }
        fetch(entries.x, at);
        if (entries.weights) {
            fetch(entries.weights, at);
        }
        if (const std::size_t after = at + wideGroup; after < end) {
            nextX = _mm512_loadu_pd(entries.x + after);
            next = findX(after, nextX);
        }
        fillCells(Targets(cells, places.cells, lineCellBytes), x, w);
    }
    return end;
}

/// Eight entries of two quantities, and their cells.
template <typename FindX, typename FindY>
class PlaneEntries {
public:
    PlaneEntries(const FindX& findX, const FindY& findY, std::size_t stride, const Entries& entries)
        : stride(_mm512_set1_epi64(static_cast<long long>(stride))), findX(findX), findY(findY), entries(entries) {}

    /// @return whether the cells of the eight entries from there on are certain.
    bool find(std::size_t at);
    /// The cells of many bins do not stay in the nearest cache.
    void fetchCells(std::byte* cells) const;
    void fill(std::byte* cells) const { fillCells(Targets(cells, places, planeCellBytes), x, y, w); }

private:
    __m512d x{};
    __m512d y{};
    __m512d w{};
    __m512i places{};
    const __m512i stride;
    const FindX findX;
    const FindY findY;
    const Entries entries;
};

template <typename FindX, typename FindY>
[[gnu::always_inline]] inline bool PlaneEntries<FindX, FindY>::find(std::size_t at) {
    if (at + wideGroup > entries.count) {
        return false;
    }
    x = _mm512_loadu_pd(entries.x + at);
    y = _mm512_loadu_pd(entries.y + at);
    w = weightsAt(entries, at);
    const CellIndices alongX = findX(at, x);
    const CellIndices alongY = findY(at, y);
    places = _mm512_add_epi32(alongX.cells, _mm512_mul_epu32(alongY.cells, stride));
    const auto areSure = static_cast<__mmask8>(alongX.areSure & alongY.areSure);
    return areAll(_mm512_mask_cmp_pd_mask(areSure, w, w, _CMP_ORD_Q));
}

template <typename FindX, typename FindY>
[[gnu::always_inline]] inline void PlaneEntries<FindX, FindY>::fetchCells(std::byte* cells) const {
    const Targets targets(cells, places, planeCellBytes);
    for (const std::byte* const cell : targets.of) {
        _mm_prefetch(reinterpret_cast<const char*>(cell), _MM_HINT_T0);
        _mm_prefetch(reinterpret_cast<const char*>(cell + planeCellBytes - 1), _MM_HINT_T0);
    }
}

template <typename FindX, typename FindY>
std::size_t fillPlane(const FindX findX, const FindY findY, std::size_t stride, std::byte* cells,
                      const Entries entries) {
    constexpr bool hasManyCells = !std::is_same_v<FindY, OneRow>;
    PlaneEntries<FindX, FindY> next(findX, findY, stride, entries);
    std::size_t at = 0;
    for (bool isSure = next.find(0); isSure; at += wideGroup) {
        const PlaneEntries<FindX, FindY> these = next;
        isSure = next.find(at + wideGroup);
        if constexpr (hasManyCells) {
            next.fetchCells(cells);
        }
        these.fill(cells);
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

Kernels avx512Kernels() {
    return {.group = wideGroup,
            .fill1D = fill1D,
            .fillBySlice1D = fillBySlice1D,
            .fillFromIndices1D = fillFromIndices1D,
            .fill2D = fill2D,
            .fillFromIndices2D = fillFromIndices2D,
            .fillProfile = fillProfile,
            .fillProfileFromIndices = fillProfileFromIndices};
}

}  // namespace velmorak::filling
