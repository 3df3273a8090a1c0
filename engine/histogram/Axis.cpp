#include <velmorak/Axis.h>

#include "histogram/fill/Fill.h"

#include <velmorak/Mutex.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace velmorak {

namespace {

/// Limit of the slices that are looked up by kernels: their table stays in the nearest cache, or in the next.
constexpr std::size_t maxKernelSlices = 8192;
/// Limit of the positions in the lookup table, and of the memory.
constexpr std::size_t maxBins = std::size_t{1} << 28;

constexpr const char* doNotAscend = "the edges of an axis must ascend; so many bins do not fit between them";

double equalEdge(std::size_t position, std::size_t bins, double low, double high) {
    if (position == bins) {
        return high;
    }
    const auto steps = static_cast<double>(position);
    const auto count = static_cast<double>(bins);
    const double distance = steps * (high - low);
    // On an axis that spans nearly all doubles the product would overflow.
    return std::isfinite(distance) ? low + distance / count : low * (1.0 - steps / count) + high * (steps / count);
}

/// @throws std::invalid_argument for impossible bins.
void checkEqualEdges(std::size_t bins, double low, double high) {
    if (bins == 0 || bins > maxBins) {
        throw std::invalid_argument("an axis needs at least one bin, and at most 2^28");
    }
    if (!std::isfinite(low) || !std::isfinite(high) || low >= high) {
        throw std::invalid_argument("the lower edge of an axis must be below the upper edge, and both finite");
    }
    double before = low;
    for (std::size_t position = 1; position <= bins; ++position) {
        const double edge = equalEdge(position, bins, low, high);
        if (!(edge > before)) {
            throw std::invalid_argument(doNotAscend);
        }
        before = edge;
    }
}

std::vector<double> equalEdges(std::size_t bins, double low, double high) {
    std::vector<double> edges(bins + 1);
    for (std::size_t position = 0; position <= bins; ++position) {
        edges[position] = equalEdge(position, bins, low, high);
    }
    return edges;
}

void checkEdges(const std::vector<double>& edges) {
    if (edges.size() < 2 || edges.size() > maxBins + 1) {
        throw std::invalid_argument("an axis needs at least two edges, and at most 2^28 + 1");
    }
    const auto isFinite = [](double edge) { return std::isfinite(edge); };
    if (!std::all_of(edges.begin(), edges.end(), isFinite)) {
        throw std::invalid_argument("the edges of an axis must be finite");
    }
    if (std::adjacent_find(edges.begin(), edges.end(), std::greater_equal<>()) != edges.end()) {
        throw std::invalid_argument(doNotAscend);
    }
}

bool areEqualBins(const std::vector<double>& edges) {
    for (std::size_t position = 0; position < edges.size(); ++position) {
        if (edges[position] != equalEdge(position, edges.size() - 1, edges.front(), edges.back())) {
            return false;
        }
    }
    return true;
}

/// The edges and a lookup table for the cell of a value.
struct EdgeTables {
    EdgeTables(std::vector<double> all, bool isRegular);

    /// Monotonic in x, also after rounding. Edges in earlier slices are therefore below x and those in later slices
    /// above it; only the edges in the same slice must be compared.
    std::size_t sliceOf(double edgeOrX) const;
    std::size_t cell(double x) const;
    std::size_t cellBetween(double x, std::size_t begin, std::size_t end) const;

