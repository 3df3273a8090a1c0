#include "velmorak/Histogram1D.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace velmorak {

namespace {

/// More would not fit the positions in the lookup table, nor any memory.
constexpr std::size_t mostBins = std::size_t{1} << 28;

double equalEdge(std::size_t position, std::size_t bins, double low, double high) {
    if (position == bins)
        return high;
    const auto steps = static_cast<double>(position);
    const auto count = static_cast<double>(bins);
    const double distance = steps * (high - low);
    // An axis that spans nearly all doubles: the product would be infinite.
    return std::isfinite(distance) ? low + distance / count : low * (1.0 - steps / count) + high * (steps / count);
}

std::vector<double> equalEdges(std::size_t bins, double low, double high) {
    if (bins == 0 || bins > mostBins)
        throw std::invalid_argument("an axis needs at least one bin, and at most 2^28");
    if (!std::isfinite(low) || !std::isfinite(high) || low >= high)
        throw std::invalid_argument("the lower edge of an axis must be below the upper edge, and both finite");
    std::vector<double> edges(bins + 1);
    for (std::size_t position = 0; position <= bins; ++position)
        edges[position] = equalEdge(position, bins, low, high);
    return edges;
}

void checkEdges(const std::vector<double>& edges) {
    if (edges.size() < 2 || edges.size() > mostBins + 1)
        throw std::invalid_argument("an axis needs at least two edges, and at most 2^28 + 1");
    const auto isFinite = [](double edge) { return std::isfinite(edge); };
    if (!std::all_of(edges.begin(), edges.end(), isFinite))
        throw std::invalid_argument("the edges of an axis must be finite");
    if (std::adjacent_find(edges.begin(), edges.end(), std::greater_equal<>()) != edges.end())
        throw std::invalid_argument("the edges of an axis must ascend; so many bins do not fit between them");
}

bool areEqualBins(const std::vector<double>& edges) {
    for (std::size_t position = 0; position < edges.size(); ++position)
        if (edges[position] != equalEdge(position, edges.size() - 1, edges.front(), edges.back()))
            return false;
    return true;
}

}  // namespace

Axis::Axis(std::size_t bins, double low, double high) : Axis(equalEdges(bins, low, high)) {}

Axis::Axis(std::vector<double> edges) : allEdges(std::move(edges)) {
    checkEdges(allEdges);
    regular = areEqualBins(allEdges);
    buildLookup();
}

void Axis::buildLookup() {
    const std::size_t slices =
        std::max<std::size_t>(regular ? 2 * bins() : std::min<std::size_t>(8 * bins(), 1U << 16), 64);
    slicesPerUnit = static_cast<double>(slices) / (high() - low());
    if (!std::isfinite(slicesPerUnit) || !std::isfinite(high() - low()))
        slicesPerUnit = 0.0;
    lookup.assign(slices + 1, 0);
    for (const double edge : allEdges)
        ++lookup[sliceOf(edge) + 1];
    mostInSlice = *std::max_element(lookup.begin(), lookup.end());
    for (std::size_t slice = 1; slice <= slices; ++slice)
        lookup[slice] += lookup[slice - 1];
    stops = allEdges;
    stops.push_back(std::numeric_limits<double>::quiet_NaN());
}

namespace {

/// What the search for cells needs, apart from the axis, so that it stays in registers.
struct Search {
    const double* stops;
    const std::uint32_t* lookup;
    double low;
    double slicesPerUnit;
    double lastSlice;
};

/// As Axis::cell, without a branch: a value outside begins in the first or last slice. Each slice has at most steps
/// edges, and each comparison takes one of them.
template <int steps>
void search(const Search& axis, const double* x, std::size_t count, std::uint32_t* target) {
    for (std::size_t i = 0; i < count; ++i) {
        const double value = x[i];
        double slice = (value - axis.low) * axis.slicesPerUnit;
        slice = slice > 0.0 ? slice : 0.0;
        slice = slice < axis.lastSlice ? slice : axis.lastSlice;
        std::uint32_t position = axis.lookup[static_cast<std::int32_t>(slice)];
        for (int step = 0; step < steps; ++step)
            position += axis.stops[position] <= value ? 1U : 0U;
        target[i] = position;
    }
}

}  // namespace

void Axis::cells(const double* x, std::size_t count, std::uint32_t* target) const {
    const Search axis{.stops = stops.data(),
                      .lookup = lookup.data(),
                      .low = low(),
                      .slicesPerUnit = slicesPerUnit,
                      .lastSlice = static_cast<double>(lookup.size() - 2)};
    const bool isOneByOne = slicesPerUnit == 0.0 || mostInSlice > 4 || lookup.size() > std::size_t{1} << 30U;
    if (isOneByOne)
        for (std::size_t i = 0; i < count; ++i)
            target[i] = std::isnan(x[i]) ? 0U : static_cast<std::uint32_t>(cell(x[i]));
    else if (mostInSlice == 1)
        search<1>(axis, x, count, target);
    else if (mostInSlice == 2)
        search<2>(axis, x, count, target);
    else
        search<4>(axis, x, count, target);
}

std::size_t Axis::cellBetween(double x, std::size_t begin, std::size_t end) const {
    const auto first = allEdges.begin();
    const auto above =
        std::upper_bound(first + static_cast<std::ptrdiff_t>(begin), first + static_cast<std::ptrdiff_t>(end), x);
    return static_cast<std::size_t>(above - first);
}

}  // namespace velmorak
