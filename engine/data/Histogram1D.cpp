#include "velmorak/Histogram1D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace velmorak {

namespace {

/// Values whose cells are looked up before any is filled, so that the one does not wait for the other.
constexpr std::size_t fillBlock = 1024;

void count(BinSums& sums, double value, double weight) {
    ++sums.entries;
    sums.w += weight;
    sums.ww += weight * weight;
    if (std::isinf(value))
        return;
    const double weighted = weight * value;
    sums.wx += weighted;
    sums.wxx += weighted * value;
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

Histogram1D::Histogram1D(Axis axis, std::vector<BinSums> cells, std::int64_t nanEntries)
    : x(std::move(axis)), sums(std::move(cells)), nans(nanEntries) {
    if (sums.size() != x.bins() + 2)
        throw std::invalid_argument("a histogram needs one cell for each bin, and two outside");
}

void Histogram1D::fill(double value, double weight) {
    if (std::isnan(value) || std::isnan(weight)) {
        ++nans;
        return;
    }
    count(sums[x.cell(value)], value, weight);
}

void Histogram1D::fill(const double* values, const double* weights, std::size_t length) {
    std::array<std::uint32_t, fillBlock> cells;
    for (std::size_t begin = 0; begin < length; begin += fillBlock) {
        const std::size_t block = std::min(fillBlock, length - begin);
        x.cells(values + begin, block, cells.data());
        for (std::size_t i = 0; i < block; ++i) {
            const double value = values[begin + i];
            const double weight = weights == nullptr ? 1.0 : weights[begin + i];
            if (std::isnan(value) || std::isnan(weight))
                ++nans;
            else
                count(sums[cells[i]], value, weight);
        }
    }
}

void Histogram1D::merge(const Histogram1D& other) {
    if (!(x == other.x))
        throw std::invalid_argument("histograms with different axes cannot be added");
    for (std::size_t cell = 0; cell < sums.size(); ++cell)
        sums[cell].add(other.sums[cell]);
    nans += other.nans;
}

double Histogram1D::error(std::size_t position) const {
    return std::sqrt(bin(position).ww);
}

BinSums Histogram1D::inRange() const {
    BinSums all;
    for (std::size_t position = 0; position < bins(); ++position)
        all.add(bin(position));
    return all;
}

double Histogram1D::mean() const {
    const BinSums all = inRange();
    return all.w == 0.0 ? std::numeric_limits<double>::quiet_NaN() : all.wx / all.w;
}

double Histogram1D::rms() const {
    const BinSums all = inRange();
    if (all.w == 0.0)
        return std::numeric_limits<double>::quiet_NaN();
    const double mean = all.wx / all.w;
    const double variance = all.wxx / all.w - mean * mean;
    return variance < 0.0 ? 0.0 : std::sqrt(variance);
}

}  // namespace velmorak
