#include <velmorak/Histogram1D.h>

#include "histogram/GridFills.h"
#include "histogram/fill/Fill.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace velmorak {

namespace {

void count(BinSums& sums, double value, double weight) {
    ++sums.entries;
    sums.w += weight;
    sums.ww += weight * weight;
    if (std::isinf(value)) {
        return;
    }
    const double weighted = weight * value;
    sums.wx += weighted;
    sums.wxx += weighted * value;
}

/// @param wide vectorised kernels, or null.
/// @return the number of entries skipped because of a NaN.
std::int64_t fillBlock(const Axis& axis, CellVector<BinSums>& sums, const filling::Entries& entries,
                       const filling::Kernels* wide) {
    std::array<std::uint32_t, filling::blockEntries> cells;
    axis.cells(entries.x, entries.count, cells.data());
    std::int64_t nans = 0;
    for (std::size_t i = 0; i < entries.count;) {
        if (wide) {
            i += wide->fillFromIndices1D({.x = cells.data() + i, .y = nullptr}, filling::bytesOf(sums),
                                         filling::from(entries, i));
        }
        for (const std::size_t end = std::min(i + filling::group, entries.count); i < end; ++i) {
            const double weight = filling::weightOf(entries, i);
            if (std::isnan(entries.x[i]) || std::isnan(weight)) {
                ++nans;
            } else {
                count(sums[cells[i]], entries.x[i], weight);
            }
        }
    }
    return nans;
}

}  // namespace

void BinSums::add(const BinSums& other) {
    entries += other.entries;
    w += other.w;
    ww += other.ww;
    wx += other.wx;
    wxx += other.wxx;
}

Histogram1D::Histogram1D(Axis axis) : x(std::move(axis)), sums(x.bins() + 2) {}

Histogram1D::Histogram1D(Axis axis, CellVector<BinSums> cells, std::int64_t nanEntries)
    : x(std::move(axis)), sums(std::move(cells)), nans(nanEntries) {
    if (sums.size() != x.bins() + 2) {
        throw std::invalid_argument("a histogram needs one cell for each bin, and two outside");
    }
}

void Histogram1D::fill(double value, double weight) {
    if (std::isnan(value) || std::isnan(weight)) {
        ++nans;
        return;
    }
    count(sums[x.cell(value)], value, weight);
}

void Histogram1D::fill(const double* values, const double* weights, std::size_t count) {
    const filling::Kernels* const wide = filling::bestKernels(sums.size());
    const std::optional<filling::Steps> steps = filling::stepsOf(x);
    filling::Entries rest{.x = values, .y = nullptr, .weights = weights, .count = count};
    while (rest.count > 0) {
        if (wide && steps) {
            rest = filling::from(rest, wide->fill1D(*steps, filling::bytesOf(sums), rest));
        }
        filling::Entries block = rest;
        block.count = std::min(filling::blockEntries, rest.count);
        nans += fillBlock(x, sums, block, wide);
        rest = filling::from(rest, block.count);
    }
}

void Histogram1D::merge(const Histogram1D& other) {
    if (!(x == other.x)) {
        throw std::invalid_argument("histograms with different axes cannot be added");
    }
    addAll(sums, other.sums);
    nans += other.nans;
}

double Histogram1D::error(std::size_t position) const {
    return std::sqrt(bin(position).ww);
}

BinSums Histogram1D::inRange() const {
    BinSums all;
    for (std::size_t position = 0; position < bins(); ++position) {
        all.add(bin(position));
    }
    return all;
}

double Histogram1D::mean() const {
    const BinSums all = inRange();
    return all.w == 0.0 ? std::numeric_limits<double>::quiet_NaN() : all.wx / all.w;
}

double Histogram1D::rms() const {
    const BinSums all = inRange();
    if (all.w == 0.0) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double mean = all.wx / all.w;
    const double variance = all.wxx / all.w - mean * mean;
    return variance < 0.0 ? 0.0 : std::sqrt(variance);
}

}  // namespace velmorak
