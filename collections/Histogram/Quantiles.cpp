#include "Quantiles.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace velmorak {

namespace {

constexpr double undefinedQuantile = std::numeric_limits<double>::quiet_NaN();
/// A cumulative weight this close to the requested one, relative to the total, differs from it by rounding only.
constexpr double rounding = 1e-12;

double between(double low, double high, double share) {
    return low == high || share >= 1.0 ? high : (1.0 - share) * low + share * high;
}

bool comesBefore(const WeightedInterval& a, const WeightedInterval& b) {
    return std::tie(a.low, a.weight) < std::tie(b.low, b.weight);
}

}  // namespace

void WeightedInterval::add(const WeightedInterval& other) {
    weight += other.weight;
    low = std::min(low, other.low);
    high = std::max(high, other.high);
}

double quantileOf(const std::vector<WeightedInterval>& ascending, double probability) {
    double all = 0.0;
    for (const WeightedInterval& portion : ascending) {
        all += portion.weight;
    }
    if (!(all > 0.0) || !std::isfinite(all)) {
        return undefinedQuantile;
    }
    const double wanted = probability * all;
    double before = 0.0;
    for (auto portion = ascending.begin(); portion != ascending.end(); ++portion) {
        const double after = before + portion->weight;
        if (portion->weight > 0.0 && after >= wanted - rounding * all) {
            if (after > wanted + rounding * all) {
                return between(portion->low, portion->high, std::max(0.0, (wanted - before) / portion->weight));
            }
            const auto next =
                std::find_if(portion + 1, ascending.end(), [](const WeightedInterval& p) { return p.weight > 0.0; });
            return next == ascending.end() ? portion->high : between(portion->high, next->low, 0.5);
        }
        before = after;
    }
    return undefinedQuantile;
}

void Quantiles::take(double x, double weight) {
    if (std::isnan(x) || std::isnan(weight) || weight == 0.0) {
        return;
    }
    portions.push_back({.weight = weight, .low = x, .high = x});
    if (std::abs(x) <= DecimalGrid::maxNumber) {
        low = std::min(low, x);
        high = std::max(high, x);
    }
}

void Quantiles::fill(const double* x, const double* weights, std::size_t count) {
    Quantiles part;
    part.portions.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        part.take(x[i], !weights ? 1.0 : weights[i]);
    }
    if (part.portions.size() > maxCells) {
        part.rebin(part.gridAround());
    }
    merge(part);
}

void Quantiles::merge(const Quantiles& other) {
    low = std::min(low, other.low);
    high = std::max(high, other.high);
    if (!grid && !other.grid && portions.size() + other.portions.size() <= maxCells) {
        portions.insert(portions.end(), other.portions.begin(), other.portions.end());
        return;
    }
    const DecimalGrid joint = gridAround();
    rebin(joint);
    const std::vector<WeightedInterval> added = other.inCells(joint);
    for (std::size_t i = 0; i < added.size(); ++i) {
        portions[i].add(added[i]);
    }
}

DecimalGrid Quantiles::gridAround() const {
    return low > high ? DecimalGrid(0.0, 0.0, maxCells) : DecimalGrid(low, high, maxCells);
}

void Quantiles::save(StateWriter& writer) const {
    writer.number(low);
    writer.number(high);
    writer.number(grid.has_value());
    writer.number<std::uint64_t>(portions.size());
    for (const WeightedInterval& portion : portions) {
        for (const double number : {portion.weight, portion.low, portion.high}) {
            writer.number(number);
        }
    }
}

void Quantiles::load(StateReader& reader) {
    low = reader.number<double>();
    high = reader.number<double>();
    reader.require(hasRange(), "its range is not one");
    grid = reader.number<bool>() ? std::optional(gridAround()) : std::nullopt;
    portions.resize(reader.length(3 * sizeof(double)));
    reader.require(grid ? portions.size() == grid->count() + 2 : portions.size() <= maxCells,
                   "it has a wrong number of cells");
    for (WeightedInterval& portion : portions) {
        for (double* number : {&portion.weight, &portion.low, &portion.high}) {
            *number = reader.number<double>();
        }
        reader.require(grid ? !std::isnan(portion.low) && !std::isnan(portion.high) : portion.low == portion.high,
                       "a cell has no range");
    }
}

/// Whether low and high can be those of numbers, or of none.
bool Quantiles::hasRange() const {
    const bool isOfNone = low == std::numeric_limits<double>::infinity() && high == -low;
    return isOfNone || (low <= high && -DecimalGrid::maxNumber <= low && high <= DecimalGrid::maxNumber);
}

void Quantiles::rebin(const DecimalGrid& target) {
    if (grid != target) {
        portions = inCells(target);
    }
    grid = target;
}

std::vector<WeightedInterval> Quantiles::inCells(const DecimalGrid& target) const {
    std::vector<WeightedInterval> cells(target.count() + 2);
    if (!grid) {
        const Axis axis = target.axis();
        for (const WeightedInterval& number : portions) {
            cells[axis.cell(number.low)].add(number);
        }
        return cells;
    }
    cells.front() = portions.front();
    cells.back() = portions.back();
    for (std::size_t i = 0; i < grid->count(); ++i) {
        if (!portions[i + 1].isEmpty()) {
            const std::int64_t number = grid->cellIn(target, grid->first() + static_cast<std::int64_t>(i));
            cells[static_cast<std::size_t>(number - target.first()) + 1].add(portions[i + 1]);
        }
    }
    return cells;
}

std::vector<WeightedInterval> Quantiles::ascending() const {
    if (grid) {
        return portions;
    }
    std::vector<WeightedInterval> sorted = portions;
    std::sort(sorted.begin(), sorted.end(), comesBefore);
    std::vector<WeightedInterval> joined;
    for (const WeightedInterval& number : sorted) {
        if (joined.empty() || joined.back().low < number.low) {
            joined.push_back(number);
        } else {
            joined.back().add(number);
        }
    }
    return joined;
}

}  // namespace velmorak