    std::vector<double> edges;
    std::vector<double> stops;          ///< The edges, and a NaN as sentinel.
    std::size_t maxInSlice = 0;         ///< Largest number of edges in one slice.
    std::vector<std::uint32_t> lookup;  ///< For each slice, the number of edges in the slices before it.
    double slicesPerUnit = 0.0;
    std::vector<SliceStart> starts;  ///< Of an axis whose bins differ, for kernels; else empty.
    AxisSlices slices;               ///< Refers to starts.

private:
    void makeStarts();
};

std::size_t EdgeTables::sliceOf(double edgeOrX) const {
    if (slicesPerUnit == 0.0) {  // The span or its inverse is not finite.
        return 0;
    }
    const auto slice = static_cast<std::size_t>((edgeOrX - edges.front()) * slicesPerUnit);
    return slice < lookup.size() - 2 ? slice : lookup.size() - 2;
}

EdgeTables::EdgeTables(std::vector<double> all, bool isRegular) : edges(std::move(all)) {
    const std::size_t bins = edges.size() - 1;
    const double span = edges.back() - edges.front();
    const std::size_t count =
        std::max<std::size_t>(isRegular ? 2 * bins : std::min<std::size_t>(8 * bins, 1U << 16), 64);
    slicesPerUnit = static_cast<double>(count) / span;
    if (!std::isfinite(slicesPerUnit) || !std::isfinite(span)) {
        slicesPerUnit = 0.0;
    }
    lookup.assign(count + 1, 0);
    for (const double edge : edges) {
        ++lookup[sliceOf(edge) + 1];
    }
    maxInSlice = *std::max_element(lookup.begin(), lookup.end());
    for (std::size_t slice = 1; slice <= count; ++slice) {
        lookup[slice] += lookup[slice - 1];
    }
    stops.reserve(edges.size() + 1);
    stops = edges;
    stops.push_back(std::numeric_limits<double>::quiet_NaN());
    if (!isRegular && maxInSlice == 1 && count <= maxKernelSlices && slicesPerUnit > 0.0) {
        makeStarts();
    }
}

void EdgeTables::makeStarts() {
    starts.reserve(lookup.size() - 1);
    for (std::size_t slice = 0; slice + 1 < lookup.size(); ++slice) {
        starts.push_back({stops[lookup[slice]], lookup[slice]});
    }
    slices = {.starts = starts.data(),
              .low = edges.front(),
              .perUnit = slicesPerUnit,
              .last = static_cast<double>(starts.size() - 1)};
}

std::size_t EdgeTables::cell(double x) const {
    if (x < edges.front()) {
        return 0;
    }
    if (x >= edges.back()) {
        return edges.size();
    }
    const std::size_t slice = sliceOf(x);
    std::size_t position = lookup[slice];
    const std::size_t end = lookup[slice + 1];
    if (end - position > 8) {
        return cellBetween(x, position, end);
    }
    while (position < end && edges[position] <= x) {
        ++position;
    }
    return position;
}

std::size_t EdgeTables::cellBetween(double x, std::size_t begin, std::size_t end) const {
    const auto first = edges.begin();
    const auto above =
        std::upper_bound(first + static_cast<std::ptrdiff_t>(begin), first + static_cast<std::ptrdiff_t>(end), x);
    return static_cast<std::size_t>(above - first);
}

}  // namespace

/// The tables shared by an axis and its copies. Those of bins of equal width are built on demand: a file may declare
/// many more bins than it fills.
/// Threads: every operation may be called on any thread.
class AxisTables {
public:
    AxisTables() = default;
    AxisTables(std::vector<double> edges, bool isRegular);

    /// @return null if they have not been built yet.
    const EdgeTables* known() const { return made.load(std::memory_order_acquire); }
    const EdgeTables& of(const Axis& axis) const;

private:
    const EdgeTables& make(const Axis& axis) const;

    mutable Mutex mutex;
    mutable std::unique_ptr<const EdgeTables> owned VELMORAK_GUARDED_BY(mutex);
    mutable std::atomic<const EdgeTables*> made = nullptr;
};

AxisTables::AxisTables(std::vector<double> edges, bool isRegular)
    : owned(std::make_unique<const EdgeTables>(std::move(edges), isRegular)), made(owned.get()) {}

const EdgeTables& AxisTables::of(const Axis& axis) const {
    const EdgeTables* const tables = known();
    return tables ? *tables : make(axis);
}

const EdgeTables& AxisTables::make(const Axis& axis) const {
    const MutexLock lock(mutex);
    if (!owned) {
        owned = std::make_unique<const EdgeTables>(equalEdges(axis.bins(), axis.low(), axis.high()), true);
        made.store(owned.get(), std::memory_order_release);
    }
    return *owned;
}

Axis::Axis(std::size_t bins, double low, double high)
    : count(bins), first(low), last(high), tables(std::make_shared<AxisTables>()) {
    checkEqualEdges(bins, low, high);
}

Axis::Axis(std::vector<double> edges) {
    checkEdges(edges);
    count = edges.size() - 1;
    first = edges.front();
    last = edges.back();
    regular = areEqualBins(edges);
    tables = std::make_shared<AxisTables>(std::move(edges), regular);
}

const AxisSlices* slicesOf(const Axis& axis) {
    const EdgeTables* const tables = axis.tables->known();
    return tables && !tables->starts.empty() ? &tables->slices : nullptr;
}

const std::vector<double>& Axis::edges() const {
    return tables->of(*this).edges;
}

double Axis::edge(std::size_t position) const {
    const EdgeTables* const known = tables->known();
    return known ? known->edges[position] : equalEdge(position, count, first, last);
}

Axis Axis::ofCategories(std::vector<std::string> categories) {
    Axis axis(categories.size(), -0.5, static_cast<double>(categories.size()) - 0.5);
    axis.labels = std::move(categories);
    return axis;
}

std::size_t Axis::cell(double x) const {
    return tables->of(*this).cell(x);
}

bool Axis::operator==(const Axis& other) const {
    if (labels != other.labels || count != other.count || first != other.first || last != other.last ||
        regular != other.regular) {
        return false;
    }
    return regular || tables == other.tables || edges() == other.edges();
}

namespace {

/// The state of the search for cells, separate from the axis so that it stays in registers.
struct Search {
    const double* stops;
    const std::uint32_t* lookup;
    double low;
    double slicesPerUnit;
    double lastSlice;
};

/// As Axis::cell, without branches: a value outside starts in the first or last slice. Each slice has at most steps
/// edges, and each comparison consumes one of them.
template <int steps>
void search(const Search& axis, const double* x, std::size_t count, std::uint32_t* target) {
    for (std::size_t i = 0; i < count; ++i) {
        const double value = x[i];
        double slice = (value - axis.low) * axis.slicesPerUnit;
        slice = slice > 0.0 ? slice : 0.0;
        slice = slice < axis.lastSlice ? slice : axis.lastSlice;
        std::uint32_t position = axis.lookup[static_cast<std::int32_t>(slice)];
        for (int step = 0; step < steps; ++step) {
            position += axis.stops[position] <= value ? 1U : 0U;
        }
        target[i] = position;
    }
}

}  // namespace

void Axis::cells(const double* x, std::size_t values, std::uint32_t* target) const {
    const EdgeTables& known = tables->of(*this);
    const Search axis{.stops = known.stops.data(),
                      .lookup = known.lookup.data(),
                      .low = low(),
                      .slicesPerUnit = known.slicesPerUnit,
                      .lastSlice = static_cast<double>(known.lookup.size() - 2)};
    const bool isOneByOne =
        known.slicesPerUnit == 0.0 || known.maxInSlice > 4 || known.lookup.size() > std::size_t{1} << 30U;
    if (isOneByOne) {
        for (std::size_t i = 0; i < values; ++i) {
            target[i] = std::isnan(x[i]) ? 0U : static_cast<std::uint32_t>(known.cell(x[i]));
        }
    } else if (known.maxInSlice == 1) {
        search<1>(axis, x, values, target);
    } else if (known.maxInSlice == 2) {
        search<2>(axis, x, values, target);
    } else {
        search<4>(axis, x, values, target);
    }
}

}  // namespace velmorak
